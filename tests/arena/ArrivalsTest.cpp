#include "arena/Arrivals.h"
#include "tests/support/Courts.h"

#include <gtest/gtest.h>

using namespace drench;

using arena::Arrival;

TEST(Arrivals, ComeInTheOrderOfThePosesAndLandOnTheFloorBelow) {
    MapManager map = loaded(emptyCourt());
    const std::vector<Arrival> all = arena::arrivals(map);
    ASSERT_EQ(all.size(), 8u);
    for (int pose = 0; pose < 8; ++pose) {
        const Arrival& arrival = all[static_cast<std::size_t>(pose)];
        EXPECT_EQ(arrival.pose, pose);
        EXPECT_TRUE(arrival.startsFree());
        EXPECT_TRUE(arrival.lands);
        EXPECT_NEAR(arrival.landed.position.y, 64.0f + 75.0f, 0.5f);
        EXPECT_NEAR(arrival.fall(), pose < 4 ? 519.2f : 135.2f, 0.5f);
    }
}

TEST(Arrivals, BodyInACubeIsNotClear) {
    MapManager map = court(8, 8, 8, [](int i, int j, int k) { return i == 3 && j == 3 && k == 3; });
    const Arrival inside = arrivalIn(map, 3, 3, 3);
    EXPECT_FALSE(inside.clear);
    EXPECT_TRUE(inside.insideWorld);
    EXPECT_FALSE(inside.startsFree());
    EXPECT_TRUE(arrivalIn(map, 5, 3, 3).startsFree());
}

TEST(Arrivals, BodyAcrossTheSideOfTheWorldIsOutsideOneAboveItIsNot) {
    MapManager map = withoutSolids(4, 4, 4);
    EXPECT_FALSE(arrivalIn(map, 4, 1, 2).insideWorld);
    EXPECT_FALSE(arrivalIn(map, -1, 1, 2).insideWorld);
    EXPECT_FALSE(arrivalIn(map, 2, 1, 4).insideWorld);
    EXPECT_FALSE(arrivalIn(map, 2, -1, 2).insideWorld);
    EXPECT_TRUE(arrivalIn(map, 2, 9, 2).insideWorld);
}

TEST(Arrivals, BodyThatTouchesTheSidesOfTheWorldIsInsideIt) {
    MapManager map = withoutSolids(4, 4, 4);
    const float near = 25.0f;
    const float far = 4 * 64.0f - 25.0f;
    const float lowest = 75.0f;
    const auto isInside = [&map](vec3 centre) {
        return arena::arrive(0, bodyAt(map, centre, centre + vec3(0.0f, 0.0f, 1.0f))).insideWorld;
    };
    for (const float x : {near, far}) {
        for (const float z : {near, far}) {
            EXPECT_TRUE(isInside({x, lowest, z}));
            EXPECT_FALSE(isInside({x, lowest - 0.01f, z}));
            EXPECT_FALSE(isInside({x < 100.0f ? x - 0.01f : x + 0.01f, lowest, z}));
            EXPECT_FALSE(isInside({x, lowest, z < 100.0f ? z - 0.01f : z + 0.01f}));
        }
    }
}

TEST(Arrivals, WithoutAFloorNobodyLands) {
    MapManager map = withoutSolids(4, 4, 4);
    const Arrival arrival = arrivalIn(map, 2, 2, 2);
    EXPECT_TRUE(arrival.startsFree());
    EXPECT_FALSE(arrival.lands);
    EXPECT_TRUE(arena::hasLeftTheWorld(arrival.landed));
}

TEST(Arrivals, PlayerInAJumpOrAtACeilingDoesNotStand) {
    MapManager map = court(4, 6, 4, [](int, int j, int) { return j == 4; });
    Player player = arrivalIn(map, 2, 1, 2).landed;
    EXPECT_TRUE(arena::stands(player));
    player.setKey(keyIndex::jump, true);
    player.update(0.0f);
    EXPECT_FALSE(arena::stands(player)) << "on the way up";
    while (player.inAir)
        player.update(0.0f);
    ASSERT_GT(player.velocity.y, 0.0f) << "three free cubes: the head meets the ceiling";
    EXPECT_FALSE(arena::stands(player));
}
