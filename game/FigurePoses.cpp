#include "game/FigurePoses.h"

#include "client/Records.h"
#include "game/Camera.h"
#include "game/FigureSight.h"
#include "src/Player.h"

#include <cmath>

namespace drench::game {

namespace {

/// World units. A resting body lies less than this above what it stands on: it sinks by the steps
/// of its fall that still fit.
constexpr float restingGap = 2.0f;

/// World units from the origin; no arena reaches so far.
constexpr float farthest = 100'000.0f;

} // namespace

bool standsOnCube(const MapManager& map, glm::vec3 position) {
    return map.collides(Box({position.x, position.y - restingGap, position.z}, Player::bodySize));
}

bool isDrawable(const PlayerUpdate& player) {
    if (player.id < '1' || player.id >= '1' + maxPlayers)
        return false;
    const vec3 at = player.position;
    const float away = std::abs(at.x) + std::abs(at.y) + std::abs(at.z);
    const float direction = player.direction.dot(player.direction);
    return away < farthest && direction > 0.25f && direction < 4.0f;
}

void FigurePoses::show(const MapManager& map, const arena::Grid& grid,
                       std::span<const PlayerUpdate> players, float seconds) {
    figures_.clear();
    soakings_.clear();
    for (const PlayerUpdate& player : players) {
        if (!isDrawable(player))
            continue;
        Known& known = known_[static_cast<std::size_t>(player.id - '1')];
        FigurePose pose;
        pose.id = player.id;
        pose.colour = player.id - '1';
        pose.position = onScreen(player.position);
        pose.direction = onScreen(player.direction);
        pose.soaked = client::isSoaked(player);
        if (pose.soaked) {
            if (known.isAlive)
                soakings_.push_back(known.position);
            known.isAlive = false;
            figures_.push_back(pose);
            continue;
        }
        known.isAlive = true;
        known.position = pose.position;
        known.walking.move(pose.position, seconds);
        pose.walkPhase = known.walking.phase();
        pose.way = known.walking.way();
        pose.inAir = !standsOnCube(map, pose.position);
        pose.shooting = player.shooting;
        pose.sun = sunOn(grid, pose.position);
        figures_.push_back(pose);
    }
}

} // namespace drench::game
