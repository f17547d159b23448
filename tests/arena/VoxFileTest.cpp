#include "arena/VoxFile.h"
#include "arena/Map.h"
#include "common/Files.h"
#include "src/FileLoader.h"
#include "tests/support/Arenas.h"
#include "tests/support/Courts.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <new>
#include <random>
#include <sstream>

namespace {

thread_local std::size_t allocatedBytes = 0;

} // namespace

// Counts what this thread allocates, so that tests can hold the reader of hostile files to a bound.
// GCC takes an inlined half of such a pair for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
    allocatedBytes += size;
    if (void* memory = std::malloc(size > 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    allocatedBytes += size;
    return std::malloc(size > 0 ? size : 1);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace drench::arena {
namespace {

std::string int32(long value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>(value >> shift & 0xff));
    return bytes;
}

std::string chunk(const std::string& id, const std::string& content,
                  const std::string& children = {}) {
    return id + int32(static_cast<long>(content.size())) +
           int32(static_cast<long>(children.size())) + content + children;
}

std::string size(long x, long y, long z) {
    return chunk("SIZE", int32(x) + int32(y) + int32(z));
}

struct Voxel {
    int x;
    int y;
    int z;
    int index;

    bool operator==(const Voxel&) const = default;
};

std::string xyzi(const std::vector<Voxel>& voxels) {
    std::string bytes = int32(static_cast<long>(voxels.size()));
    for (const Voxel& voxel : voxels) {
        for (const int number : {voxel.x, voxel.y, voxel.z, voxel.index})
            bytes.push_back(static_cast<char>(number));
    }
    return chunk("XYZI", bytes);
}

/// A palette with these colours from index 1 on, then black; all with this alpha.
std::string rgba(const std::vector<Colour>& colours, int alpha = 255) {
    std::string bytes;
    for (std::size_t entry = 0; entry < 256; ++entry) {
        const Colour colour = entry < colours.size() ? colours[entry] : Colour{};
        for (const int channel : {int{colour.red}, int{colour.green}, int{colour.blue}, alpha})
            bytes.push_back(static_cast<char>(channel));
    }
    return chunk("RGBA", bytes);
}

std::string file(const std::string& chunks, long version = 150) {
    return "VOX " + int32(version) + chunk("MAIN", "", chunks);
}

std::string withInt32(std::string bytes, std::size_t at, long value) {
    return bytes.replace(at, 4, int32(value));
}

/// Bytes of a file of `size` and `xyzi` first where these stand.
constexpr std::size_t mainAt = 8;
constexpr std::size_t sizeAt = 20;
constexpr std::size_t sidesAt = sizeAt + 12;
constexpr std::size_t xyziAt = sidesAt + 12;
constexpr std::size_t countAt = xyziAt + 12;

/// 2 × 3 × 4 voxels in the file's axes, two of them there, in colours of the default palette.
std::string smallFile() {
    return file(size(2, 3, 4) + xyzi({{0, 0, 0, 1}, {1, 2, 3, 255}}));
}

std::string refusalOf(const std::string& bytes) {
    try {
        readVox(bytes);
    } catch (const InputError& error) {
        return error.what();
    }
    return "no refusal";
}

std::string exportRefusalOf(const MapManager& map) {
    try {
        writeVox(map);
    } catch (const InputError& error) {
        return error.what();
    }
    return "no refusal";
}

/// A cell's `solid` and `cellValue`.
using Pair = std::array<int, 2>;

Pair pairAt(const MapManager& map, int column, int row, int depth) {
    const Box& cube = cell(map, column, row, depth);
    return {cube.solid, cube.cellValue};
}

int solidCells(const MapManager& map) {
    int count = 0;
    for (const auto& column : map.cubes) {
        for (const auto& row : column)
            count += static_cast<int>(
                std::count_if(row.begin(), row.end(), [](const Box& cube) { return cube.solid; }));
    }
    return count;
}

bool holdsOnlyAirAndCellValues(const MapManager& map) {
    const auto sound = [](const Box& cube) {
        return cube.solid == 0 ? cube.cellValue == 0
                               : cube.solid == 1 && cube.cellValue >= 1 && cube.cellValue <= 255;
    };
    for (const auto& column : map.cubes) {
        for (const auto& row : column) {
            if (!std::all_of(row.begin(), row.end(), sound))
                return false;
        }
    }
    return true;
}

/// The material that the one voxel of this colour became.
int readAs(Colour colour) {
    const VoxImport import = readVox(file(size(1, 1, 1) + xyzi({{0, 0, 0, 1}}) + rgba({colour})));
    return cell(import.map, 0, 0, 0).cellValue;
}

/// A line of the text that an editor's file was made of.
struct TextVoxel {
    int x;
    int y;
    int z;
    Colour colour;
};

std::vector<TextVoxel> textVoxels(const std::string& name) {
    std::istringstream lines(readFile(DRENCH_TEST_DATA "/" + name));
    std::vector<TextVoxel> voxels;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('#'))
            continue;
        std::istringstream words(line);
        TextVoxel voxel{};
        unsigned rgb = 0;
        words >> voxel.x >> voxel.y >> voxel.z >> std::hex >> rgb;
        voxel.colour = {static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
                        static_cast<std::uint8_t>(rgb)};
        voxels.push_back(voxel);
    }
    return voxels;
}

/// Length of a text's voxels along one axis, and where they begin.
struct Span {
    int first;
    int length;
};

Span spanOf(const std::vector<TextVoxel>& voxels, int TextVoxel::*axis) {
    const auto [least, most] =
        std::ranges::minmax(voxels, {}, [&](const TextVoxel& voxel) { return voxel.*axis; });
    return {least.*axis, most.*axis - least.*axis + 1};
}

VoxImport readTestFile(const std::string& name) {
    return readVox(readFile(DRENCH_TEST_DATA "/" + name));
}

/// What the file says of a cell's colour: its cellValue's own, or one that was replaced by it.
void expectSameVoxels(const VoxImport& import, const std::vector<TextVoxel>& voxels) {
    const Span x = spanOf(voxels, &TextVoxel::x);
    const Span y = spanOf(voxels, &TextVoxel::y);
    const Span z = spanOf(voxels, &TextVoxel::z);
    ASSERT_EQ(import.map.columns, x.length);
    ASSERT_EQ(import.map.rows, z.length);
    ASSERT_EQ(import.map.depth, y.length);
    EXPECT_EQ(solidCells(import.map), static_cast<int>(voxels.size()));
    std::vector<ReplacedColour> replaced;
    for (const TextVoxel& voxel : voxels) {
        const Pair pair = pairAt(import.map, voxel.x - x.first, voxel.z - z.first,
                                 y.length - 1 - (voxel.y - y.first));
        EXPECT_EQ(pair[0], 1) << voxel.x << " " << voxel.y << " " << voxel.z;
        if (colourOf(pair[1]) == voxel.colour)
            continue;
        const auto known = std::ranges::find(replaced, voxel.colour, &ReplacedColour::colour);
        if (known == replaced.end())
            replaced.push_back({voxel.colour, pair[1], 1});
        else
            ++known->voxels;
    }
    EXPECT_TRUE(std::ranges::is_permutation(replaced, import.replaced));
}

/// What reading may allocate where it ends in an error: less than any map of note takes.
constexpr std::size_t refusalAllowance = 4096;

/// What a map of so many cells may take, with the vectors that grow around it.
std::size_t mapAllowance(std::size_t cells) {
    return 16384 + cells * 8 * sizeof(Box);
}

enum class Outcome { refused, read };

/// Reads a file that may be damaged, and holds it to the bounds of memory and to a sound map.
Outcome readDamaged(const std::string& bytes) {
    const std::size_t before = allocatedBytes;
    try {
        const VoxImport import = readVox(bytes);
        const std::size_t allocated = allocatedBytes - before;
        const MapManager& map = import.map;
        EXPECT_TRUE(isArenaSize(map.columns, map.rows, map.depth));
        EXPECT_TRUE(std::max({map.columns, map.rows, map.depth}) <= 256);
        EXPECT_TRUE(holdsOnlyAirAndCellValues(map));
        const auto cells = static_cast<std::size_t>(map.columns * map.rows * map.depth);
        EXPECT_LE(allocated, mapAllowance(cells));
        return Outcome::read;
    } catch (const InputError&) {
        EXPECT_LE(allocatedBytes - before, refusalAllowance);
        return Outcome::refused;
    }
}

} // namespace

