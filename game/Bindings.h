#pragma once

#include "game/Inputs.h"

#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace drench::game {

/// What a player can ask for with an input. The first six are the room's keys.
enum class Action {
    right,
    left,
    backward,
    forward,
    jump,
    fire,
    table,
    chat,
    menu,
    diagnostics,
    record,
    keepRecent,
    fullScreen
};

constexpr int actionCount = 13;

/// All of them, in the order of a list of keys for people.
std::span<const Action> actions();

/// The key of the room, one of keyIndex, that the action holds; nothing if it is none.
std::optional<int> roomKey(Action action);

/// As in the settings file: "forward", "full-screen".
std::string_view actionName(Action action);

/// Escape always asks for the menu, so that nobody is locked out of the settings.
constexpr Input escape = {Input::Device::keyboard, 41};

/// Which input asks for which action. An input serves one action at most, an action has up to
/// mostInputs.
class Bindings {
  public:
    static constexpr std::size_t mostInputs = 4;

    /// The usual ones: the keys W, A, S and D or the arrows, space, the left mouse button, and a
    /// gamepad's.
    Bindings();

    /// Nothing is bound but escape.
    static Bindings none();

    /// Gives the input to this action, as its last one, and takes it from any other. The first one
    /// that may go does so if the action has too many. False if nothing changed: escape, an input
    /// outside its range, or one bound to this action already.
    bool bind(Action action, Input input);

    /// Takes the input from its action; false if it has none or is escape.
    bool unbind(Input input);

    /// Takes all inputs from the action but escape.
    void unbindAll(Action action);

    std::optional<Action> actionOf(Input input) const;
    std::span<const Input> inputsOf(Action action) const;

    bool operator==(const Bindings&) const = default;

  private:
    using Lists = std::array<std::vector<Input>, actionCount>;

    explicit Bindings(Lists inputs) : inputs_(std::move(inputs)) {}

    std::vector<Input>& listOf(Action action);

    Lists inputs_;
};

} // namespace drench::game
