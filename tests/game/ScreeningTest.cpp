#include "game/Screening.h"

#include "tests/game/RecordedLine.h"
#include "tests/support/Arenas.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

OpenedRecording recording() {
    RecordedLine line;
    line.hear(acceptanceDatagram('1'));
    for (int tick = 0; tick < 1250; ++tick) {
        if (tick == 600)
            line.hear(noticeDatagram("Ann soaked Bob!"));
        line.tick({playerAt('1', {500.0f, standing, 500.0f}, "Ann"),
                   playerAt('2', {900.0f, standing, 900.0f}, "Bob")});
    }
    return {
        "", Playback(line.events()), std::make_unique<MapManager>(loaded(emptyCourt())), {}, {}};
}

struct ScreeningOfAMatch : testing::Test {
    Screening screening{recording()};
    Scene scene;

    Playback& playback() { return screening.watching().playback(); }
    Spectator::View view() const { return screening.watching().spectator().view(); }
    void tap(const char* key) {
        EXPECT_TRUE(screening.press(*inputNamed(key), true)) << key;
        screening.press(*inputNamed(key), false);
    }
    void pass(double seconds) { screening.pass(seconds, {}, scene); }
};

} // namespace

TEST_F(ScreeningOfAMatch, KeysLeap) {
    tap("ArrowRight");
    EXPECT_NEAR(playback().moment(), 5.0, 1e-6);
    tap("End");
    EXPECT_EQ(playback().moment(), playback().end());
    tap("ArrowLeft");
    EXPECT_NEAR(playback().moment(), playback().end() - 5.0, 1e-6);
    tap("Home");
    EXPECT_EQ(playback().moment(), 0.0);
    tap("KeyN");
    EXPECT_NEAR(playback().moment(), 9.6 - Playback::leadToSoaking, 0.1);
    tap("End");
    tap("KeyB");
    EXPECT_NEAR(playback().moment(), 9.6 - Playback::leadToSoaking, 0.1);
}

TEST_F(ScreeningOfAMatch, KeysPauseAndChangeTheSpeed) {
    tap("Space");
    EXPECT_TRUE(playback().isPaused());
    tap("Space");
    EXPECT_FALSE(playback().isPaused());
    tap("ArrowUp");
    EXPECT_EQ(playback().speed(), 2.0);
    tap("ArrowDown");
    tap("ArrowDown");
    EXPECT_EQ(playback().speed(), 0.5);
}

TEST_F(ScreeningOfAMatch, KeysChooseThePlayerAndTheView) {
    tap("Digit2");
    pass(0.01);
    EXPECT_EQ(screening.watching().watched(), '2');
    tap("KeyV");
    EXPECT_EQ(view(), Spectator::View::following);
    tap("KeyV");
    EXPECT_EQ(view(), Spectator::View::flying);
    tap("KeyV");
    EXPECT_EQ(view(), Spectator::View::eye);
}

TEST_F(ScreeningOfAMatch, AFlightFollowsKeysAndMouse) {
    pass(0.0);
    tap("KeyV");
    tap("KeyV");
    const glm::vec3 before = scene.camera.eye;
    EXPECT_FALSE(screening.press(*inputNamed("KeyW"), true));
    pass(0.5);
    EXPECT_GT(scene.camera.eye.z, before.z + 100.0f);
    screening.releaseAll();
    const glm::vec3 there = scene.camera.eye;
    pass(0.5);
    EXPECT_EQ(scene.camera.eye, there);
    EXPECT_TRUE(screening.press({Input::Device::mouse, 1}, true));
    EXPECT_TRUE(screening.isDragging());
    screening.turn({90, 90});
    pass(0.0);
    EXPECT_LT(scene.camera.direction.x, -0.1f);
    EXPECT_LT(scene.camera.direction.y, -0.1f);
    screening.press({Input::Device::mouse, 1}, false);
    EXPECT_FALSE(screening.isDragging());
}

TEST_F(ScreeningOfAMatch, GoesOnAsTimePassesAndNotWhileTheMachineStoodStill) {
    pass(0.2);
    EXPECT_NEAR(playback().moment(), 0.2, 1e-6) << "a minimised window draws five frames a second";
    pass(3600.0);
    EXPECT_NEAR(playback().moment(), 0.7, 1e-6);
}

TEST_F(ScreeningOfAMatch, OtherKeysAreForOthers) {
    for (const char* key : {"Tab", "Escape", "F11", "F9"})
        EXPECT_FALSE(screening.press(*inputNamed(key), true)) << key;
}
