#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace drench::arena {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Colour&) const = default;
};

/// The meaning of a cellValue: its character in plans, its name, its colour in pictures and voxel
/// files.
struct Material {
    int cellValue;
    char character;
    const char* name;
    Colour colour;
};

/// Air (cellValue 0) first, then every solid material, cellValues ascending without gaps.
std::span<const Material> materials();

/// The material of this cellValue, or null if it has none.
const Material* materialOf(int cellValue);

/// "stone", or "material 40" for a cellValue without a material.
std::string materialName(int cellValue);

/// The material's colour. Any other value has a fixed colour of its own, which differs from every
/// material's and, up to 255, from every other value's.
Colour colourOf(int cellValue);

} // namespace drench::arena
