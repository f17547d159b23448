#include "src/Player.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Components.h"
#include "tests/support/ManualClock.h"
#include "tests/support/Room.h"
#include "tests/support/Spawns.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

std::string bytesOf(const Player& player) {
    return {reinterpret_cast<const char*>(&player), sizeof player};
}

} // namespace

TEST(Player, KeepsAtMostElevenCharactersOfItsName) {
    EXPECT_STREQ(Player('1', "Bartholome").getName(), "Bartholome");
    EXPECT_STREQ(Player('1', "Bartholomew").getName(), "Bartholomew");
    EXPECT_STREQ(Player('1', "Bartholomews").getName(), "Bartholomew");
    EXPECT_STREQ(Player('1', "Bartholomew the Dry, of Drench").getName(), "Bartholomew");
}

TEST(Player, EmptyOrNullNameIsTheEmptyString) {
    EXPECT_STREQ(Player('1', "").getName(), "");
    EXPECT_STREQ(Player('1', nullptr).getName(), "");
}

TEST(Player, NameEndsAtItsFirstZeroAndIsFollowedByZeros) {
    const Player player('1', "Ann\0Bo");
    EXPECT_EQ(std::string(player.playerUpdate.name, sizeof player.playerUpdate.name),
              "Ann" + std::string(9, '\0'));
}

TEST(Player, NameLivesInTheOutgoingRecord) {
    Player player('1', "Ann");
    EXPECT_EQ(player.getName(), player.playerUpdate.name);
}

TEST(Player, DefaultIsIdentifierZeroNamedNoName) {
    Player player;
    EXPECT_EQ(player.getPlayerID(), 48);
    EXPECT_STREQ(player.getName(), "NO_NAME");
}

TEST(Player, StartsAliveWithoutScoreKeysOrMap) {
    const Player player('3', "Ann");
    EXPECT_EQ(player.getPlayerID(), '3');
    EXPECT_EQ(player.playerUpdate.points, 0);
    for (bool key : player.keys)
        EXPECT_FALSE(key);
    EXPECT_TRUE(player.alive());
    EXPECT_EQ(player.deathTime, 0.0f);
    EXPECT_EQ(player.mapMan, nullptr);
    EXPECT_EQ(player.client.addrLen, 16u);
    EXPECT_EQ(components(player.velocity), components(vec3()));
}

TEST(Player, StartsAtASpawnPoseInItsBody) {
    seedForSpawn(4);
    const Player player('1', "Ann");
    EXPECT_EQ(components(player.position), components(vec3(191.587f, 154.201f + 120.0f, 281.457f)));
    EXPECT_EQ(components(player.box.centre), components(player.position));
    EXPECT_EQ(components(player.box.min), components(player.position - vec3(25.0f, 75.0f, 25.0f)));
    EXPECT_EQ(components(player.box.max), components(player.position + vec3(25.0f, 75.0f, 25.0f)));
}

TEST(Player, IsHeardFromWhenItIsMade) {
    ManualClock::now = 123456;
    EXPECT_EQ(Player('1', "Ann").lastMessageTime, 123456.0f);
    ManualClock::now = 16777217;
    EXPECT_EQ(Player('1', "Ann").lastMessageTime, 16777216.0f) << "as a float holds it";
}

TEST(Player, KeysAreHeldAndReleasedOneByOne) {
    for (int held = 0; held < 6; ++held) {
        Player player;
        player.setKey(held, true);
        for (int key = 0; key < 6; ++key)
            EXPECT_EQ(player.keys[key], key == held) << held << ", " << key;
        player.setKey(held, false);
        EXPECT_FALSE(player.keys[held]);
    }
}

TEST(Player, KeyIndexOutOfRangeChangesNoByteOfTheRecord) {
    Player player;
    player.playerID = -1;
    player.lastMessageTime = -1.0f;
    for (bool& key : player.keys)
        key = true;
    const std::string before = bytesOf(player);
    for (int key : {6, -1, 9, INT_MAX, INT_MIN}) {
        player.setKey(key, true);
        EXPECT_EQ(bytesOf(player), before) << key;
        player.setKey(key, false);
        EXPECT_EQ(bytesOf(player), before) << key;
    }
}

TEST(Player, ShootsWhileKeyFiveIsHeld) {
    Player player;
    for (int key = 0; key < 5; ++key)
        player.setKey(key, true);
    EXPECT_FALSE(player.isShooting());
    player.setKey(5, true);
    EXPECT_TRUE(player.isShooting());
}

