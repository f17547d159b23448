#include "src/Player.h"
#include "tests/window/Desk.h"

#include <chrono>
#include <cmath>
#include <thread>

namespace {

/// The window draws a menu twenty times a second: after this it has seen a key for certain, where
/// it is not held up.
void waitForFrames() {
    std::this_thread::sleep_for(std::chrono::milliseconds(2000));
}

double distance(vec3 a, vec3 b) {
    return std::hypot(a.x - b.x, a.z - b.z);
}

} // namespace

TEST(WindowInterface, TheMenuLetsAllKeysGoAndTakesTheMouseUntilItIsClosed) {
    Desk desk;
    desk.settle();
    desk.press("w");
    const vec3 start = desk.seen()->position;
    ASSERT_TRUE(
        desk.sees([&](const PlayerUpdate& ann) { return distance(start, ann.position) > 20.0; }));
    desk.tap("Escape");
    EXPECT_TRUE(desk.comesToRest()) << "though the key is still down";
    const vec3 direction = desk.seen()->direction;
    desk.moveMouse(60, 0);
    EXPECT_FALSE(
        desk.sees([&](const PlayerUpdate& ann) { return ann.direction.x != direction.x; }, 700));
    desk.release("w");
    desk.tap("Escape");
    waitForFrames();
    desk.moveMouse(60, 0);
    EXPECT_TRUE(desk.sees([&](const PlayerUpdate& ann) { return ann.direction.x != direction.x; }));
}

TEST(WindowInterface, ALineOfChatGoesToTheRoomAndItsLettersMoveNobody) {
    Desk desk;
    desk.settle();
    const vec3 start = desk.seen()->position;
    desk.tap("Return");
    waitForFrames();
    desk.display.xdotool("type --delay 40 swim-away");
    waitForFrames();
    desk.tap("Return");
    EXPECT_TRUE(desk.hears("swim-away"));
    EXPECT_TRUE(desk.comesToRest());
    EXPECT_EQ(distance(start, desk.seen()->position), 0.0);
    desk.press("w");
    EXPECT_TRUE(desk.sees([&](const PlayerUpdate& ann) {
        return distance(start, ann.position) > 20.0;
    })) << "afterwards keys are the game's again";
    desk.release("w");
}

TEST(WindowInterface, ARoomThatComesBackIsEnteredAgain) {
    Desk desk;
    desk.settle();
    desk.endRoom();
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    desk.openRoomAgain();
    EXPECT_TRUE(desk.sees([](const PlayerUpdate&) { return true; }));
    EXPECT_TRUE(desk.comesToRest());
    const vec3 start = desk.seen()->position;
    desk.press("w");
    EXPECT_TRUE(
        desk.sees([&](const PlayerUpdate& ann) { return distance(start, ann.position) > 20.0; }));
    desk.release("w");
}

TEST(WindowInterface, WhatIsSetIsKeptAtOnce) {
    Desk desk;
    desk.settle();
    EXPECT_EQ(desk.settingsFile().find("full-screen = true"), std::string::npos);
    desk.tap("F11");
    std::string kept;
    for (int i = 0; i < 100 && kept.find("full-screen = true") == std::string::npos; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        kept = desk.settingsFile();
    }
    EXPECT_NE(kept.find("full-screen = true"), std::string::npos) << kept;
    EXPECT_NE(kept.find("sensitivity = 1.0"), std::string::npos) << "what was set before stays";
    EXPECT_EQ(kept.find("Ann"), std::string::npos) << "a name of the command line is for once";
}
