#pragma once

#include "arena/Map.h"
#include "src/Vector.h"

#include <algorithm>
#include <cmath>

namespace drench::bots {

/// The vector with its height set to 0.
inline vec3 horizontal(vec3 v) {
    return {v.x, 0.0f, v.z};
}

/// The distance of two points seen from above, world units.
inline float horizontalDistance(vec3 a, vec3 b) {
    return std::hypot(a.x - b.x, a.z - b.z);
}

/// The vector scaled to length 1; a zero vector stays zero.
inline vec3 unit(vec3 v) {
    v.normalize();
    return v;
}

/// The column, row or depth index of the cell that holds a coordinate: -1 for a coordinate before
/// every grid or NaN, arena::mostCells for one beyond every grid.
inline int cubeIndex(float coordinate) {
    constexpr float beyond = static_cast<float>(arena::mostCells);
    const float index = std::floor(coordinate / arena::cubeEdge);
    return index >= 0.0f ? static_cast<int>(std::min(index, beyond)) : -1;
}

/// Height of the lower face of a row of cubes, world units.
inline float floorOfRow(int row) {
    return arena::cubeEdge * static_cast<float>(row);
}

/// The coordinate of the middle of a column, row or depth.
inline float middleOfCube(int index) {
    return arena::cubeEdge * (static_cast<float>(index) + 0.5f);
}

/// World units from the floor up to the centre of a standing body, as bots assume it.
constexpr float standingHeight = 75.25f;

/// The centre of a body that stands in the middle of the cell of its feet.
inline vec3 bodyIn(const arena::CellIndex& feet) {
    return {middleOfCube(feet.column), floorOfRow(feet.row) + standingHeight,
            middleOfCube(feet.depth)};
}

} // namespace drench::bots
