#pragma once

#include "game/Inputs.h"

#include <SDL.h>
#include <optional>
#include <vector>

namespace drench::game {

/// What happened to the window between two frames.
struct WindowEvents {
    /// Keys and buttons in the order in which they went down and up; repeats of a held key are left
    /// out.
    struct Press {
        Input input;
        bool down;
    };
    std::vector<Press> presses;

    /// The mouse's own counts, right and down, while it is captured.
    int mouseX = 0;
    int mouseY = 0;

    /// Where the gamepad's right stick stands: see Gamepad.
    double stickX = 0.0;
    double stickY = 0.0;

    bool closed = false;

    /// Set when the focus changed, to what it is now.
    std::optional<bool> focus;

    /// Set when the window was hidden or minimised, or came back.
    std::optional<bool> visible;

    /// The events as they came, for the interface's library.
    std::vector<SDL_Event> all;
};

/// Adds what an event means.
void add(WindowEvents& events, const SDL_Event& event);

} // namespace drench::game
