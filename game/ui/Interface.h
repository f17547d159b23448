#pragma once

#include "game/ui/Theme.h"

#include <SDL.h>
#include <span>

namespace drench::game {

/// The interface's library in a window: its context, its fonts, its input and its drawing. One at a
/// time.
class Interface {
  public:
    /// Both must outlive this, and the context be current.
    Interface(SDL_Window* window, SDL_GLContext context);
    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;
    ~Interface();

    /// What happened; only to be called while the interface has the input.
    void take(std::span<const SDL_Event> events);

    /// The same for the mouse alone, when keys are for the game but the pointer is for both.
    void takeMouse(std::span<const SDL_Event> events);

    /// Lets go of keys and buttons, as when the game gets the input.
    void releaseInput();

    /// Begins a frame.
    /// @param interfaceScale  of the usual size of text and controls
    void begin(double interfaceScale);

    /// Draws all since begin() into the current framebuffer.
    void draw();

    /// Draws the last frame once more.
    void drawAgain() const;

    /// The draw calls of the last frame.
    int drawCalls() const;

    /// Whether a field for text has the keys.
    bool writesText() const;

    const Theme& theme() const { return theme_; }

  private:
    void rescale(float scale);

    SDL_Window* window_;
    Theme theme_;

    /// As the player set it, when no control was in use.
    double wantedScale_ = 1.0;

    /// Pixels of the framebuffer for each one of the window.
    float density_ = 1.0f;
};

} // namespace drench::game
