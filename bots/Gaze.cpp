#include "bots/Gaze.h"

#include "bots/Sightline.h"

namespace drench::bots {

namespace {

/// Ticks between glances.
constexpr double shortestPause = 50.0;
constexpr double longestPause = 160.0;

/// Ticks that a glance lasts.
constexpr double shortestGlance = 22.0;
constexpr double longestGlance = 45.0;

/// A glance goes to a side by at least this, and at most nearly backwards.
constexpr double leastTurn = 0.8 * countsPerRadian;
constexpr double mostTurn = 3.0 * countsPerRadian;

/// A glance goes up or down by at most this.
constexpr double mostPitch = 0.3 * countsPerRadian;

/// The directions that are weighed for a glance.
constexpr int choices = 6;

} // namespace

Gaze::Gaze(Chance chance)
    : chance_(chance), untilGlance_(chance_.between(shortestPause, longestPause)) {}

View Gaze::next(const arena::Grid& grid, vec3 eye, View ahead) {
    if (glanceLeft_ > 0.0) {
        glanceLeft_ -= 1.0;
        return glance_;
    }
    untilGlance_ -= 1.0;
    if (untilGlance_ > 0.0)
        return ahead;
    untilGlance_ = chance_.between(shortestPause, longestPause);
    glanceLeft_ = chance_.between(shortestGlance, longestGlance);
    glance_ = openView(grid, eye, ahead);
    return glance_;
}

/// The direction that reaches furthest, of several random ones.
View Gaze::openView(const arena::Grid& grid, vec3 eye, View ahead) {
    View best = ahead;
    double furthest = -1.0;
    for (int i = 0; i < choices; ++i) {
        const double turn = chance_.between(leastTurn, mostTurn);
        const View tried = {ahead.right + (chance_.happens(0.5) ? turn : -turn),
                            chance_.between(-mostPitch, mostPitch)};
        const auto hit = trace(grid, arena::rayAlong(eye, directionOf(tried)));
        if (hit && hit->distance > furthest) {
            furthest = hit->distance;
            best = tried;
        }
    }
    return best;
}

} // namespace drench::bots
