#pragma once

#include "arena/Rays.h"
#include "game/ArenaFaces.h"

#include <array>
#include <cstdint>
#include <glm/vec2.hpp>
#include <vector>

namespace drench::game {

/// The corners of a convex shape, counter-clockwise.
using Polygon = std::vector<glm::dvec2>;

/// Twice the area counts once for each turn to the left; negative for clockwise corners.
double areaOf(const Polygon& polygon);

/// All of a face of a cube.
inline const Polygon wholeFace = {{0.0, 0.0}, {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}};

/// A face of a cube, cut along the edges of the shadows on it. In cells, along the face's first and
/// second axis from the cube's low corner: all lies between (0, 0) and (1, 1), and nothing
/// overlaps.
struct SunnyFace {
    std::vector<Polygon> lit;
    std::vector<Polygon> shaded;

    /// The share of the face that is lit.
    double share() const;
};

/// The cosine between a face's normal and the sun, a unit vector; 0 where it faces away.
double slopeOf(const CubeFace& face, const arena::Triple& sun);

/// Where the sun shines, exactly: the sun is a point infinitely far away, and every shadow's edge
/// is the edge of a cube, seen from there.
class SunShadows {
  public:
    /// @param towardsSun  need not be a unit vector, but must point upwards
    SunShadows(const MapManager& map, const arena::Triple& towardsSun);

    /// How a visible face lies in the sun; wholly in the shade where it faces away.
    SunnyFace on(const CubeFace& face) const;

    /// See slopeOf().
    double slope(const CubeFace& face) const { return slopeOf(face, sun_); }

  private:
    /// Cells from `low` to below `high`.
    struct Block {
        std::array<int, 3> low;
        std::array<int, 3> high;
    };

    static std::vector<Block> blocksOf(const MapManager& map);
    std::vector<std::uint32_t> blocksTowardsSun(const CubeFace& face) const;
    std::size_t squareAt(int x, int z) const {
        return static_cast<std::size_t>(x) * static_cast<std::size_t>(squaresAlongZ_) +
               static_cast<std::size_t>(z);
    }

    /// Cubes, each in at least one block. Few large ones make few edges.
    std::vector<Block> blocks_;
    arena::Triple sun_;
    std::array<int, 3> cells_;

    /// The blocks that reach into each square of columns, in rows along z.
    std::vector<std::vector<std::uint32_t>> squares_;
    int squaresAlongZ_;
};

} // namespace drench::game
