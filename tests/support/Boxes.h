#pragma once

#include "src/Box.h"

#include <array>

// Boxes for contact tests.

inline Box between(vec3 min, vec3 max) {
    Box box;
    box.min = min;
    box.max = max;
    return box;
}

inline const Box unitBox(vec3(0.5f, 0.5f, 0.5f), 1);

/// Different in all its coordinates and all its edges.
inline const Box oblong = between(vec3(10, 20, 30), vec3(12, 24, 38));
constexpr vec3 oblongMiddle(11, 22, 34);

constexpr std::array<float vec3::*, 3> axes = {&vec3::x, &vec3::y, &vec3::z};
