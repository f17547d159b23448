#pragma once

#include "arena/Rays.h"
#include "src/Vector.h"

#include <array>

namespace drench::bots {

/// What lies between an eye and a point, and behind it.
enum class Sightline {
    /// A cube lies between.
    hidden,
    /// In sight before the open sky: a shot at it soaks nobody.
    beforeSky,
    /// In sight before a cube.
    beforeCube
};
Sightline sightline(const arena::Grid& grid, vec3 eye, vec3 point);

/// Nine parts of a body, as offsets from its centre, that show what of it can be seen from an eye:
/// left, middle and right on three heights.
std::array<vec3, 9> bodyParts(vec3 eye, vec3 body);

} // namespace drench::bots
