#include "game/Bindings.h"

#include "src/Messages.h"

#include <algorithm>

namespace drench::game {

namespace {

constexpr Action ordered[actionCount] = {
    Action::forward,     Action::backward, Action::left,       Action::right, Action::jump,
    Action::fire,        Action::table,    Action::chat,       Action::menu,  Action::fullScreen,
    Action::diagnostics, Action::record,   Action::keepRecent,
};

static_assert(static_cast<int>(Action::right) == keyIndex::right &&
              static_cast<int>(Action::left) == keyIndex::left &&
              static_cast<int>(Action::backward) == keyIndex::backward &&
              static_cast<int>(Action::forward) == keyIndex::forward &&
              static_cast<int>(Action::jump) == keyIndex::jump &&
              static_cast<int>(Action::fire) == keyIndex::shoot);

struct DefaultBinding {
    Action action;
    std::string_view input;
};

constexpr DefaultBinding defaults[] = {
    {Action::forward, "KeyW"},       {Action::forward, "ArrowUp"},
    {Action::forward, "PadStickUp"}, {Action::backward, "KeyS"},
    {Action::backward, "ArrowDown"}, {Action::backward, "PadStickDown"},
    {Action::left, "KeyA"},          {Action::left, "ArrowLeft"},
    {Action::left, "PadStickLeft"},  {Action::right, "KeyD"},
    {Action::right, "ArrowRight"},   {Action::right, "PadStickRight"},
    {Action::jump, "Space"},         {Action::jump, "Mouse3"},
    {Action::jump, "PadA"},          {Action::fire, "Mouse1"},
    {Action::fire, "ControlLeft"},   {Action::fire, "PadRightTrigger"},
    {Action::table, "Tab"},          {Action::table, "PadBack"},
    {Action::chat, "Enter"},         {Action::chat, "KeyT"},
    {Action::menu, "PadStart"},      {Action::fullScreen, "F11"},
    {Action::diagnostics, "F3"},     {Action::record, "F9"},
    {Action::keepRecent, "F10"},
};

bool isInput(const Input& input) {
    switch (input.device) {
    case Input::Device::keyboard:
        return input.number >= 1 && input.number <= lastKey;
    case Input::Device::mouse:
        return input.number >= 1 && input.number <= lastMouseButton;
    case Input::Device::gamepad:
        break;
    }
    return input.number >= 0 && input.number < padInput::count;
}

} // namespace

std::span<const Action> actions() {
    return ordered;
}

std::optional<int> roomKey(Action action) {
    const int key = static_cast<int>(action);
    return key < keyIndex::count ? std::optional(key) : std::nullopt;
}

std::string_view actionName(Action action) {
    constexpr std::string_view names[actionCount] = {
        "right", "left", "backward",    "forward", "jump",        "fire",       "table",
        "chat",  "menu", "diagnostics", "record",  "keep-recent", "full-screen"};
    return names[static_cast<std::size_t>(action)];
}

Bindings::Bindings() : Bindings(none()) {
    for (const DefaultBinding& binding : defaults) {
        if (const std::optional<Input> input = inputNamed(binding.input))
            bind(binding.action, *input);
    }
}

Bindings Bindings::none() {
    Lists inputs;
    inputs[static_cast<std::size_t>(Action::menu)] = {escape};
    return Bindings(std::move(inputs));
}

bool Bindings::bind(Action action, Input input) {
    if (!isInput(input) || input == escape || actionOf(input) == action)
        return false;
    unbind(input);
    std::vector<Input>& list = listOf(action);
    if (list.size() == mostInputs)
        list.erase(list.begin() + (list.front() == escape ? 1 : 0));
    list.push_back(input);
    return true;
}

bool Bindings::unbind(Input input) {
    if (input == escape)
        return false;
    return std::any_of(inputs_.begin(), inputs_.end(),
                       [&](std::vector<Input>& list) { return std::erase(list, input) > 0; });
}

void Bindings::unbindAll(Action action) {
    std::erase_if(listOf(action), [](const Input& input) { return input != escape; });
}

std::optional<Action> Bindings::actionOf(Input input) const {
    for (const Action action : ordered) {
        const std::span<const Input> list = inputsOf(action);
        if (std::find(list.begin(), list.end(), input) != list.end())
            return action;
    }
    return std::nullopt;
}

std::span<const Input> Bindings::inputsOf(Action action) const {
    return inputs_[static_cast<std::size_t>(action)];
}

std::vector<Input>& Bindings::listOf(Action action) {
    return inputs_[static_cast<std::size_t>(action)];
}

} // namespace drench::game
