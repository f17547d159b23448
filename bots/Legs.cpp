#include "bots/Legs.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace drench::bots {

namespace {

constexpr double eighthOfRadians = std::numbers::pi / 4.0;
constexpr double eighthTurn = eighthOfRadians * countsPerRadian;

/// Keys are kept while they lead within this of the heading; the nearest keys lead within a
/// sixteenth of a turn.
constexpr double kept = 0.75 * eighthTurn;

/// Counts that legs alone turn in a tick, at most.
constexpr double legsTurn = 40.0;

/// Radians to the left from a view direction to a heading.
double angleBetween(vec3 direction, vec3 heading) {
    return static_cast<double>(std::atan2(heading.x * direction.z - heading.z * direction.x,
                                          heading.x * direction.x + heading.z * direction.z));
}

} // namespace

void pressForHeading(Controls& controls, vec3 heading, vec3 direction) {
    for (const int key : {keyIndex::forward, keyIndex::backward, keyIndex::left, keyIndex::right})
        controls.held[key] = false;
    if (heading.x == 0.0f && heading.z == 0.0f)
        return;
    // Kept as a double: if the direction is NaN, so is this, and it matches no key.
    const double eighths = std::round(angleBetween(direction, heading) / eighthOfRadians);
    controls.held[keyIndex::forward] = std::fabs(eighths) <= 1.0;
    controls.held[keyIndex::backward] = std::fabs(eighths) >= 3.0;
    controls.held[keyIndex::left] = eighths >= 1.0 && eighths <= 3.0;
    controls.held[keyIndex::right] = eighths <= -1.0 && eighths >= -3.0;
}

Controls legsOnly(const Steps& steps, vec3 direction) {
    Controls controls;
    if (steps.heading.x == 0.0f && steps.heading.z == 0.0f)
        return controls;
    // If one value is NaN, fmax returns the other.
    const auto counts = [](double radians) {
        return static_cast<int>(
            std::lround(std::fmin(std::fmax(radians * countsPerRadian, -legsTurn), legsTurn)));
    };
    controls.dx = counts(-angleBetween(direction, steps.heading));
    controls.dy = counts(static_cast<double>(std::asin(std::clamp(direction.y, -1.0f, 1.0f))));
    pressForHeading(controls, steps.heading, direction);
    controls.jump = steps.jump;
    return controls;
}

void Legs::press(Controls& controls, vec3 heading, View view) {
    if (heading.x == 0.0f && heading.z == 0.0f) {
        going_ = false;
        pressForHeading(controls, heading, directionOf(view));
        return;
    }
    const double wanted = turnBetween(view, viewAlong(heading)).right;
    const double off = turnBetween({held_, 0.0}, {wanted, 0.0}).right;
    if (!going_ || std::fabs(off) > kept)
        held_ = std::round(wanted / eighthTurn) * eighthTurn;
    going_ = true;
    pressForHeading(controls, directionOf({view.right + held_, 0.0}), directionOf(view));
}

} // namespace drench::bots
