#include "game/WatchKeys.h"

#include <gtest/gtest.h>
#include <set>

using namespace drench::game;

namespace {

Input key(const char* name) {
    return *inputNamed(name);
}

} // namespace

TEST(WatchKeys, EachCommandHasAKey) {
    std::set<WatchCommand> found;
    for (int number = 1; number <= lastKey; ++number) {
        if (const auto command = watchCommandOf({Input::Device::keyboard, number}))
            found.insert(*command);
    }
    EXPECT_EQ(found.size(), static_cast<std::size_t>(WatchCommand::fourthPlayer) + 1);
    EXPECT_EQ(watchCommandOf(key("Space")), WatchCommand::pause);
    EXPECT_EQ(watchCommandOf(key("Digit3")), WatchCommand::thirdPlayer);
    EXPECT_EQ(watchCommandOf(key("Tab")), std::nullopt);
    EXPECT_EQ(watchCommandOf({Input::Device::mouse, 44}), std::nullopt);
}

TEST(WatchKeys, AFlightGoesWhereItsKeysLead) {
    FlightKeys keys;
    EXPECT_EQ(keys.way(), glm::vec3(0.0f));
    keys.press(key("KeyW"), true);
    keys.press(key("KeyW"), true);
    keys.press(key("KeyE"), true);
    EXPECT_EQ(keys.way(), glm::vec3(0.0f, 1.0f, 1.0f));
    keys.press(key("KeyW"), false);
    keys.press(key("KeyA"), true);
    EXPECT_EQ(keys.way(), glm::vec3(-1.0f, 1.0f, 0.0f));
    keys.press(key("ShiftLeft"), true);
    EXPECT_GT(keys.way().y, 2.0f);
    keys.releaseAll();
    EXPECT_EQ(keys.way(), glm::vec3(0.0f));
}
