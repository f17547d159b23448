#include "src/FileLoader.h"
#include "src/MapManager.h"
#include "src/Player.h"
#include "tests/support/ManualClock.h"
#include "tests/support/Spawns.h"

#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

namespace {

MapManager& defaultArena() {
    static MapManager map = [] {
        MapManager loaded;
        loaded.init(fileStringContents(DRENCH_MAPDATA));
        return loaded;
    }();
    return map;
}

Player spawned(int row) {
    seedForSpawn(row);
    Player player('1', "Walker");
    player.setMapMan(&defaultArena());
    return player;
}

std::vector<long> numbersIn(const std::string& text) {
    std::istringstream stream(text);
    std::vector<long> numbers;
    for (long number; stream >> number;)
        numbers.push_back(number);
    EXPECT_TRUE(stream.eof()) << "something that is no number";
    return numbers;
}

} // namespace

TEST(DefaultArena, TextKeepsItsNumbersApartWhenItsLinesAreJoined) {
    const std::vector<long> joined = numbersIn(fileStringContents(DRENCH_MAPDATA));
    std::ostringstream whole;
    whole << std::ifstream(DRENCH_MAPDATA).rdbuf();
    EXPECT_EQ(joined, numbersIn(whole.str()));

    ASSERT_EQ(joined.size(), 3u + 2u * 32u * 16u * 32u) << "no cell missing, nothing left over";
    EXPECT_EQ(joined[0], 32);
    EXPECT_EQ(joined[1], 16);
    EXPECT_EQ(joined[2], 32);
}

TEST(DefaultArena, CellsAreAirOrSolidOfADocumentedMaterial) {
    for (const auto& column : defaultArena().cubes) {
        for (const auto& row : column) {
            for (const Box& cube : row) {
                ASSERT_TRUE(cube.solid == 0 || cube.solid == 1);
                ASSERT_EQ(cube.solid == 0, cube.cellValue == 0);
                ASSERT_GE(cube.cellValue, 0);
                ASSERT_LE(cube.cellValue, 12);
            }
        }
    }
}

TEST(DefaultArena, GroundIsSolidAndTheBorderStandsToFullHeight) {
    for (int a = 0; a < 32; ++a) {
        for (int b = 0; b < 32; ++b)
            EXPECT_FALSE(defaultArena().cubeIsNull(a, 0, b))
                << "ground at column " << a << ", depth " << b;
        for (int j = 0; j < 16; ++j) {
            EXPECT_FALSE(defaultArena().cubeIsNull(a, j, 0))
                << "column " << a << ", row " << j << ", depth 0";
            EXPECT_FALSE(defaultArena().cubeIsNull(a, j, 31))
                << "column " << a << ", row " << j << ", depth 31";
            EXPECT_FALSE(defaultArena().cubeIsNull(0, j, a))
                << "column 0, row " << j << ", depth " << a;
            EXPECT_FALSE(defaultArena().cubeIsNull(31, j, a))
                << "column 31, row " << j << ", depth " << a;
        }
    }
}

TEST(DefaultArena, EverySpawnIsClearOfCubesAndLandsWithinThreeCubes) {
    for (int row = 0; row < spawnRows; ++row) {
        Player player = spawned(row);
        EXPECT_FALSE(defaultArena().collides(player.getBox())) << "spawn " << row;
        const float start = player.position.y;
        int ticks = 0;
        do {
            player.update(0.0f);
        } while (player.inAir && ++ticks < 1000);
        EXPECT_FALSE(player.inAir) << "spawn " << row;
        EXPECT_LE(start - player.position.y, 3 * 64.0f) << "spawn " << row;
    }
}

TEST(DefaultArena, HighSpawnsLandOnBalconiesAndLowOnesOnTheGround) {
    for (int row = 0; row < spawnRows; ++row) {
        Player player = spawned(row);
        for (int tick = 0; tick < 200; ++tick)
            player.update(0.0f);
        EXPECT_NEAR(player.position.y - 75.0f, row < 4 ? 448.0f : 64.0f, 0.5f) << "spawn " << row;
    }
}

TEST(DefaultArena, NobodyLeavesTheWorldOnALongRandomWalk) {
    std::mt19937 random(7);
    const auto below = [&random](unsigned limit) { return static_cast<int>(random() % limit); };
    std::set<std::pair<int, int>> columnsVisited;
    for (int walk = 0; walk < 40; ++walk) {
        Player player = spawned(walk % spawnRows);
        for (int tick = 0; tick < 10000; ++tick) {
            if (below(15) == 0)
                player.setKey(below(5), below(4) != 0);
            if (below(10) == 0)
                player.setKey(keyIndex::jump, true);
            if (below(8) == 0)
                player.rotateView(below(241) - 120, below(21) - 10);
            player.update(0.0f);
            // Bodies may end up touching a cube: an undone step rounds.
            ASSERT_FALSE(defaultArena().outOfBounds(player.position)) << "walk " << walk;
            ASSERT_GT(player.position.y, 64.0f + 74.0f) << "walk " << walk;
            columnsVisited.emplace(defaultArena().getColumn(player.position.x),
                                   defaultArena().getDepth(player.position.z));
        }
    }
    EXPECT_GT(columnsVisited.size(), 500u) << "of the 900 inside the border";
}
