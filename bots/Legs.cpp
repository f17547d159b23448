#include "bots/Legs.h"

#include "bots/Walker.h"

#include <cmath>
#include <numbers>

namespace drench::bots {

namespace {

constexpr double eighthTurn = std::numbers::pi / 4.0 * countsPerRadian;

/// Keys are kept while they lead within this of the heading; the nearest ones lead within a
/// sixteenth of a turn.
constexpr double kept = 0.75 * eighthTurn;

} // namespace

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
