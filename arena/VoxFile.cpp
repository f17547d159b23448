#include "arena/VoxFile.h"

#include "arena/Map.h"
#include "arena/NearestMaterial.h"
#include "arena/VoxChunks.h"
#include "common/Files.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <tuple>

namespace drench::arena {

namespace {

/// One colour for each index; the colour of index 0 is never used.
using Palette = std::array<Colour, 256>;

/// "(1, 2, 3)"
std::string placeWords(int x, int y, int z) {
    return "(" + std::to_string(x) + ", " + std::to_string(y) + ", " + std::to_string(z) + ")";
}

std::string int32Bytes(std::size_t value) {
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>(value >> shift & 0xff));
    return bytes;
}

Palette defaultPalette() {
    Palette palette;
    std::size_t next = 1;
    const std::uint8_t cube[] = {0xff, 0xcc, 0x99, 0x66, 0x33, 0x00};
    for (const std::uint8_t red : cube) {
        for (const std::uint8_t green : cube) {
            for (const std::uint8_t blue : cube)
                palette[next++] = {red, green, blue};
        }
    }
    // The last of them, black, makes way for the first of the ramps.
    --next;
    for (const Colour channels : {Colour{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}}) {
        for (const int level : {0xee, 0xdd, 0xbb, 0xaa, 0x88, 0x77, 0x55, 0x44, 0x22, 0x11})
            palette[next++] = {static_cast<std::uint8_t>(channels.red * level),
                               static_cast<std::uint8_t>(channels.green * level),
                               static_cast<std::uint8_t>(channels.blue * level)};
    }
    return palette;
}

Palette paletteAt(const std::string& bytes, std::size_t at) {
    Palette palette;
    for (std::size_t index = 1; index < palette.size(); ++index) {
        const std::size_t entry = at + (index - 1) * 4;
        palette[index] = {byteAt(bytes, entry), byteAt(bytes, entry + 1), byteAt(bytes, entry + 2)};
    }
    return palette;
}

/// The solid cellValue that has exactly this colour, or 0.
int cellValueOf(Colour colour) {
    for (int cellValue = 1; cellValue <= 255; ++cellValue) {
        if (colourOf(cellValue) == colour)
            return cellValue;
    }
    return 0;
}

void note(std::vector<ReplacedColour>& replaced, const ReplacedColour& more) {
    for (ReplacedColour& known : replaced) {
        if (known.colour == more.colour) {
            known.voxels += more.voxels;
            return;
        }
    }
    replaced.push_back(more);
}

bool comesBefore(const ReplacedColour& a, const ReplacedColour& b) {
    return std::tie(b.voxels, a.colour.red, a.colour.green, a.colour.blue) <
           std::tie(a.voxels, b.colour.red, b.colour.green, b.colour.blue);
}

void requireSide(int cubes, const char* what) {
    if (cubes < 1 || cubes > longestVoxSide)
        throw InputError(std::to_string(cubes) + " " + what +
                         "; the voxel format can hold 1 to 256 each way");
}

[[noreturn]] void refuseCell(int column, int row, int depth, const std::string& what) {
    throw InputError("cell " + placeWords(column, row, depth) + " " + what);
}

void requireHoldable(const Box& cube, int column, int row, int depth) {
    if (cube.solid != 0 && cube.solid != 1)
        refuseCell(column, row, depth,
                   "has solid " + std::to_string(cube.solid) +
                       "; the voxel format can hold 0 and 1 only");
    if (cube.solid == 1 && (cube.cellValue < 1 || cube.cellValue > 255))
        refuseCell(column, row, depth,
                   "is solid with cellValue " + std::to_string(cube.cellValue) +
                       "; the voxel format can hold 1 to 255 there");
    if (cube.solid == 0 && cube.cellValue != 0)
        refuseCell(column, row, depth,
                   "is empty with cellValue " + std::to_string(cube.cellValue) +
                       "; the voxel format can hold 0 only there");
}

std::string voxelsOf(const MapManager& map) {
    std::string voxels;
    for (int column = 0; column < map.columns; ++column) {
        for (int row = 0; row < map.rows; ++row) {
            for (int depth = 0; depth < map.depth; ++depth) {
                const Box& cube = cell(map, column, row, depth);
                requireHoldable(cube, column, row, depth);
                if (cube.solid == 0)
                    continue;
                for (const int number : {column, map.depth - 1 - depth, row, cube.cellValue})
                    voxels.push_back(static_cast<char>(number));
            }
        }
    }
    return voxels;
}

std::string paletteOfCellValues() {
    std::string entries;
    for (int cellValue = 1; cellValue <= 255; ++cellValue) {
        const Colour colour = colourOf(cellValue);
        for (const std::uint8_t channel : {colour.red, colour.green, colour.blue})
            entries.push_back(static_cast<char>(channel));
        entries.push_back('\xff');
    }
    entries.append(4, '\0');
    return entries;
}

std::string chunkBytes(const char* id, const std::string& content,
                       const std::string& children = {}) {
    return id + int32Bytes(content.size()) + int32Bytes(children.size()) + content + children;
}

} // namespace

