#pragma once

#include "arena/Materials.h"

#include <array>
#include <cstdint>
#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <vector>

namespace drench::game {

// Things with flat faces that move: players and what they hold.

/// A corner of a triangle, not yet lit.
struct SolidVertex {
    /// World units.
    glm::vec3 position{0.0f};

    /// Unit normal of the triangle.
    glm::vec3 normal{0.0f};
    arena::Colour colour;

    /// The share of the sun's light that gets there, 0 to 255.
    std::uint8_t sun = 255;
};

static_assert(sizeof(SolidVertex) == 28);

/// Triangles, counter-clockwise as seen from outside; three vertices each.
struct Solids {
    std::vector<SolidVertex> vertices;

    /// Of what is added from now on.
    std::uint8_t sun = 255;
};

/// A block between two corners of a local space. Its end at the higher z is smaller by `taper`
/// along x and y, about the block's axis.
/// @param place  from the local space to the world: turns and shifts only
void addBlock(Solids& solids, const glm::mat4& place, glm::vec3 low, glm::vec3 high,
              arena::Colour colour, float taper = 1.0f);

/// A block from one point to another, square across.
void addLimb(Solids& solids, const glm::mat4& place, glm::vec3 from, glm::vec3 to, float thickness,
             arena::Colour colour);

/// A tube with eight sides along local z, from `back` to a `length` further; closed at both ends.
void addTube(Solids& solids, const glm::mat4& place, glm::vec3 back, float length, float radius,
             float radiusAtEnd, arena::Colour colour);

/// A colour with this share of its brightness.
arena::Colour darker(arena::Colour colour, float share);

} // namespace drench::game
