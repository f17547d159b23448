#include "game/HeldActions.h"

#include <algorithm>

namespace drench::game {

std::optional<ActionChange> HeldActions::setToggledFire(bool toggled) {
    const bool before = holds(Action::fire);
    toggledFire_ = toggled;
    firing_ = false;
    if (before && !holds(Action::fire))
        return ActionChange{Action::fire, false};
    return std::nullopt;
}

std::optional<ActionChange> HeldActions::press(const Bindings& bindings, Input input, bool down) {
    if (!focused_)
        return std::nullopt;
    const auto pressed = std::find_if(pressed_.begin(), pressed_.end(),
                                      [&](const auto& each) { return each.first == input; });
    if (down == (pressed != pressed_.end()))
        return std::nullopt;

    const std::optional<Action> action = down ? bindings.actionOf(input) : pressed->second;
    if (!action)
        return std::nullopt;
    const bool before = holds(*action);
    if (!down) {
        pressed_.erase(pressed);
    } else {
        if (*action == Action::fire && toggledFire_ && !isPressed(Action::fire))
            firing_ = !firing_;
        pressed_.emplace_back(input, *action);
    }
    const bool after = holds(*action);
    return before == after ? std::nullopt : std::optional(ActionChange{*action, after});
}

std::vector<ActionChange> HeldActions::releaseAll() {
    std::vector<ActionChange> ended;
    for (const Action action : actions()) {
        if (holds(action))
            ended.push_back({action, false});
    }
    pressed_.clear();
    firing_ = false;
    return ended;
}

std::vector<ActionChange> HeldActions::loseFocus() {
    focused_ = false;
    return releaseAll();
}

bool HeldActions::holds(Action action) const {
    return action == Action::fire && toggledFire_ ? firing_ : isPressed(action);
}

bool HeldActions::isPressed(Action action) const {
    return std::any_of(pressed_.begin(), pressed_.end(),
                       [&](const auto& each) { return each.second == action; });
}

} // namespace drench::game
