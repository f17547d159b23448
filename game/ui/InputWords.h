#pragma once

#include "game/Bindings.h"

#include <string>

namespace drench::game {

/// What a player calls the input: a key as the keyboard's layout prints it, "left button",
/// "right trigger".
std::string inputWords(const Input& input);

/// What a player calls the action: "walk forward".
std::string actionWords(Action action);

/// The first input of the action in words, or "no key".
std::string firstInputWords(const Bindings& bindings, Action action);

} // namespace drench::game
