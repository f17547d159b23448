#pragma once

#include "src/Player.h"

namespace drench::bots {

constexpr double countsPerRadian = Player::countsPerRadian;

/// A direction of view in mouse counts: to the right of +z, all round, and down from the level.
/// Also the difference of two, or a speed in counts per tick.
struct View {
    double right = 0.0;
    double down = 0.0;

    View operator+(View other) const { return {right + other.right, down + other.down}; }
    View operator-(View other) const { return {right - other.right, down - other.down}; }
    View operator*(double scale) const { return {right * scale, down * scale}; }
    void operator+=(View other) { *this = *this + other; }

    double length() const;
};

/// `right` is at most half a turn either way; the vector need not be of length 1. That of a zero
/// vector is 0, 0.
View viewAlong(vec3 direction);

/// Unit vector.
vec3 directionOf(View view);

/// The shortest turn from one view to another.
View turnBetween(View from, View to);

/// The view limited to what can be held: the server refuses turns that end nearly vertical.
View withoutSteepness(View view);

} // namespace drench::bots
