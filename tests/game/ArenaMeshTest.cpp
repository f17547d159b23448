#include "game/ArenaMesh.h"

#include "arena/ArenaFile.h"
#include "game/ArenaFaces.h"
#include "tests/support/Arenas.h"

#include <cmath>
#include <glm/geometric.hpp>
#include <gtest/gtest.h>
#include <map>

using namespace drench;
using namespace drench::game;

namespace {

struct Triangle {
    glm::vec3 corners[3];
    int axis;
    int side;
};

std::vector<Triangle> trianglesOf(const ArenaMesh& mesh) {
    std::vector<Triangle> triangles;
    for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
        Triangle triangle{};
        for (std::size_t c = 0; c < 3; ++c)
            triangle.corners[c] = mesh.vertices.at(mesh.indices[i + c]).position;
        const int facing = mesh.vertices[mesh.indices[i]].facing;
        triangle.axis = facing / 2;
        triangle.side = facing % 2 == 0 ? -1 : 1;
        triangles.push_back(triangle);
    }
    return triangles;
}

/// The visible face that a triangle lies on.
CubeFace faceOf(const Triangle& triangle) {
    const glm::vec3 middle =
        (triangle.corners[0] + triangle.corners[1] + triangle.corners[2]) / 3.0f;
    glm::vec3 inside = middle;
    inside[triangle.axis] -= 1.0f * static_cast<float>(triangle.side);
    const auto index = [](float x) { return static_cast<int>(std::floor(x / arena::cubeEdge)); };
    return {{index(inside.x), index(inside.y), index(inside.z)}, triangle.axis, triangle.side};
}

void expectEachFaceCoveredOnce(const MapManager& map, const ArenaMesh& mesh) {
    std::map<std::array<int, 5>, double> areas;
    const auto keyOf = [](const CubeFace& face) {
        return std::array{face.cube.column, face.cube.row, face.cube.depth, face.axis, face.side};
    };
    for (const CubeFace& face : visibleFaces(map))
        areas[keyOf(face)] = 0.0;
    for (const Triangle& triangle : trianglesOf(mesh)) {
        const glm::vec3 normal = glm::cross(triangle.corners[1] - triangle.corners[0],
                                            triangle.corners[2] - triangle.corners[0]);
        EXPECT_GT(normal[triangle.axis] * static_cast<float>(triangle.side), 0.0f)
            << "counter-clockwise from outside";
        const auto found = areas.find(keyOf(faceOf(triangle)));
        ASSERT_NE(found, areas.end()) << "no triangle lies where no face is seen";
        const CubeFace face = faceOf(triangle);
        const int cell[3] = {face.cube.column, face.cube.row, face.cube.depth};
        for (const glm::vec3 corner : triangle.corners) {
            for (int axis = 0; axis < 3; ++axis) {
                const float low = static_cast<float>(cell[axis]) * arena::cubeEdge;
                EXPECT_GE(corner[axis], low - 0.01f);
                EXPECT_LE(corner[axis], low + arena::cubeEdge + 0.01f);
            }
        }
        found->second += 0.5 * glm::length(normal);
    }
    constexpr double whole = double(arena::cubeEdge) * arena::cubeEdge;
    for (const auto& [face, area] : areas)
        EXPECT_NEAR(area, whole, 0.05) << "all of a face, and nothing twice";
}

} // namespace

TEST(ArenaMesh, CoversEachVisibleFaceOnceAndNoneElse) {
    const MapManager map = loaded(arenaText(
        6, 5, 6, [](int i, int j, int k) { return j == 0 || (i * 7 + j * 5 + k * 3) % 4 == 0; }));
    expectEachFaceCoveredOnce(map, meshOf(map));
    expectEachFaceCoveredOnce(map, roughMeshOf(map));
}

TEST(ArenaMesh, CoversTheDefaultArenaOnce) {
    const arena::ArenaFile arena = arena::readWholeArena(DRENCH_MAPDATA);
    expectEachFaceCoveredOnce(arena.text.map, meshOf(arena.text.map));
}

TEST(ArenaMesh, IsEmptyWithoutCubes) {
    const ArenaMesh mesh = meshOf(withoutSolids(3, 3, 3));
    EXPECT_TRUE(mesh.vertices.empty());
    EXPECT_TRUE(mesh.indices.empty());
}

