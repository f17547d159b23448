#include "bots/Footwork.h"

#include "bots/Geometry.h"
#include "src/Player.h"

namespace drench::bots {

namespace {

/// Ticks for one side, from the shortest to the longest.
constexpr double shortestTurn = 14.0;
constexpr double longestTurn = 55.0;

/// Probability that a turn begins with a jump.
constexpr double jumpiness = 0.18;

/// Fighters keep a distance between these, each one its own.
constexpr double nearestRange = 250.0;
constexpr double furthestRange = 700.0;

/// The distance may differ by this share.
constexpr float tolerance = 0.25f;

/// The distances ahead at which the floor is checked, in world units.
constexpr float lookAhead[] = {40.0f, 90.0f};

/// Bodies are tested for walls this far above their floor, which they may touch.
constexpr float clearance = 2.0f;

} // namespace

bool isSafe(const Roadmap& roadmap, vec3 position, vec3 heading) {
    const int here = roadmap.placeBelow(position);
    if (here < 0)
        return false;
    for (const float distance : lookAhead) {
        const vec3 there = position + heading * distance;
        const int place = roadmap.placeBelow(there);
        if (place < 0 || roadmap.floorHeight(place) < roadmap.floorHeight(here) - arena::cubeEdge)
            return false;
    }
    const vec3 next = position + heading * lookAhead[0] + vec3(0.0f, clearance, 0.0f);
    return !roadmap.map->collides(Box(next, Player::bodySize));
}

Footwork::Footwork(Chance chance)
    : chance_(chance), range_(static_cast<float>(chance_.between(nearestRange, furthestRange))) {}

Steps Footwork::step(const Roadmap& roadmap, vec3 position, vec3 enemy, bool grounded) {
    ticksLeft_ -= 1.0;
    if (ticksLeft_ <= 0.0) {
        ticksLeft_ = chance_.between(shortestTurn, longestTurn);
        side_ = -side_;
        jumps_ = chance_.happens(jumpiness);
    }
    const vec3 towards = unit(horizontal(enemy - position));
    const float distance = horizontalDistance(enemy, position);
    const float approach = distance > range_ * (1.0f + tolerance)   ? 0.7f
                           : distance < range_ * (1.0f - tolerance) ? -0.7f
                                                                    : 0.0f;
    const vec3 aside(-towards.z, 0.0f, towards.x);
    const vec3 wishes[] = {unit(aside * side_ + towards * approach), aside * side_,
                           unit(aside * -side_ + towards * approach), aside * -side_,
                           towards * (approach < 0.0f ? -1.0f : 1.0f)};
    Steps steps;
    for (const vec3 wish : wishes) {
        if (!isSafe(roadmap, position, wish))
            continue;
        steps.heading = wish;
        if (wish.dot(aside) * side_ < 0.0f)
            side_ = -side_;
        break;
    }
    if (jumps_ && grounded) {
        steps.jump = true;
        jumps_ = false;
    }
    return steps;
}

} // namespace drench::bots
