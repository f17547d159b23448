#include "src/MapManager.h"
#include "src/FileLoader.h"
#include "tests/support/Arenas.h"
#include "tests/support/Components.h"
#include "tests/support/TemporaryFolder.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

/// As the server loads its map: through a file.
MapManager loadedFromFile(const std::string& text) {
    const TemporaryFolder folder;
    return loaded(fileStringContents(folder.write("mapdata", text)));
}

/// columns, rows, depth
using Dimensions = std::array<int, 3>;

Dimensions dimensions(const MapManager& map) {
    return {map.columns, map.rows, map.depth};
}

Three extents(const MapManager& map) {
    return {map.width, map.height, map.length};
}

/// The `solid` and `cellValue` of every cell, in the order of the text.
std::vector<int> numbers(const MapManager& map) {
    std::vector<int> all;
    for (const auto& column : map.cubes) {
        for (const auto& row : column) {
            for (const Box& cube : row) {
                all.push_back(cube.solid);
                all.push_back(cube.cellValue);
            }
        }
    }
    return all;
}

using Numbers = std::vector<int>;

} // namespace

TEST(MapFile, BeforeLoadingThereIsNoWorld) {
    const MapManager map;
    EXPECT_EQ(dimensions(map), (Dimensions{0, 0, 0}));
    EXPECT_TRUE(map.cubes.empty());
}

TEST(MapFile, OneCubeReachesFromTheOriginToSixtyFour) {
    const MapManager map = loaded("1 1 1 1 7");
    EXPECT_EQ(map.cubeSize, 64);
    EXPECT_EQ(extents(map), (Three{64, 64, 64}));
    ASSERT_EQ(numbers(map), (Numbers{1, 7}));
    const Box& cube = map.cubes[0][0][0];
    EXPECT_EQ(components(cube.centre), (Three{32, 32, 32}));
    EXPECT_EQ(components(cube.min), (Three{0, 0, 0}));
    EXPECT_EQ(components(cube.max), (Three{64, 64, 64}));
}

TEST(MapFile, HeaderGivesColumnsThenRowsThenDepth) {
    const MapManager map = loaded("2 3 5");
    EXPECT_EQ(dimensions(map), (Dimensions{2, 3, 5}));
    EXPECT_EQ(extents(map), (Three{128, 192, 320}));
    EXPECT_EQ(map.cubes.size(), 2u);
    EXPECT_EQ(map.cubes[1].size(), 3u);
    EXPECT_EQ(map.cubes[1][2].size(), 5u);
}

TEST(MapFile, PairsAreSolidThenValueWithTheDepthVaryingFastest) {
    const MapManager map = loaded("2 1 3 1 0 0 0 1 5 0 0 0 0 1 2");
    EXPECT_EQ(extents(map), (Three{128, 64, 192}));
    EXPECT_EQ(numbers(map), (Numbers{1, 0, 0, 0, 1, 5, 0, 0, 0, 0, 1, 2}));
    EXPECT_EQ(map.cubes[0][0][2].cellValue, 5);
    EXPECT_EQ(map.cubes[1][0][2].cellValue, 2);
}

TEST(MapFile, SecondCellOfADeepMapLiesFromSixtyFourOnAlongZ) {
    const MapManager map = loaded("1 1 2 0 0 1 0");
    EXPECT_EQ(numbers(map), (Numbers{0, 0, 1, 0}));
    EXPECT_EQ(components(map.cubes[0][0][1].min), (Three{0, 0, 64}));
    EXPECT_EQ(components(map.cubes[0][0][1].max), (Three{64, 64, 128}));
}

TEST(MapFile, EveryCellStandsInItsPlaceAndKeepsItsOwnPair) {
    constexpr int columns = 3;
    constexpr int rows = 4;
    constexpr int depth = 5;
    std::string text = "3 4 5";
    for (int cell = 0; cell < columns * rows * depth; ++cell)
        text.append(" ").append(std::to_string(cell % 2)).append(" ").append(std::to_string(cell));
    const MapManager map = loaded(text);
    int cell = 0;
    for (int i = 0; i < columns; ++i) {
        for (int j = 0; j < rows; ++j) {
            for (int k = 0; k < depth; ++k) {
                const Box& cube = map.cubes.at(size_t(i)).at(size_t(j)).at(size_t(k));
                const vec3 min(float(64 * i), float(64 * j), float(64 * k));
                EXPECT_EQ(components(cube.min), components(min));
                EXPECT_EQ(components(cube.max), components(min + vec3(64)));
                EXPECT_EQ(cube.solid, cell % 2);
                EXPECT_EQ(cube.cellValue, cell);
                ++cell;
            }
        }
    }
}

TEST(MapFile, AnyWhiteSpaceSeparatesNumbers) {
    EXPECT_EQ(numbers(loaded("\n 1\t1 \v1\f\r1\n\n7 ")), (Numbers{1, 7}));
}

TEST(MapFile, NumbersAreDecimalAndMayHaveASign) {
    EXPECT_EQ(numbers(loaded("1 1 2 -1 +7 010 -010")), (Numbers{-1, 7, 10, -10}));
}

TEST(MapFile, WhatFollowsTheLastPairIsIgnored) {
    EXPECT_EQ(numbers(loaded("1 1 1 1 7 9 9 and words")), (Numbers{1, 7}));
}