TEST(VoxExport, WritesSizeThenVoxelsThenPalette) {
    MapManager map = emptyMap(2, 3, 5);
    cell(map, 1, 2, 0).solid = 1;
    cell(map, 1, 2, 0).cellValue = 7;
    std::vector<Colour> colours;
    for (int cellValue = 1; cellValue <= 255; ++cellValue)
        colours.push_back(colourOf(cellValue));
    std::string palette = rgba(colours);
    palette.back() = '\0';
    EXPECT_EQ(writeVox(map), file(size(2, 5, 3) + xyzi({{1, 4, 2, 7}}) + palette));
}

TEST(VoxExport, EveryMapOfCellValuesComesBackAsItWas) {
    std::mt19937 random(7);
    for (int turn = 0; turn < 20; ++turn) {
        MapManager map = emptyMap(1 + turn % 5, 1 + turn % 7, 3 + turn);
        for (auto& column : map.cubes) {
            for (auto& row : column) {
                for (Box& cube : row) {
                    cube.solid = static_cast<int>(random() % 2);
                    cube.cellValue = cube.solid ? 1 + static_cast<int>(random() % 255) : 0;
                }
            }
        }
        const VoxImport import = readVox(writeVox(map));
        EXPECT_TRUE(sameCells(import.map, map)) << "turn " << turn;
        EXPECT_TRUE(import.replaced.empty()) << "turn " << turn;
    }
}

