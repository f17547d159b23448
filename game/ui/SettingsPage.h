#pragma once

#include "game/Settings.h"
#include "game/ui/KeySettings.h"
#include "game/ui/Theme.h"

namespace drench::game {

/// All that can be set.
class SettingsPage {
  public:
    struct Outcome {
        bool changed = false;
        bool closed = false;
    };

    /// Draws the page and changes the settings as the player does.
    /// @param screenRate  frames a second of the screen
    Outcome draw(const Theme& theme, Settings& settings, double screenRate);

    /// Whether the next press belongs to a list of keys: see KeySettings.
    KeySettings& keys() { return keys_; }

  private:
    bool drawTab(const Theme& theme, Settings& settings, double screenRate);

    int tab_ = 0;
    KeySettings keys_;
};

} // namespace drench::game
