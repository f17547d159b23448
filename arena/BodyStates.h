#pragma once

#include "arena/Map.h"
#include "arena/Pace.h"
#include "src/Player.h"

#include <array>
#include <cstdint>
#include <initializer_list>
#include <numbers>
#include <unordered_map>
#include <vector>

// The states that a search through Player::update has found. Nearly equal states are merged.

namespace drench::arena {

/// Views that the search moves along, evenly spread.
constexpr int headings = 16;

/// A body that no floor carries.
constexpr int inTheAir = -1;

/// The state that a moving body's future depends on, apart from its view and keys.
struct BodyState {
    vec3 position;
    vec3 bodyMin;
    vec3 bodyMax;
    float verticalSpeed;
    bool inAir;

    /// The place that the body stands on, or inTheAir.
    int place;

    /// World units: the floor level under a standing body, the height of the feet in flight.
    float feet() const { return bodyMin.y; }
};

/// States with equal keys count as one. Vertical speeds are whole halves of a unit.
struct StateKey {
    int x;
    int y;
    int z;
    int halfSpeeds;
    bool inAir;
    bool standing;

    bool operator==(const StateKey&) const = default;
};

/// FNV-1a, a number at a time.
std::size_t hashOf(std::initializer_list<int> numbers);

struct HashOfState {
    std::size_t operator()(const StateKey& key) const {
        return hashOf({key.x, key.y, key.z, key.halfSpeeds, key.inAir, key.standing});
    }
};

struct HashOfCell {
    std::size_t operator()(const CellIndex& cell) const {
        return hashOf({cell.column, cell.row, cell.depth});
    }
};

/// The key of a body on a floor. On an open floor a whole cell is one state, elsewhere a fifth of a
/// cube each way: a body in the middle fifth fits through a gap one cube wide.
StateKey standingKey(const Player& player, bool onOpenFloor);

/// The key of a body in flight. It is coarser: the pressed keys change only every few ticks.
StateKey flightKey(const Player& player);

/// The cell that the middle of the feet lies in.
CellIndex cellOfFeet(const Player& player);

BodyState stateOf(const Player& player, int place);

/// A player with the view of `view`, moved to the place and vertical speed of a state.
Player inState(const Player& view, const BodyState& state);

/// A player of this map that looks level and walks along a yaw, radians left of the z axis.
Player walkingAlong(MapManager& map, double yaw, Pace pace);

/// The same, running: with the keys of run() pressed.
Player runningAlong(MapManager& map, double yaw, Pace pace);

/// Radians of a quarter turn.
constexpr double quarterTurn = 0.5 * std::numbers::pi;

/// Presses the two keys that together move fastest.
void run(Player& player);

/// The yaw from one point to another.
double yawTowards(vec3 from, vec3 to);

/// The horizontal distance between two points, world units.
float levelDistance(vec3 from, vec3 to);

} // namespace drench::arena
