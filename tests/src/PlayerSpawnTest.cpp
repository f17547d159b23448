#include "tests/support/Components.h"
#include "tests/support/PlayerIn.h"
#include "tests/support/Spawns.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

struct Pose {
    vec3 position;
    vec3 look;
    quat rotation;
};

const Pose poses[spawnRows] = {
    {{1010.68f, 538.201f, 133.03f},
     {1010.67f, 538.15f, 134.028f},
     {0.0236078f, -0.0194449f, -0.000244947f, 0.999531f}},
    {{113.387f, 538.201f, 1036.47f},
     {114.386f, 538.169f, 1036.5f},
     {0.00980021f, 0.68764f, -0.00984103f, 0.725916f}},
    {{1033.1f, 538.201f, 1919.44f},
     {1033.13f, 538.091f, 1918.44f},
     {-3.91328e-05f, 0.998179f, -0.0527532f, 0.0290938f}},
    {{1922.29f, 538.201f, 997.49f},
     {1921.29f, 538.13f, 997.454f},
     {-0.0235345f, 0.729366f, -0.0235971f, -0.683302f}},
    {{191.587f, 154.201f, 281.457f},
     {192.335f, 154.277f, 282.116f},
     {0.0364354f, -0.398095f, -0.0171409f, -0.916444f}},
    {{1771.3f, 154.201f, 251.968f},
     {1770.62f, 154.384f, 252.683f},
     {0.0881591f, 0.381228f, 0.0334798f, -0.919641f}},
    {{1789.25f, 154.201f, 1788.33f},
     {1788.55f, 154.4f, 1787.64f},
     {0.0407307f, 0.924549f, 0.0941632f, -0.366942f}},
    {{251.774f, 154.201f, 1809.15f},
     {252.445f, 154.425f, 1808.44f},
     {-0.040981f, 0.91708f, 0.107472f, 0.381698f}},
};

const Pose deathPose = {{-1375.2f, 797.701f, -1280.61f},
                        {-1374.52f, 797.664f, -1279.88f},
                        {-0.0758345f, 0.904769f, -0.164282f, -0.385529f}};

/// A player in whom nothing is as spawning or dying leaves it.
Player stirred() {
    Player player('2', "Ann");
    player.up = {1, 2, 3};
    player.direction = {4, 5, 6};
    player.strafeVector = {7, 8, 9};
    player.moveSpeed = 10.0f;
    player.strafeSpeed = 11.0f;
    player.verticalSpeed = 12.0f;
    player.moveInput = 1.0f;
    player.strafeInput = -1.0f;
    player.velocity = {13, 14, 15};
    player.inAir = true;
    player.box = Box(vec3(16, 17, 18), 19.0f);
    player.playerUpdate.points = 20;
    player.lastMessageTime = 21.0f;
    player.deathTime = 22.0f;
    for (bool& key : player.keys)
        key = true;
    return player;
}

void expectPose(const Player& player, const Pose& pose, vec3 up) {
    EXPECT_EQ(components(player.position), components(pose.position));
    EXPECT_EQ(components(player.look), components(pose.look));
    EXPECT_EQ(components(player.rotation), components(pose.rotation));
    EXPECT_EQ(components(player.up), components(up));

    vec3 direction = pose.look - pose.position;
    direction.normalize();
    EXPECT_EQ(components(player.direction), components(direction));
    vec3 strafe = up.cross(direction);
    strafe.normalize();
    EXPECT_EQ(components(player.strafeVector), components(strafe));

    const Box body(pose.position, vec3(50, 150, 50));
    EXPECT_EQ(components(player.box.centre), components(body.centre));
    EXPECT_EQ(components(player.box.min), components(body.min));
    EXPECT_EQ(components(player.box.max), components(body.max));
}

void expectAtRest(const Player& player) {
    EXPECT_EQ(player.moveSpeed, 6.0f);
    EXPECT_EQ(player.strafeSpeed, 6.0f);
    EXPECT_EQ(player.verticalSpeed, 0.0f);
    EXPECT_EQ(player.moveInput, 0.0f);
    EXPECT_EQ(player.strafeInput, 0.0f);
    EXPECT_FALSE(player.inAir);
    for (bool key : player.keys)
        EXPECT_FALSE(key);
}

Player spawnedAt(int row) {
    Player player = stirred();
    seedForSpawn(row);
    player.spawn();
    return player;
}

} // namespace

TEST(Spawning, StandsAtEachOfEightPosesLiftedBy120WithTheWorldsUp) {
    for (int row = 0; row < spawnRows; ++row) {
        SCOPED_TRACE(row);
        Pose lifted = poses[row];
        lifted.position.y += 120.0f;
        lifted.look.y += 120.0f;
        expectPose(spawnedAt(row), lifted, vec3(0, 1, 0));
    }
}

TEST(Spawning, SevenIsTheLastRow) {
    EXPECT_EQ(spawnedAt(7).position.x, 251.774f);
}

TEST(Spawning, DrawsOneRandomNumberModuloEight) {
    for (unsigned seed = 1; seed <= 50; ++seed) {
        srand(seed);
        const int row = rand() % 8;
        const int next = rand();
        Player player;
        srand(seed);
        player.spawn();
        EXPECT_EQ(player.position.x, poses[row].position.x);
        EXPECT_EQ(rand(), next);
    }
}

TEST(Spawning, PutsThePlayerAtRestWithAllKeysReleased) {
    expectAtRest(spawnedAt(0));
}

TEST(Spawning, LeavesDeathScoreNameAndLastMessageAlone) {
    Player player = stirred();
    player.dead = true;
    player.spawn();
    EXPECT_TRUE(player.dead);
    EXPECT_EQ(player.deathTime, 22.0f);
    EXPECT_EQ(player.playerUpdate.points, 20);
    EXPECT_EQ(player.lastMessageTime, 21.0f);
    EXPECT_STREQ(player.getName(), "Ann");
    EXPECT_EQ(components(player.velocity), components(vec3(13, 14, 15)));
}

TEST(Dying, ParksThePlayerOutsideTheWorldWithoutALift) {
    Player player = stirred();
    player.up = {0, 1, 0};
    player.die(1000.0f);
    expectPose(player, deathPose, vec3(0, 1, 0));
    EXPECT_FALSE(player.alive());
    EXPECT_EQ(player.deathTime, 1000.0f);
}

TEST(Dying, LeavesUpAsItIs) {
    Player player = stirred();
    player.die(1000.0f);
    expectPose(player, deathPose, vec3(1, 2, 3));
}

TEST(Dying, PutsThePlayerAtRestWithAllKeysReleased) {
    Player player = stirred();
    player.die(1000.0f);
    expectAtRest(player);
    EXPECT_FALSE(player.isShooting());
}

TEST(Dying, LeavesScoreNameAndLastMessageAlone) {
    Player player = stirred();
    player.die(1000.0f);
    EXPECT_EQ(player.playerUpdate.points, 20);
    EXPECT_EQ(player.lastMessageTime, 21.0f);
    EXPECT_STREQ(player.getName(), "Ann");
    EXPECT_EQ(components(player.velocity), components(vec3(13, 14, 15)));
}

TEST(Dying, DrawsNoRandomNumber) {
    Player player;
    srand(1);
    const int first = rand();
    srand(1);
    player.die(1000.0f);
    EXPECT_EQ(rand(), first);
}