TEST(VoxExport, EveryCellValueComesBack) {
    MapManager map = emptyMap(255, 1, 1);
    for (int cellValue = 1; cellValue <= 255; ++cellValue) {
        cell(map, cellValue - 1, 0, 0).solid = 1;
        cell(map, cellValue - 1, 0, 0).cellValue = cellValue;
    }
    const VoxImport import = readVox(writeVox(map));
    EXPECT_TRUE(sameCells(import.map, map));
    EXPECT_TRUE(import.replaced.empty());
}

TEST(VoxExport, DefaultArenaComesBackAsItWas) {
    const MapManager map = loaded(fileStringContents(DRENCH_MAPDATA));
    ASSERT_GT(solidCells(map), 0);
    const VoxImport import = readVox(writeVox(map));
    EXPECT_TRUE(sameCells(import.map, map));
    EXPECT_TRUE(import.replaced.empty());
}

TEST(VoxExport, EmptyMapKeepsItsSize) {
    const MapManager map = emptyMap(3, 4, 5);
    EXPECT_TRUE(sameCells(readVox(writeVox(map)).map, map));
}

TEST(VoxExport, SidesUpTo256CubesAreHeldAndNoLonger) {
    for (const auto& [columns, rows, depth] :
         {std::array{256, 1, 2}, std::array{1, 256, 2}, std::array{1, 2, 256}}) {
        MapManager map = emptyMap(columns, rows, depth);
        Box& last = cell(map, columns - 1, rows - 1, depth - 1);
        last.solid = 1;
        last.cellValue = 3;
        cell(map, 0, 0, 0) = last;
        EXPECT_TRUE(sameCells(readVox(writeVox(map)).map, map));
    }
    EXPECT_EQ(exportRefusalOf(emptyMap(257, 1, 1)),
              "257 columns; the voxel format can hold 1 to 256 each way");
    EXPECT_EQ(exportRefusalOf(emptyMap(1, 257, 1)),
              "257 rows; the voxel format can hold 1 to 256 each way");
    EXPECT_EQ(exportRefusalOf(emptyMap(1, 1, 257)),
              "257 cubes of depth; the voxel format can hold 1 to 256 each way");
    EXPECT_EQ(exportRefusalOf(MapManager()),
              "0 columns; the voxel format can hold 1 to 256 each way");
}

