#include "tests/support/Arenas.h"
#include "tests/support/Components.h"
#include "tests/support/ManualClock.h"
#include "tests/support/PlayerIn.h"
#include "tests/support/Spawns.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr vec3 nowhere(-1.0f);

MapManager court() {
    MapManager world;
    world.init(emptyCourt());
    return world;
}

Player deadSince(float time) {
    Player player;
    player.die(time);
    return player;
}

} // namespace

TEST(PlayerShot, LandsWhereTheRayFromTheBodysCentreMeetsACube) {
    MapManager world = court();
    const Player player = playerIn(world, {1000, standing, 1000}, {1, 0, 0});
    const vec3 landing = player.shoot(&world);
    EXPECT_NEAR(landing.x, 31 * 64.0f, 0.01f);
    EXPECT_EQ(landing.y, standing);
    EXPECT_EQ(landing.z, 1000.0f);
}

TEST(PlayerShot, FollowsTheViewNotTheLookAtPoint) {
    MapManager world = court();
    Player player = playerIn(world, {1000, standing, 1000}, {1, 0, 0});
    player.direction = {0, 0, -1};
    const vec3 expected = world.pointOfIntersection(player.position, vec3(0, 0, -1));
    EXPECT_EQ(components(player.shoot(&world)), components(expected));
    EXPECT_NEAR(expected.z, 64.0f, 0.01f);
}

TEST(PlayerShot, IntoTheSkyMeetsNothing) {
    MapManager world = court();
    const Player player = playerIn(world, {1000, standing, 1000}, {0, 1, 0});
    EXPECT_EQ(components(player.shoot(&world)), components(nowhere));
}

TEST(PlayerShot, AsksTheMapItIsGivenNotThePlayersOwn) {
    MapManager world = court();
    const MapManager empty;
    const Player player = playerIn(world, {1000, standing, 1000}, {1, 0, 0});
    EXPECT_EQ(components(player.shoot(&empty)), components(nowhere));
}

TEST(PlayerDeath, UpdateOfTheDeadTouchesNeitherPositionNorKeys) {
    Player player = deadSince(1000.0f);
    const vec3 parked = player.position;
    player.setKey(keyIndex::forward, true);
    player.setKey(keyIndex::jump, true);
    for (float now : {1000.0f, 1016.0f, 4999.0f}) {
        player.update(now);
        EXPECT_EQ(components(player.position), components(parked));
        EXPECT_TRUE(player.keys[keyIndex::forward]);
        EXPECT_TRUE(player.keys[keyIndex::jump]);
        EXPECT_EQ(player.verticalSpeed, 0.0f);
    }
}

TEST(PlayerDeath, EndsFourThousandMillisecondsAfterItBeganInThatSameUpdate) {
    Player player = deadSince(1000.0f);
    player.update(1000.0f + 3999.0f);
    EXPECT_FALSE(player.alive());
    seedForSpawn(4);
    player.update(1000.0f + 4000.0f);
    EXPECT_TRUE(player.alive());
    EXPECT_EQ(components(player.position), components(vec3(191.587f, 154.201f + 120.0f, 281.457f)))
        << "at the pose itself: the fall begins in the next tick";
    EXPECT_EQ(player.deathTime, 1000.0f);
}

TEST(PlayerDeath, SecondDeathRestartsTheWait) {
    Player player = deadSince(1000.0f);
    player.die(3000.0f);
    player.update(5000.0f);
    EXPECT_FALSE(player.alive());
    player.update(6999.0f);
    EXPECT_FALSE(player.alive());
    player.update(7000.0f);
    EXPECT_TRUE(player.alive());
}

TEST(PlayerDeath, WaitIsMeasuredInFloats) {
    constexpr float fourHourStep = 2.0f;
    Player player = deadSince(16777216.0f);
    player.update(16777216.0f + 4000.0f - fourHourStep);
    EXPECT_FALSE(player.alive());
    player.update(static_cast<float>(16777216 + 3999));
    EXPECT_TRUE(player.alive()) << "3999 ms later is 4000 ms later up there";
}

TEST(PlayerDeath, RespawnReleasesTheFireKey) {
    Player player = deadSince(0.0f);
    player.setKey(keyIndex::shoot, true);
    player.update(4000.0f);
    EXPECT_TRUE(player.alive());
    EXPECT_FALSE(player.isShooting());
}

TEST(PlayerDeath, LeavesTheScoreToGoOnFromWhereItWas) {
    Player player;
    player.incPoints();
    player.incPoints();
    player.die(0.0f);
    player.update(4000.0f);
    EXPECT_EQ(player.playerUpdate.points, 2);
}

TEST(PlayerScore, GoesUpAndDownByOneAndBelowZero) {
    Player player;
    player.decPoints();
    EXPECT_EQ(player.playerUpdate.points, -1);
    player.incPoints();
    player.incPoints();
    EXPECT_EQ(player.playerUpdate.points, 1);
}

TEST(PlayerSilence, LosesTheConnectionAfterMoreThanFiveSeconds) {
    Player player;
    player.lastMessageTime = 0.0f;
    EXPECT_FALSE(player.lostConnection(4999.0f));
    EXPECT_FALSE(player.lostConnection(5000.0f));
    EXPECT_TRUE(player.lostConnection(std::nextafter(5000.0f, 6000.0f)));
    EXPECT_TRUE(player.lostConnection(5000.5f));
}

TEST(PlayerSilence, IsMeasuredInFloats) {
    Player player;
    player.lastMessageTime = 33554432.0f; // beyond 2^25 ms floats lie 4 ms apart
    EXPECT_FALSE(player.lostConnection(static_cast<float>(33554432 + 5001)));
    EXPECT_TRUE(player.lostConnection(static_cast<float>(33554432 + 5003)));
}

TEST(PlayerSilence, CountsForTheDeadToo) {
    Player player = deadSince(4000.0f);
    player.lastMessageTime = 0.0f;
    EXPECT_TRUE(player.lostConnection(5001.0f));
}

TEST(PlayerSilence, MessageFromBeforeTheClocksReadingIsNoSilence) {
    Player player;
    player.lastMessageTime = 9000.0f;
    EXPECT_FALSE(player.lostConnection(1000.0f));
}

TEST(PlayerSilence, EndsWithAMessageAtTheClocksReadingAsAFloat) {
    Player player;
    ManualClock::now = 7777;
    player.connectedMessageReceived();
    EXPECT_EQ(player.lastMessageTime, 7777.0f);
    EXPECT_FALSE(player.lostConnection(12777.0f));
    ManualClock::now = 16777217;
    player.connectedMessageReceived();
    EXPECT_EQ(player.lastMessageTime, 16777216.0f);
}
