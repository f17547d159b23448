#pragma once

#include "src/MapManager.h"

#include <array>
#include <cstdint>
#include <glm/vec3.hpp>
#include <stop_token>
#include <vector>

namespace drench::game {

/// What lies beyond an edge of a cube's face.
enum class EdgeKind : std::int8_t {
    /// Another face rises from it.
    foot = 0,

    /// Nothing: the edge catches the light.
    rim = 1,

    /// A face of the next cube in the same plane.
    seam = -1
};

/// A corner of the arena's surface.
struct MeshVertex {
    /// World units.
    glm::vec3 position{0.0f};

    /// Light and material, as shown on the screen.
    std::array<std::uint8_t, 3> colour{};

    /// facingOf() the face that it is a part of.
    std::uint8_t facing = 0;

    /// The place on the cube's face, in cells from its low corner along the face's first and second
    /// axis, and what the four edges of the face are.
    float across = 0.0f;
    float along = 0.0f;
    std::array<EdgeKind, 4> edges{};

    /// The cellValue of the cube, as far as it has a texture; 0 otherwise.
    std::uint8_t texture = 0;
};

/// Triangles, counter-clockwise as seen from outside of the cubes.
struct ArenaMesh {
    std::vector<MeshVertex> vertices;

    /// Three for each triangle.
    std::vector<std::uint32_t> indices;
};

/// The visible surface of the map's cubes, with shadows and the light between them.
/// @param stop  asks to give up; the mesh is then empty
ArenaMesh meshOf(const MapManager& map, const std::stop_token& stop = {});

/// The same surface, lit as if nothing stood in the way of light: at hand at once, even for the
/// largest arena.
ArenaMesh roughMeshOf(const MapManager& map);

} // namespace drench::game
