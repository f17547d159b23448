#pragma once

#include "arena/Map.h"
#include "src/Player.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace drench::arena {

/// The rise and fall of a body after a jump, as Player::update moves it if nothing is in the way.
struct FlightArc {
    /// Height above the take-off after each tick, world units, down to the depth asked for.
    std::vector<float> rise;

    /// Vertical speed after each tick.
    std::vector<float> speed;

    /// Ticks to the highest point.
    std::size_t apex = 0;
};

/// The arc down to `depth` world units below the take-off.
FlightArc flightArc(float depth);

/// The floors that a flight may lead to, overestimated rather than underestimated: a floor that is
/// out of reach here cannot be reached by any keys. Floors carry labels. If all floors that a
/// flight might end on carry one label, the flight needs no closer search.
struct Prospects {
    /// The label of a flight that leads to no floor at all.
    static constexpr int none = -1;

    /// The label of a flight that may lead to floors of several labels, to one without a label, or
    /// out of the world.
    static constexpr int several = -2;

    const MapManager* map = nullptr;
    FlightArc arc;

    /// The farthest that a body moves along x or z in a tick, world units.
    float runSpeed = 0.0f;

    /// Cells of feet in which a body may stand, however small its part on the floor.
    std::vector<CellIndex> floors;

    /// Cells of feet where the head may touch a ceiling, so that the player may jump again.
    std::vector<CellIndex> perches;

    /// Cells of feet from which a body may leave the world.
    std::vector<CellIndex> exits;

    /// World units. A body that hovers this high above a floor climbs one row more by a jump.
    float climbingHover = 0.0f;

    /// World units. After a fall this deep a body may be stopped `climbingHover` above the floor.
    float deepFall = 0.0f;

    /// For each column of cubes and each level of heights, the joint label of all that lies at and
    /// below that level.
    std::vector<int> labels;

    /// For each cell of feet: whether it may be a floor, and whether it and all cells around it are
    /// one level floor without anything on it.
    std::vector<std::uint8_t> isFloor;
    std::vector<std::uint8_t> isOpen;
};

/// The prospects of players who start in these cells of feet and move at most `runSpeed` world
/// units a tick. No floor has a label yet.
Prospects prospects(const MapManager& map, const std::vector<CellIndex>& starts, float runSpeed);

/// Labels the floors. `labelOfFloor` has a label from 0 on for each of `floors`, or -1.
void label(Prospects& prospects, const std::vector<int>& labelOfFloor);

/// The joint label of all floors that a body may reach from anywhere in a column of cubes: by a
/// jump with its feet at this height, or in flight at this height with this vertical speed.
int afterJump(const Prospects& prospects, int column, int depth, float feet);
int inFlight(const Prospects& prospects, int column, int depth, float feet, float verticalSpeed);

/// Whether a player who appears in one of these cells, its feet at the given height, might get to
/// an exit by any number of jumps, judged by heights and distances alone.
bool mightLeave(const Prospects& prospects, const std::vector<std::pair<CellIndex, float>>& starts);

/// The highest row of floors that a jump with the feet at this height may reach in a column
/// `columns` away; -1 for none.
int highestRowAfterJump(const Prospects& prospects, float feet, int columns);

/// A point well inside the area where a body stands with its feet in the cell, which must be a
/// floor.
vec3 carriedPoint(const Prospects& prospects, const CellIndex& feet);

/// Whether a body may stand with its feet in the cell, inside the map or not.
bool mayStand(const Prospects& prospects, const CellIndex& feet);

/// Whether a level floor with nothing on it lies all around the cell of feet. Nothing stops a body
/// that walks there.
bool isOpenFloor(const Prospects& prospects, const CellIndex& feet);

} // namespace drench::arena
