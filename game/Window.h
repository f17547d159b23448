#pragma once

#include "game/Gamepad.h"
#include "game/WindowEvents.h"

#include <SDL.h>
#include <memory>
#include <string>

namespace drench::game {

/// A size in pixels.
struct PixelSize {
    int width = 1280;
    int height = 720;

    bool operator==(const PixelSize&) const = default;
};

/// The window on the screen and its OpenGL 3.3 context, which is current as long as it lives. One
/// at a time.
class Window {
  public:
    /// Where the window is: on the screen, or nowhere, for pictures that only files show.
    enum class Place { screen, nowhere };

    /// Edges are smooth where a graphics card draws. Throws InputError in one line if there is no
    /// display where one is needed, or no OpenGL 3.3.
    Window(const std::string& title, PixelSize size, Place place = Place::screen);
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /// Of the framebuffer, which on dense displays is larger than the window.
    PixelSize size() const;

    /// The screen's frames a second, or 60 if it does not say.
    double screenRate() const;

    /// The driver draws with the processor alone.
    bool drawsInSoftware() const { return drawsInSoftware_; }

    /// What has happened since the last call.
    WindowEvents takeEvents();

    /// Hides the pointer and takes its motions for turns, or gives it back. Motions from before are
    /// dropped, or the view would jump.
    void captureMouse(bool captured);

    /// Fills the screen, or goes back to a window.
    void fillScreen(bool full);

    /// Whether show() waits for the screen, as far as the driver obeys.
    void waitForScreen(bool waits);

    /// Shows what was drawn.
    void show();

    /// For the interface's library.
    SDL_Window* handle() const { return window_.get(); }
    SDL_GLContext context() const { return context_.get(); }

  private:
    /// Opens the window anew, hidden. Without window_ or context_ it could not.
    void open(const std::string& title, PixelSize size, int samples);

    struct Library {
        explicit Library(Place place);
        ~Library() { SDL_Quit(); }
        Library(const Library&) = delete;
        Library& operator=(const Library&) = delete;
    };
    struct Close {
        void operator()(SDL_Window* window) const { SDL_DestroyWindow(window); }
        void operator()(SDL_GLContext context) const { SDL_GL_DeleteContext(context); }
    };

    Library library_;
    Gamepad gamepad_;
    std::unique_ptr<SDL_Window, Close> window_;
    std::unique_ptr<void, Close> context_;
    bool drawsInSoftware_ = false;
    bool mouseIsCaptured_ = false;
    bool fillsScreen_ = false;
};

} // namespace drench::game
