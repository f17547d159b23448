#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace drench::game {

/// A key, button, trigger or stick direction, by its position: what its layout prints on it plays
/// no part.
struct Input {
    enum class Device { keyboard, mouse, gamepad };

    Device device = Device::keyboard;

    /// A key: its usage in the keyboard page of the USB HID usage tables, which SDL's scancodes are
    /// too, 1 to lastKey. A mouse button: 1 left, 2 middle, 3 right, up to lastMouseButton. A
    /// gamepad's button: as in SDL's SDL_GameControllerButton, or one of padInput.
    int number = 0;

    auto operator<=>(const Input&) const = default;
};

constexpr int lastKey = 511;
constexpr int lastMouseButton = 16;

/// What acts like a button of a gamepad though it moves along an axis; behind all of its buttons.
namespace padInput {
constexpr int leftTrigger = 32;
constexpr int rightTrigger = 33;

// Of the left stick; the right one turns the view.
constexpr int stickUp = 34;
constexpr int stickDown = 35;
constexpr int stickLeft = 36;
constexpr int stickRight = 37;
constexpr int count = 38;
} // namespace padInput

/// A name that stays: "KeyW", "Digit1", "ArrowUp" as in the W3C's UI Events KeyboardEvent code
/// values, "Mouse1", "PadA", and with numbers where there is no better name: "Key200", "Pad25".
std::string inputName(const Input& input);

/// The input of this name, nothing if there is none.
std::optional<Input> inputNamed(std::string_view name);

} // namespace drench::game
