#include "game/ArenaMesh.h"

#include "arena/Materials.h"
#include "game/ArenaFaces.h"
#include "game/ArenaLight.h"
#include "game/MaterialTextures.h"
#include "game/SunShadows.h"

#include <cmath>

namespace drench::game {

namespace {

using arena::Light;

/// The light at a point of a face between its corners.
Light between(const CornerLight& corners, glm::dvec2 point) {
    const Light low = arena::mixed(corners[0], corners[1], point.x);
    const Light high = arena::mixed(corners[3], corners[2], point.x);
    return arena::mixed(low, high, point.y);
}

/// Cubes of one material are not all alike: the lightness of a cube, 1 in the middle.
double tintOf(const arena::CellIndex& cube) {
    constexpr double range = 0.07;
    // Multiples of irrational numbers: neighbours differ, and no pattern shows.
    const double turns =
        cube.column * 0.6180339887 + cube.row * 0.7548776662 + cube.depth * 0.5698402910;
    const double mixed = turns * 7.31;
    return 1.0 + range * (mixed - std::floor(mixed) - 0.5);
}

/// Of the four edges of a face: low and high along its first axis, low and high along its second.
std::array<EdgeKind, 4> edgesOf(const MapManager& map, const CubeFace& face) {
    const auto isCube = [&](arena::CellIndex cell, int axis, int step) {
        arena::indexAlong(cell, axis) += step;
        const bool inMap = !map.outOfBounds(vec3(static_cast<float>(cell.column) + 0.5f,
                                                 static_cast<float>(cell.row) + 0.5f,
                                                 static_cast<float>(cell.depth) + 0.5f) *
                                            arena::cubeEdge);
        return inMap && !map.cubeIsNull(cell.column, cell.row, cell.depth);
    };
    arena::CellIndex front = face.cube;
    arena::indexAlong(front, face.axis) += face.side;
    std::array<EdgeKind, 4> edges{};
    for (std::size_t edge = 0; edge < 4; ++edge) {
        const int axis = edge < 2 ? firstAlong(face.axis) : secondAlong(face.axis);
        const int step = edge % 2 == 0 ? -1 : 1;
        edges[edge] = isCube(front, axis, step)       ? EdgeKind::foot
                      : isCube(face.cube, axis, step) ? EdgeKind::seam
                                                      : EdgeKind::rim;
    }
    return edges;
}

/// Adds the faces of one map, each lit, one after the other.
class Builder {
  public:
    explicit Builder(const MapManager& map) : map_(map) {}

    void add(const CubeFace& face, const SunnyFace& sunny, double slope,
             const CornerLight& ambient) {
        const Box& cube = arena::cell(map_, face.cube.column, face.cube.row, face.cube.depth);
        const Light material =
            arena::scaled(arena::lightOf(arena::colourOf(cube.cellValue)), tintOf(face.cube));
        const std::array<EdgeKind, 4> edges = edgesOf(map_, face);
        const auto addAll = [&](const std::vector<Polygon>& polygons, double sun) {
            for (const Polygon& polygon : polygons) {
                const auto base = static_cast<std::uint32_t>(mesh_.vertices.size());
                for (const glm::dvec2 point : polygon) {
                    Light light = exposed(arena::sum(between(ambient, point), sunLight, sun));
                    for (std::size_t c = 0; c < 3; ++c)
                        light[c] *= material[c];
                    addVertex(face, point, arena::colourFrom(light), edges,
                              textureOf(cube.cellValue));
                }
                addFan(base, static_cast<std::uint32_t>(polygon.size()), face.side > 0);
            }
        };
        addAll(sunny.lit, slope);
        addAll(sunny.shaded, 0.0);
    }

    ArenaMesh take() { return std::move(mesh_); }

  private:
    void addVertex(const CubeFace& face, glm::dvec2 point, arena::Colour colour,
                   const std::array<EdgeKind, 4>& edges, std::uint8_t texture) {
        glm::dvec3 at(face.cube.column, face.cube.row, face.cube.depth);
        at[face.axis] += face.side > 0 ? 1.0 : 0.0;
        at[firstAlong(face.axis)] += point.x;
        at[secondAlong(face.axis)] += point.y;
        mesh_.vertices.push_back({glm::vec3(at * double(arena::cubeEdge)),
                                  {colour.red, colour.green, colour.blue},
                                  facingOf(face),
                                  static_cast<float>(point.x),
                                  static_cast<float>(point.y),
                                  edges,
                                  texture});
    }

    void addFan(std::uint32_t base, std::uint32_t count, bool towardsNormal) {
        for (std::uint32_t i = 1; i + 1 < count; ++i) {
            mesh_.indices.push_back(base);
            mesh_.indices.push_back(base + (towardsNormal ? i : i + 1));
            mesh_.indices.push_back(base + (towardsNormal ? i + 1 : i));
        }
    }

    const MapManager& map_;
    ArenaMesh mesh_;
};

} // namespace

ArenaMesh meshOf(const MapManager& map, const std::stop_token& stop) {
    const std::vector<CubeFace> faces = visibleFaces(map);
    const SunShadows shadows(map, towardsSun);
    std::vector<SunnyFace> sunny;
    std::vector<double> shares;
    for (const CubeFace& face : faces) {
        if (stop.stop_requested())
            return {};
        sunny.push_back(shadows.on(face));
        shares.push_back(sunny.back().share() * shadows.slope(face));
    }
    const std::vector<CornerLight> ambient = ambientLight(map, faces, shares, stop);
    if (stop.stop_requested())
        return {};
    Builder builder(map);
    for (std::size_t i = 0; i < faces.size(); ++i)
        builder.add(faces[i], sunny[i], shadows.slope(faces[i]), ambient[i]);
    return builder.take();
}

ArenaMesh roughMeshOf(const MapManager& map) {
    const arena::Triple sun = arena::unit(towardsSun);
    Builder builder(map);
    for (const CubeFace& face : visibleFaces(map)) {
        const double slope = slopeOf(face, sun);
        builder.add(face, {{wholeFace}, {}}, slope, unshadowedLight(face));
    }
    return builder.take();
}

} // namespace drench::game
