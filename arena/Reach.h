#pragma once

#include "arena/Arrivals.h"
#include "arena/Map.h"
#include "arena/Pace.h"
#include "src/MapManager.h"
#include "src/Vector.h"

#include <functional>
#include <limits>
#include <vector>

namespace drench::arena {

/// The most rows that a jump climbs: Player::takeOffSpeed and gravity give no more.
constexpr int highestClimb = 2;

/// A place where a player came to stand: the cell that holds the middle of its feet.
struct StandingPlace {
    CellIndex feet;

    /// Centre of a body that stood here, world units.
    vec3 position;

    /// Indices of the places that a player here gets to next, on foot or by one flight: a jump or a
    /// fall, steered through the air. Flights between places that lead to each other anyway may be
    /// left out. Ascending, without this place itself.
    std::vector<int> next;
};

/// The places that players can get to.
struct Reach {
    std::vector<StandingPlace> places;

    /// For each spawn pose the index of the place it lands on, -1 if it never stands.
    std::vector<int> landings;

    /// The cells nearest to the points where bodies left the world, ascending; a hole or a low wall
    /// is there.
    std::vector<CellIndex> departures;

    /// Whether the search was complete; false if it ended early at enough departures.
    bool isWhole = true;

    /// The calls of Player::update that the search made.
    long ticks = 0;
};

/// Searches the places that players can get to from every spawn, by walking, turning, jumping and
/// steering in the air through Player::update. States of a body are merged if position and vertical
/// speed are nearly alike: every place found can be reached, and few are missed. Calls `progress`
/// now and then with the number of places found so far. Ends early once `enoughDepartures` have
/// been found; places and ways are not complete then.
Reach explore(MapManager& map, const std::vector<Arrival>& arrivals, Pace pace,
              const std::function<void(std::size_t places)>& progress = {},
              std::size_t enoughDepartures = std::numeric_limits<std::size_t>::max());

/// Whether players might leave the world at all, by heights and distances alone. If false,
/// `explore` cannot find a departure.
bool mightLeave(const MapManager& map, const std::vector<Arrival>& arrivals, Pace pace);

/// Cells on whose floor a body has room to stand in the middle, below the top of the world, reached
/// or not.
std::vector<CellIndex> walkableCells(const MapManager& map);

} // namespace drench::arena
