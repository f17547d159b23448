#include "tests/support/Arenas.h"
#include "tests/support/Components.h"
#include "tests/support/PlayerIn.h"

#include <gtest/gtest.h>

namespace {

constexpr vec3 alongX(1.0f, 0.0f, 0.0f);
constexpr vec3 alongZ(0.0f, 0.0f, 1.0f);

/// A floor with its top at y = 64.
MapManager openFloor() {
    MapManager world;
    world.init(arenaText(32, 16, 32, [](int, int j, int) { return j == 0; }));
    return world;
}

vec3 displacementWithKeys(std::initializer_list<int> keys) {
    MapManager world = openFloor();
    Player player = playerIn(world, {1000, standing, 1000}, alongZ);
    for (int key : keys)
        player.setKey(key, true);
    player.update(0.0f);
    return player.position - vec3(1000, standing, 1000);
}

} // namespace

TEST(PlayerMovement, EachWalkingKeyMovesSixUnitsItsWay) {
    EXPECT_EQ(components(displacementWithKeys({3})), components(alongZ * 6.0f)) << "forward";
    EXPECT_EQ(components(displacementWithKeys({2})), components(alongZ * -6.0f)) << "backward";
    EXPECT_EQ(components(displacementWithKeys({1})), components(alongX * 6.0f)) << "left";
    EXPECT_EQ(components(displacementWithKeys({0})), components(alongX * -6.0f)) << "right";
    EXPECT_EQ(components(displacementWithKeys({5})), components(vec3())) << "shoot";
}

TEST(PlayerMovement, OppositeKeysCancel) {
    EXPECT_EQ(components(displacementWithKeys({2, 3})), components(vec3()));
    EXPECT_EQ(components(displacementWithKeys({0, 1})), components(vec3()));
    EXPECT_EQ(components(displacementWithKeys({0, 1, 2, 3})), components(vec3()));
    EXPECT_EQ(components(displacementWithKeys({1, 2, 3})), components(alongX * 6.0f));
}

TEST(PlayerMovement, DiagonalIsFasterThanEitherWayAlone) {
    EXPECT_EQ(components(displacementWithKeys({1, 3})), components(vec3(6, 0, 6)));
}

TEST(PlayerMovement, InputsAndVelocityAreThoseOfThisTick) {
    MapManager world = openFloor();
    Player player = playerIn(world, {1000, standing, 1000});
    player.setKey(keyIndex::right, true);
    player.setKey(keyIndex::forward, true);
    player.update(0.0f);
    EXPECT_EQ(player.moveInput, 1.0f);
    EXPECT_EQ(player.strafeInput, -1.0f);
    EXPECT_EQ(components(player.velocity), components(vec3(-6.0f, -0.5f, 6.0f)));

    player.setKey(keyIndex::right, false);
    player.setKey(keyIndex::forward, false);
    player.update(0.0f);
    EXPECT_EQ(player.moveInput, 0.0f);
    EXPECT_EQ(player.strafeInput, 0.0f);
    EXPECT_EQ(components(player.velocity), components(vec3(0.0f, -0.5f, 0.0f)));
}

TEST(PlayerMovement, HeldKeysGoOnMovingTickAfterTick) {
    MapManager world = openFloor();
    Player player = playerIn(world, {1000, standing, 1000});
    player.setKey(keyIndex::forward, true);
    for (int tick = 1; tick <= 50; ++tick) {
        player.update(0.0f);
        ASSERT_EQ(components(player.position),
                  components(vec3(1000, standing, 1000.0f + 6.0f * static_cast<float>(tick))));
    }
}

TEST(PlayerMovement, LookingUpOrDownSlowsWalkingByTheCosineOfThePitch) {
    MapManager world = openFloor();
    for (float height : {0.6f, -0.6f}) {
        Player player = playerIn(world, {0, standing, 0});
        player.direction = {0.8f, height, 0.0f};
        player.setKey(keyIndex::forward, true);
        player.update(0.0f);
        EXPECT_EQ(components(player.position), components(vec3(0.8f * 6.0f, standing, 0.0f)));
    }
}

TEST(PlayerMovement, SidewaysFollowsTheStrafeVectorAsLastRefreshed) {
    MapManager world = openFloor();
    Player player = playerIn(world, {1000, standing, 1000}, alongZ);
    player.rotateView(360, 0);
    player.setKey(keyIndex::left, true);
    player.update(0.0f);
    EXPECT_EQ(components(player.position), components(vec3(1006, standing, 1000)));
}

