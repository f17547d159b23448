#include "src/Player.h"
#include "tests/window/Desk.h"

#include <cmath>

namespace {

bool walks(Desk& desk) {
    const vec3 start = desk.seen()->position;
    desk.press("w");
    const bool walked = desk.sees([&](const PlayerUpdate& ann) {
        return std::hypot(ann.position.x - start.x, ann.position.z - start.z) > 20.0f;
    });
    desk.release("w");
    return walked;
}

} // namespace

TEST(WindowInterface, TheMenuLetsAllKeysGoAndTakesTheMouseUntilItIsClosed) {
    Desk desk;
    desk.settle();
    const vec3 start = desk.seen()->position;
    desk.press("w");
    ASSERT_TRUE(desk.sees([&](const PlayerUpdate& ann) {
        return std::hypot(ann.position.x - start.x, ann.position.z - start.z) > 20.0f;
    }));
    desk.tap("Escape");
    EXPECT_TRUE(desk.comesToRest()) << "though the key is still down";
    const vec3 direction = desk.seen()->direction;
    desk.moveMouse(60, 0);
    EXPECT_FALSE(
        desk.sees([&](const PlayerUpdate& ann) { return ann.direction.x != direction.x; }, 700));
    desk.release("w");
    desk.tap("Escape");
    EXPECT_TRUE(desk.turnsAtLast());
}

TEST(WindowInterface, ALineOfChatGoesToTheRoomAndItsLettersMoveNobody) {
    Desk desk;
    desk.settle();
    const vec3 before = desk.seen()->position;
    desk.tap("Return");
    desk.type("wasd-");
    desk.tap("space");
    desk.type("x");
    desk.tap("BackSpace");
    desk.type("dry");
    desk.tap("Return");
    EXPECT_TRUE(desk.hears("wasd- dry"));
    EXPECT_TRUE(desk.comesToRest());
    EXPECT_EQ(desk.seen()->position.x, before.x);
    EXPECT_EQ(desk.seen()->position.y, before.y);
    EXPECT_EQ(desk.seen()->position.z, before.z);
    EXPECT_TRUE(walks(desk)) << "afterwards keys are the game's again";
}

TEST(WindowInterface, ARoomThatComesBackIsEnteredAgain) {
    Desk desk;
    desk.settle();
    desk.press("w");
    desk.endRoom();
    desk.release("w");
    desk.openRoomAgain();
    desk.settle();
    EXPECT_TRUE(walks(desk));
}

TEST(WindowInterface, WhatIsSetIsKeptAtOnce) {
    Desk desk;
    desk.settle();
    const auto isKept = [&](const char* line) {
        return desk.settingsFile().find(line) != std::string::npos;
    };
    EXPECT_FALSE(isKept("full-screen = true"));
    desk.tap("F11");
    EXPECT_TRUE(waitUntil([&] { return isKept("full-screen = true"); })) << desk.settingsFile();
    EXPECT_TRUE(isKept("sensitivity = 1.0")) << "what was set before stays";
    EXPECT_FALSE(isKept("Ann")) << "a name of the command line is for once";
}
