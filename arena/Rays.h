#pragma once

#include "arena/Map.h"
#include "src/Box.h"
#include "src/MapManager.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace drench::arena {

// Straight lines through the cells of a map. Lengths are in cells, so that the cell (i, j, k)
// reaches from (i, j, k) to (i + 1, j + 1, k + 1).

using Triple = std::array<double, 3>;

double dot(const Triple& a, const Triple& b);

/// a + b · scale.
Triple sum(const Triple& a, const Triple& b, double scale = 1.0);
Triple scaled(const Triple& a, double scale);

/// The right-handed cross product.
Triple cross(const Triple& a, const Triple& b);

/// Scaled to unit length; the triple must not be zero.
Triple unit(const Triple& a);

constexpr Triple upwards = {0.0, 1.0, 0.0};

/// A point or a vector in world units, converted to cells.
Triple inCells(vec3 v);

/// The index of a cell along an axis: 0 for its column, 1 for its row, 2 for its depth.
int& indexAlong(CellIndex& cell, int axis);

/// A box that rays can meet, besides cubes.
struct Body {
    Triple min{};
    Triple max{};
};

/// The things that rays can meet.
struct Grid {
    const MapManager* map = nullptr;
    std::array<int, 3> cells{};
    std::vector<Body> bodies;

    /// The content of each cell, with a rim of outside cells one wide.
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

/// The cubes of the map, which must have cells and outlive the grid; a cube is a cell that blocks,
/// whatever its material.
Grid gridOf(const MapManager& map);

/// Adds a body in world units. Rays do not meet the parts of it outside the grid.
void addBody(Grid& grid, const Box& box);

/// Takes a cube away.
void removeCube(Grid& grid, const CellIndex& cell);

struct Ray {
    Triple start{};

    /// Distances along the ray are multiples of this vector.
    Triple direction{};
};

/// The ray from a point along a way, both in world units; distances along it are multiples of
/// `way`.
Ray rayAlong(vec3 from, vec3 way);

/// The point where a ray meets something.
struct Hit {
    double distance = 0.0;

    /// The face: its normal points along this axis, to this side (-1 or 1).
    int axis = 0;
    int side = 1;

    /// The cell of the cube, or the cell in which the body was met.
    CellIndex cell;

    /// The body, or null for a cube.
    const Body* body = nullptr;
};

/// The first thing that the ray enters. A ray that starts within a cube or a body does not see it
/// from inside. Traversal of the grid after Amanatides and Woo, "A fast voxel traversal algorithm
/// for ray tracing", 1987.
std::optional<Hit> trace(const Grid& grid, const Ray& ray);

/// Where the ray enters the body, if it does: distance, axis and side are set.
std::optional<Hit> entry(const Body& body, const Ray& ray);

} // namespace drench::arena
