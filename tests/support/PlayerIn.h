#pragma once

#include "src/Player.h"
#include "tests/support/Arenas.h"
#include "tests/support/Room.h"

/// A living player on the ground of `world`, looking along `facing`.
inline Player playerIn(MapManager& world, vec3 position, vec3 facing = vec3(0.0f, 0.0f, 1.0f)) {
    Player player;
    player.setMapMan(&world);
    place(player, position, position + facing);
    return player;
}
