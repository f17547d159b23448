#include "game/Watching.h"

#include "tests/game/RecordedLine.h"
#include "tests/support/Arenas.h"

#include <glm/geometric.hpp>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

const PlayerUpdate bob = playerAt('2', {1000.0f, standing, 1400.0f}, "Bob");

/// Ann walks towards Bob, fires for a second, and soaks him after 4.8 s.
std::vector<PlayedEvent> match() {
    RecordedLine line;
    line.hear(acceptanceDatagram('1'));
    for (int tick = 0; tick < 500; ++tick) {
        if (tick == 300)
            line.hear(noticeDatagram("Ann soaked Bob!"));
        PlayerUpdate ann = playerAt(
            '1', {1000.0f, standing, 400.0f + static_cast<float>(std::min(tick, 100))}, "Ann");
        ann.points = tick >= 300 ? 1 : 0;
        ann.shooting = tick >= 240 && tick < 300;
        line.tick({ann, tick < 300 ? bob : soaked(bob)});
    }
    return line.events();
}

struct WatchingAMatch : testing::Test {
    MapManager map = loaded(emptyCourt());
    Watching watching{Playback(match()), map};
    Scene scene;

    void pass(double seconds) { watching.pass(seconds, {}, scene); }
    void passFrames(int count) {
        for (int i = 0; i < count; ++i)
            pass(1.0 / 60.0);
    }
    int count(Sound sound) const {
        return static_cast<int>(std::count_if(watching.cues().begin(), watching.cues().end(),
                                              [&](const Cue& cue) { return cue.sound == sound; }));
    }
};

} // namespace

TEST_F(WatchingAMatch, BeginsInTheEyeOfWhoeverRecordedIt) {
    pass(0.0);
    EXPECT_EQ(watching.watched(), '1');
    EXPECT_NEAR(scene.camera.eye.z, 400.0f, 1.0f);
    ASSERT_TRUE(scene.gun);
    ASSERT_EQ(scene.figures.size(), 1u);
    EXPECT_EQ(scene.figures[0].name, "Bob");
    ASSERT_EQ(scene.names.size(), 1u);
    EXPECT_EQ(scene.names[0].name, "Bob");
}

TEST_F(WatchingAMatch, FollowsAndFliesWithAllInSight) {
    watching.spectator().setView(Spectator::View::following);
    pass(0.1);
    EXPECT_EQ(scene.figures.size(), 2u);
    EXPECT_FALSE(scene.gun);
    EXPECT_EQ(watching.watched(), '1');
    EXPECT_EQ(watching.match().self(), nullptr) << "nobody's points are one's own";
    watching.spectator().setView(Spectator::View::flying);
    pass(0.1);
    EXPECT_EQ(scene.figures.size(), 2u);
    EXPECT_EQ(watching.watched(), 0);
}

TEST_F(WatchingAMatch, ShowsWaterAndBeingSoaked) {
    watching.spectator().watch('2');
    passFrames(270);
    EXPECT_EQ(scene.jets.size(), 1u);
    EXPECT_FALSE(scene.soaked);
    passFrames(60);
    ASSERT_TRUE(scene.soaked);
    EXPECT_EQ(scene.soaked->by, "Ann");
    EXPECT_NEAR(scene.soaked->since, 0.7f, 0.1f);
    EXPECT_FALSE(scene.gun);
    EXPECT_NEAR(scene.camera.eye.z, bob.position.z, 0.1f) << "where it was";
    watching.spectator().watch('1');
    pass(0.0);
    watching.spectator().watch('2');
    watching.playback().seek(6.0);
    pass(0.0);
    EXPECT_NEAR(scene.camera.eye.z, bob.position.z, 0.1f) << "after a leap, too";
}

TEST_F(WatchingAMatch, IsHeardAsItPasses) {
    int jets = 0;
    int soakings = 0;
    for (int i = 0; i < 330; ++i) {
        pass(1.0 / 60.0);
        jets += watching.jets().empty() ? 0 : 1;
        soakings += count(Sound::soaking) + count(Sound::soaked);
    }
    EXPECT_NEAR(jets, 58, 4);
    EXPECT_EQ(soakings, 1);
}

TEST_F(WatchingAMatch, IsSilentInAPauseAndAfterALeap) {
    watching.playback().seek(4.5);
    pass(0.0);
    EXPECT_TRUE(watching.cues().empty());
    passFrames(6);
    EXPECT_FALSE(watching.jets().empty());
    watching.playback().setPaused(true);
    pass(0.5);
    EXPECT_TRUE(watching.jets().empty());
    EXPECT_TRUE(watching.cues().empty());
}

TEST_F(WatchingAMatch, ALeapBeginsTheWaterAnew) {
    passFrames(300);
    EXPECT_FALSE(scene.drops.empty());
    watching.playback().seek(0.0);
    pass(0.0);
    EXPECT_TRUE(scene.drops.empty());
}

TEST_F(WatchingAMatch, IsTheSameEveryTime) {
    Watching again{Playback(match()), map};
    Scene other;
    for (int i = 0; i < 330; ++i) {
        pass(1.0 / 30.0);
        again.pass(1.0 / 30.0, {}, other);
        ASSERT_EQ(scene.drops.size(), other.drops.size());
        for (std::size_t drop = 0; drop < scene.drops.size(); ++drop)
            ASSERT_EQ(scene.drops[drop].place, other.drops[drop].place);
        ASSERT_EQ(scene.camera.eye, other.camera.eye);
    }
}
