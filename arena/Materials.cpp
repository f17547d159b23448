#include "arena/Materials.h"

namespace drench::arena {

namespace {

constexpr Material table[] = {
    {0, '.', "air", {0, 0, 0}},
    {1, 'g', "ground", {126, 174, 82}},
    {2, 's', "stone", {166, 164, 158}},
    {3, 'w', "wood", {182, 128, 74}},
    {4, 'b', "brick", {188, 86, 68}},
    {5, 'l', "leaves", {66, 130, 70}},
    {6, '~', "water", {76, 166, 220}},
    {7, 'm', "marble", {234, 230, 220}},
    {8, 'y', "sand", {232, 202, 132}},
    {9, 'c', "clay", {222, 124, 62}},
    {10, 't', "slate", {88, 102, 128}},
    {11, 'a', "tile", {40, 110, 186}},
    {12, 'p', "plaster", {244, 200, 180}},
};

} // namespace

std::span<const Material> materials() {
    return table;
}

const Material* materialOf(int cellValue) {
    const bool known = cellValue >= 0 && cellValue < static_cast<int>(std::size(table));
    return known ? &table[cellValue] : nullptr;
}

std::string materialName(int cellValue) {
    const Material* material = materialOf(cellValue);
    return material ? material->name : "material " + std::to_string(cellValue);
}

Colour colourOf(int cellValue) {
    if (const Material* material = materialOf(cellValue))
        return material->colour;
    // Multiplying by an odd number permutes the bytes, so no two values up to 255 share a red. Its
    // last blue bit is set, which no material's is.
    const auto value = static_cast<unsigned>(cellValue);
    return {static_cast<std::uint8_t>(value * 151u + 90u),
            static_cast<std::uint8_t>(value * 89u + 140u),
            static_cast<std::uint8_t>((value * 57u + 60u) | 1u)};
}

} // namespace drench::arena
