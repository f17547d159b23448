#include "bots/View.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace drench::bots {

namespace {

constexpr double fullTurn = 2.0 * std::numbers::pi * countsPerRadian;

/// Mouse counts from the level, well short of the steepest views that are not refused: those
/// of 1.43 radians, where both horizontal parts are Player::steepView.
constexpr double steepest = 1.3 * countsPerRadian;

} // namespace

double View::length() const {
    return std::hypot(right, down);
}

View viewAlong(vec3 direction) {
    const double x = static_cast<double>(direction.x);
    const double y = static_cast<double>(direction.y);
    const double z = static_cast<double>(direction.z);
    // A player that looks along +z has -x on the right.
    return {std::atan2(-x, z) * countsPerRadian,
            std::atan2(-y, std::hypot(x, z)) * countsPerRadian};
}

vec3 directionOf(View view) {
    const double yaw = view.right / countsPerRadian;
    const double pitch = view.down / countsPerRadian;
    return {static_cast<float>(-std::sin(yaw) * std::cos(pitch)),
            static_cast<float>(-std::sin(pitch)),
            static_cast<float>(std::cos(yaw) * std::cos(pitch))};
}

View turnBetween(View from, View to) {
    return {std::remainder(to.right - from.right, fullTurn), to.down - from.down};
}

View withoutSteepness(View view) {
    return {view.right, std::clamp(view.down, -steepest, steepest)};
}

} // namespace drench::bots
