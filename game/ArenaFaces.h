#pragma once

#include "arena/Map.h"
#include "src/MapManager.h"

#include <cstdint>
#include <vector>

namespace drench::game {

/// A side of a cube.
struct CubeFace {
    arena::CellIndex cube;

    /// Its normal points along this axis, 0 for x, 1 for y, 2 for z, to this side, -1 or 1.
    int axis = 0;
    int side = 1;

    bool operator==(const CubeFace&) const = default;
};

/// The direction of a face as one number, 0 to 5: 2 · axis, and 1 more for the side of rising
/// coordinates.
constexpr std::uint8_t facingOf(const CubeFace& face) {
    return static_cast<std::uint8_t>(2 * face.axis + (face.side > 0 ? 1 : 0));
}

/// The two axes that a face with this normal lies along: first × second points along `axis`.
constexpr int firstAlong(int axis) {
    return (axis + 1) % 3;
}
constexpr int secondAlong(int axis) {
    return (axis + 2) % 3;
}

/// The faces of cubes that an eye in an empty cell, or above the map, can see, in the order of the
/// map text. A cube is a cell that blocks.
std::vector<CubeFace> visibleFaces(const MapManager& map);

} // namespace drench::game
