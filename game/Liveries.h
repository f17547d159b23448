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
};

constexpr int liveryCount = 4;

/// The livery of a player's colour index; other indices are taken round.
const Livery& liveryOf(int index);

} // namespace drench::game
