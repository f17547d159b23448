#include "game/Window.h"

#include "common/Files.h"

#include <cstdlib>
#include <epoxy/gl.h>
#include <string_view>
#include <utility>

namespace drench::game {

namespace {

/// Samples of a pixel, for smooth edges. They make the processor's drawing four times as slow.
constexpr int smoothSamples = 4;

[[noreturn]] void fail(const std::string& what) {
    throw InputError(what + ": " + SDL_GetError());
}

bool isSoftware(std::string_view renderer) {
    for (const std::string_view name : {"llvmpipe", "softpipe", "swrast", "SWR"}) {
        if (renderer.find(name) != std::string_view::npos)
            return true;
    }
    return false;
}

} // namespace

Window::Library::Library(Place place) {
    // Ctrl-C is the program's own.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    // Counts as the mouse gives them, whatever the desktop does to its pointer.
    SDL_SetHint(SDL_HINT_MOUSE_RELATIVE_SCALING, "0");
    SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
    if (place == Place::nowhere) {
        // Its windows are memory of OpenGL's.
        SDL_SetHintWithPriority(SDL_HINT_VIDEODRIVER, "offscreen", SDL_HINT_OVERRIDE);
        if (SDL_Init(SDL_INIT_VIDEO) != 0)
            fail("nothing can be drawn without a display");
        return;
    }
    // Of SDL's drivers only those that somebody can see, unless the user names another.
    SDL_SetHint(SDL_HINT_VIDEODRIVER, std::getenv("WAYLAND_DISPLAY") ? "x11,wayland" : "x11");
    if (SDL_Init(SDL_INIT_VIDEO) != 0)
        fail("there is no display to open a window on");
    // Who has no gamepad plays without.
    SDL_InitSubSystem(SDL_INIT_GAMECONTROLLER);
}

Window::Window(const std::string& title, PixelSize size, Place place) : library_(place) {
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MAJOR_VERSION, 3);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MINOR_VERSION, 3);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_CORE);
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    // Which driver draws is known only once a window is open.
    open(title, size, smoothSamples);
    if (!context_ || drawsInSoftware_)
        open(title, size, 0);
    if (!window_)
        fail("no window with OpenGL can be opened");
    if (!context_)
        fail("the graphics driver offers no OpenGL 3.3");
    SDL_ShowWindow(window_.get());
    SDL_GL_SetSwapInterval(1);
}

void Window::open(const std::string& title, PixelSize size, int samples) {
    context_.reset();
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLEBUFFERS, samples > 0 ? 1 : 0);
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLESAMPLES, samples);
    window_.reset(SDL_CreateWindow(
        title.c_str(), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, size.width, size.height,
        SDL_WINDOW_OPENGL | SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI | SDL_WINDOW_HIDDEN));
    if (!window_)
        return;
    context_.reset(SDL_GL_CreateContext(window_.get()));
    if (!context_)
        return;
    const auto* renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    drawsInSoftware_ = renderer && isSoftware(renderer);
}

PixelSize Window::size() const {
    PixelSize size;
    SDL_GL_GetDrawableSize(window_.get(), &size.width, &size.height);
    return size;
}

double Window::screenRate() const {
    constexpr double usualRate = 60.0;
    SDL_DisplayMode mode;
    const int display = SDL_GetWindowDisplayIndex(window_.get());
    const bool known = display >= 0 && SDL_GetCurrentDisplayMode(display, &mode) == 0;
    return known && mode.refresh_rate > 0 ? mode.refresh_rate : usualRate;
}

WindowEvents Window::takeEvents() {
    WindowEvents events;
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        add(events, event);
        gamepad_.take(event, events.presses);
    }
    events.stickX = gamepad_.stickX();
    events.stickY = gamepad_.stickY();
    if (!mouseIsCaptured_)
        events.mouseX = events.mouseY = 0;
    return events;
}

void Window::captureMouse(bool captured) {
    if (captured == mouseIsCaptured_)
        return;
    mouseIsCaptured_ = captured;
    SDL_SetRelativeMouseMode(captured ? SDL_TRUE : SDL_FALSE);
    SDL_PumpEvents();
    SDL_FlushEvent(SDL_MOUSEMOTION);
}

void Window::fillScreen(bool full) {
    if (std::exchange(fillsScreen_, full) == full)
        return;
    SDL_SetWindowFullscreen(window_.get(), full ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0);
}

void Window::waitForScreen(bool waits) {
    SDL_GL_SetSwapInterval(waits ? 1 : 0);
}

void Window::show() {
    SDL_GL_SwapWindow(window_.get());
}

} // namespace drench::game
