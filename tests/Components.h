#pragma once

#include "Quaternion.h"
#include "Vector.h"

#include <array>

// Vectors and quaternions as arrays, which compare and print in assertions.

inline std::array<float, 3> components(vec3 v) {
    return {v.x, v.y, v.z};
}

inline std::array<float, 4> components(quat q) {
    return {q.x, q.y, q.z, q.w};
}
