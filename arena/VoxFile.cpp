#include "arena/VoxFile.h"

#include "arena/Map.h"
#include "common/Files.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>
#include <tuple>

namespace drench::arena {

namespace {

/// Coordinates are bytes. Editors write larger models with coordinates that wrap around.
constexpr int longestSide = 256;

constexpr std::size_t chunkHeaderBytes = 12;
constexpr std::size_t sizeBytes = 12;
constexpr std::size_t voxelBytes = 4;
constexpr std::size_t paletteBytes = 1024;

/// One colour for each index; that of index 0 is never used.
using Palette = std::array<Colour, 256>;

[[noreturn]] void fail(std::size_t byte, const std::string& what) {
    throw InputError("byte " + std::to_string(byte) + ": " + what);
}

std::string triple(long x, long y, long z, const char* separator) {
    return std::to_string(x) + separator + std::to_string(y) + separator + std::to_string(z);
}

std::uint8_t byteAt(const std::string& bytes, std::size_t at) {
    return static_cast<std::uint8_t>(bytes[at]);
}

std::int32_t int32At(const std::string& bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | byteAt(bytes, at + i);
    return static_cast<std::int32_t>(value);
}

std::string int32Bytes(std::size_t value) {
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>(value >> shift & 0xff));
    return bytes;
}

struct Chunk {
    std::string_view id;
    std::size_t start;
    std::size_t content;
    std::size_t children;
    std::size_t end;