TEST(VoxExport, CellsThatTheFormatCannotHoldAreNamed) {
    const std::string cannot = "; the voxel format can hold ";
    const std::map<Pair, std::string> refusals = {
        {{2, 7}, "has solid 2" + cannot + "0 and 1 only"},
        {{-1, 0}, "has solid -1" + cannot + "0 and 1 only"},
        {{257, 1}, "has solid 257" + cannot + "0 and 1 only"},
        {{1, 0}, "is solid with cellValue 0" + cannot + "1 to 255 there"},
        {{1, 256}, "is solid with cellValue 256" + cannot + "1 to 255 there"},
        {{1, -1}, "is solid with cellValue -1" + cannot + "1 to 255 there"},
        {{0, 1}, "is empty with cellValue 1" + cannot + "0 only there"},
        {{0, -3}, "is empty with cellValue -3" + cannot + "0 only there"},
        {{0, 256}, "is empty with cellValue 256" + cannot + "0 only there"},
    };
    for (const auto& [pair, words] : refusals) {
        MapManager map = emptyMap(4, 5, 6);
        cell(map, 3, 4, 2).solid = pair[0];
        cell(map, 3, 4, 2).cellValue = pair[1];
        EXPECT_EQ(exportRefusalOf(map), "cell (3, 4, 2) " + words);
    }
}

TEST(VoxFile, IsKnownByItsFirstFourBytes) {
    EXPECT_TRUE(isVox(smallFile()));
    EXPECT_TRUE(isVox("VOX "));
    EXPECT_FALSE(isVox("VOX"));
    EXPECT_FALSE(isVox(" VOX "));
    EXPECT_FALSE(isVox("32 16 32"));
}

TEST(VoxImport, FileOfAnEditorIsReadAsItsText) {
    const std::vector<TextVoxel> voxels = textVoxels("goxel.txt");
    ASSERT_EQ(voxels.size(), 32u);
    const VoxImport import = readTestFile("goxel.vox");
    expectSameVoxels(import, voxels);
    // The pillar stands at the file's low x and y: at the last depth index.
    EXPECT_EQ(cell(import.map, 0, 2, 3).solid, 1);
    EXPECT_EQ(cell(import.map, 0, 2, 0).solid, 0);
    EXPECT_EQ(cell(import.map, 4, 2, 3).solid, 1);
    EXPECT_EQ(cell(import.map, 4, 3, 3).solid, 0);
}

TEST(VoxImport, FileOfAnEditorWithoutAPaletteHasTheDefaultOne) {
    const std::vector<TextVoxel> voxels = textVoxels("goxel-default-palette.txt");
    ASSERT_EQ(voxels.size(), 254u);
    const std::string bytes = readFile(DRENCH_TEST_DATA "/goxel-default-palette.vox");
    ASSERT_EQ(bytes.find("RGBA"), std::string::npos);
    expectSameVoxels(readVox(bytes), voxels);
}