TEST(PlayerMovement, SpeedsAreThePlayersOwn) {
    MapManager world = openFloor();
    Player player = playerIn(world, {1000, standing, 1000}, alongZ);
    player.moveSpeed = 2.0f;
    player.strafeSpeed = 3.0f;
    player.setKey(keyIndex::left, true);
    player.setKey(keyIndex::forward, true);
    player.update(0.0f);
    EXPECT_EQ(components(player.position), components(vec3(1003, standing, 1002)));
}

TEST(PlayerMovement, LookAtPointAndBodyMoveAlongSoDirectionStays) {
    MapManager world = openFloor();
    Player player = playerIn(world, {1000, standing, 1000}, {0.6f, 0.0f, 0.8f});
    const vec3 direction = player.direction;
    const vec3 look = player.look;
    player.setKey(keyIndex::left, true);
    player.setKey(keyIndex::jump, true);
    player.update(0.0f);
    const vec3 step = player.velocity;
    EXPECT_EQ(step.y, 11.5f);
    EXPECT_EQ(components(player.look), components(look + step));
    EXPECT_EQ(components(player.box.centre), components(player.position));
    EXPECT_EQ(components(player.direction), components(direction));
}

TEST(PlayerMovement, NothingStopsAWalkOutOfTheWorld) {
    MapManager world = openFloor();
    Player player = playerIn(world, {10, standing, 1000}, {-1, 0, 0});
    player.setKey(keyIndex::forward, true);
    for (int tick = 0; tick < 10; ++tick)
        player.update(0.0f);
    EXPECT_EQ(player.position.x, -50.0f);
    EXPECT_LT(player.position.y, standing) << "beyond the floor's edge";
}

TEST(PlayerMovement, TimeDoesNotScaleASingleTick) {
    MapManager world = openFloor();
    Player player = playerIn(world, {1000, standing, 1000}, alongZ);
    player.setKey(keyIndex::forward, true);
    player.update(1e6f);
    EXPECT_EQ(player.position.z, 1006.0f);
    player.update(1e6f);
    EXPECT_EQ(player.position.z, 1012.0f);
}

TEST(PlayerStep, MoveAllShiftsPositionLookAtPointAndBodyByTheScaledVector) {
    Player player;
    player.placeAt({1000, 500, 1000}, {1000, 500, 1001});
    player.moveAll(vec3(1, 2, 3), -2.0f);
    EXPECT_EQ(components(player.position), components(vec3(998, 496, 994)));
    EXPECT_EQ(components(player.look), components(vec3(998, 496, 995)));
    EXPECT_EQ(components(player.box.centre), components(vec3(998, 496, 994)));
    EXPECT_EQ(components(player.box.min), components(vec3(973, 421, 969)));
    EXPECT_EQ(components(player.box.max), components(vec3(1023, 571, 1019)));
}

TEST(PlayerStep, BodyIsMovedByItselfNotBuiltAnewAroundThePosition) {
    Player player;
    player.placeAt({500.1f, 500, 1000}, {500.1f, 500, 1001});
    float lowSide = player.box.min.x;
    for (int step = 0; step < 3; ++step) {
        player.moveAll(vec3(4.2f, 0, 0), 1.0f);
        lowSide += 4.2f;
    }
    ASSERT_NE(lowSide, player.position.x - 25.0f) << "rounding has driven them apart";
    EXPECT_EQ(player.box.min.x, lowSide);
}

TEST(PlayerStep, MoveAndStrafeKeepTheHeightAndAskNoMap) {
    Player player;
    player.placeAt({0, 500, 0}, {0, 500, 1});
    player.direction = {0.6f, 0.8f, 0.0f};
    player.move(0.5f);
    EXPECT_EQ(components(player.position), components(vec3(0.6f * 3.0f, 500, 0)));
    EXPECT_EQ(components(player.box.centre), components(player.position));

    player.placeAt({0, 500, 0}, {0, 500, 1});
    player.strafeVector = {0.0f, 0.8f, 0.6f};
    player.strafeSpeed = 4.0f;
    player.strafe(-0.5f);
    EXPECT_EQ(components(player.position), components(vec3(0, 500, 0.6f * -2.0f)));
    EXPECT_EQ(components(player.look), components(vec3(0, 500, 1.0f + 0.6f * -2.0f)));
    EXPECT_EQ(components(player.box.centre), components(player.position));
}
