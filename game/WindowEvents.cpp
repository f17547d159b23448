#include "game/WindowEvents.h"

namespace drench::game {

namespace {

/// SDL counts the middle button before the right one, as Inputs does.
static_assert(SDL_BUTTON_LEFT == 1 && SDL_BUTTON_MIDDLE == 2 && SDL_BUTTON_RIGHT == 3);

void addWindowEvent(WindowEvents& events, const SDL_WindowEvent& event) {
    switch (event.event) {
    case SDL_WINDOWEVENT_FOCUS_GAINED:
        events.focus = true;
        break;
    case SDL_WINDOWEVENT_FOCUS_LOST:
        events.focus = false;
        break;
    case SDL_WINDOWEVENT_HIDDEN:
    case SDL_WINDOWEVENT_MINIMIZED:
        events.visible = false;
        break;
    case SDL_WINDOWEVENT_SHOWN:
    case SDL_WINDOWEVENT_RESTORED:
    case SDL_WINDOWEVENT_MAXIMIZED:
        events.visible = true;
        break;
    default:
        break;
    }
}

} // namespace

void add(WindowEvents& events, const SDL_Event& event) {
    events.all.push_back(event);
    switch (event.type) {
    case SDL_QUIT:
        events.closed = true;
        break;
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        if (event.key.repeat == 0)
            events.presses.push_back(
                {{Input::Device::keyboard, event.key.keysym.scancode}, event.type == SDL_KEYDOWN});
        break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        events.presses.push_back(
            {{Input::Device::mouse, event.button.button}, event.type == SDL_MOUSEBUTTONDOWN});
        break;
    case SDL_MOUSEMOTION:
        events.mouseX += event.motion.xrel;
        events.mouseY += event.motion.yrel;
        break;
    case SDL_WINDOWEVENT:
        addWindowEvent(events, event.window);
        break;
    default:
        break;
    }
}

} // namespace drench::game
