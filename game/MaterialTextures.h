#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace drench::game {

// What the materials of an arena look like from near. A texture says by how much its places differ
// from the material's colour; on the whole they do not, so that from afar a face has the colour
// that it has without a texture.

/// Texels along each side of a texture, and the cubes that it covers; then it begins anew.
constexpr int textureSide = 128;
constexpr int textureCubes = 2;

/// Shares of the material's red, green and blue, of which `unchanged` is the whole; alpha is 255.
using Texel = std::array<std::uint8_t, 4>;
constexpr int unchanged = 128;

/// The number of textures: one for each material, and number 0 without any change.
int textureCount();

/// The number of the texture for a cellValue; 0 if it has none.
std::uint8_t textureOf(int cellValue);

/// The texels of a texture, row by row. The first row is the lowest one on a wall.
std::vector<Texel> texelsOf(int texture);

} // namespace drench::game
