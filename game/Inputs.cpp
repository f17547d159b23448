#include "game/Inputs.h"

#include <span>

namespace drench::game {

namespace {

struct Named {
    int number;
    std::string_view name;
};

constexpr int keyA = 4;
constexpr int keyDigit1 = 30;
constexpr int keyF1 = 58;
constexpr int keyF13 = 104;
constexpr int keyNumpad1 = 89;

/// Keys that no rule names.
constexpr Named keys[] = {
    {39, "Digit0"},
    {40, "Enter"},
    {41, "Escape"},
    {42, "Backspace"},
    {43, "Tab"},
    {44, "Space"},
    {45, "Minus"},
    {46, "Equal"},
    {47, "BracketLeft"},
    {48, "BracketRight"},
    {49, "Backslash"},
    {51, "Semicolon"},
    {52, "Quote"},
    {53, "Backquote"},
    {54, "Comma"},
    {55, "Period"},
    {56, "Slash"},
    {57, "CapsLock"},
    {70, "PrintScreen"},
    {71, "ScrollLock"},
    {72, "Pause"},
    {73, "Insert"},
    {74, "Home"},
    {75, "PageUp"},
    {76, "Delete"},
    {77, "End"},
    {78, "PageDown"},
    {79, "ArrowRight"},
    {80, "ArrowLeft"},
    {81, "ArrowDown"},
    {82, "ArrowUp"},
    {83, "NumLock"},
    {84, "NumpadDivide"},
    {85, "NumpadMultiply"},
    {86, "NumpadSubtract"},
    {87, "NumpadAdd"},
    {88, "NumpadEnter"},
    {98, "Numpad0"},
    {99, "NumpadDecimal"},
    {100, "IntlBackslash"},
    {101, "ContextMenu"},
    {103, "NumpadEqual"},
    {135, "IntlRo"},
    {137, "IntlYen"},
    {224, "ControlLeft"},
    {225, "ShiftLeft"},
    {226, "AltLeft"},
    {227, "MetaLeft"},
    {228, "ControlRight"},
    {229, "ShiftRight"},
    {230, "AltRight"},
    {231, "MetaRight"},
};

constexpr Named padInputs[] = {
    {0, "PadA"},
    {1, "PadB"},
    {2, "PadX"},
    {3, "PadY"},
    {4, "PadBack"},
    {5, "PadGuide"},
    {6, "PadStart"},
    {7, "PadLeftStick"},
    {8, "PadRightStick"},
    {9, "PadLeftShoulder"},
    {10, "PadRightShoulder"},
    {11, "PadUp"},
    {12, "PadDown"},
    {13, "PadLeft"},
    {14, "PadRight"},
    {padInput::leftTrigger, "PadLeftTrigger"},
    {padInput::rightTrigger, "PadRightTrigger"},
    {padInput::stickUp, "PadStickUp"},
    {padInput::stickDown, "PadStickDown"},
    {padInput::stickLeft, "PadStickLeft"},
    {padInput::stickRight, "PadStickRight"},
};

std::string_view nameIn(std::span<const Named> names, int number) {
    for (const Named& named : names) {
        if (named.number == number)
            return named.name;
    }
    return {};
}

std::string keyName(int number) {
    if (number >= keyA && number < keyA + 26)
        return std::string("Key") + static_cast<char>('A' + number - keyA);
    if (number >= keyDigit1 && number < keyDigit1 + 9)
        return "Digit" + std::to_string(number - keyDigit1 + 1);
    if (number >= keyF1 && number < keyF1 + 12)
        return "F" + std::to_string(number - keyF1 + 1);
    if (number >= keyF13 && number < keyF13 + 12)
        return "F" + std::to_string(number - keyF13 + 13);
    if (number >= keyNumpad1 && number < keyNumpad1 + 9)
        return "Numpad" + std::to_string(number - keyNumpad1 + 1);
    const std::string_view name = nameIn(keys, number);
    return name.empty() ? "Key" + std::to_string(number) : std::string(name);
}

std::string padName(int number) {
    const std::string_view name = nameIn(padInputs, number);
    return name.empty() ? "Pad" + std::to_string(number) : std::string(name);
}

std::optional<Input> namedAmong(Input::Device device, int first, int last, std::string_view name) {
    for (int number = first; number <= last; ++number) {
        if (inputName({device, number}) == name)
            return Input{device, number};
    }
    return std::nullopt;
}

} // namespace

std::string inputName(const Input& input) {
    switch (input.device) {
    case Input::Device::mouse:
        return "Mouse" + std::to_string(input.number);
    case Input::Device::gamepad:
        return padName(input.number);
    case Input::Device::keyboard:
        break;
    }
    return keyName(input.number);
}

std::optional<Input> inputNamed(std::string_view name) {
    if (name.starts_with("Mouse"))
        return namedAmong(Input::Device::mouse, 1, lastMouseButton, name);
    if (name.starts_with("Pad"))
        return namedAmong(Input::Device::gamepad, 0, padInput::count - 1, name);
    return namedAmong(Input::Device::keyboard, 1, lastKey, name);
}

} // namespace drench::game