TEST(Player, AccessorsReturnTheirFields) {
    MapManager map;
    Player player;
    player.setMapMan(&map);
    player.position = {1, 2, 3};
    player.direction = {4, 5, 6};
    player.strafeVector = {7, 8, 9};
    player.up = {10, 11, 12};
    player.rotation = {13, 14, 15, 16};
    player.box = Box(vec3(17, 18, 19), 2.0f);
    EXPECT_EQ(player.mapMan, &map);
    EXPECT_EQ(components(player.getPosition()), components(vec3(1, 2, 3)));
    EXPECT_EQ(components(player.getDirection()), components(vec3(4, 5, 6)));
    EXPECT_EQ(components(player.getStrafe()), components(vec3(7, 8, 9)));
    EXPECT_EQ(components(player.getUp()), components(vec3(10, 11, 12)));
    EXPECT_EQ(components(player.getRotation()), components(quat(13, 14, 15, 16)));
    EXPECT_EQ(components(player.getBox().max), components(vec3(18, 19, 20)));
}

TEST(Player, SetRotationTurnsNeitherViewNorStrafeVector) {
    Player player;
    Player expected = player;
    player.setRotation(quat(0.5f, 0.5f, 0.5f, 0.5f));
    expected.rotation = quat(0.5f, 0.5f, 0.5f, 0.5f);
    EXPECT_EQ(bytesOf(player), bytesOf(expected));
}

TEST(PlayerState, IsRefreshedAndReturnedWithNameAndPoints) {
    Player player('2', "Ann");
    player.rotation = {1, 2, 3, 4};
    player.position = {5, 6, 7};
    player.direction = {8, 9, 10};
    player.setKey(keyIndex::shoot, true);
    player.playerUpdate.points = -7;
    const PlayerUpdate returned = player.getPlayerUpdate();
    EXPECT_EQ(components(returned.rotation), components(quat(1, 2, 3, 4)));
    EXPECT_EQ(components(returned.position), components(vec3(5, 6, 7)));
    EXPECT_EQ(components(returned.direction), components(vec3(8, 9, 10)));
    EXPECT_STREQ(returned.name, "Ann");
    EXPECT_EQ(returned.points, -7);
    EXPECT_TRUE(returned.shooting);
    EXPECT_EQ(returned.id, '2');
    EXPECT_EQ(std::memcmp(&returned, &player.playerUpdate, sizeof returned), 0);

    player.setKey(keyIndex::shoot, false);
    EXPECT_FALSE(player.getPlayerUpdate().shooting);
}

TEST(PlayerState, IsEmptyButForTheNameUntilItIsFirstAskedFor) {
    const Player player('2', "Ann");
    EXPECT_EQ(components(player.playerUpdate.rotation), components(quat()));
    EXPECT_EQ(components(player.playerUpdate.position), components(vec3()));
    EXPECT_EQ(components(player.playerUpdate.direction), components(vec3()));
    EXPECT_EQ(player.playerUpdate.id, 0);
}

TEST(PlayerState, StaysAsLastAskedForWhileThePlayerMovesOn) {
    Player player('2', "Ann");
    const vec3 before = player.position;
    player.getPlayerUpdate();
    player.moveAll(vec3(1, 2, 3), 1.0f);
    player.setKey(keyIndex::shoot, true);
    EXPECT_EQ(components(player.playerUpdate.position), components(before));
    EXPECT_FALSE(player.playerUpdate.shooting);
}

TEST(PlayerState, HasZerosWhereNothingIsMeant) {
    Player player('2', "Ann");
    const PlayerUpdate returned = player.getPlayerUpdate();
    EXPECT_EQ(returned.padding[0], 0);
    EXPECT_EQ(returned.padding[1], 0);
}

TEST(PlayerConsole, DumpKeepsItsSpellingAndItsFiveLines) {
    Player player;
    player.placeAt({1.0f, 2.5f, -3.0f}, {1.0f, 2.5f, -2.0f});
    player.rotation = quat(0.0f, -0.5f, 0.25f, 1.0f);
    const CapturedOutput output;
    player.toConsole();
    EXPECT_EQ(output.text(), "Player Infomation\n"
                             "vec3 pos = 1, 2.5, -3\n"
                             "vec3 look = 1, 2.5, -2\n"
                             "vec3 up = 0, 1, 0\n"
                             "quat4 q = quat(0, -0.5, 0.25, 1)\n");
}