TEST(VoxImport, DefaultPaletteIsACubeThenFourRamps) {
    const std::map<int, Colour> known = {
        {1, {0xff, 0xff, 0xff}},   {2, {0xff, 0xff, 0xcc}},   {6, {0xff, 0xff, 0}},
        {7, {0xff, 0xcc, 0xff}},   {36, {0xff, 0, 0}},        {37, {0xcc, 0xff, 0xff}},
        {186, {0, 0xff, 0}},       {211, {0, 0, 0xff}},       {215, {0, 0, 0x33}},
        {216, {0xee, 0, 0}},       {225, {0x11, 0, 0}},       {226, {0, 0xee, 0}},
        {236, {0, 0, 0xee}},       {246, {0xee, 0xee, 0xee}}, {250, {0x88, 0x88, 0x88}},
        {255, {0x11, 0x11, 0x11}},
    };
    for (const auto& [index, colour] : known) {
        const VoxImport import = readVox(file(size(1, 1, 1) + xyzi({{0, 0, 0, index}})));
        ASSERT_EQ(import.replaced.size(), 1u) << "index " << index;
        EXPECT_EQ(import.replaced[0].colour, colour) << "index " << index;
    }
}

TEST(VoxImport, VoxelsLieAlongColumnsThenBackThroughDepthThenUpTheRows) {
    const VoxImport import = readVox(
        file(size(2, 3, 4) + xyzi({{0, 0, 0, 1}, {1, 0, 0, 2}, {0, 1, 0, 3}, {0, 0, 1, 4}}) +
             rgba({colourOf(1), colourOf(2), colourOf(3), colourOf(4)})));
    EXPECT_EQ(import.map.columns, 2);
    EXPECT_EQ(import.map.rows, 4);
    EXPECT_EQ(import.map.depth, 3);
    EXPECT_EQ(solidCells(import.map), 4);
    EXPECT_EQ(pairAt(import.map, 0, 0, 2), (Pair{1, 1}));
    EXPECT_EQ(pairAt(import.map, 1, 0, 2), (Pair{1, 2}));
    EXPECT_EQ(pairAt(import.map, 0, 0, 1), (Pair{1, 3}));
    EXPECT_EQ(pairAt(import.map, 0, 1, 2), (Pair{1, 4}));
    EXPECT_TRUE(holdsOnlyAirAndCellValues(import.map));
}

TEST(VoxImport, PaletteMayComeBeforeTheModelAndOtherChunksAnywhere) {
    const std::string other = chunk("nTRN", "content", chunk("XYZI", "lies") + "\xff\xff");
    const std::string voxels = xyzi({{0, 0, 0, 2}});
    const std::string palette = rgba({{}, colourOf(9)});
    const std::string bytes = file(other + palette + chunk("PACK", int32(1)) + other +
                                       size(1, 1, 1) + other + voxels + other,
                                   200);
    const VoxImport import = readVox(bytes);
    EXPECT_EQ(pairAt(import.map, 0, 0, 0), (Pair{1, 9}));
}

TEST(VoxImport, ContentOfMainAndChildrenOfKnownChunksAreSkipped) {
    const std::string inner = size(9, 9, 9) + xyzi({});
    const std::string known = chunk("SIZE", int32(1) + int32(1) + int32(1), inner) +
                              chunk("XYZI", int32(1) + std::string("\0\0\0\1", 4), inner);
    const VoxImport import = readVox("VOX " + int32(150) + chunk("MAIN", inner, known));
    EXPECT_EQ(import.map.columns, 1);
    EXPECT_EQ(solidCells(import.map), 1);
}

TEST(VoxImport, LastOfTwoVoxelsInACellCounts) {
    const VoxImport import =
        readVox(file(size(1, 1, 2) + xyzi({{0, 0, 0, 1}, {0, 0, 1, 1}, {0, 0, 0, 2}}) +
                     rgba({colourOf(5), colourOf(40)})));
    EXPECT_EQ(pairAt(import.map, 0, 0, 0), (Pair{1, 40}));
    EXPECT_EQ(pairAt(import.map, 0, 1, 0), (Pair{1, 5}));
}

TEST(VoxImport, TransparencyIsIgnored) {
    const VoxImport import =
        readVox(file(size(1, 1, 1) + xyzi({{0, 0, 0, 1}}) + rgba({colourOf(6)}, 0)));
    EXPECT_EQ(pairAt(import.map, 0, 0, 0), (Pair{1, 6}));
}

