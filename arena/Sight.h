#pragma once

#include "arena/Arrivals.h"
#include "arena/Rays.h"
#include "arena/Reach.h"

#include <functional>
#include <utility>
#include <vector>

namespace drench::arena {

/// Who sees whom, and where shots are lost.
struct Sight {
    /// Ordered pairs of spawn poses: who stands at the first sees a part of the body at the second.
    /// Before the fall and after it.
    std::vector<std::pair<int, int>> whenSpawned;
    std::vector<std::pair<int, int>> whenLanded;

    /// Places, as indices of Reach::places, from which two landed players can be soaked while no
    /// third one, from its own spawn, can soak who stands there.
    std::vector<int> sniperPlaces;

    /// Share, 0 to 1, of the directions of view in which a shot meets no cube and so soaks nobody;
    /// from all places, or in a large arena from two thousand or more that are spread over it.
    double openSky = 0.0;
};

/// Whether no cube lies between `eye`, the centre of a body, and some point of another body; 225
/// points spread over it are tried.
bool sees(const Grid& grid, vec3 eye, const Box& body);

/// Whether a shot from `shooter`, the centre of a body, at one of 45 points spread over another
/// body soaks it. A shot that would fly on into the open sky does not.
bool canSoak(const Grid& grid, vec3 shooter, const Box& body);

/// Looks from all spawns and standing places. Calls `progress` now and then with the number of
/// places looked from.
Sight lookAround(const MapManager& map, const std::vector<Arrival>& arrivals, const Reach& reach,
                 const std::function<void(std::size_t places)>& progress = {});

} // namespace drench::arena
