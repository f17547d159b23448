#include "arena/SpawnWays.h"

#include <gtest/gtest.h>
#include <utility>

using namespace drench;

namespace {

using Lines = std::vector<std::string>;

/// Spawns that land at places 0, 1, … with these ways between; -1 of `missing` lands nowhere.
arena::Reach reachOf(int spawns, const std::vector<std::pair<int, int>>& ways, int missing = -1) {
    arena::Reach reach;
    for (int pose = 0; pose < spawns; ++pose) {
        reach.places.push_back({.feet = {pose, 0, 0}, .position = vec3(0), .next = {}});
        reach.landings.push_back(pose == missing ? -1 : pose);
    }
    for (const auto& [from, to] : ways)
        reach.places[static_cast<std::size_t>(from)].next.push_back(to);
    return reach;
}

Lines linesOf(const arena::Reach& reach) {
    Lines lines;
    for (const arena::MissingWay& way : arena::missingWays(reach))
        lines.push_back(std::to_string(way.pose) + ": " + way.words);
    return lines;
}

} // namespace

TEST(SpawnNames, AreListedInWords) {
    EXPECT_EQ(arena::spawnNames({0}), "spawn 1");
    EXPECT_EQ(arena::spawnNames({0, 1}), "spawns 1 and 2");
    EXPECT_EQ(arena::spawnNames({0, 3, 7}), "spawns 1, 4 and 8");
}

TEST(SpawnWays, BetweenSpawnsThatReachEachOtherNoneIsMissing) {
    EXPECT_EQ(linesOf(reachOf(3, {{0, 1}, {1, 2}, {2, 0}})), Lines{});
    EXPECT_EQ(linesOf(reachOf(1, {})), Lines{});
    EXPECT_EQ(linesOf(reachOf(0, {})), Lines{});
}

TEST(SpawnWays, CutOffSpawnIsToldOnceForAllOthers) {
    EXPECT_EQ(linesOf(reachOf(4, {{0, 1}, {1, 3}, {3, 0}})),
              Lines{"2: spawn 3 is cut off: no way from there to spawns 1, 2 and 4, and none "
                    "back"});
    EXPECT_EQ(linesOf(reachOf(5, {{4, 3}, {3, 2}, {2, 4}})),
              Lines{"0: spawns 1 and 2 are cut off: no way from there to spawns 3, 4 and 5, and "
                    "none back"});
}

TEST(SpawnWays, OneWayIsToldFromWhereToWhere) {
    EXPECT_EQ(linesOf(reachOf(3, {{0, 1}, {1, 0}, {2, 0}})),
              Lines{"2: no way from spawns 1 and 2 to spawn 3"});
    EXPECT_EQ(linesOf(reachOf(3, {{0, 1}, {1, 0}, {0, 2}})),
              Lines{"2: no way from spawn 3 to spawns 1 and 2"});
}

TEST(SpawnWays, OfGroupsOfOneSizeTheFirstCountsAsTheArena) {
    EXPECT_EQ(linesOf(reachOf(4, {{0, 2}, {2, 0}, {1, 3}, {3, 1}})),
              Lines{"1: spawns 2 and 4 are cut off: no way from there to spawns 1 and 3, and none "
                    "back"});
}

TEST(SpawnWays, SpawnsWhereNobodyLandsAreLeftOut) {
    EXPECT_EQ(linesOf(reachOf(3, {{0, 2}, {2, 0}}, 1)), Lines{});
    EXPECT_EQ(linesOf(reachOf(1, {}, 0)), Lines{});
}
