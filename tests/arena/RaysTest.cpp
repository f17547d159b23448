#include "arena/Rays.h"
#include "tests/support/Arenas.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::arena;

TEST(Rays, MeetTheNearestCubeOnTheFaceTowardsThem) {
    const MapManager map = onlySolid(5, 5, 5, 2, 2, 2);
    const Grid grid = gridOf(map);
    for (int axis = 0; axis < 3; ++axis) {
        for (const int side : {-1, 1}) {
            const auto a = static_cast<std::size_t>(axis);
            Ray ray{{2.5, 2.5, 2.5}, {}};
            ray.start[a] = side > 0 ? 9.0 : -4.0;
            ray.direction[a] = -2.0 * side;
            const std::optional<Hit> hit = trace(grid, ray);
            ASSERT_TRUE(hit);
            EXPECT_EQ(hit->cell, (CellIndex{2, 2, 2}));
            EXPECT_EQ(hit->axis, axis);
            EXPECT_EQ(hit->side, side);
            EXPECT_EQ(hit->distance, 3.0) << "in lengths of the direction";
            EXPECT_EQ(hit->body, nullptr);
        }
    }
}

TEST(Rays, FindTheCubesThatAFineMarchFinds) {
    const MapManager map = loaded(arenaText(
        6, 5, 7, [](int i, int j, int k) { return (i * 7 + j * 5 + k * 3 + i * j * k) % 6 == 0; }));
    const Grid grid = gridOf(map);
    int met = 0;
    for (int n = 0; n < 400; ++n) {
        const Triple start = {3.1 + 0.01 * (n % 7), 2.6, 3.3};
        const Triple direction =
            unit({std::cos(n * 0.7), std::sin(n * 1.3), std::sin(n * 0.7) + 0.01});
        if (grid.isCube({3, 2, 3}))
            FAIL() << "the rays must start in the open";
        const std::optional<Hit> hit = trace(grid, {start, direction});
        // Up to just before the hit there is no cube, just behind it there is one.
        const double end = hit ? hit->distance : 20.0;
        for (double t = 0.0; t < end - 1e-6; t += 0.01) {
            const Triple p = sum(start, direction, t);
            ASSERT_FALSE(map.collides(vec3(float(64 * p[0]), float(64 * p[1]), float(64 * p[2]))) &&
                         std::min(t, end - t) > 0.001)
                << "ray " << n << " at " << t;
        }
        if (hit) {
            ++met;
            const Triple p = sum(start, direction, hit->distance + 1e-6);
            EXPECT_EQ(hit->cell, (CellIndex{int(p[0]), int(p[1]), int(p[2])})) << "ray " << n;
        }
    }
    EXPECT_GT(met, 200);
    EXPECT_LT(met, 400);
}

TEST(Rays, MissWhatLiesBesideOrBehindThem) {
    const MapManager map = onlySolid(5, 5, 5, 2, 2, 2);
    const Grid grid = gridOf(map);
    EXPECT_FALSE(trace(grid, {{3.5, 2.5, 9.0}, {0.0, 0.0, -1.0}})) << "beside the cube";
    EXPECT_FALSE(trace(grid, {{2.5, 2.5, 4.0}, {0.0, 0.0, 1.0}})) << "behind";
    EXPECT_FALSE(trace(grid, {{2.5, 7.0, 9.0}, {0.0, 0.0, -1.0}})) << "above the world";
    EXPECT_FALSE(trace(grid, {{-3.0, 2.5, 2.5}, {-1.0, 0.1, 0.0}})) << "away from the world";
}

TEST(Rays, DoNotSeeTheCubeThatTheyStartInFromInside) {
    const MapManager map = onlySolid(3, 1, 1, 0, 0, 0);
    const Grid grid = gridOf(map);
    EXPECT_FALSE(trace(grid, {{0.5, 0.5, 0.5}, {1.0, 0.0, 0.0}}));
}

TEST(Rays, EverySolidNumberButZeroIsACube) {
    const MapManager map = loaded("1 1 4 1 0 0 5 -3 2 7 999");
    const Grid grid = gridOf(map);
    EXPECT_TRUE(grid.isCube({0, 0, 0}));
    EXPECT_FALSE(grid.isCube({0, 0, 1}));
    EXPECT_TRUE(grid.isCube({0, 0, 2}));
    EXPECT_TRUE(grid.isCube({0, 0, 3}));
}

