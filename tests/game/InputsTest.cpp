#include "game/Inputs.h"

#include <gtest/gtest.h>
#include <set>

using namespace drench::game;

using enum Input::Device;

TEST(Inputs, AreNamedByTheirPosition) {
    EXPECT_EQ(inputName({keyboard, 4}), "KeyA");
    EXPECT_EQ(inputName({keyboard, 29}), "KeyZ");
    EXPECT_EQ(inputName({keyboard, 30}), "Digit1");
    EXPECT_EQ(inputName({keyboard, 39}), "Digit0");
    EXPECT_EQ(inputName({keyboard, 58}), "F1");
    EXPECT_EQ(inputName({keyboard, 69}), "F12");
    EXPECT_EQ(inputName({keyboard, 115}), "F24");
    EXPECT_EQ(inputName({keyboard, 97}), "Numpad9");
    EXPECT_EQ(inputName({keyboard, 98}), "Numpad0");
    EXPECT_EQ(inputName({keyboard, 225}), "ShiftLeft");
    EXPECT_EQ(inputName({keyboard, 300}), "Key300");
    EXPECT_EQ(inputName({mouse, 2}), "Mouse2");
    EXPECT_EQ(inputName({gamepad, 0}), "PadA");
    EXPECT_EQ(inputName({gamepad, 20}), "Pad20");
    EXPECT_EQ(inputName({gamepad, padInput::rightTrigger}), "PadRightTrigger");
}

TEST(Inputs, EachHasANameOfItsOwnThatLeadsBackToIt) {
    std::set<std::string> names;
    const auto add = [&](Input::Device device, int first, int last) {
        for (int number = first; number <= last; ++number) {
            const Input input{device, number};
            EXPECT_TRUE(names.insert(inputName(input)).second) << inputName(input);
            EXPECT_EQ(inputNamed(inputName(input)), input) << inputName(input);
        }
    };
    add(keyboard, 1, lastKey);
    add(mouse, 1, lastMouseButton);
    add(gamepad, 0, padInput::count - 1);
}

TEST(Inputs, OtherNamesAreNone) {
    for (const char* name : {"", "w", "keyw", "KeyW ", "Mouse0", "Mouse17", "Pad38", "PadZ", "Key0",
                             "Key4", "Key512", "Key-1", "Key1e2"})
        EXPECT_EQ(inputNamed(name), std::nullopt) << name;
}
