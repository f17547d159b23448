#pragma once

#include "Vector.h"

#include <iosfwd>

/// Axis-aligned rectangle: edges, size and half size, all set once by the constructor. Reversed
/// edges or a negative size are kept as they are; such a rectangle contains nothing.
struct Bounds {
    float l;
    float r;
    float b;
    float t;
    float w;
    float h;
    float halfW;
    float halfH;

    /// `corner` is the lower left one, not the centre.
    Bounds(vec2 corner, float width, float height);
    Bounds(float left, float right, float bottom, float top);

    /// Edges and corners are inside; a NaN never is.
    bool contains(vec2 p) const;
};

/// Writes "l,r,b,t: …" and "w,h: …", each line flushed.
std::ostream& operator<<(std::ostream& out, const Bounds& bounds);