TEST(VoxImport, OtherColoursBecomeTheNearestMaterial) {
    for (const Material& material : materials().subspan(1)) {
        Colour close = material.colour;
        close.red = static_cast<std::uint8_t>(close.red + 2);
        close.green = static_cast<std::uint8_t>(close.green - 2);
        EXPECT_EQ(readAs(close), material.cellValue) << material.name;
    }
}

TEST(VoxImport, NearnessIsThatOfTheEye) {
    EXPECT_EQ(readAs({15, 150, 165}), 6) << "water; by its RGB it would be tile";
    EXPECT_EQ(readAs({15, 180, 30}), 1) << "ground; by its RGB it would be leaves";
    EXPECT_EQ(readAs({255, 255, 255}), 7) << "marble";
}

TEST(VoxImport, BlackIsNoAir) {
    EXPECT_GT(readAs({0, 0, 0}), 0);
}

TEST(VoxImport, ReplacedColoursAreListedByVoxelsThenByColour) {
    const Colour red{250, 0, 0};
    const Colour green{0, 250, 0};
    const Colour darkGreen{0, 60, 0};
    const Colour lightGreen{0, 250, 1};
    // Red stands twice in the palette.
    const std::string palette = rgba({lightGreen, green, red, colourOf(3), darkGreen, red});
    const std::string voxels = xyzi({{0, 0, 0, 1},
                                     {1, 0, 0, 2},
                                     {2, 0, 0, 3},
                                     {3, 0, 0, 4},
                                     {4, 0, 0, 5},
                                     {5, 0, 0, 6},
                                     {6, 0, 0, 3}});
    const VoxImport import = readVox(file(size(7, 1, 1) + voxels + palette));
    const auto became = [&](int column) { return cell(import.map, column, 0, 0).cellValue; };
    EXPECT_EQ(import.replaced, (std::vector<ReplacedColour>{{red, became(2), 3},
                                                            {darkGreen, became(4), 1},
                                                            {green, became(1), 1},
                                                            {lightGreen, became(0), 1}}));
    EXPECT_EQ(became(2), became(5));
    EXPECT_EQ(became(3), 3);
}

TEST(VoxImport, SeveralModelsAreRefusedWithTheirNumber) {
    const std::string model = size(1, 1, 1) + xyzi({{0, 0, 0, 1}});
    const std::string words = " models; merge them into one in the editor";
    EXPECT_EQ(refusalOf(file(model + model)), "holds 2" + words);
    EXPECT_EQ(refusalOf(file(chunk("PACK", int32(3)) + model + model + model)), "holds 3" + words);
    EXPECT_EQ(refusalOf(file(chunk("PACK", int32(3)) + model)),
              "byte 32: PACK says 3 models, but 1 follows");
    EXPECT_EQ(refusalOf(file(chunk("PACK", int32(-1)) + model)),
              "byte 32: PACK says -1 models, but 1 follows");
}

