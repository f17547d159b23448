#pragma once

#include "src/MapManager.h"
#include "src/Player.h"

#include <vector>

namespace drench::bench {

/// A player at its place, and the one view record by which it turns to its target.
struct FiringPlace {
    Player player;
    int dx;
    int dy;

    /// The view after that turn.
    vec3 direction;
};

/// World units from which on a wall counts as far: more than half the way across the arena, so that
/// shots are as expensive as they get in play.
constexpr float farWallDistance = 1200.0f;

/// Players who have just landed on the balconies of an arena, one on each, and turns to face a far
/// wall, past the bodies of the others. From the balconies alone of the default arena's spawns is
/// its far side in sight. The players keep a pointer to `map`. Throws std::runtime_error when
/// there is no such wall.
std::vector<FiringPlace> placesFacingFarWalls(MapManager& map);

/// The same with turns to face the open sky, where a shot meets nothing at all.
std::vector<FiringPlace> placesFacingSky(MapManager& map);

} // namespace drench::bench