    std::size_t contentBytes() const { return children - content; }
};

/// The id as text for messages, whatever its bytes are.
std::string printable(std::string_view id) {
    std::string text(id);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

/// Where a part of a chunk ends that begins at `start` and whose length stands at `at`.
std::size_t endOfPart(const std::string& bytes, std::size_t at, std::size_t start, std::size_t end,
                      std::string_view id, const char* part) {
    const std::int32_t length = int32At(bytes, at);
    if (length < 0 || static_cast<std::size_t>(length) > end - start)
        fail(at, printable(id) + " with " + part + " of " + std::to_string(length) +
                     " bytes, where " + std::to_string(end - start) + " are left");
    return start + static_cast<std::size_t>(length);
}

/// The chunk that starts at `start` and must not reach beyond `end`.
Chunk chunkAt(const std::string& bytes, std::size_t start, std::size_t end) {
    if (end - start < chunkHeaderBytes)
        fail(start, std::to_string(end - start) + " bytes, too few for the head of a chunk");
    const std::string_view id = std::string_view(bytes).substr(start, 4);
    const std::size_t content = start + chunkHeaderBytes;
    const std::size_t children = endOfPart(bytes, start + 4, content, end, id, "content");
    const std::size_t chunkEnd = endOfPart(bytes, start + 8, children, end, id, "children");
    return {id, start, content, children, chunkEnd};
}

void requireContent(const Chunk& chunk, std::size_t allowed) {
    if (chunk.contentBytes() != allowed)
        fail(chunk.start + 4,
             printable(chunk.id) + " with " + std::to_string(chunk.contentBytes()) +
                 " bytes of content, where " + std::to_string(allowed) + " are allowed");
}

/// Where things stand in a file of one model. No offset is 0 but that of a missing palette.
struct Layout {
    std::size_t size = 0;
    std::size_t voxels = 0;
    std::size_t voxelsEnd = 0;
    std::size_t palette = 0;
};

Chunk mainChunk(const std::string& bytes) {
    if (!isVox(bytes))
        fail(0, "no \"VOX \" at the start, so this is no voxel file");
    if (bytes.size() < 8)
        fail(4, "the end where the version is allowed");
    const std::int32_t version = int32At(bytes, 4);
    if (version != 150 && version != 200)
        fail(4, "version " + std::to_string(version) + ", where 150 and 200 are allowed");
    const Chunk main = chunkAt(bytes, 8, bytes.size());
    if (main.id != "MAIN")
        fail(main.start, "chunk " + printable(main.id) + " where MAIN is allowed");
    if (main.end != bytes.size())
        fail(main.end, std::to_string(bytes.size() - main.end) + " bytes after the end of MAIN");
    return main;
}

void placeVoxels(const std::string& bytes, const Chunk& chunk, Layout& layout) {
    if (chunk.contentBytes() < 4)
        fail(chunk.start + 4, "XYZI without a count of voxels");
    layout.voxels = chunk.content + 4;
    layout.voxelsEnd = chunk.children;
    const std::int32_t count = int32At(bytes, chunk.content);
    const std::size_t room = layout.voxelsEnd - layout.voxels;
    if (count < 0 || static_cast<std::size_t>(count) * voxelBytes != room)
        fail(chunk.content, std::to_string(count) + " voxels in " + std::to_string(room) +
                                " bytes, where each takes 4");
}

Layout layoutOf(const std::string& bytes) {
    const Chunk main = mainChunk(bytes);
    Layout layout;
    std::size_t pack = 0;
    int models = 0;
    bool sizeIsNext = true;
    for (std::size_t at = main.children; at < main.end;) {
        const Chunk chunk = chunkAt(bytes, at, main.end);
        if (chunk.id == "SIZE" || chunk.id == "XYZI") {
            if (sizeIsNext != (chunk.id == "SIZE"))
                fail(at, printable(chunk.id) + " where " + (sizeIsNext ? "SIZE" : "XYZI") +
                             " is allowed next");
            sizeIsNext = !sizeIsNext;
        }
        if (chunk.id == "SIZE") {
            requireContent(chunk, sizeBytes);
            layout.size = chunk.content;
        } else if (chunk.id == "XYZI") {
            placeVoxels(bytes, chunk, layout);
            ++models;
        } else if (chunk.id == "RGBA") {
            requireContent(chunk, paletteBytes);
            layout.palette = chunk.content;
        } else if (chunk.id == "PACK") {
            requireContent(chunk, 4);
            pack = chunk.content;
        }
        at = chunk.end;
    }
    if (!sizeIsNext)
        fail(main.end, "the end where XYZI is allowed next");
    if (models == 0)
        fail(main.end, "the end, and no model before it");
    if (models > 1)
        throw InputError("holds " + std::to_string(models) +
                         " models; merge them into one in the editor");
    if (pack != 0 && int32At(bytes, pack) != models)
        fail(pack, "PACK says " + std::to_string(int32At(bytes, pack)) + " models, but 1 follows");
    return layout;
}

/// Edges of a model along the file's x, y and z.
struct Sides {
    int x;
    int y;
    int z;
};

Sides sidesAt(const std::string& bytes, std::size_t at) {
    const Sides sides{int32At(bytes, at), int32At(bytes, at + 4), int32At(bytes, at + 8)};
    const auto [shortest, longest] = std::minmax({sides.x, sides.y, sides.z});
    const std::string size = "a model of " + triple(sides.x, sides.y, sides.z, " x ") + " voxels";
    if (shortest < 1 || longest > longestSide)
        fail(at, size + ", where 1 to 256 are allowed each way");
    if (!isArenaSize(sides.x, sides.z, sides.y))
        fail(at, size + ", where at most " + std::to_string(mostCells) + " are allowed together");
    return sides;
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
    // Black, which came last, makes way for the first of the ramps.
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

using Oklab = std::array<double, 3>;

/// Intensity of light, from 0 to 1, of a channel in sRGB (IEC 61966-2-1).
double linear(std::uint8_t channel) {
    const double value = channel / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

Oklab oklab(Colour colour) {
    const double red = linear(colour.red);
    const double green = linear(colour.green);
    const double blue = linear(colour.blue);
    const double l = std::cbrt(0.4122214708 * red + 0.5363325363 * green + 0.0514459929 * blue);
    const double m = std::cbrt(0.2119034982 * red + 0.6806995451 * green + 0.1073969566 * blue);
    const double s = std::cbrt(0.0883024619 * red + 0.2817188376 * green + 0.6299787005 * blue);
    return {0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
            1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
            0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
}

double squaredDistance(const Oklab& a, const Oklab& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return sum;
}

/// The solid material whose colour is nearest; of several, the one with the lowest cellValue.
int nearestMaterial(Colour colour) {
    const Oklab wanted = oklab(colour);
    double least = std::numeric_limits<double>::infinity();
    int nearest = 0;
    for (const Material& material : materials().subspan(1)) {
        const double distance = squaredDistance(oklab(material.colour), wanted);
        if (distance < least) {
            least = distance;
            nearest = material.cellValue;
        }
    }
    return nearest;
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
    if (cubes < 1 || cubes > longestSide)
        throw InputError(std::to_string(cubes) + " " + what +
                         "; the voxel format can hold 1 to 256 each way");
}

[[noreturn]] void refuseCell(int column, int row, int depth, const std::string& what) {
    throw InputError("cell (" + triple(column, row, depth, ", ") + ") " + what);
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
    return bytes.starts_with("VOX ");
}

VoxImport readVox(const std::string& bytes) {
    const Layout layout = layoutOf(bytes);
    const Sides sides = sidesAt(bytes, layout.size);

    std::array<long, 256> voxelsOfIndex{};
    for (std::size_t at = layout.voxels; at < layout.voxelsEnd; at += voxelBytes) {
        const int x = byteAt(bytes, at);
        const int y = byteAt(bytes, at + 1);
        const int z = byteAt(bytes, at + 2);
        if (x >= sides.x || y >= sides.y || z >= sides.z)
            fail(at, "voxel (" + triple(x, y, z, ", ") + ") lies outside the model of " +
                         triple(sides.x, sides.y, sides.z, " x "));
        const std::uint8_t index = byteAt(bytes, at + 3);
        if (index == 0)
            fail(at + 3, "colour index 0, where 1 to 255 are allowed");
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
    return "VOX " + int32Bytes(150) + chunkBytes("MAIN", "", chunks);
}

} // namespace drench::arena
