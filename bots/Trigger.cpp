#include "bots/Trigger.h"

#include "src/Collisions.h"
#include "src/Player.h"

#include <cmath>

namespace drench::bots {

namespace {

/// The shortest press, in ticks.
constexpr int shortestPress = 4;

/// The longest reach of a shot, which marches in steps of one unit.
constexpr float range = MapManager::marchReach;

} // namespace

bool soaks(const MapManager& map, vec3 from, View view, vec3 body) {
    const vec3 direction = directionOf(view);
    const Box box(body, Player::bodySize);
    vec3 entry;
    // Shots march in small steps; a missed body is found out much faster.
    if (!Line_AABB(from, from + direction * range, box.min, box.max, entry))
        return false;
    const vec3 hit = map.pointOfIntersection(from, direction);
    return !isMiss(hit) && Line_AABB(from, hit, box.min, box.max, entry);
}

bool Trigger::pull(const MapManager& map, vec3 from, vec3 velocity, View view, View speed,
                   const std::vector<Sighting>& known, double delay) {
    const int ahead = static_cast<int>(std::lround(skill_.anticipation));
    const auto willBeSoaked = [&](const Sighting& other) {
        if (!other.visible || other.sinceReturn < skill_.mercy)
            return false;
        for (int tick = 0; tick <= ahead; ++tick) {
            const float later = static_cast<float>(tick);
            if (soaks(map, from + velocity * later, view + speed * tick,
                      other.position + other.velocity * (static_cast<float>(delay) + later)))
                return true;
        }
        return false;
    };
    for (const Sighting& other : known) {
        if (willBeSoaked(other)) {
            held_ = shortestPress;
            return true;
        }
    }
    held_ = held_ > 0 ? held_ - 1 : 0;
    return held_ > 0;
}

} // namespace drench::bots
