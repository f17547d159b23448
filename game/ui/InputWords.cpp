#include "game/ui/InputWords.h"

#include <SDL.h>

namespace drench::game {

namespace {

std::string mouseWords(int button) {
    switch (button) {
    case SDL_BUTTON_LEFT:
        return "left button";
    case SDL_BUTTON_MIDDLE:
        return "middle button";
    case SDL_BUTTON_RIGHT:
        return "right button";
    default:
        return "mouse button " + std::to_string(button);
    }
}

std::string padWords(int number) {
    switch (number) {
    case SDL_CONTROLLER_BUTTON_BACK:
        return "pad back";
    case SDL_CONTROLLER_BUTTON_START:
        return "pad start";
    case SDL_CONTROLLER_BUTTON_LEFTSTICK:
        return "press left stick";
    case SDL_CONTROLLER_BUTTON_RIGHTSTICK:
        return "press right stick";
    case SDL_CONTROLLER_BUTTON_LEFTSHOULDER:
        return "left shoulder";
    case SDL_CONTROLLER_BUTTON_RIGHTSHOULDER:
        return "right shoulder";
    case SDL_CONTROLLER_BUTTON_DPAD_UP:
        return "pad up";
    case SDL_CONTROLLER_BUTTON_DPAD_DOWN:
        return "pad down";
    case SDL_CONTROLLER_BUTTON_DPAD_LEFT:
        return "pad left";
    case SDL_CONTROLLER_BUTTON_DPAD_RIGHT:
        return "pad right";
    case padInput::leftTrigger:
        return "left trigger";
    case padInput::rightTrigger:
        return "right trigger";
    case padInput::stickUp:
        return "left stick up";
    case padInput::stickDown:
        return "left stick down";
    case padInput::stickLeft:
        return "left stick left";
    case padInput::stickRight:
        return "left stick right";
    default:
        break;
    }
    // "PadA" as the button says it.
    const std::string name = inputName({Input::Device::gamepad, number});
    return "pad " + name.substr(sizeof "Pad" - 1);
}

} // namespace

std::string inputWords(const Input& input) {
    switch (input.device) {
    case Input::Device::mouse:
        return mouseWords(input.number);
    case Input::Device::gamepad:
        return padWords(input.number);
    case Input::Device::keyboard:
        break;
    }
    const std::string printed =
        SDL_GetKeyName(SDL_GetKeyFromScancode(static_cast<SDL_Scancode>(input.number)));
    return printed.empty() ? inputName(input) : printed;
}

std::string actionWords(Action action) {
    switch (action) {
    case Action::right:
        return "Walk right";
    case Action::left:
        return "Walk left";
    case Action::backward:
        return "Walk backward";
    case Action::forward:
        return "Walk forward";
    case Action::jump:
        return "Jump";
    case Action::fire:
        return "Fire";
    case Action::table:
        return "Table of players";
    case Action::chat:
        return "Chat";
    case Action::menu:
        return "Menu";
    case Action::diagnostics:
        return "Line and frames";
    case Action::record:
        return "Record";
    case Action::keepRecent:
        return "Keep the last two minutes";
    case Action::fullScreen:
        return "Full screen";
    }
    return "";
}

std::string firstInputWords(const Bindings& bindings, Action action) {
    const auto inputs = bindings.inputsOf(action);
    return inputs.empty() ? "no key" : inputWords(inputs.front());
}

} // namespace drench::game
