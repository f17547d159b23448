#pragma once

#include "arena/Arrivals.h"
#include "arena/Rays.h"
#include "arena/Reach.h"

#include <functional>
#include <utility>
#include <vector>

namespace drench::arena {

/// Lines of sight between players, and directions in which shots are lost.
struct Sight {
    /// Ordered pairs of spawn poses: a player at the first sees a part of the body at the second.
    /// Once with both as spawned, once with both landed.
    std::vector<std::pair<int, int>> whenSpawned;
    std::vector<std::pair<int, int>> whenLanded;

    /// Places, as indices of Reach::places, from which two landed players can be soaked while no
    /// third player at its landing can soak a player there.
    std::vector<int> sniperPlaces;

    /// The share, 0 to 1, of view directions in which a shot meets no cube and so soaks nobody.
    /// Counted from all places, or in a large arena from at least two thousand spread over it.
    double openSky = 0.0;
};

/// Whether `eye`, the centre of a body, sees one of 225 points spread over another body: no cube
/// lies between.
bool sees(const Grid& grid, vec3 eye, const Box& body);

/// Whether a shot from `shooter`, the centre of a body, at one of 45 points spread over another
/// body soaks it. A shot into the open sky soaks nobody.
bool canSoak(const Grid& grid, vec3 shooter, const Box& body);

/// Looks from all spawns and standing places. Calls `progress` now and then with the number of
/// places looked from.
Sight lookAround(const MapManager& map, const std::vector<Arrival>& arrivals, const Reach& reach,
                 const std::function<void(std::size_t places)>& progress = {});

} // namespace drench::arena
