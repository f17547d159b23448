#include "game/ArenaMesh.h"

#include "arena/Materials.h"
#include "arena/Rays.h"
#include "game/ArenaFaces.h"

namespace drench::game {

ArenaMesh meshOf(const MapManager& map) {
    ArenaMesh mesh;
    for (const CubeFace& face : visibleFaces(map)) {
        const arena::Colour colour = arena::colourOf(
            arena::cell(map, face.cube.column, face.cube.row, face.cube.depth).cellValue);
        const double light = face.axis == 1   ? (face.side > 0 ? 1.0 : 0.5)
                             : face.axis == 0 ? 0.8
                                              : 0.65;
        const auto first = static_cast<std::uint32_t>(mesh.vertices.size());
        for (int corner = 0; corner < 4; ++corner) {
            arena::CellIndex at = face.cube;
            if (face.side > 0)
                arena::indexAlong(at, face.axis) += 1;
            const bool right = (corner == 1 || corner == 2);
            const bool up = corner >= 2;
            arena::indexAlong(at, firstAlong(face.axis)) += (face.side > 0 ? right : up);
            arena::indexAlong(at, secondAlong(face.axis)) += (face.side > 0 ? up : right);
            const auto shade = [&](std::uint8_t c) { return static_cast<std::uint8_t>(c * light); };
            mesh.vertices.push_back({glm::vec3(at.column, at.row, at.depth) * arena::cubeEdge,
                                     {shade(colour.red), shade(colour.green), shade(colour.blue)},
                                     static_cast<std::uint8_t>(2 * face.axis + (face.side > 0))});
        }
        for (const std::uint32_t corner : {0u, 1u, 2u, 0u, 2u, 3u})
            mesh.indices.push_back(first + corner);
    }
    return mesh;
}

} // namespace drench::game
