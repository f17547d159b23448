#pragma once

#include "arena/Materials.h"

namespace drench::game {

/// What a player wears on the head, a shape of its own for each player.
enum class Headgear { fin, hat, eyes, cone };

/// The clothes by which a player is known.
struct Livery {
    /// Shirt, gun, name.
    arena::Colour colour;
    Headgear headgear;
    arena::Colour hair;
};

// What is alike for all players.
constexpr arena::Colour skinColour{244, 196, 156};
constexpr arena::Colour tankColour{126, 220, 240};
constexpr arena::Colour whiteColour{250, 250, 250};
constexpr arena::Colour yellowColour{252, 206, 58};

/// The share of a livery's brightness that trousers and grips have.
constexpr float shadeShare = 0.58f;

constexpr int liveryCount = 4;

/// Whether liveries have the usual colours, or those that differ most for people who do not tell
/// red from green. What is worn on the head stays the same.
enum class Palette { usual, colourBlind };

/// The livery of a player's colour index; other indices are taken round.
const Livery& liveryOf(int index, Palette palette = Palette::usual);

} // namespace drench::game