TEST(MapFile, MissingPairsLeaveTheirCellsEmpty) {
    EXPECT_EQ(numbers(loaded("2 1 1 0 0")), (Numbers{0, 0, 0, 0}));
    EXPECT_EQ(numbers(loaded("1 1 3 1 4 1")), (Numbers{1, 4, 1, 0, 0, 0}));
    EXPECT_EQ(numbers(loaded("1 1 1")), (Numbers{0, 0}));
}

TEST(MapFile, ReadingStopsAtTheFirstThatIsNoNumber) {
    EXPECT_EQ(numbers(loaded("1 1 3 1 4 x 1 1 1")), (Numbers{1, 4, 0, 0, 0, 0}));
    EXPECT_EQ(numbers(loaded("1 1 2 1 x 1 1")), (Numbers{1, 0, 0, 0}));
    EXPECT_EQ(numbers(loaded("1 1 2 1 2.5 1 1")), (Numbers{1, 2, 0, 0}));
    EXPECT_EQ(numbers(loaded("1 1 2 1 0x10 1 1")), (Numbers{1, 0, 0, 0}));
    EXPECT_EQ(numbers(loaded("1 1 2 1,4 1 1")), (Numbers{1, 0, 0, 0}));
}

TEST(MapFile, NumberTooLargeForAnIntIsTheLimitAndReadingStops) {
    EXPECT_EQ(numbers(loaded("1 1 2 99999999999 4 1 1")), (Numbers{INT_MAX, 0, 0, 0}));
    EXPECT_EQ(numbers(loaded("1 1 2 -99999999999 4 1 1")), (Numbers{INT_MIN, 0, 0, 0}));
    EXPECT_EQ(numbers(loaded("1 1 2 1 99999999999 1 1")), (Numbers{1, INT_MAX, 0, 0}));
    EXPECT_EQ(numbers(loaded("1 1 1 2147483647 -2147483648")), (Numbers{INT_MAX, INT_MIN}));
}

TEST(MapHeader, MissingHeaderLeavesNoWorld) {
    for (const char* text : {"", "  ", "no map", ". 2 3 1 1"}) {
        const MapManager map = loaded(text);
        EXPECT_EQ(dimensions(map), (Dimensions{0, 0, 0})) << text;
        EXPECT_EQ(extents(map), (Three{0, 0, 0})) << text;
        EXPECT_EQ(map.cubeSize, 64) << text;
        EXPECT_TRUE(map.cubes.empty()) << text;
    }
}

TEST(MapHeader, ValuesFromAFailedOneOnStayZero) {
    const MapManager map = loaded("3 x 5 1 1");
    EXPECT_EQ(dimensions(map), (Dimensions{3, 0, 0}));
    EXPECT_EQ(extents(map), (Three{192, 0, 0}));
    EXPECT_EQ(map.cubes.size(), 3u);
    EXPECT_EQ(numbers(map), Numbers());
    EXPECT_EQ(dimensions(loaded("3 4")), (Dimensions{3, 4, 0}));
}

TEST(MapHeader, NumberTooLargeIsTheLimitAndTheRestOfTheHeaderStaysZero) {
    EXPECT_EQ(dimensions(loaded("-99999999999 5 6 1 1")), (Dimensions{INT_MIN, 0, 0}));
    EXPECT_EQ(dimensions(loaded("0 99999999999 6 1 1")), (Dimensions{0, INT_MAX, 0}));
    EXPECT_EQ(dimensions(loaded("0 0 99999999999 1 1")), (Dimensions{0, 0, INT_MAX}));
}

TEST(MapHeader, NegativeDimensionsMakeNoCells) {
    const MapManager map = loaded("-1 2 3 1 1");
    EXPECT_EQ(dimensions(map), (Dimensions{-1, 2, 3}));
    EXPECT_EQ(extents(map), (Three{-64, 128, 192}));
    EXPECT_TRUE(map.cubes.empty());
    EXPECT_EQ(numbers(loaded("2 -1 3 1 1")), Numbers());
    EXPECT_EQ(numbers(loaded("2 2 -3 1 1")), Numbers());
}

TEST(MapHeader, ExtentsAreIntegerProductsThatWrapAround) {
    EXPECT_EQ(extents(loaded("-2147483648 33554431 2")), (Three{0, 2147483584.0f, 128}));
    EXPECT_EQ(extents(loaded("0 2147483647 33554432")), (Three{0, -64, -2147483648.0f}));
}

TEST(MapLines, LineEndAloneIsNoSeparator) {
    const MapManager map = loadedFromFile("1 1 1\n1 0\n");
    EXPECT_EQ(dimensions(map), (Dimensions{1, 1, 11}));
    EXPECT_EQ(numbers(map), Numbers(22, 0)) << "1 1 11 0: the only pair is cut";
}

TEST(MapLines, BlankAtALineEndOrAtTheNextStartSeparates) {
    for (const char* text : {"1 1 1 \n1 7\n", "1 1 1\n 1 7\n", "1 1 1\n\t1 7"}) {
        const MapManager map = loadedFromFile(text);
        EXPECT_EQ(dimensions(map), (Dimensions{1, 1, 1})) << text;
        EXPECT_EQ(numbers(map), (Numbers{1, 7})) << text;
    }
}

TEST(MapLines, CarriageReturnsAreBlanksToo) {
    EXPECT_EQ(numbers(loadedFromFile("1 1 1\r\n1 7\r\n")), (Numbers{1, 7}));
}
