#pragma once

#include "arena/Rays.h"
#include "src/Vector.h"

#include <array>

namespace drench::bots {

/// The relation of a point to an eye's view: hidden or not, and what is behind it.
enum class Sightline {
    /// A cube lies between.
    hidden,
    /// In sight, with open sky behind: a shot at the point soaks nobody.
    beforeSky,
    /// In sight, with a cube behind.
    beforeCube
};
Sightline sightline(const arena::Grid& grid, vec3 eye, vec3 point);

/// Nine points of a body, as offsets from its centre, that together show which parts of it an eye
/// can see: left, middle and right on three heights.
std::array<vec3, 9> bodyParts(vec3 eye, vec3 body);

} // namespace drench::bots
