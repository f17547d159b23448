#include "src/Player.h"
#include "tests/support/Arenas.h"
#include "tests/support/Components.h"
#include "tests/support/Datagrams.h"
#include "tests/support/ManualClock.h"
#include "tests/support/Room.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

constexpr vec3 there(300.0f, 200.0f, 400.0f);
constexpr vec3 beyond(300.0f, 203.0f, 404.0f);

void expectAtRest(const Player& player, vec3 centre) {
    const Box body(centre, vec3(50.0f, 150.0f, 50.0f));
    EXPECT_EQ(components(player.position), components(centre));
    EXPECT_EQ(components(player.box.centre), components(body.centre));
    EXPECT_EQ(components(player.box.min), components(body.min));
    EXPECT_EQ(components(player.box.max), components(body.max));
    EXPECT_EQ(components(player.velocity), components(vec3()));
    EXPECT_EQ(player.verticalSpeed, 0.0f);
    EXPECT_FALSE(player.inAir);
}

/// Keys and a turn that are all unlike those of a fresh player.
Controls someControls() {
    Controls controls;
    controls.held[keyIndex::left] = true;
    controls.held[keyIndex::forward] = true;
    controls.held[keyIndex::shoot] = true;
    controls.dx = -37;
    controls.dy = 12;
    return controls;
}

} // namespace

TEST(Body, RestsInItsMapWhereItIsMade) {
    MapManager map;
    const Player body = bodyAt(map, there, beyond);
    expectAtRest(body, there);
    EXPECT_EQ(body.mapMan, &map);
    EXPECT_EQ(components(body.look), components(beyond));
    EXPECT_EQ(components(body.direction), components(vec3(0.0f, 0.6f, 0.8f)));
    EXPECT_EQ(components(body.strafeVector), components(vec3(1.0f, 0.0f, 0.0f)));
    EXPECT_TRUE(body.alive());
    for (const bool held : body.keys)
        EXPECT_FALSE(held);
}

TEST(Body, AsksNeitherTheClockNorTheDice) {
    MapManager map;
    srand(1);
    const int first = rand();
    srand(1);
    ManualClock::now = 4711;
    const Player body = bodyAt(map, there, beyond);
    EXPECT_EQ(rand(), first);
    EXPECT_EQ(body.lastMessageTime, 0.0f);
}

TEST(Body, MovesAsAPlayerAtItsPlaceDoes) {
    MapManager map = loaded(emptyCourt());
    Player body = bodyAt(map, {1000.0f, 139.25f, 1000.0f}, {1000.0f, 139.25f, 1001.0f});
    body.setKey(keyIndex::forward, true);
    body.update(0.0f);
    EXPECT_EQ(components(body.position), components(vec3(1000.0f, 139.25f, 1006.0f)));
}

TEST(PlayerAtAPose, IsThereAndHeardFromWhenTold) {
    for (int pose = 0; pose < Player::spawnPoseCount; ++pose) {
        Player expected;
        expected.spawnAt(pose);
        const Player player('3', "Ann", 17.0f, pose);
        EXPECT_EQ(player.getPlayerID(), '3');
        EXPECT_STREQ(player.playerUpdate.name, "Ann");
        EXPECT_EQ(player.lastMessageTime, 17.0f);
        EXPECT_EQ(components(player.position), components(expected.position)) << pose;
        EXPECT_EQ(components(player.rotation), components(expected.rotation)) << pose;
    }
}

TEST(PlacedPlayer, ComesToRestAndKeepsKeysAndRotation) {
    Player player;
    player.velocity = {1, 2, 3};
    player.verticalSpeed = -4.0f;
    player.inAir = true;
    player.setKey(keyIndex::forward, true);
    player.rotation = {5, 6, 7, 8};
    player.placeAt(there, beyond);
    expectAtRest(player, there);
    EXPECT_EQ(components(player.look), components(beyond));
    EXPECT_EQ(components(player.direction), components(vec3(0.0f, 0.6f, 0.8f)));
    EXPECT_TRUE(player.keys[keyIndex::forward]);
    EXPECT_EQ(components(player.rotation), components(quat(5, 6, 7, 8)));
}

TEST(Controls, ActAsTheirRecordsDo) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    Player expected = room.server.players[0];
    expected.setKey(keyIndex::right, true);
    room.server.players[0] = expected;
    const Controls controls = someControls();
    for (int key = 0; key < keyIndex::jump; ++key)
        room.dispatch(keyDatagram(id, key, controls.held[key]), peer);
    room.dispatch(keyDatagram(id, keyIndex::shoot, true), peer);
    room.dispatch(viewDatagram(id, controls.dx, controls.dy), peer);

    expected.apply(controls);
    const Player& player = room.server.players[0];
    EXPECT_FALSE(expected.keys[keyIndex::right]) << "what is not held is released";
    for (int key = 0; key < keyIndex::count; ++key)
        EXPECT_EQ(expected.keys[key], player.keys[key]) << key;
    EXPECT_EQ(components(expected.look), components(player.look));
    EXPECT_EQ(components(expected.direction), components(player.direction));
    EXPECT_EQ(components(expected.strafeVector), components(player.strafeVector));
    EXPECT_EQ(components(expected.rotation), components(player.rotation));
}

TEST(Controls, AskForAJumpAndNeverTakeItBack) {
    Player player;
    Controls controls;
    controls.held[keyIndex::jump] = true;
    player.apply(controls);
    EXPECT_FALSE(player.keys[keyIndex::jump]) << "held means nothing of a jump";
    controls.jump = true;
    player.apply(controls);
    EXPECT_TRUE(player.keys[keyIndex::jump]);
    player.apply(Controls());
    EXPECT_TRUE(player.keys[keyIndex::jump]);
}

TEST(Controls, WithoutCountsLeaveTheViewToTheBit) {
    Player player;
    player.strafeVector = {1, 2, 3};
    player.apply(Controls());
    EXPECT_EQ(components(player.strafeVector), components(vec3(1, 2, 3)));
}

TEST(Controls, DoNothingToTheDead) {
    Player player;
    player.die(0.0f);
    const Player before = player;
    Controls controls = someControls();
    controls.jump = true;
    player.apply(controls);
    for (const bool held : player.keys)
        EXPECT_FALSE(held);
    EXPECT_EQ(components(player.direction), components(before.direction));
}
