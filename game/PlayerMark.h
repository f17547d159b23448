#pragma once

#include "arena/Materials.h"

namespace drench::game {

/// What tells a player from the others: a colour, and a shape for those who cannot tell colours.
struct PlayerMark {
    enum class Shape { circle, triangle, square, diamond };

    Shape shape = Shape::circle;
    arena::Colour colour;
};

/// Whether a mark's colours are the usual ones, or those that are told apart without telling red
/// from green.
enum class Palette { usual, colourBlind };

/// Of the player with this identifier, '1' to '4'; white and round for anybody else.
PlayerMark markOf(char id, Palette palette);

} // namespace drench::game
