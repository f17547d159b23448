#pragma once

#include "src/Player.h"

namespace drench::bots {

constexpr double countsPerRadian = Player::countsPerRadian;

/// A direction of view in mouse counts: to the right of +z, all round, and down from the level.
/// Also the difference of two views, or a speed in counts per tick.
struct View {
    double right = 0.0;
    double down = 0.0;

    View operator+(View other) const { return {right + other.right, down + other.down}; }
    View operator-(View other) const { return {right - other.right, down - other.down}; }
    View operator*(double scale) const { return {right * scale, down * scale}; }
    void operator+=(View other) { *this = *this + other; }

    double length() const;
};

/// The view along a vector of any length; `right` is at most half a turn either way. A zero vector
/// gives 0, 0.
View viewAlong(vec3 direction);

/// Unit vector.
vec3 directionOf(View view);

/// The shortest turn from one view to another.
View turnBetween(View from, View to);

/// The view limited to pitches that the server does not refuse.
View withoutSteepness(View view);

} // namespace drench::bots
