#pragma once

#include "src/MapManager.h"
#include "src/Player.h"

#include <vector>

namespace drench::arena {

/// The fall of a player who spawns at one pose and touches no key.
struct Arrival {
    /// 0 to Player::spawnPoseCount - 1.
    int pose;

    /// The player as spawned, 120 world units above the pose, and after the fall.
    Player spawned;
    Player landed;

    /// Whether the spawned body lies between the world's sides and above its bottom, and whether it
    /// touches no cube.
    bool insideWorld;
    bool clear;

    /// Whether the player comes to stand; otherwise it falls out of the world.
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

/// Whether the last update's step down, repeated from the body's present place, would meet a floor.
bool isOverFloor(const Player& player);

/// Whether the last update left the body resting on a floor. A body does not stand if it has just
/// landed (it hovers a little above the floor and falls the rest), has just run over an edge, or
/// hangs on a cube that it touches after the rounding of an undone step.
bool stands(const Player& player);

/// Whether the body's centre has passed a side or the bottom of the world. The top is open.
bool hasLeftTheWorld(const Player& player);

} // namespace drench::arena
