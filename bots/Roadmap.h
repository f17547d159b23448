#pragma once

#include "arena/Arrivals.h"
#include "arena/Rays.h"
#include "arena/Reach.h"
#include "src/MapManager.h"

#include <functional>
#include <vector>

namespace drench::bots {

/// How to get from one standing place to another.
enum class Gait {
    /// On foot, over edges and down too.
    walk,
    /// Jump where one stands, then steer: up onto something.
    jump,
    /// A run-up, and a jump just before the edge: over a gap.
    leap
};

struct Road {
    int to;
    Gait gait;

    /// How long a Walker took for it, its view already turned.
    int ticks;
};

/// An arena as bots know it: where one can stand, and the ways between that a Walker was seen to
/// manage. Shared by all bots of a process, and never changed once made.
struct Roadmap {
    MapManager* map = nullptr;

    /// The places that roads lead to and from again, their positions over the middles of the cells
    /// that carry them; `next` are the ends of the roads.
    arena::Reach reach;
    arena::Grid grid;

    /// For each place of `reach` the roads that leave it.
    std::vector<std::vector<Road>> roads;

    /// For each cell of the map, in the order of its text, the place whose feet are in it, or -1.
    std::vector<int> placeOfCell;

    /// The place whose feet are in the cell, -1 when there is none.
    int placeIn(const arena::CellIndex& cell) const;

    /// The place that a body at `position` stands on or is above: the highest below its feet, whose
    /// cell may only touch the body's rim; -1 when there is none.
    int placeBelow(vec3 position) const;

    /// Whether a body with a margin around it can walk straight from one point to another, with all
    /// of it over places of that row.
    bool isOpen(vec3 from, vec3 to, int row, float margin) const;

    /// Whether a body with a margin around it that moves straight from one point to another, its
    /// feet in that row, meets no cube.
    bool isClear(vec3 from, vec3 to, int row, float margin) const;

    /// The road that leads from one place straight to another, null when there is none.
    const Road* road(int from, int to) const;

    /// Places in the order of walking, the first is `from`, the last `to`; empty when there is no
    /// way. The quickest by Road::ticks plus what `toll` adds for a place (Dijkstra). Tolls below 0
    /// count as 0.
    std::vector<int> route(int from, int to,
                           const std::function<double(int place)>& toll = {}) const;
};

/// The height above the feet's floor at which the centres of standing bodies are taken to be.
constexpr float standingHeight = 75.25f;

/// How far above a floor the feet of one who stands on it may be.
constexpr float restingTolerance = 0.6f;

/// Height of the floor that a place stands on, world units.
inline float floorHeight(const arena::StandingPlace& place) {
    return arena::cubeEdge * static_cast<float>(place.feet.row);
}

/// Sets `placeOfCell` by the places.
void indexPlaces(Roadmap& roadmap);

/// Called now and then with what is being done and how many places that has come to.
using Progress = std::function<void(const char* stage, std::size_t places)>;

/// Explores the map, which must outlive the result, from its spawns, and tries every move between
/// standing places with the Walker that bots use. Leaves out places that no road leads to from a
/// landing, and those from which none leads to one. Throws InputError for a map without
/// cells.
Roadmap chart(MapManager& map, const Progress& progress = {});

/// The same for these arrivals, whose landings follow in their order.
Roadmap chart(MapManager& map, const std::vector<arena::Arrival>& arrivals,
              const Progress& progress = {});

} // namespace drench::bots
