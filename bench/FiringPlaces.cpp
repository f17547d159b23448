#include "bench/FiringPlaces.h"

#include "arena/Arrivals.h"
#include "src/Collisions.h"

#include <algorithm>
#include <array>
#include <numbers>
#include <stdexcept>
#include <string>

namespace drench::bench {

namespace {

/// The spawn poses on balconies, which come first.
constexpr std::size_t balconies = 4;

/// Mouse counts in a whole turn, rounded up: turns are tried to all sides.
constexpr int fullTurn = static_cast<int>(2.0 * std::numbers::pi * Player::countsPerRadian) + 1;

/// Mouse counts between two turns tried to the side: 2 degrees, a step that misses no far wall.
constexpr int yawStep = 13;

/// Mouse counts of the highest turn tried, 62 degrees up: well below the steepest allowed view.
constexpr int steepestPitch = -390;

/// Mouse counts between two turns tried upward.
constexpr int pitchStep = -10;

/// A player that sends view records to and fro sways by a count or two.
constexpr std::array<int, 3> sway = {-2, 0, 2};

/// World units by which a shot must pass a body: more than the sway at any distance.
constexpr float bodyMargin = 20.0f;

using Target = bool (*)(const Player& shooter, vec3 hit);

bool isFarWall(const Player& shooter, vec3 hit) {
    return !isMiss(hit) && distanceVec3(shooter.getPosition(), hit) > farWallDistance;
}

bool isSky(const Player&, vec3 hit) {
    return isMiss(hit);
}

Player turned(Player player, int dx, int dy) {
    player.rotateView(dx, dy);
    return player;
}

/// Whether a turn and its neighbours all meet the target.
bool meets(const Player& player, int dx, int dy, Target target) {
    for (const int moreX : sway) {
        for (const int moreY : sway) {
            const Player shooter = turned(player, dx + moreX, dy + moreY);
            if (!target(shooter, shooter.shoot(shooter.mapMan)))
                return false;
        }
    }
    return true;
}

bool passesBodies(const Player& shooter, const std::vector<Player>& bystanders) {
    const vec3 hit = shooter.shoot(shooter.mapMan);
    const vec3 margin(bodyMargin);
    return std::ranges::none_of(bystanders, [&](const Player& bystander) {
        const Box body = bystander.getBox();
        vec3 ignored;
        return Line_AABB(shooter.getPosition(), hit, body.min - margin, body.max + margin, ignored);
    });
}

FiringPlace placeFacing(const Player& player, const std::vector<Player>& bystanders,
                        Target target) {
    for (int dy = 0; dy >= steepestPitch; dy += pitchStep) {
        for (int dx = 0; dx < fullTurn; dx += yawStep) {
            const Player shooter = turned(player, dx, dy);
            if (meets(player, dx, dy, target) && passesBodies(shooter, bystanders))
                return {player, dx, dy, shooter.getDirection()};
        }
    }
    throw std::runtime_error("a balcony of the arena has nothing of the kind to fire at");
}

std::vector<FiringPlace> placesFacing(MapManager& map, Target target) {
    const std::vector<arena::Arrival> arrivals = arena::arrivals(map);
    std::vector<FiringPlace> places;
    for (std::size_t i = 0; i < balconies; ++i) {
        std::vector<Player> bystanders;
        for (std::size_t other = 0; other < balconies; ++other) {
            if (other != i)
                bystanders.push_back(arrivals[other].landed);
        }
        places.push_back(placeFacing(arrivals[i].landed, bystanders, target));
    }
    return places;
}

} // namespace

std::vector<FiringPlace> placesFacingFarWalls(MapManager& map) {
    return placesFacing(map, isFarWall);
}

std::vector<FiringPlace> placesFacingSky(MapManager& map) {
    return placesFacing(map, isSky);
}

} // namespace drench::bench
