#include "bots/Footwork.h"

#include "src/Player.h"
#include "tests/bots/LevelRoadmap.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace drench;

using bots::Footwork;
using bots::Steps;

namespace {

/// A body that takes steps at the pace of the game.
struct Dancer {
    MapManager& map;
    const bots::Roadmap& roadmap;
    Footwork footwork;
    Player player;

    Dancer(MapManager& court, const bots::Roadmap& roads, vec3 position, std::uint64_t seed)
        : map(court), roadmap(roads), footwork{Chance(seed)},
          player(bodyAt(court, position, position + vec3(0.0f, 0.0f, 1.0f))) {}

    Steps tick(vec3 enemy) {
        const bool grounded = player.velocity.y == 0.0f || !player.inAir;
        const Steps steps = footwork.step(roadmap, player.position, enemy, grounded);
        player.look = player.position +
                      (steps.heading.length() > 0.0f ? steps.heading : vec3(0.0f, 0.0f, 1.0f));
        player.updateDirAndStrafe();
        player.setKey(keyIndex::forward, steps.heading.length() > 0.0f);
        if (steps.jump)
            player.setKey(keyIndex::jump, true);
        player.update(0.0f);
        return steps;
    }
};

} // namespace

TEST(Footwork, GoesToBothSidesInTurnsOfDifferentLengths) {
    MapManager map = court(30, 10, 30, nothing);
    const bots::Roadmap roadmap = levelRoadmap(map);
    Dancer dancer(map, roadmap, standingIn(15, 15), 1);
    int left = 0;
    int right = 0;
    int changes = 0;
    int shortest = 1000;
    int longest = 0;
    int since = 0;
    double before = 0.0;
    for (int tick = 0; tick < 1200; ++tick) {
        const vec3 enemy = standingIn(15, 22);
        const Steps steps = dancer.tick(enemy);
        EXPECT_NEAR(steps.heading.length(), 1.0f, 1e-4f);
        const vec3 way = enemy - dancer.player.position;
        const double side = static_cast<double>(way.x * steps.heading.z - way.z * steps.heading.x);
        ++(side > 0.0 ? left : right);
        ++since;
        if (side * before < 0.0) {
            ++changes;
            shortest = std::min(shortest, since);
            longest = std::max(longest, since);
            since = 0;
        }
        before = side;
    }
    EXPECT_GT(left, 300);
    EXPECT_GT(right, 300);
    EXPECT_GT(changes, 15);
    EXPECT_GE(shortest, 10);
    EXPECT_GE(longest, 2 * shortest);
}

TEST(Footwork, KeepsItsDistance) {
    MapManager map = court(40, 10, 40, nothing);
    const bots::Roadmap roadmap = levelRoadmap(map);
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        for (const int depth : {4, 19}) {
            Dancer dancer(map, roadmap, standingIn(20, depth), seed);
            const vec3 enemy = standingIn(20, 20);
            for (int tick = 0; tick < 400; ++tick)
                dancer.tick(enemy);
            const vec3 way = enemy - dancer.player.position;
            const double distance = std::hypot(way.x, way.z);
            EXPECT_GT(distance, 150.0);
            EXPECT_LT(distance, 920.0);
        }
    }
}

TEST(Footwork, LikesRangesBetweenTwoAndAHalfAndSevenHundredUnits) {
    MapManager map = court(30, 10, 30, nothing);
    const bots::Roadmap roadmap = levelRoadmap(map);
    const vec3 enemy = standingIn(15, 25);
    const auto approach = [&](std::uint64_t seed, float distance) {
        Footwork footwork{Chance(seed)};
        const vec3 position = enemy - vec3(0.0f, 0.0f, distance);
        return footwork.step(roadmap, position, enemy, true).heading.z;
    };
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        EXPECT_LT(approach(seed, 180.0f), -0.1f) << "goes away, seed " << seed;
        EXPECT_GT(approach(seed, 900.0f), 0.1f) << "goes nearer, seed " << seed;
    }
    // Somebody is content with every range between.
    for (const float distance : {300.0f, 450.0f, 650.0f}) {
        bool content = false;
        for (std::uint64_t seed = 1; seed <= 20; ++seed)
            content |= std::fabs(approach(seed, distance)) < 0.01f;
        EXPECT_TRUE(content) << distance;
    }
}

