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

/// A place where a player came to stand: the cell that the middle of its feet lies in.
struct StandingPlace {
    CellIndex feet;

    /// Centre of a body that stood here, world units.
    vec3 position;

    /// Indices of places that a player who stands here gets to next, on foot or by one flight: a
    /// jump or a fall, steered through the air. Flights between places that lead to each other
    /// anyway may be left out. Ascending, without this place itself.
    std::vector<int> next;
};

/// Where players can get to.
struct Reach {
    std::vector<StandingPlace> places;

    /// For each spawn pose the index of the place it lands on, -1 if it never stands.
    std::vector<int> landings;

    /// The cells nearest to where bodies left the world: where a hole or a low wall is.
    std::vector<CellIndex> departures;

    /// Whether all that can be found was looked for; not if the search ended at enough departures.
    bool isWhole = true;

    /// Calls of Player::update that it took.
    long ticks = 0;
};

/// Explores from every spawn where players can get to, by walking, turning, jumping and steering in
/// the air through Player::update: a search over the states of a body, merged where position and
/// vertical speed are nearly alike, so that all it finds can be done and little is missed. Calls
/// `progress` now and then with the number of places found so far. Ends once `enoughDepartures`
/// have been found; what it knows of places and ways is not whole then.
Reach explore(MapManager& map, const std::vector<Arrival>& arrivals, Pace pace,
              const std::function<void(std::size_t places)>& progress = {},
              std::size_t enoughDepartures = std::numeric_limits<std::size_t>::max());

/// Whether players might leave the world at all, by heights and distances alone: false only where
/// `explore` could not find a departure.
bool mightLeave(const MapManager& map, const std::vector<Arrival>& arrivals, Pace pace);

/// Cells on whose floor a body has room to stand in the middle, below the top of the world, reached
/// or not.
std::vector<CellIndex> walkableCells(const MapManager& map);

} // namespace drench::arena
