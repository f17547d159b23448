#pragma once

#include "src/MapManager.h"

#include <array>
#include <cstdint>
#include <glm/vec3.hpp>
#include <vector>

namespace drench::game {

/// A corner of the arena's surface.
struct MeshVertex {
    /// World units.
    glm::vec3 position{0.0f};

    /// Light and material, as shown on the screen.
    std::array<std::uint8_t, 3> colour{};

    /// The surface's normal: 2 · axis, and 1 more for the side of rising coordinates.
    std::uint8_t facing = 0;
};

static_assert(sizeof(MeshVertex) == 16);

/// Triangles, counter-clockwise as seen from outside of the cubes.
struct ArenaMesh {
    std::vector<MeshVertex> vertices;

    /// Three for each triangle.
    std::vector<std::uint32_t> indices;
};

/// The visible surface of the map's cubes.
ArenaMesh meshOf(const MapManager& map);

} // namespace drench::game
