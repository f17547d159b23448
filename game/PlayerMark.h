#pragma once

#include "game/Liveries.h"

namespace drench::game {

/// What tells a player from the others where its name stands: its livery's colour, and a shape that
/// recalls what it wears on its head.
struct PlayerMark {
    enum class Shape { circle, triangle, square, diamond };

    Shape shape = Shape::circle;
    arena::Colour colour;
};

/// Of the player with this identifier, '1' to '4'; white and round for anybody else.
PlayerMark markOf(char id, Palette palette);

} // namespace drench::game