TEST(Footwork, StaysOnItsIsland) {
    // A platform of 5 × 5 cubes, four high.
    MapManager map = court(20, 12, 20, [](int i, int j, int k) {
        return j <= 4 && i >= 8 && i <= 12 && k >= 8 && k <= 12;
    });
    const bots::Roadmap roadmap = levelRoadmap(map);
    const vec3 lift(0.0f, 4.0f * 64.0f, 0.0f);
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        Dancer dancer(map, roadmap, standingIn(10, 10) + lift, seed);
        for (int tick = 0; tick < 600; ++tick) {
            dancer.tick(standingIn(10, 17) + lift);
            ASSERT_GT(dancer.player.position.y, 390.0f) << "seed " << seed << ", tick " << tick;
        }
    }
}

TEST(Footwork, JumpsNowAndThenFromTheGround) {
    MapManager map = court(30, 10, 30, nothing);
    const bots::Roadmap roadmap = levelRoadmap(map);
    Footwork grounded{Chance(1)};
    Footwork aloft{Chance(1)};
    int jumps = 0;
    for (int tick = 0; tick < 3000; ++tick) {
        jumps += grounded.step(roadmap, standingIn(15, 15), standingIn(15, 22), true).jump;
        EXPECT_FALSE(aloft.step(roadmap, standingIn(15, 15), standingIn(15, 22), false).jump);
    }
    EXPECT_GT(jumps, 5);
    EXPECT_LT(jumps, 60);
}

TEST(Footwork, KeepsAJumpForTheNextGround) {
    MapManager map = court(30, 10, 30, nothing);
    const bots::Roadmap roadmap = levelRoadmap(map);
    Footwork grounded{Chance(1)};
    Footwork late{Chance(1)};
    bool wanted = false;
    int jumps = 0;
    for (int tick = 0; tick < 3000; ++tick) {
        wanted |= grounded.step(roadmap, standingIn(15, 15), standingIn(15, 22), true).jump;
        // This one only stands every tenth tick, and jumps by then.
        const bool stands = tick % 10 == 0;
        const bool jumped = late.step(roadmap, standingIn(15, 15), standingIn(15, 22), stands).jump;
        EXPECT_EQ(jumped, stands && wanted) << tick;
        jumps += jumped;
        if (stands)
            wanted = false;
    }
    EXPECT_GT(jumps, 5);
}

TEST(Footwork, KnowsWallsAndDropsBeforeIt) {
    MapManager map = court(20, 12, 20, [](int i, int j, int k) {
        return (j <= 4 && i >= 8 && i <= 12) || (j <= 1 && i == 13) || (i == 10 && k == 12);
    });
    const bots::Roadmap roadmap = levelRoadmap(map);
    const vec3 above = standingIn(10, 10) + vec3(0.0f, 4.0f * 64.0f, 0.0f);
    EXPECT_TRUE(bots::isSafe(roadmap, above, {1.0f, 0.0f, 0.0f}));
    EXPECT_FALSE(bots::isSafe(roadmap, above + vec3(128.0f, 0.0f, 0.0f), {1.0f, 0.0f, 0.0f}));
    EXPECT_FALSE(bots::isSafe(roadmap, above + vec3(0.0f, 0.0f, 70.0f), {0.0f, 0.0f, 1.0f}));
    // One cube down is no pit.
    const vec3 onStep = standingIn(13, 10) + vec3(0.0f, 64.0f, 0.0f);
    EXPECT_TRUE(bots::isSafe(roadmap, onStep, {1.0f, 0.0f, 0.0f}));
}
