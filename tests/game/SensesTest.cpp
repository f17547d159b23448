#include "game/Senses.h"

#include "tests/client/SessionLine.h"
#include "tests/game/Snapshots.h"
#include "tests/support/Arenas.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

constexpr vec3 here{1024.0f, standing, 1024.0f};
constexpr vec3 there{1024.0f, standing, 1324.0f};

/// Somebody called Ann in a room that the test answers for.
class Perceiving : public testing::Test {
  protected:
    MapManager map = loaded(emptyCourt());
    Line line{"Ann"};
    Senses senses{map};
    Scene scene;
    Settings settings;
    PlayerUpdate ann = playerAt('1', here, "Ann");
    PlayerUpdate bob = playerAt('2', there, "Bob");

    void hear(const std::string& datagram) {
        line.hear(datagram);
        takeAll();
    }

    /// So many ticks, at the end of each a state of the room.
    void pass(int ticks, std::initializer_list<PlayerUpdate> players) {
        for (int i = 0; i < ticks; ++i) {
            line.pass(milliseconds(17));
            hear(bytesOf(snapshotOf(players)));
        }
    }

    void show(bool isInRoom = true) { senses.show(scene, settings, isInRoom, line.now, 0.017f); }

    void enter() {
        hear(acceptanceDatagram('1'));
        pass(20, {ann, bob});
        show();
    }

  private:
    void takeAll() {
        senses.serviced(line.session, line.now);
        while (const std::optional<client::Event> event = line.session.nextEvent())
            senses.take(*event, line.session, line.now);
    }
};

} // namespace

TEST_F(Perceiving, IsNothingBeforeARoomLetsOneIn) {
    show();
    EXPECT_EQ(senses.bodies(), nullptr);
    EXPECT_EQ(senses.ears(), nullptr);
    EXPECT_TRUE(scene.figures.empty());
    EXPECT_FALSE(scene.gun);
}

TEST_F(Perceiving, IsFromOnesOwnEyeAndOfTheOthersWithTheirNames) {
    enter();
    EXPECT_EQ(senses.match().ownId(), '1');
    EXPECT_EQ(scene.camera.eye, onScreen(here));
    EXPECT_EQ(scene.camera.direction, glm::vec3(0.0f, 0.0f, 1.0f));
    EXPECT_TRUE(scene.gun);
    ASSERT_EQ(scene.figures.size(), 1u);
    EXPECT_EQ(scene.figures[0].name, "Bob");
    EXPECT_EQ(scene.figures[0].position, onScreen(there));
    EXPECT_EQ(scene.names.size(), 1u);
    EXPECT_FALSE(scene.soaked);
}

TEST_F(Perceiving, KeepsTheEyeAndTheOthersInSightWhileSoaked) {
    enter();
    hear(noticeDatagram("2 -> Bob soaked Ann."));
    pass(60, {soaked(ann), bob});
    show();
    EXPECT_FALSE(scene.gun);
    EXPECT_EQ(scene.camera.eye, onScreen(here));
    EXPECT_EQ(scene.figures.size(), 1u);
    ASSERT_TRUE(scene.soaked);
    EXPECT_NEAR(scene.soaked->since, 59 * 0.017f, 0.001f);
    EXPECT_NEAR(scene.soaked->left, 4.0f - 59 * 0.017f, 0.001f);
}

TEST_F(Perceiving, HearsWhatTheRoomShows) {
    enter();
    senses.ears()->forget();
    bob.shooting = true;
    pass(1, {ann, bob});
    EXPECT_EQ(senses.ears()->jets().size(), 1u);
    EXPECT_FALSE(senses.ears()->cues().empty());
}

TEST_F(Perceiving, SeesNobodyOnceOutOfTheRoom) {
    enter();
    show(false);
    EXPECT_TRUE(scene.figures.empty());
    EXPECT_FALSE(scene.gun);
    EXPECT_EQ(scene.camera.eye, onScreen(here));
}

TEST_F(Perceiving, FollowsThePalette) {
    settings.colourBlind = true;
    enter();
    ASSERT_EQ(scene.figures.size(), 1u);
    EXPECT_EQ(scene.figures[0].palette, Palette::colourBlind);
    EXPECT_EQ(scene.gun->palette, Palette::colourBlind);
}

TEST_F(Perceiving, GoesOnInAnotherArenaAndKnowsTheMatchStill) {
    enter();
    hear(chatDatagram('2', "hello"));
    MapManager other = loaded(emptyCourt());
    senses.changeArena(other);
    EXPECT_EQ(senses.match().said().size(), 1u);
    EXPECT_FALSE(senses.bodies()->own(line.now)) << "not yet explained";
    pass(20, {ann, bob});
    show();
    EXPECT_EQ(scene.camera.eye, onScreen(here));
    EXPECT_EQ(scene.figures.size(), 1u);
}

TEST_F(Perceiving, ForgetsTheRoom) {
    enter();
    senses.forget();
    EXPECT_EQ(senses.match().ownId(), 0);
    EXPECT_TRUE(senses.match().players().empty());
    EXPECT_EQ(senses.bodies(), nullptr);
}
