#pragma once

#include "Vector.h"

/// Axis-aligned box in world units: a map cube or a player's body. x runs left to right, y bottom
/// to top, z near to far.
struct Box {
    vec3 centre;
    vec3 min;
    vec3 max;

    /// Left, right, bottom, top, near, far. Nothing sets them; normalOfAABBCollision() reads them.
    bool faceFlags[6] = {};

    /// A map cube's two numbers: `solid` is non-zero if the cube blocks, `cellValue` is its
    /// material. Both 0 for a body.
    int solid = 0;
    int cellValue = 0;

    /// All points at the origin.
    Box() = default;

    /// A cube of edge length `size`.
    Box(vec3 middle, float size);

    /// `dimensions` are full edge lengths; a negative one gives min above max, uncorrected.
    Box(vec3 middle, vec3 dimensions);

    /// Shifts all three points by dir · amount; dir is not normalised.
    void move(vec3 dir, float amount);

    /// The centre points of the six faces.
    vec3 left() const { return {min.x, centre.y, centre.z}; }
    vec3 right() const { return {max.x, centre.y, centre.z}; }
    vec3 bottom() const { return {centre.x, min.y, centre.z}; }
    vec3 top() const { return {centre.x, max.y, centre.z}; }
    vec3 near() const { return {centre.x, centre.y, min.z}; }
    vec3 far() const { return {centre.x, centre.y, max.z}; }
};
