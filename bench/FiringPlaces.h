#pragma once

#include "src/MapManager.h"
#include "src/Player.h"

#include <vector>

namespace drench::bench {

/// A player at its place, and the one view record that turns it to its target.
struct FiringPlace {
    Player player;
    int dx;
    int dy;

    /// The view after that turn.
    vec3 direction;
};

/// World units from which on a wall counts as far: more than half the way across the arena, so that
/// shots cost as much as in the worst play.
constexpr float farWallDistance = 1200.0f;

/// Players who have just landed on the balconies of an arena, one on each, with turns that face a
/// far wall, past the bodies of the others. In the default arena only spawns on balconies see the
/// far side. The players keep a pointer to `map`. Throws std::runtime_error if there is no such
/// wall.
std::vector<FiringPlace> placesFacingFarWalls(MapManager& map);

/// The same with turns that face the open sky, so that a shot meets nothing at all.
std::vector<FiringPlace> placesFacingSky(MapManager& map);

} // namespace drench::bench