TEST(VoxImport, RefusalsSayTheByteWhatStandsThereAndWhatIsAllowed) {
    const std::string good = smallFile();
    const std::string voxels = xyzi({{0, 0, 0, 1}});
    const auto sized = [&](long x, long y, long z) { return file(size(x, y, z) + voxels); };
    const std::vector<std::array<std::string, 2>> refusals = {
        {"", "byte 0: no \"VOX \" at the start, so this is no voxel file"},
        {"32 16 32\n 1 2", "byte 0: no \"VOX \" at the start, so this is no voxel file"},
        {"VOX \x96", "byte 4: the end where the version is allowed"},
        {withInt32(good, 4, 151), "byte 4: version 151, where 150 and 200 are allowed"},
        {withInt32(good, 4, -1), "byte 4: version -1, where 150 and 200 are allowed"},
        {good.substr(0, 19), "byte 8: 11 bytes, too few for the head of a chunk"},
        {std::string(good).replace(8, 4, "M\xc3\n\x7f"),
         "byte 8: chunk M??? where MAIN is allowed"},
        {good + "more", "byte 68: 4 bytes after the end of MAIN"},
        {file(""), "byte 20: the end, and no model before it"},
        {file(rgba({})), "byte 1056: the end, and no model before it"},
        {file(size(1, 1, 1)), "byte 44: the end where XYZI is allowed next"},
        {file(voxels), "byte 20: XYZI where SIZE is allowed next"},
        {file(size(1, 1, 1) + size(1, 1, 1)), "byte 44: SIZE where XYZI is allowed next"},
        {file(chunk("SIZE", "12345678")),
         "byte 24: SIZE with 8 bytes of content, where 12 are allowed"},
        {file(chunk("PACK", "")), "byte 24: PACK with 0 bytes of content, where 4 are allowed"},
        {file(chunk("RGBA", std::string(768, ' '))),
         "byte 24: RGBA with 768 bytes of content, where 1024 are allowed"},
        {file(size(1, 1, 1) + chunk("XYZI", "abc")), "byte 48: XYZI without a count of voxels"},
        {sized(0, 1, 1),
         "byte 32: a model of 0 x 1 x 1 voxels, where 1 to 256 are allowed each way"},
        {sized(1, -2, 1),
         "byte 32: a model of 1 x -2 x 1 voxels, where 1 to 256 are allowed each way"},
        {sized(1, 1, 257),
         "byte 32: a model of 1 x 1 x 257 voxels, where 1 to 256 are allowed each way"},
        {sized(256, 256, 33),
         "byte 32: a model of 256 x 256 x 33 voxels, where at most 2097152 are "
         "allowed together"},
        {withInt32(good, countAt, 3), "byte 56: 3 voxels in 8 bytes, where each takes 4"},
        {withInt32(good, countAt, 1), "byte 56: 1 voxels in 8 bytes, where each takes 4"},
        {withInt32(good, countAt, -2), "byte 56: -2 voxels in 8 bytes, where each takes 4"},
        {withInt32(good, countAt, 0x40000002),
         "byte 56: 1073741826 voxels in 8 bytes, where each takes 4"},
        {file(size(1, 1, 1) + xyzi({{0, 0, 0, 1}, {0, 0, 0, 0}})),
         "byte 67: colour index 0, where 1 to 255 are allowed"},
        {file(size(2, 3, 4) + xyzi({{0, 0, 0, 1}, {2, 0, 0, 1}})),
         "byte 64: voxel (2, 0, 0) lies outside the model of 2 x 3 x 4"},
        {file(size(2, 3, 4) + xyzi({{0, 3, 0, 1}})),
         "byte 60: voxel (0, 3, 0) lies outside the model of 2 x 3 x 4"},
        {file(size(2, 3, 4) + xyzi({{0, 0, 255, 1}})),
         "byte 60: voxel (0, 0, 255) lies outside the model of 2 x 3 x 4"},
    };
    for (const auto& [bytes, words] : refusals)
        EXPECT_EQ(refusalOf(bytes), words);
}

TEST(VoxImport, LengthsMustLieWithinWhatHoldsThem) {
    const std::string good = smallFile();
    EXPECT_EQ(refusalOf(withInt32(good, mainAt + 4, 49)),
              "byte 12: MAIN with content of 49 bytes, where 48 are left");
    EXPECT_EQ(refusalOf(withInt32(good, mainAt + 8, 49)),
              "byte 16: MAIN with children of 49 bytes, where 48 are left");
    EXPECT_EQ(refusalOf(withInt32(good, mainAt + 4, -1)),
              "byte 12: MAIN with content of -1 bytes, where 48 are left");
    EXPECT_EQ(refusalOf(withInt32(good, xyziAt + 4, INT_MAX)),
              "byte 48: XYZI with content of 2147483647 bytes, where 12 are left");
    EXPECT_EQ(refusalOf(withInt32(good, xyziAt + 8, 1)),
              "byte 52: XYZI with children of 1 bytes, where 0 are left");
    EXPECT_EQ(refusalOf(withInt32(good, sizeAt + 8, INT_MIN)),
              "byte 28: SIZE with children of -2147483648 bytes, where 24 are left");
}

