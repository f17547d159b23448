#pragma once

#include "src/Player.h"
#include "tests/support/Arenas.h"

/// A living player on the ground of `world`, looking along `facing`.
inline Player playerIn(MapManager& world, vec3 position, vec3 facing = vec3(0.0f, 0.0f, 1.0f)) {
    return bodyAt(world, position, position + facing);
}
