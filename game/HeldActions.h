#pragma once

#include "game/Bindings.h"

#include <optional>
#include <utility>
#include <vector>

namespace drench::game {

/// An action begins or ends.
struct ActionChange {
    Action action;
    bool held;

    bool operator==(const ActionChange&) const = default;
};

/// From inputs that go down and up to actions that are held. An action is held as long as one of
/// its inputs is down; fire can be toggled instead.
class HeldActions {
  public:
    /// Whether each press of fire begins or ends it, so that nobody has to hold it for long. If
    /// this ends the firing, its end is returned.
    std::optional<ActionChange> setToggledFire(bool toggled);

    /// An input went down or up; repeats of a key that is held do nothing. An input keeps to the
    /// action that it had when it went down. Does nothing without the focus.
    std::optional<ActionChange> press(const Bindings& bindings, Input input, bool down);

    /// Lets everything go, as a menu or a respawn asks for: returns what was held. Inputs that are
    /// still down count again once they went up.
    std::vector<ActionChange> releaseAll();

    /// The window lost the focus, and will not hear of keys that go up: as releaseAll().
    std::vector<ActionChange> loseFocus();

    /// The window has the focus. To be called after the events that came with it, since keys that
    /// were pressed elsewhere are among them.
    void gainFocus() { focused_ = true; }

    bool holds(Action action) const;

  private:
    bool isPressed(Action action) const;

    /// The inputs that are down, with their actions.
    std::vector<std::pair<Input, Action>> pressed_;
    bool toggledFire_ = false;

    /// Whether a toggled fire goes on.
    bool firing_ = false;
    bool focused_ = true;
};

} // namespace drench::game