bool isVox(const std::string& bytes) {
    return bytes.starts_with(voxMagic);
}

VoxImport readVox(const std::string& bytes) {
    const VoxLayout layout = voxLayoutOf(bytes);
    const VoxSides sides = voxSidesAt(bytes, layout.size);

    std::array<long, 256> voxelsOfIndex{};
    for (std::size_t at = layout.voxels; at < layout.voxelsEnd; at += voxelBytes) {
        const int x = byteAt(bytes, at);
        const int y = byteAt(bytes, at + 1);
        const int z = byteAt(bytes, at + 2);
        if (x >= sides.x || y >= sides.y || z >= sides.z)
            failAtByte(at, "voxel " + placeWords(x, y, z) + " lies outside the model of " +
                               sizeWords(sides.x, sides.y, sides.z));
        const std::uint8_t index = byteAt(bytes, at + 3);
        if (index == 0)
            failAtByte(at + 3, "colour index 0, where 1 to 255 are allowed");
        ++voxelsOfIndex[index];
    }

    const Palette palette =
        layout.palette == 0 ? defaultPalette() : paletteAt(bytes, layout.palette);
    VoxImport result;
    std::array<int, 256> cellValues{};
    for (std::size_t index = 1; index < palette.size(); ++index) {
        if (voxelsOfIndex[index] == 0)
            continue;
        const Colour colour = palette[index];
        cellValues[index] = cellValueOf(colour);
        if (cellValues[index] != 0)
            continue;
        cellValues[index] = nearestMaterial(colour);
        note(result.replaced, {colour, cellValues[index], voxelsOfIndex[index]});
    }
    std::sort(result.replaced.begin(), result.replaced.end(), comesBefore);

    result.map = emptyMap(sides.x, sides.z, sides.y);
    for (std::size_t at = layout.voxels; at < layout.voxelsEnd; at += voxelBytes) {
        Box& cube = cell(result.map, byteAt(bytes, at), byteAt(bytes, at + 2),
                         sides.y - 1 - byteAt(bytes, at + 1));
        cube.solid = 1;
        cube.cellValue = cellValues[byteAt(bytes, at + 3)];
    }
    return result;
}

std::string writeVox(const MapManager& map) {
    requireSide(map.columns, "columns");
    requireSide(map.rows, "rows");
    requireSide(map.depth, "cubes of depth");
    const std::string voxels = voxelsOf(map);
    const std::string size = int32Bytes(static_cast<std::size_t>(map.columns)) +
                             int32Bytes(static_cast<std::size_t>(map.depth)) +
                             int32Bytes(static_cast<std::size_t>(map.rows));
    const std::string chunks = chunkBytes("SIZE", size) +
                               chunkBytes("XYZI", int32Bytes(voxels.size() / voxelBytes) + voxels) +
                               chunkBytes("RGBA", paletteOfCellValues());
    return std::string(voxMagic) + int32Bytes(150) + chunkBytes("MAIN", "", chunks);
}

} // namespace drench::arena
