#include "arena/BodyStates.h"

#include <cmath>

namespace drench::arena {

namespace {

/// A floor is looked for this far below the feet, since a landed body may hover by less.
constexpr float feetTolerance = 0.5f;

/// Each cube is cut into this many parts each way; walking bodies in one part count as one state.
constexpr int walkingParts = 5;

/// The parts for bodies in flight, along x and z.
constexpr float flightParts = 2.0f;

/// The parts for bodies in flight, along y.
constexpr float flightHeightParts = 4.0f;

/// The index of the part of a cube that holds the coordinate, with `parts` parts to each cube.
int partIndex(float coordinate, float parts) {
    return static_cast<int>(std::floor(coordinate * parts / cubeEdge));
}

/// Turns the view left in a single mouse report.
void turnLeft(Player& player, double radians) {
    player.rotateView(-static_cast<int>(std::lround(radians * Player::countsPerRadian)), 0);
}

} // namespace

std::size_t hashOf(std::initializer_list<int> numbers) {
    std::uint64_t hash = 14695981039346656037u;
    for (const int number : numbers)
        hash = (hash ^ static_cast<std::uint32_t>(number)) * 1099511628211u;
    return static_cast<std::size_t>(hash ^ (hash >> 32));
}

CellIndex cellOfFeet(const Player& player) {
    return {partIndex(player.position.x, 1.0f), partIndex(player.box.min.y + feetTolerance, 1.0f),
            partIndex(player.position.z, 1.0f)};
}

StateKey standingKey(const Player& player, bool onOpenFloor) {
    const CellIndex feet = cellOfFeet(player);
    if (onOpenFloor) {
        const auto middle = [](int cell) { return cell * walkingParts + walkingParts / 2; };
        return {middle(feet.column), feet.row, middle(feet.depth), 0, false, true};
    }
    return {partIndex(player.position.x, walkingParts),
            feet.row,
            partIndex(player.position.z, walkingParts),
            0,
            false,
            true};
}

StateKey flightKey(const Player& player) {
    const vec3 p = player.position;
    return {partIndex(p.x, flightParts),
            partIndex(p.y, flightHeightParts),
            partIndex(p.z, flightParts),
            static_cast<int>(static_cast<double>(player.verticalSpeed) / Player::gravity),
            player.inAir,
            false};
}

BodyState stateOf(const Player& player, int place) {
    return {player.position,      player.box.min, player.box.max,
            player.verticalSpeed, player.inAir,   place};
}

Player inState(const Player& view, const BodyState& state) {
    Player player = view;
    player.position = state.position;
    player.look = state.position + player.direction;
    player.box.centre = state.position;
    player.box.min = state.bodyMin;
    player.box.max = state.bodyMax;
    player.verticalSpeed = state.verticalSpeed;
    player.inAir = state.inAir;
    return player;
}

Player walkingAlong(MapManager& map, double yaw, Pace pace) {
    Player player = bodyAt(map, vec3(0.0f), vec3(0.0f, 0.0f, 1.0f));
    if (pace == Pace::ordinary) {
        turnLeft(player, yaw);
        player.updateDirAndStrafe();
    } else {
        // The strafe vector lags one report behind, so it now points along the new view.
        turnLeft(player, yaw - quarterTurn);
        turnLeft(player, quarterTurn);
    }
    return player;
}

Player runningAlong(MapManager& map, double yaw, Pace pace) {
    // Forward and left at once lead halfway between the view and its left.
    return walkingAlong(map, pace == Pace::ordinary ? yaw - 0.5 * quarterTurn : yaw, pace);
}

void run(Player& player) {
    player.setKey(keyIndex::forward, true);
    player.setKey(keyIndex::left, true);
}

double yawTowards(vec3 from, vec3 to) {
    return std::atan2(static_cast<double>(to.x - from.x), static_cast<double>(to.z - from.z));
}

float levelDistance(vec3 from, vec3 to) {
    return std::hypot(to.x - from.x, to.z - from.z);
}

} // namespace drench::arena
