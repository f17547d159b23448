#pragma once

#include "arena/Map.h"
#include "src/Player.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace drench::arena {

/// How a body rises and falls after a jump, as Player::update moves it where nothing is in the way.
struct FlightArc {
    /// Height above the take-off after so many ticks, world units, down to the depth asked for.
    std::vector<float> rise;

    /// Vertical speed after so many ticks.
    std::vector<float> speed;

    /// Ticks to the highest point.
    std::size_t apex = 0;
};

/// The arc down to `depth` world units below the take-off.
FlightArc flightArc(float depth);

/// What a flight may lead to, always rather too much than too little: what it says is out of reach
/// cannot be reached by any keys. Floors carry labels; where all floors that a flight might come
/// down on carry the same one, nobody needs to look closer.
struct Prospects {
    /// A flight that leads to no floor at all.
    static constexpr int none = -1;

    /// One that may lead to floors of several labels, to one without a label, or out of the world.
    static constexpr int several = -2;

    const MapManager* map = nullptr;
    FlightArc arc;

    /// The farthest that a body gets along x or z in a tick, world units.
    float runSpeed = 0.0f;

    /// Cells of feet: where a body may stand, however little of it is carried.
    std::vector<CellIndex> floors;

    /// Cells of feet where the head may touch a ceiling, so that the player may jump again.
    std::vector<CellIndex> perches;

    /// Cells of feet from which a body may leave the world.
    std::vector<CellIndex> exits;

    /// From so high above a floor a jump climbs a row more than from the floor itself.
    float climbingHover = 0.0f;

    /// After a fall as deep as this a body may be stopped that high above the floor.
    float deepFall = 0.0f;

    /// For each column of cubes and each level of heights the label of all that lies there and
    /// below.
    std::vector<int> labels;

    /// For each cell of feet whether it may be a floor, and whether it and all around it are one
    /// level floor without anything on it.
    std::vector<std::uint8_t> isFloor;
    std::vector<std::uint8_t> isOpen;
};

/// The prospects in a map of players who start in these cells of feet and move at most so far in a
/// tick. Nothing has a label yet.
Prospects prospects(const MapManager& map, const std::vector<CellIndex>& starts, float runSpeed);

/// Labels the floors. `labelOfFloor` has a label from 0 on for each of `floors`, or -1.
void label(Prospects& prospects, const std::vector<int>& labelOfFloor);

/// The label of all that a body may come to which jumps from anywhere in a column of cubes with its
/// feet at this height, or flies there and has this vertical speed.
int afterJump(const Prospects& prospects, int column, int depth, float feet);
int inFlight(const Prospects& prospects, int column, int depth, float feet, float verticalSpeed);

/// Whether a player who appears in one of these cells, the feet at this height, might get to an
/// exit by any number of jumps, as far as heights and distances tell.
bool mightLeave(const Prospects& prospects, const std::vector<std::pair<CellIndex, float>>& starts);

/// The highest row of floors that a jump may lead to, with the feet at this height, in columns so
/// many columns away; -1 for none.
int highestRowAfterJump(const Prospects& prospects, float feet, int columns);

/// A point well within where a body stands with its feet in the cell, which must be a floor.
vec3 carriedPoint(const Prospects& prospects, const CellIndex& feet);

/// Whether a body may stand with its feet in the cell, inside the map or not.
bool mayStand(const Prospects& prospects, const CellIndex& feet);

/// Whether all around the cell of feet lies a level floor with nothing on it: a body walks there as
/// it likes.
bool isOpenFloor(const Prospects& prospects, const CellIndex& feet);

} // namespace drench::arena
