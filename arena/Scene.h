#pragma once

#include "Box.h"
#include "Map.h"
#include "Materials.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace arena {

// Light and geometry of the pictures. Lengths are in cells, so that the cell (i, j, k) reaches from
// (i, j, k) to (i + 1, j + 1, k + 1).

using Triple = std::array<double, 3>;

double dot(const Triple& a, const Triple& b);

/// a + b · scale.
Triple sum(const Triple& a, const Triple& b, double scale = 1.0);
Triple scaled(const Triple& a, double scale);

/// The right-handed cross product.
Triple cross(const Triple& a, const Triple& b);

/// Scaled to unit length; the triple must not be zero.
Triple unit(const Triple& a);

/// A colour as amounts of light: 0 is none, 1 what white paper in full light sends back.
using Light = std::array<double, 3>;

/// Light as the eye takes colours for evenly spaced, and back: squares, near enough to the 2.2th
/// power, and every machine rounds their roots alike.
Light lightOf(Colour colour);
Colour colourFrom(const Light& light);

/// From `a` at share 0 to `b` at share 1.
Light mixed(const Light& a, const Light& b, double share);

/// The colour of whatever stands for players and spawns; no material is like it.
constexpr Colour signalColour = {226, 24, 124};

/// A player's body, in that colour.
struct Body {
    /// Written on its sides.
    std::string label;
    Triple min{};
    Triple max{};
};

/// The sun is a square of this many parts; its four corners are numbered after them.
constexpr int sunParts = 16;

/// What rays can meet.
struct Scene {
    const MapManager* map = nullptr;
    std::array<int, 3> cells{};
    std::vector<Body> bodies;

    /// Unit vectors towards the parts and the corners of the sun.
    std::vector<Triple> suns;

    /// What each cell holds, in a rim of outside cells one wide.
    enum class Content : std::uint8_t { nothing, cube, bodies, outside };
    std::vector<Content> contents;

    /// The place of the cell in `contents`; indices from -1 to the number of cells.
    std::size_t indexOf(const CellIndex& cell) const {
        return (static_cast<std::size_t>(cell.column + 1) * static_cast<std::size_t>(cells[1] + 2) +
                static_cast<std::size_t>(cell.row + 1)) *
                   static_cast<std::size_t>(cells[2] + 2) +
               static_cast<std::size_t>(cell.depth + 1);
    }
    bool isCube(const CellIndex& cell) const { return contents[indexOf(cell)] == Content::cube; }
};

constexpr Triple upwards = {0.0, 1.0, 0.0};

/// Throws InputError when the map has no cells: there is nothing to draw.
void requireCells(const MapManager& map);

/// The cubes of the map, which must have cells and outlive the scene; a cube is a cell that blocks,
/// whatever its material. `towardsSun` need not be a unit vector, but must not be straight up.
Scene sceneOf(const MapManager& map, const Triple& towardsSun);

/// Adds a body; what of it lies outside the grid is not seen.
void addBody(Scene& scene, const std::string& label, const Box& box);

/// Takes a cube away.
void removeCube(Scene& scene, const CellIndex& cell);

struct Ray {
    Triple start{};

    /// Distances along the ray are multiples of it.
    Triple direction{};
};

/// Where a ray meets the scene.
struct Hit {
    double distance = 0.0;

    /// The face: its normal points along this axis, to this side (-1 or 1).
    int axis = 0;
    int side = 1;

    /// The cell of the cube, or where the body was met.
    CellIndex cell;

    /// The body, or null for a cube.
    const Body* body = nullptr;
};

/// The first thing that the ray enters. A ray that starts within a cube or a body does not see it
/// from inside. Traversal of the grid after Amanatides and Woo, "A fast voxel traversal algorithm
/// for ray tracing", 1987.
std::optional<Hit> trace(const Scene& scene, const Ray& ray);

/// Where the ray enters the body, if it does: distance, axis and side are set.
std::optional<Hit> entry(const Body& body, const Ray& ray);

/// Whether this part or corner of the sun shines on a point that lies in no cube.
bool inSun(const Scene& scene, const Triple& point, int sun);

/// A number for the face that was met; every other face of the scene has another one.
std::uint64_t faceNumber(const Scene& scene, const Hit& hit);

/// Light that a face sends back.
struct Shade {
    Light light{};
    bool inSun = false;
};

/// The face that a ray has met, lit by the sky and one part of the sun, darker in corners, with
/// its cube's edges drawn. `pixel` is the size in cells of what one pixel shows there.
/// The shade of a corner follows from the three cells that meet the face there (Lysenko, 0fps.net,
/// 2013) and is interpolated over the face.
Shade shade(const Scene& scene, const Ray& ray, const Hit& hit, int sun, double pixel);

} // namespace arena