TEST(VoxImport, FileCutAnywhereIsRefused) {
    for (const std::string& whole :
         {smallFile(), readFile(DRENCH_TEST_DATA "/goxel.vox"),
          file(chunk("nGRP", "", chunk("PACK", int32(1))) + size(1, 1, 1) + xyzi({}) + rgba({}))}) {
        ASSERT_EQ(readDamaged(whole), Outcome::read);
        for (std::size_t length = 0; length < whole.size(); ++length)
            EXPECT_EQ(readDamaged(whole.substr(0, length)), Outcome::refused) << "at " << length;
    }
}

TEST(VoxImport, HugeModelsAreRefusedBeforeAnyMapIsMade) {
    const std::string good = smallFile();
    for (const long side : {long{INT_MIN}, -1L, 0L, 257L, 65536L, 1L << 30, long{INT_MAX}}) {
        for (const std::size_t axis : {sidesAt, sidesAt + 4, sidesAt + 8})
            EXPECT_EQ(readDamaged(withInt32(good, axis, side)), Outcome::refused) << side;
    }
    for (const auto& [x, y, z] : {std::array{256L, 256L, 256L}, std::array{65536L, 65536L, 65536L},
                                  std::array{-1L, -1L, 1L}, std::array{1L << 31, 1L << 31, 4L}})
        EXPECT_EQ(readDamaged(file(size(x, y, z) + xyzi({}))), Outcome::refused) << x;
}

TEST(VoxImport, DamagedNumbersNeverDoMoreThanTheirMap) {
    const std::string good =
        file(chunk("PACK", int32(1)) + size(4, 5, 6) + xyzi({{3, 4, 5, 1}, {0, 1, 2, 40}}));
    int refused = 0;
    for (std::size_t at = 0; at + 4 <= good.size(); ++at) {
        for (const long value : {long{INT_MIN}, -5L, -1L, 0L, 1L, 12L, 0x40000000L, 0x7ffffff0L,
                                 long{INT_MAX}, static_cast<long>(good.size() - at)})
            refused += readDamaged(withInt32(good, at, value)) == Outcome::refused;
    }
    EXPECT_GT(refused, 700);
}

TEST(VoxImport, TwentyThousandDamagedFilesAreRefusedOrReadAsSoundMaps) {
    const std::string files[] = {
        smallFile(),
        file(chunk("nTRN", "abcd", chunk("nGRP", "efgh")) + size(5, 4, 3) +
                 xyzi({{0, 0, 0, 1}, {4, 3, 2, 9}, {1, 1, 1, 255}}) + chunk("LAYR", ""),
             200),
        readFile(DRENCH_TEST_DATA "/goxel.vox"),
    };
    std::mt19937 random(20240);
    const auto below = [&](std::size_t bound) { return random() % bound; };
    int read = 0;
    constexpr int turns = 20000;
    for (int turn = 0; turn < turns; ++turn) {
        std::string bytes = files[below(std::size(files))];
        for (std::size_t changes = 1 + below(3); changes > 0; --changes) {
            const std::size_t at = below(std::min<std::size_t>(bytes.size(), 200));
            const std::size_t kind = below(10);
            if (kind == 0)
                bytes.erase(at, 1 + below(16));
            else if (kind == 1)
                bytes.insert(at, bytes.substr(below(bytes.size()), below(40)));
            else if (kind == 2)
                bytes[at] = static_cast<char>(below(256));
            else
                bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
        }
        read += readDamaged(bytes) == Outcome::read;
    }
    EXPECT_GT(read, turns / 50);
    EXPECT_LT(read, turns / 2);
}

} // namespace drench::arena
