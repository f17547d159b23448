#pragma once

#include "arena/Rays.h"
#include "arena/Reach.h"
#include "bots/Geometry.h"
#include "src/MapManager.h"

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

/// All that bots know of an arena before they have seen anything of a match: its cubes, where one
/// can stand, and the ways between that a Walker was seen to manage. A person knows as much who has
/// walked through it alone. Nothing in it tells where anybody is, was, or will return.
///
/// Shared by all bots of a process, and never changed once chart() has made it.
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

    /// Fills `placeOfCell` from the places of `reach`.
    void indexPlaces();

    /// The place with this index, which must be one.
    const arena::StandingPlace& place(int index) const {
        return reach.places[static_cast<std::size_t>(index)];
    }

    /// Height of the floor that a place stands on, world units.
    float floorHeight(int index) const { return floorOfRow(place(index).feet.row); }

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
};

/// How far above a floor the feet of one who stands on it may be.
constexpr float restingTolerance = 0.6f;

} // namespace drench::bots
