#include "tests/support/Arenas.h"
#include "tests/support/Components.h"
#include "tests/support/PlayerIn.h"

#include <gtest/gtest.h>

namespace {

constexpr vec3 alongX(1.0f, 0.0f, 0.0f);

/// A floor with its top at y = 64, with the cells that `solid` adds to it.
MapManager floorWith(const std::function<bool(int, int, int)>& solid) {
    MapManager world;
    world.init(
        arenaText(32, 16, 32, [&solid](int i, int j, int k) { return j == 0 || solid(i, j, k); }));
    return world;
}

} // namespace

TEST(PlayerCollision, BlockedAxisIsUndoneWholeWhileTheOtherStillSlides) {
    MapManager world = floorWith([](int i, int, int) { return i == 20; });
    const float gapOfFive = 20 * 64.0f - 25.0f - 5.0f;
    Player player = playerIn(world, {gapOfFive, standing, 1000}, {0.5f, 0.0f, 0.5f});
    player.direction = {1.0f, 0.0f, 0.5f};
    player.setKey(keyIndex::forward, true);
    player.update(0.0f);
    EXPECT_EQ(components(player.position), components(vec3(gapOfFive, standing, 1003)));
    EXPECT_EQ(player.velocity.x, 6.0f) << "as it was tried";
}

TEST(PlayerCollision, WallAlongZLeavesTheMotionAlongX) {
    MapManager world = floorWith([](int, int, int k) { return k == 20; });
    const float gapOfFive = 20 * 64.0f - 25.0f - 5.0f;
    Player player = playerIn(world, {1000, standing, gapOfFive});
    player.direction = {0.5f, 0.0f, 1.0f};
    player.setKey(keyIndex::forward, true);
    player.update(0.0f);
    EXPECT_EQ(components(player.position), components(vec3(1003, standing, gapOfFive)));
}

TEST(PlayerCollision, TouchingTheLowSideOfAWallIsAHit) {
    MapManager world = floorWith([](int i, int, int) { return i == 20; });
    const float gapOfSix = 20 * 64.0f - 25.0f - 6.0f;
    Player player = playerIn(world, {gapOfSix, standing, 1000}, alongX);
    player.setKey(keyIndex::forward, true);
    player.update(0.0f);
    EXPECT_EQ(player.position.x, gapOfSix);
}

TEST(PlayerCollision, TouchingTheHighSideOfAWallIsNone) {
    MapManager world = floorWith([](int i, int, int) { return i == 20; });
    const float gapOfSix = 21 * 64.0f + 25.0f + 6.0f;
    Player player = playerIn(world, {gapOfSix, standing, 1000}, {-1, 0, 0});
    player.setKey(keyIndex::forward, true);
    player.update(0.0f);
    EXPECT_EQ(player.position.x, gapOfSix - 6.0f) << "a face on a cell's border is the next cell's";
    player.update(0.0f);
    EXPECT_EQ(player.position.x, gapOfSix - 6.0f);
}

TEST(PlayerCollision, AtACornerXGoesFirstAndBlocksZ) {
    MapManager world = floorWith([](int i, int, int k) { return i == 20 && k == 20; });
    const float gapOfThree = 20 * 64.0f - 25.0f - 3.0f;
    Player player = playerIn(world, {gapOfThree, standing, gapOfThree});
    player.direction = {1.0f, 0.0f, 1.0f};
    player.setKey(keyIndex::forward, true);
    player.update(0.0f);
    EXPECT_EQ(components(player.position), components(vec3(gapOfThree + 6, standing, gapOfThree)));
}

TEST(PlayerCollision, RisesBeforeItStepsSoThatAJumpClearsAnEdge) {
    MapManager world = floorWith([](int i, int j, int) { return i == 20 && j == 1; });
    const float gapOfFive = 20 * 64.0f - 25.0f - 5.0f;
    const float feetBelowTheEdge = 128.0f + 75.0f - 10.0f;
    Player player = playerIn(world, {gapOfFive, feetBelowTheEdge, 1000}, alongX);
    player.setKey(keyIndex::forward, true);
    player.setKey(keyIndex::jump, true);
    player.update(0.0f);
    EXPECT_EQ(components(player.position),
              components(vec3(gapOfFive + 6.0f, feetBelowTheEdge + 11.5f, 1000)));
}

TEST(PlayerCollision, UndoSubtractsTheStepAndMayChangeTheLastBit) {
    MapManager world = floorWith([](int i, int, int) { return i == 29; });
    const float lastBit = 1.0f / 8192.0f;
    const float start = 29 * 64.0f - 25.0f - 5.0f + lastBit;
    Player player = playerIn(world, {start, standing, 1000}, alongX);
    player.moveSpeed = 6.0f + lastBit / 2.0f;
    const float blocked = start + player.moveSpeed;
    ASSERT_NE(blocked - player.moveSpeed, start);
    player.setKey(keyIndex::forward, true);
    player.update(0.0f);
    EXPECT_EQ(player.position.x, blocked - player.moveSpeed);
    EXPECT_EQ(player.box.centre.x, blocked - player.moveSpeed);
}

TEST(PlayerCollision, BodyThatTouchesTheFloorWalksFreely) {
    MapManager world = floorWith([](int, int, int) { return false; });
    const float touching = 64.0f + 75.0f;
    Player player = playerIn(world, {1000, touching, 1000});
    player.setKey(keyIndex::forward, true);
    player.setKey(keyIndex::left, true);
    player.update(0.0f);
    EXPECT_EQ(components(player.position), components(vec3(1006, touching, 1006)));
}

TEST(PlayerCollision, BodyInsideACubeStaysWhereItIs) {
    MapManager world = floorWith([](int i, int j, int k) { return i == 15 && j == 2 && k == 15; });
    const vec3 inside(15 * 64.0f + 32.0f, 2 * 64.0f + 32.0f, 15 * 64.0f + 32.0f);
    Player player = playerIn(world, inside);
    player.setKey(keyIndex::forward, true);
    player.setKey(keyIndex::left, true);
    player.update(0.0f);
    EXPECT_EQ(components(player.position), components(inside));
    EXPECT_FALSE(player.inAir);
}
