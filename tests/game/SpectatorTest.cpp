#include "game/Spectator.h"

#include "arena/Map.h"
#include "tests/game/Snapshots.h"
#include "tests/support/Arenas.h"

#include <glm/geometric.hpp>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

constexpr float frame = 1.0f / 60.0f;

struct SpectatorInCourt : testing::Test {
    MapManager map = loaded(emptyCourt());
    Camera camera;
    Spectator spectator{'2'};
    PlayerUpdate ann = playerAt('1', {400.0f, standing, 400.0f}, "Ann");
    PlayerUpdate bob = playerAt('2', {1000.0f, standing, 1000.0f}, "Bob");

    void place(const PlayerUpdate* player) { spectator.place(camera, player, map, frame); }

    void expectEye(glm::vec3 wanted, float slack = 0.01f) const {
        EXPECT_LT(glm::distance(camera.eye, wanted), slack)
            << camera.eye.x << ' ' << camera.eye.y << ' ' << camera.eye.z;
    }
};

} // namespace

TEST_F(SpectatorInCourt, WatchesWhoIsWantedOrElseTheFirst) {
    const PlayerUpdate both[] = {bob, ann};
    EXPECT_EQ(spectator.watched(both), '2');
    EXPECT_EQ(spectator.watched(std::span(both).last(1)), '1');
    spectator.watch('4');
    EXPECT_EQ(spectator.watched(both), '1');
    EXPECT_EQ(spectator.watched({}), 0);
}

TEST_F(SpectatorInCourt, InAnEyeIsWhereThatIs) {
    place(&bob);
    expectEye(onScreen(bob.position));
    EXPECT_EQ(camera.direction, onScreen(bob.direction));
}

TEST_F(SpectatorInCourt, StaysWhileThePlayerIsSoakedOrGone) {
    place(&bob);
    const PlayerUpdate wet = soaked(bob);
    for (const Spectator::View view : {Spectator::View::eye, Spectator::View::following}) {
        spectator.setView(view);
        for (const PlayerUpdate* player : {&wet, static_cast<const PlayerUpdate*>(nullptr)}) {
            place(player);
            expectEye(onScreen(bob.position));
        }
    }
}

TEST_F(SpectatorInCourt, FollowsFromBehindAndAbove) {
    spectator.setView(Spectator::View::following);
    place(&bob);
    EXPECT_LT(camera.eye.z, bob.position.z - 250.0f);
    EXPECT_GT(camera.eye.y, bob.position.y + 100.0f);
    EXPECT_NEAR(camera.eye.x, bob.position.x, 0.01f);
    EXPECT_GT(camera.direction.z, 0.9f);
}

TEST_F(SpectatorInCourt, FollowsATurnSmoothly) {
    spectator.setView(Spectator::View::following);
    place(&bob);
    bob.direction = {1.0f, 0.0f, 0.0f};
    place(&bob);
    EXPECT_GT(camera.direction.x, 0.01f);
    EXPECT_LT(camera.direction.x, 0.3f);
    for (int i = 0; i < 120; ++i)
        place(&bob);
    EXPECT_GT(camera.direction.x, 0.9f);
    spectator.leap();
    bob.direction = {0.0f, 0.0f, -1.0f};
    place(&bob);
    EXPECT_LT(camera.direction.z, -0.9f) << "at once after a leap";
}

TEST_F(SpectatorInCourt, KeepsOutOfCubesWhileItFollows) {
    // The court's walls are one cube thick.
    spectator.setView(Spectator::View::following);
    for (const float z : {100.0f, 200.0f, 300.0f}) {
        bob.position = {1000.0f, standing, z};
        for (int i = 0; i < 32; ++i) {
            spectator.turn(0.2f, 0.0f);
            place(&bob);
            EXPECT_GE(camera.eye.z, arena::cubeEdge + 10.0f) << i;
        }
        for (int i = 0; i < 20; ++i) {
            spectator.turn(0.0f, 0.1f);
            place(&bob);
            EXPECT_GE(camera.eye.y, arena::cubeEdge + 10.0f) << "the floor";
            EXPECT_GE(camera.eye.z, arena::cubeEdge + 10.0f);
        }
    }
}

TEST_F(SpectatorInCourt, FliesOnFromWhereItLooked) {
    place(&bob);
    spectator.setView(Spectator::View::flying);
    place(&ann);
    expectEye(onScreen(bob.position));
    spectator.fly({0.0f, 0.0f, 1.0f}, 1.0f);
    place(&ann);
    const float way = camera.eye.z - bob.position.z;
    EXPECT_GT(way, 300.0f);
    expectEye(onScreen(bob.position) + glm::vec3(0.0f, 0.0f, way));
    spectator.fly({1.0f, 0.5f, 0.0f}, 1.0f);
    place(&ann);
    expectEye(onScreen(bob.position) + glm::vec3(-way, 0.5f * way, way), 0.1f);
}

TEST_F(SpectatorInCourt, TurnsAFlightByTheMouse) {
    spectator.flyFrom({100.0f, 200.0f, 300.0f}, {0.0f, 0.0f, 1.0f});
    spectator.turn(0.5f, 0.0f);
    place(nullptr);
    EXPECT_LT(camera.direction.x, -0.4f) << "the right of somebody who looks along z";
    spectator.turn(0.0f, 0.5f);
    place(nullptr);
    EXPECT_GT(camera.direction.y, 0.4f);
    for (int i = 0; i < 20; ++i)
        spectator.turn(0.0f, 0.5f);
    place(nullptr);
    EXPECT_LT(camera.direction.y, 1.0f) << "never straight up";
    EXPECT_GT(camera.direction.y, 0.99f);
}

TEST_F(SpectatorInCourt, APlayersNumberEndsAFlight) {
    spectator.flyFrom({100.0f, 200.0f, 300.0f}, {0.0f, 0.0f, 1.0f});
    spectator.watch('1');
    EXPECT_EQ(spectator.view(), Spectator::View::eye);
    spectator.setView(Spectator::View::following);
    spectator.watch('2');
    EXPECT_EQ(spectator.view(), Spectator::View::following);
}

TEST_F(SpectatorInCourt, OnlyAFlightFlies) {
    place(&bob);
    spectator.fly({1.0f, 1.0f, 1.0f}, 1.0f);
    place(&bob);
    expectEye(onScreen(bob.position));
}
