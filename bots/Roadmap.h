#pragma once

#include "arena/Rays.h"
#include "arena/Reach.h"
#include "bots/Geometry.h"
#include "src/MapManager.h"

#include <vector>

namespace drench::bots {

/// The way of moving from one standing place to another.
enum class Gait {
    /// On foot, over edges and down too.
    walk,
    /// A jump at the start, then steering: up onto something.
    jump,
    /// A run-up, and a jump just before the edge: over a gap.
    leap
};

struct Road {
    int to;
    Gait gait;

    /// The time a Walker took, with its view already turned.
    int ticks;
};

/// All that bots know of an arena before a match: its cubes, its standing places, the roads that a
/// Walker managed between them, and the eight landings. A person knows as much after a walk through
/// it alone. It holds no player's position and does not predict at which landing a player returns.
///
/// Shared by all bots of a process, and unchanged after chart() has made it.
struct Roadmap {
    MapManager* map = nullptr;

    /// The places that roads lead to and away from. Their positions are over the middles of the
    /// cells that carry them; `next` holds the ends of the roads.
    arena::Reach reach;
    arena::Grid grid;

    /// For each place of `reach` the roads that leave it.
    std::vector<std::vector<Road>> roads;

    /// For each cell of the map, in the order of its text, the place whose feet are in it, or -1.
    std::vector<int> placeOfCell;

    /// Fills `placeOfCell` from the places of `reach`.
    void indexPlaces();

    /// The place with this index, which must be one.
    const arena::StandingPlace& place(int index) const {
        return reach.places[static_cast<std::size_t>(index)];
    }

    /// Height of the floor that a place stands on, world units.
    float floorHeight(int index) const { return floorOfRow(place(index).feet.row); }

    /// The place whose feet are in the cell, -1 if there is none.
    int placeIn(const arena::CellIndex& cell) const;

    /// The place that a body at `position` stands on or is above: the highest below its feet. The
    /// body may touch that place's cell with its rim alone. -1 if there is none.
    int placeBelow(vec3 position) const;

    /// Whether a body with a margin around it can walk straight from one point to another, always
    /// wholly over places of that row.
    bool isOpen(vec3 from, vec3 to, int row, float margin) const;

    /// Whether a body with a margin around it meets no cube on the straight way from one point to
    /// another, with its feet in that row.
    bool isClear(vec3 from, vec3 to, int row, float margin) const;

    /// The road from one place straight to another, null if there is none.
    const Road* road(int from, int to) const;
};

/// World units that a standing body's feet may be above the floor.
constexpr float restingTolerance = 0.6f;

} // namespace drench::bots
