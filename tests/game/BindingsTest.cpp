#include "game/Bindings.h"

#include "src/Messages.h"

#include <gtest/gtest.h>
#include <set>

using namespace drench::game;

namespace {

constexpr Input keyW{Input::Device::keyboard, 26};
constexpr Input keyQ{Input::Device::keyboard, 20};
constexpr Input leftButton{Input::Device::mouse, 1};

constexpr Input key(int number) {
    return {Input::Device::keyboard, number};
}

std::vector<Input> inputsOf(const Bindings& bindings, Action action) {
    const std::span<const Input> inputs = bindings.inputsOf(action);
    return {inputs.begin(), inputs.end()};
}

using Inputs = std::vector<Input>;

} // namespace

TEST(Bindings, EveryActionHasAnInputAtFirst) {
    const Bindings bindings;
    EXPECT_EQ(bindings.actionOf(keyW), Action::forward);
    EXPECT_EQ(bindings.actionOf(leftButton), Action::fire);
    EXPECT_EQ(bindings.actionOf(escape), Action::menu);
    EXPECT_EQ(bindings.actionOf(key(60)), Action::diagnostics) << "F3";
    EXPECT_EQ(bindings.actionOf(keyQ), std::nullopt);
    for (const Action action : actions())
        EXPECT_FALSE(bindings.inputsOf(action).empty()) << actionName(action);
}

TEST(Bindings, AllActionsAreListedOnceWithNamesOfTheirOwn) {
    std::set<Action> listed(actions().begin(), actions().end());
    EXPECT_EQ(listed.size(), static_cast<std::size_t>(actionCount));
    EXPECT_EQ(actions().size(), static_cast<std::size_t>(actionCount));
    std::set<std::string_view> names;
    for (const Action action : actions())
        names.insert(actionName(action));
    EXPECT_EQ(names.size(), static_cast<std::size_t>(actionCount));
}

TEST(Bindings, TellTheKeysOfTheRoom) {
    EXPECT_EQ(roomKey(Action::right), keyIndex::right);
    EXPECT_EQ(roomKey(Action::left), keyIndex::left);
    EXPECT_EQ(roomKey(Action::backward), keyIndex::backward);
    EXPECT_EQ(roomKey(Action::forward), keyIndex::forward);
    EXPECT_EQ(roomKey(Action::jump), keyIndex::jump);
    EXPECT_EQ(roomKey(Action::fire), keyIndex::shoot);
    EXPECT_EQ(roomKey(Action::table), std::nullopt);
    EXPECT_EQ(roomKey(Action::fullScreen), std::nullopt);
}

TEST(Bindings, AnInputServesOneAction) {
    Bindings bindings;
    EXPECT_TRUE(bindings.bind(Action::jump, keyW));
    EXPECT_EQ(bindings.actionOf(keyW), Action::jump);
    EXPECT_EQ(inputsOf(bindings, Action::jump).back(), keyW);
    for (const Input& input : bindings.inputsOf(Action::forward))
        EXPECT_NE(input, keyW);
    EXPECT_FALSE(bindings.bind(Action::jump, keyW)) << "already bound";
}

TEST(Bindings, ActionKeepsItsLatestInputs) {
    Bindings bindings = Bindings::none();
    for (int number = 10; number < 15; ++number)
        EXPECT_TRUE(bindings.bind(Action::jump, key(number)));
    EXPECT_EQ(inputsOf(bindings, Action::jump), (Inputs{key(11), key(12), key(13), key(14)}));
    EXPECT_EQ(bindings.actionOf(key(10)), std::nullopt);
}

TEST(Bindings, EscapeAlwaysAsksForTheMenu) {
    Bindings bindings = Bindings::none();
    EXPECT_FALSE(bindings.bind(Action::jump, escape));
    EXPECT_FALSE(bindings.unbind(escape));
    for (int number = 10; number < 15; ++number)
        EXPECT_TRUE(bindings.bind(Action::menu, key(number)));
    EXPECT_EQ(inputsOf(bindings, Action::menu), (Inputs{escape, key(12), key(13), key(14)}));
    bindings.unbindAll(Action::menu);
    EXPECT_EQ(inputsOf(bindings, Action::menu), Inputs{escape});
}

TEST(Bindings, InputsCanBeTakenAway) {
    Bindings bindings;
    EXPECT_TRUE(bindings.unbind(keyW));
    EXPECT_EQ(bindings.actionOf(keyW), std::nullopt);
    EXPECT_FALSE(bindings.unbind(keyW));
    EXPECT_FALSE(bindings == Bindings());
    bindings.unbindAll(Action::forward);
    EXPECT_TRUE(bindings.inputsOf(Action::forward).empty());
    EXPECT_EQ(bindings.actionOf(leftButton), Action::fire);
}

TEST(Bindings, WhatIsNoInputIsNotBound) {
    Bindings bindings;
    using enum Input::Device;
    for (const Input& input :
         {Input{keyboard, 0}, Input{keyboard, lastKey + 1}, Input{mouse, 0},
          Input{mouse, lastMouseButton + 1}, Input{gamepad, -1}, Input{gamepad, padInput::count}})
        EXPECT_FALSE(bindings.bind(Action::jump, input)) << inputName(input);
    EXPECT_TRUE(bindings.bind(Action::jump, {gamepad, padInput::count - 1}));
    EXPECT_TRUE(bindings.bind(Action::jump, {keyboard, lastKey}));
    EXPECT_TRUE(bindings.bind(Action::jump, {mouse, lastMouseButton}));
}
