#pragma once

#include "src/MapManager.h"
#include "src/Player.h"

#include <vector>

namespace drench::bench {

/// Where a player stands and what it turns to, by the mouse counts of one view record.
struct FiringPlace {
    Player player;
    int dx;
    int dy;

    /// The view after that turn.
    vec3 direction;
};

/// How far away a wall has to be to count as far, in world units.
constexpr float farWallDistance = 1200.0f;

/// Players who have just landed on the balconies of an arena, one on each, and turns to face a far
/// wall, past the bodies of the others. From the balconies alone of the default arena's spawns is
/// its far side in sight. The players keep a pointer to `map`. Throws std::runtime_error when
/// there is no such wall.
std::vector<FiringPlace> placesFacingFarWalls(MapManager& map);

/// The same with turns to face the open sky, where a shot meets nothing at all.
std::vector<FiringPlace> placesFacingSky(MapManager& map);

} // namespace drench::bench