TEST(Rays, RemovedCubesAreNotMet) {
    const MapManager map = onlySolid(5, 5, 5, 2, 2, 2);
    Grid grid = gridOf(map);
    removeCube(grid, {2, 2, 2});
    EXPECT_FALSE(trace(grid, {{2.5, 9.0, 2.5}, {0.0, -1.0, 0.0}}));
}

TEST(RayBodies, AreMetWhereNoCubeIsNearer) {
    const MapManager map = onlySolid(5, 5, 5, 2, 2, 1);
    Grid grid = gridOf(map);
    addBody(grid, Box(vec3(160, 160, 224), vec3(50, 150, 50)));
    const std::optional<Hit> fromSouth = trace(grid, {{2.5, 2.5, 9.0}, {0.0, 0.0, -1.0}});
    ASSERT_TRUE(fromSouth && fromSouth->body);
    EXPECT_EQ(fromSouth->body, &grid.bodies[0]);
    EXPECT_EQ(fromSouth->axis, 2);
    EXPECT_EQ(fromSouth->side, 1);
    EXPECT_NEAR(fromSouth->distance, 9.0 - (224 + 25) / 64.0, 1e-12);
    const std::optional<Hit> fromNorth = trace(grid, {{2.5, 2.5, -3.0}, {0.0, 0.0, 1.0}});
    ASSERT_TRUE(fromNorth);
    EXPECT_EQ(fromNorth->body, nullptr);
    EXPECT_EQ(fromNorth->cell, (CellIndex{2, 2, 1}));
    EXPECT_FALSE(trace(grid, {{1.9, 2.5, 9.0}, {0.0, 0.0, -1.0}})) << "past the body";
}

TEST(RayBodies, NearestOfTwoIsMet) {
    const MapManager map = withoutSolids(5, 5, 5);
    Grid grid = gridOf(map);
    addBody(grid, Box(vec3(160, 160, 140), vec3(10, 150, 10)));
    addBody(grid, Box(vec3(160, 160, 180), vec3(10, 150, 10)));
    EXPECT_EQ(trace(grid, {{2.5, 2.5, 9.0}, {0.0, 0.0, -1.0}})->body, &grid.bodies[1]);
    EXPECT_EQ(trace(grid, {{2.5, 2.5, -3.0}, {0.0, 0.0, 1.0}})->body, &grid.bodies[0]);
}

TEST(RayBodies, BehindACubeAreHiddenEvenPastAnotherBody) {
    const MapManager map = onlySolid(5, 5, 5, 2, 2, 2);
    Grid grid = gridOf(map);
    addBody(grid, Box(vec3(160, 160, 96), vec3(50, 150, 50)));
    // The ray passes through this one's cell, but beside it.
    addBody(grid, Box(vec3(140, 160, 224), vec3(10, 150, 10)));
    const std::optional<Hit> hit = trace(grid, {{2.5, 2.5, 9.0}, {0.0, 0.0, -1.0}});
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->body, nullptr);
    EXPECT_EQ(hit->cell, (CellIndex{2, 2, 2}));
}

TEST(RayBodies, InACubeLeaveItAsItIs) {
    const MapManager map = onlySolid(5, 5, 5, 2, 2, 2);
    Grid grid = gridOf(map);
    addBody(grid, Box(vec3(160, 160, 160), vec3(20, 20, 20)));
    EXPECT_TRUE(grid.isCube({2, 2, 2}));
    const std::optional<Hit> hit = trace(grid, {{2.5, 2.5, 9.0}, {0.0, 0.0, -1.0}});
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->body, nullptr);
    EXPECT_EQ(hit->distance, 6.0);
}

TEST(RayBodies, OutsideTheWorldAreNotSeen) {
    const MapManager map = withoutSolids(3, 3, 3);
    Grid grid = gridOf(map);
    addBody(grid, Box(vec3(1e9f, 100, 100), vec3(50, 150, 50)));
    addBody(grid, Box(vec3(96, -5000, 96), vec3(50, 150, 50)));
    EXPECT_FALSE(trace(grid, {{-5.0, 1.5, 1.5}, {1.0, 0.0, 0.0}}));
    EXPECT_FALSE(trace(grid, {{1.5, 9.0, 1.5}, {0.0, -1.0, 0.0}}));
}
