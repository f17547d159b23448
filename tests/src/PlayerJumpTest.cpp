#include "tests/support/Arenas.h"
#include "tests/support/PlayerIn.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr float floorTop = 64.0f;
constexpr float halfHeight = 75.0f;

/// A floor with its top at y = 64 and a ceiling with its underside at y = 512.
MapManager hall() {
    MapManager world;
    world.init(arenaText(4, 16, 4, [](int, int j, int) { return j == 0 || j == 8; }));
    return world;
}

MapManager bottomless() {
    MapManager world;
    world.init("1 1 1 0 0");
    return world;
}

Player playerAt(MapManager& world, float feetAboveFloor) {
    return playerIn(world, {128, floorTop + halfHeight + feetAboveFloor, 128});
}

float feetAboveFloor(const Player& player) {
    return player.position.y - halfHeight - floorTop;
}

void jumpKeyDown(Player& player) {
    player.setKey(keyIndex::jump, true);
}

} // namespace

TEST(PlayerJump, FromRestRisesElevenAndAHalfInItsFirstTickThenHalfAUnitLessEach) {
    MapManager world = hall();
    Player player = playerAt(world, 0.25f);
    jumpKeyDown(player);
    float height = 0.25f;
    for (float step = 11.5f; step >= -11.5f; step -= 0.5f) {
        player.update(0.0f);
        height += step;
        ASSERT_EQ(feetAboveFloor(player), height) << "after the step of " << step;
        ASSERT_TRUE(player.inAir);
        ASSERT_EQ(player.verticalSpeed, step);
    }
    EXPECT_EQ(height, 0.25f);
    player.update(0.0f);
    EXPECT_EQ(feetAboveFloor(player), 0.25f);
    EXPECT_FALSE(player.inAir);
}

TEST(PlayerJump, RisesOneHundredThirtyEightInAll) {
    MapManager world = hall();
    Player player = playerAt(world, 0.25f);
    jumpKeyDown(player);
    float highest = 0.0f;
    for (int tick = 0; tick < 60; ++tick) {
        player.update(0.0f);
        highest = std::max(highest, feetAboveFloor(player));
    }
    EXPECT_EQ(highest, 138.25f);
}

TEST(PlayerJump, ReleasesItsKeyWhenItIsTaken) {
    MapManager world = hall();
    Player player = playerAt(world, 0.25f);
    jumpKeyDown(player);
    player.update(0.0f);
    EXPECT_FALSE(player.keys[keyIndex::jump]);
}

TEST(PlayerJump, HeldInTheAirIsTakenInTheFirstTickThatStartsOnTheGround) {
    MapManager world = hall();
    Player player = playerAt(world, 0.25f);
    jumpKeyDown(player);
    player.update(0.0f);
    jumpKeyDown(player);
    while (player.inAir) {
        ASSERT_TRUE(player.keys[keyIndex::jump]);
        player.update(0.0f);
    }
    EXPECT_TRUE(player.keys[keyIndex::jump]) << "landed in this tick, jumps in the next";
    EXPECT_EQ(feetAboveFloor(player), 0.25f);
    player.update(0.0f);
    EXPECT_FALSE(player.keys[keyIndex::jump]);
    EXPECT_EQ(feetAboveFloor(player), 0.25f + 11.5f);
}

TEST(PlayerJump, TakesOffWithoutAskingWhetherThePlayerStands) {
    for (bool inAir : {false, true}) {
        Player player;
        player.inAir = inAir;
        player.verticalSpeed = -40.0f;
        player.jump();
        EXPECT_TRUE(player.inAir);
        EXPECT_EQ(player.verticalSpeed, 12.0f);
    }
}

TEST(PlayerJump, IsTakenInMidAirByWhoeverHasJustSpawned) {
    MapManager world;
    world.init(emptyCourt());
    Player player;
    player.setMapMan(&world);
    const float spawned = player.position.y;
    jumpKeyDown(player);
    player.update(0.0f);
    EXPECT_EQ(player.position.y, spawned + 11.5f);
}

TEST(PlayerJump, CeilingStopsItAndLetsThePlayerJumpAgain) {
    MapManager world = hall();
    const float fiveBelowTheCeiling = 512.0f - halfHeight - 5.0f;
    Player player = playerIn(world, {128, fiveBelowTheCeiling, 128});
    for (int tick = 0; tick < 50; ++tick) {
        jumpKeyDown(player);
        player.update(0.0f);
        ASSERT_EQ(player.position.y, fiveBelowTheCeiling);
        ASSERT_FALSE(player.inAir);
        ASSERT_EQ(player.verticalSpeed, 0.0f);
        ASSERT_FALSE(player.keys[keyIndex::jump]);
    }
    player.update(0.0f);
    EXPECT_EQ(player.position.y, fiveBelowTheCeiling - 0.5f) << "falls once the key is let go";
}

TEST(PlayerJump, WorksFromAFloorThatTheBodyTouches) {
    MapManager world = hall();
    Player player = playerAt(world, 0.0f);
    jumpKeyDown(player);
    player.update(0.0f);
    EXPECT_EQ(feetAboveFloor(player), 11.5f);
}

