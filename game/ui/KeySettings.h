#pragma once

#include "game/Bindings.h"
#include "game/ui/Theme.h"

#include <optional>
#include <string>

namespace drench::game {

/// The list of actions with their keys, which are changed by pressing others.
class KeySettings {
  public:
    /// Draws the list; true if the bindings changed.
    bool draw(const Theme& theme, Bindings& bindings);

    /// Whether the next press is to be bound, and so for nothing else.
    bool isWaiting() const { return waiting_.has_value(); }

    /// Something was pressed: it is bound, or taken away by Backspace; Escape leaves all as it was.
    /// True if the bindings changed.
    bool take(Bindings& bindings, const Input& input);

    void stopWaiting() { waiting_.reset(); }

  private:
    struct Waiting {
        Action action;

        /// What the new input stands in for; nothing if it is one more.
        std::optional<Input> replaced;

        bool operator==(const Waiting&) const = default;
    };

    void drawKeys(const Theme& theme, const Bindings& bindings, Action action, float width);
    void drawKey(const Waiting& press, const std::string& words);

    std::optional<Waiting> waiting_;
};

} // namespace drench::game
