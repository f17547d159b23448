#pragma once

#include "src/MapManager.h"
#include "src/Player.h"

#include <vector>

namespace drench::arena {

/// What becomes of a player who spawns at one pose and touches no key.
struct Arrival {
    /// 0 to Player::spawnPoseCount - 1.
    int pose;

    /// As spawned, 120 world units above the pose, and after the fall.
    Player spawned;
    Player landed;

    /// Whether the body as spawned lies between the world's sides and above its bottom, and whether
    /// it touches no cube.
    bool insideWorld;
    bool clear;

    /// Whether it comes to stand; if not, it falls out of the world.
    bool lands;

    bool startsFree() const { return insideWorld && clear; }
    bool comesToStand() const { return startsFree() && lands; }

    /// World units from the spawned to the landed pose.
    float fall() const { return spawned.position.y - landed.position.y; }
};

/// Lets a spawned player fall in its map, through Player::update.
Arrival arrive(int pose, const Player& spawned);

/// The arrivals of all spawn poses in their order. The players keep a pointer to `map`.
std::vector<Arrival> arrivals(MapManager& map);

/// Whether the last update's step down, taken from where the body is now, would meet a floor.
bool isOverFloor(const Player& player);

/// Whether the last update left the body resting on a floor. Who has just landed hovers a little
/// above it and falls the rest; who has just run over an edge has nothing below; a body that the
/// rounding of an undone step has left touching a cube hangs there. None of them stands.
bool stands(const Player& player);

/// Whether the body's centre has passed a side or the bottom of the world. Above it nobody is lost.
bool hasLeftTheWorld(const Player& player);

} // namespace drench::arena