TEST(ArenaMesh, TellsRimsSeamsAndFeetAtTheEdgesOfFaces) {
    // A floor of two cubes along x, and a cube on the second one.
    const ArenaMesh mesh = meshOf(loaded(arenaText(4, 3, 3, [](int i, int j, int k) {
        return k == 1 && ((j == 0 && i > 0 && i < 3) || (i == 2 && j == 1));
    })));
    int found = 0;
    for (const MeshVertex& vertex : mesh.vertices) {
        // The top of the first cube: its first axis is z, its second x.
        if (vertex.facing != 3 || vertex.position.y != arena::cubeEdge)
            continue;
        ++found;
        EXPECT_EQ(vertex.edges,
                  (std::array{EdgeKind::rim, EdgeKind::rim, EdgeKind::rim, EdgeKind::foot}));
    }
    EXPECT_GE(found, 4);
    found = 0;
    for (const MeshVertex& vertex : mesh.vertices) {
        // The low end of the first cube's side towards low z: its first axis is x, its second y.
        if (vertex.facing != 4 || vertex.position.x != arena::cubeEdge)
            continue;
        ++found;
        EXPECT_EQ(vertex.edges,
                  (std::array{EdgeKind::rim, EdgeKind::seam, EdgeKind::rim, EdgeKind::rim}));
        EXPECT_EQ(vertex.across, 0.0f);
        EXPECT_EQ(vertex.along, vertex.position.y / arena::cubeEdge);
    }
    EXPECT_GE(found, 2);
}

TEST(ArenaMesh, IsWarmInTheSunAndCoolInTheShade) {
    // White marble: the ground before a wall that the sun stands behind.
    MapManager map =
        loaded(arenaText(9, 4, 9, [](int i, int j, int) { return j == 0 || (i == 6 && j < 4); }));
    const int marble = 7;
    for (int i = 0; i < 9; ++i) {
        for (int k = 0; k < 9; ++k)
            arena::cell(map, i, 0, k).cellValue = marble;
    }
    int warm = 0;
    int cool = 0;
    for (const MeshVertex& vertex : meshOf(map).vertices) {
        const bool ground = vertex.facing == 3 && vertex.position.y == arena::cubeEdge;
        if (!ground)
            continue;
        const int warmth = vertex.colour[0] - vertex.colour[2];
        warm += warmth > 10;
        cool += warmth < 0;
    }
    EXPECT_GT(warm, 20);
    EXPECT_GT(cool, 5);
}

TEST(ArenaMesh, EachCubeHasTheTextureOfItsMaterial) {
    MapManager map = loaded(arenaText(
        4, 3, 3, [](int i, int j, int k) { return j == 1 && k == 1 && (i == 1 || i == 2); }));
    const int marble = 7;
    const int unknown = 77;
    arena::cell(map, 1, 1, 1).cellValue = marble;
    arena::cell(map, 2, 1, 1).cellValue = unknown;
    std::map<int, int> textures;
    for (const MeshVertex& vertex : meshOf(map).vertices)
        ++textures[vertex.texture];
    EXPECT_EQ(textures.size(), 2u);
    EXPECT_GE(textures[marble], 20);
    EXPECT_GE(textures[0], 20) << "what is no material";
}

TEST(ArenaMesh, IsRoughlyAsLightWithoutLookingAround) {
    // The swap must not be a flash.
    const arena::ArenaFile arena = arena::readWholeArena(DRENCH_MAPDATA);
    const auto meanOf = [](const ArenaMesh& mesh) {
        double sum = 0.0;
        double areas = 0.0;
        for (std::size_t i = 0; i < mesh.indices.size(); i += 3) {
            const auto corner = [&](std::size_t k) { return mesh.vertices[mesh.indices[i + k]]; };
            const double area = glm::length(glm::cross(corner(1).position - corner(0).position,
                                                       corner(2).position - corner(0).position));
            for (std::size_t k = 0; k < 3; ++k)
                sum += area * corner(k).colour[1];
            areas += 3.0 * area;
        }
        return sum / areas;
    };
    const double lit = meanOf(meshOf(arena.text.map));
    EXPECT_NEAR(meanOf(roughMeshOf(arena.text.map)), lit, 0.2 * lit);
}

TEST(ArenaMesh, IsEmptyOnceNobodyWantsItAnyMore) {
    const MapManager map = loaded(arenaText(6, 5, 6, [](int, int j, int) { return j == 0; }));
    std::stop_source stop;
    EXPECT_FALSE(meshOf(map, stop.get_token()).vertices.empty());
    stop.request_stop();
    EXPECT_TRUE(meshOf(map, stop.get_token()).vertices.empty());
}
