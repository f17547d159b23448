#pragma once

#include "src/Quaternion.h"
#include "src/Vector.h"

#include <array>
#include <bit>

// Vectors and quaternions as arrays, which compare and print in assertions. Their order is that in
// memory.

using Two = std::array<float, 2>;
using Three = std::array<float, 3>;
using Four = std::array<float, 4>;

inline Two components(vec2 v) {
    return std::bit_cast<Two>(v);
}

inline Three components(vec3 v) {
    return std::bit_cast<Three>(v);
}

inline Four components(vec4 v) {
    return std::bit_cast<Four>(v);
}

inline Four components(quat q) {
    return std::bit_cast<Four>(q);
}