TEST(PlayerFall, RestingLessThanHalfAUnitAboveTheFloorStaysOnTheGroundEveryTick) {
    MapManager world = hall();
    for (float height : {0.0f, 0.25f, 0.499f}) {
        Player player = playerAt(world, height);
        const float start = player.position.y;
        for (int tick = 0; tick < 100; ++tick) {
            player.update(0.0f);
            ASSERT_EQ(player.position.y, start);
            ASSERT_FALSE(player.inAir);
            ASSERT_EQ(player.verticalSpeed, 0.0f);
        }
    }
}

TEST(PlayerFall, FromHalfAUnitAboveTheFloorOneStepDownToItsTopIsFree) {
    MapManager world = hall();
    Player player = playerAt(world, 0.5f);
    player.update(0.0f);
    EXPECT_EQ(feetAboveFloor(player), 0.0f);
    EXPECT_TRUE(player.inAir);
    player.update(0.0f);
    EXPECT_EQ(feetAboveFloor(player), 0.0f);
    EXPECT_FALSE(player.inAir);
}

TEST(PlayerFall, LeavesThePlayerHoveringThenCreepingDownUntilItSettles) {
    MapManager world = hall();
    Player player = playerAt(world, 2.25f);
    player.verticalSpeed = -9.5f;
    player.inAir = true;
    const struct {
        float feet;
        bool inAir;
    } ticks[] = {{2.25f, false}, {1.75f, true},  {0.75f, true}, {0.75f, false},
                 {0.25f, true},  {0.25f, false}, {0.25f, false}};
    for (const auto& expected : ticks) {
        player.update(0.0f);
        ASSERT_EQ(feetAboveFloor(player), expected.feet);
        ASSERT_EQ(player.inAir, expected.inAir);
    }
}

TEST(PlayerFall, CreepingPlayerTakesNoJumpBeforeAStepCollides) {
    MapManager world = hall();
    Player player = playerAt(world, 2.25f);
    player.update(0.0f);
    ASSERT_TRUE(player.inAir);
    jumpKeyDown(player);
    player.update(0.0f);
    EXPECT_EQ(feetAboveFloor(player), 0.75f);
    player.update(0.0f);
    EXPECT_EQ(feetAboveFloor(player), 0.75f) << "this step collided";
    EXPECT_TRUE(player.keys[keyIndex::jump]);
    player.update(0.0f);
    EXPECT_EQ(feetAboveFloor(player), 0.75f + 11.5f);
}

TEST(PlayerFall, GravityActsUpToAVerticalSpeedOfThirteen) {
    MapManager world = bottomless();
    Player player = playerIn(world, {32, 1000, 32});
    player.verticalSpeed = 13.0f;
    player.update(0.0f);
    EXPECT_EQ(player.verticalSpeed, 12.5f);

    const float above = std::nextafter(13.0f, 14.0f);
    player.verticalSpeed = above;
    for (int tick = 0; tick < 10; ++tick)
        player.update(0.0f);
    EXPECT_EQ(player.verticalSpeed, above);
}

TEST(PlayerFall, SpeedGrowsByHalfAUnitPerTickWithoutLimitAndBeyondAnInt) {
    MapManager world = bottomless();
    Player player = playerIn(world, {32, -100, 32});
    constexpr int ticks = 100000;
    for (int tick = 0; tick < ticks; ++tick)
        player.update(0.0f);
    EXPECT_EQ(player.verticalSpeed, -0.5f * ticks);
    EXPECT_LT(player.position.y, -2147483648.0f);
    EXPECT_TRUE(player.inAir);
}

TEST(PlayerFall, FastFallPassesThroughAFloorBetweenTwoTicks) {
    MapManager world = hall();
    Player player = playerAt(world, 10.0f);
    player.verticalSpeed = -300.0f;
    player.update(0.0f);
    EXPECT_EQ(feetAboveFloor(player), 10.0f - 300.5f);
}

TEST(PlayerFall, UndoSubtractsTheStepAndMayChangeTheLastBit) {
    MapManager world = hall();
    const float lastBit = 1.0f / 65536.0f;
    Player player = playerAt(world, 0.25f + lastBit);
    const float start = player.position.y;
    player.verticalSpeed = -lastBit / 2.0f;
    const float step = player.verticalSpeed - 0.5f;
    ASSERT_NE((start + step) - step, start);
    player.update(0.0f);
    EXPECT_FALSE(player.inAir);
    EXPECT_EQ(player.position.y, (start + step) - step);
}

TEST(PlayerFall, WalkingOffAnEdgeEndsTheGroundAndTheJump) {
    MapManager world;
    world.init(arenaText(32, 4, 4, [](int i, int j, int) { return j == 0 && i < 16; }));
    const float edge = 16 * 64.0f;
    Player player = playerIn(world, {edge + 20.0f, standing, 128}, {1, 0, 0});
    player.setKey(keyIndex::forward, true);
    player.update(0.0f);
    EXPECT_FALSE(player.inAir);
    player.update(0.0f);
    EXPECT_TRUE(player.inAir);
    jumpKeyDown(player);
    player.update(0.0f);
    EXPECT_EQ(player.position.y, standing - 0.5f - 1.0f);
}

TEST(PlayerFall, GoesOnForeverInAMapWithoutCells) {
    MapManager world;
    Player player = playerIn(world, {32, 100, 32});
    player.setKey(keyIndex::forward, true);
    for (int tick = 0; tick < 4; ++tick)
        player.update(0.0f);
    EXPECT_EQ(player.position.y, 100.0f - 5.0f);
    EXPECT_EQ(player.position.z, 32.0f + 24.0f);
}
