#include "game/Gamepad.h"

namespace drench::game {

namespace {

constexpr double farthest = 32767.0;

} // namespace

void Gamepad::take(const SDL_Event& event, std::vector<WindowEvents::Press>& presses) {
    switch (event.type) {
    case SDL_CONTROLLERDEVICEADDED:
        if (SDL_GameController* const pad = SDL_GameControllerOpen(event.cdevice.which))
            open_.emplace_back(pad);
        break;
    case SDL_CONTROLLERDEVICEREMOVED:
        // What was held on it will not be told to go up.
        std::erase_if(open_, [](const auto& pad) { return !SDL_GameControllerGetAttached(&*pad); });
        releaseAxes(presses);
        for (int button = 0; button < SDL_CONTROLLER_BUTTON_MAX; ++button)
            presses.push_back({{Input::Device::gamepad, button}, false});
        break;
    case SDL_CONTROLLERBUTTONDOWN:
    case SDL_CONTROLLERBUTTONUP:
        presses.push_back({{Input::Device::gamepad, event.cbutton.button},
                           event.type == SDL_CONTROLLERBUTTONDOWN});
        break;
    case SDL_CONTROLLERAXISMOTION:
        move(event.caxis.axis, event.caxis.value, presses);
        break;
    default:
        break;
    }
}

void Gamepad::move(Uint8 axis, Sint16 place, std::vector<WindowEvents::Press>& presses) {
    const double share = place / farthest;
    switch (axis) {
    case SDL_CONTROLLER_AXIS_LEFTX:
        press(padInput::stickRight, share, presses);
        press(padInput::stickLeft, -share, presses);
        break;
    case SDL_CONTROLLER_AXIS_LEFTY:
        press(padInput::stickDown, share, presses);
        press(padInput::stickUp, -share, presses);
        break;
    case SDL_CONTROLLER_AXIS_RIGHTX:
        stickX_ = share;
        break;
    case SDL_CONTROLLER_AXIS_RIGHTY:
        stickY_ = share;
        break;
    case SDL_CONTROLLER_AXIS_TRIGGERLEFT:
        press(padInput::leftTrigger, share, presses);
        break;
    case SDL_CONTROLLER_AXIS_TRIGGERRIGHT:
        press(padInput::rightTrigger, share, presses);
        break;
    default:
        break;
    }
}

void Gamepad::press(int input, double share, std::vector<WindowEvents::Press>& presses) {
    AxisButton& button = axisButtons_[static_cast<std::size_t>(input - padInput::leftTrigger)];
    if (button.move(share))
        presses.push_back({{Input::Device::gamepad, input}, button.isDown()});
}

void Gamepad::releaseAxes(std::vector<WindowEvents::Press>& presses) {
    stickX_ = stickY_ = 0.0;
    for (int input = padInput::leftTrigger; input < padInput::count; ++input)
        press(input, 0.0, presses);
}

} // namespace drench::game
