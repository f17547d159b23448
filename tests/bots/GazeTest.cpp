#include "bots/Gaze.h"

#include "arena/Rays.h"
#include "tests/support/Courts.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace drench;

using bots::Gaze;
using bots::View;

namespace {

constexpr vec3 eye{960.0f, standing, 960.0f};
constexpr View ahead{100.0, -20.0};

/// The first glance, after looking ahead for a while.
View firstGlance(Gaze& gaze, const arena::Grid& grid, vec3 from, View towards) {
    for (int tick = 0; tick < 1000; ++tick) {
        const View view = gaze.next(grid, from, towards);
        if (view.right != towards.right)
            return view;
    }
    return towards;
}

bool isAhead(View view) {
    return view.right == ahead.right && view.down == ahead.down;
}

} // namespace

TEST(Gaze, IsAheadMostOfTheTimeAndAsideNowAndThen) {
    const MapManager map = court(30, 10, 30, nothing);
    const arena::Grid grid = arena::gridOf(map);
    Gaze gaze{Chance(1)};
    int aside = 0;
    int glances = 0;
    bool before = true;
    constexpr int ticks = 6000;
    for (int tick = 0; tick < ticks; ++tick) {
        const bool now = isAhead(gaze.next(grid, eye, ahead));
        aside += !now;
        glances += before && !now;
        before = now;
    }
    EXPECT_GT(aside, ticks / 10);
    EXPECT_LT(aside, ticks / 2);
    EXPECT_GT(glances, 25);
    EXPECT_LT(glances, 90);
}

TEST(Gaze, GlancesGoAsideByAnythingFromAnEighthOfATurnToNearlyHalfOfOne) {
    const MapManager map = court(30, 10, 30, nothing);
    const arena::Grid grid = arena::gridOf(map);
    double least = 1e9;
    double most = 0.0;
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        Gaze gaze{Chance(seed)};
        const double turn = std::fabs(firstGlance(gaze, grid, eye, ahead).right - ahead.right) /
                            bots::countsPerRadian;
        least = std::min(least, turn);
        most = std::max(most, turn);
    }
    EXPECT_GT(least, 0.75);
    EXPECT_LT(least, 1.1);
    EXPECT_GT(most, 2.6);
    EXPECT_LT(most, 3.15);
}

TEST(Gaze, GlancesLastLongEnoughToSeeSomething) {
    const MapManager map = court(30, 10, 30, nothing);
    const arena::Grid grid = arena::gridOf(map);
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        Gaze gaze{Chance(seed)};
        const View glance = firstGlance(gaze, grid, eye, ahead);
        ASSERT_FALSE(isAhead(glance));
        for (int tick = 0; tick < 20; ++tick)
            ASSERT_EQ(gaze.next(grid, eye, ahead).right, glance.right);
    }
}

TEST(Gaze, GoesToOpenSidesRatherThanWalls) {
    // A corridor along z that is open for 20 cubes behind, with walls close by on both sides.
    const MapManager map = court(30, 10, 30, [](int i, int, int) { return i < 14 || i > 15; });
    const arena::Grid grid = arena::gridOf(map);
    const vec3 inCorridor(960.0f, standing, 1400.0f);
    const View towardsWall = {bots::countsPerRadian * std::acos(0.0), 0.0};
    double along = 0.0;
    int glances = 0;
    for (std::uint64_t seed = 1; seed <= 100; ++seed) {
        Gaze gaze{Chance(seed)};
        const vec3 direction = bots::directionOf(firstGlance(gaze, grid, inCorridor, towardsWall));
        along += static_cast<double>(std::fabs(direction.z));
        ++glances;
    }
    // Directions drawn evenly would give 2 / pi.
    EXPECT_GT(along / glances, 0.85);
}

TEST(Gaze, SameSeedLooksAlike) {
    const MapManager map = court(30, 10, 30, nothing);
    const arena::Grid grid = arena::gridOf(map);
    Gaze one{Chance(1)};
    Gaze same{Chance(1)};
    Gaze other{Chance(2)};
    bool differs = false;
    for (int tick = 0; tick < 1000; ++tick) {
        const View view = one.next(grid, eye, ahead);
        ASSERT_EQ(view.right, same.next(grid, eye, ahead).right);
        differs |= view.right != other.next(grid, eye, ahead).right;
    }
    EXPECT_TRUE(differs);
}
