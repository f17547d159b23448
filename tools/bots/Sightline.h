#pragma once

#include "Scene.h"
#include "Vector.h"

#include <array>

namespace bots {

/// A ray through the scene from a point in world units; distances along it are multiples of `way`.
arena::Ray rayAlong(vec3 from, vec3 way);

/// What lies between an eye and a point, and behind it.
enum class Sightline {
    /// A cube lies between.
    hidden,
    /// In sight before the open sky: a shot at it soaks nobody.
    beforeSky,
    /// In sight before a cube.
    beforeCube
};
Sightline sightline(const arena::Scene& scene, vec3 eye, vec3 point);

/// Nine parts of a body, as offsets from its centre, that show what of it can be seen from an eye:
/// left, middle and right on three heights.
std::array<vec3, 9> bodyParts(vec3 eye, vec3 body);

} // namespace bots
