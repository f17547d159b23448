#include "src/MapManager.h"
#include "tests/support/Arenas.h"
#include "tests/support/Components.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

constexpr Three nothing = {-1, -1, -1};

Three marchedCell(const MapManager& map, vec3 start, vec3 dir) {
    return components(map.boxToCheckForLineIntersection(start, dir));
}

Three marchedPoint(const MapManager& map, vec3 start, vec3 dir) {
    return components(map.pointOfIntersection(start, dir));
}

const MapManager oneCube = onlySolid(1, 1, 1, 0, 0, 0);

} // namespace

TEST(March, FallsOntoTheTopFaceOfTheCubeBelow) {
    const MapManager map = onlySolid(1, 4, 1, 0, 0, 0);
    EXPECT_EQ(marchedCell(map, vec3(32, 200, 32), vec3(0, -1, 0)), (Three{0, 0, 0}));
    EXPECT_EQ(marchedPoint(map, vec3(32, 200, 32), vec3(0, -1, 0)), (Three{32, 64, 32}));
}

TEST(March, FindsTheFirstOfSeveralCubes) {
    const MapManager map = corridor("....#.#");
    EXPECT_EQ(marchedCell(map, vec3(10, 32, 32), vec3(1, 0, 0)), (Three{4, 0, 0}));
    EXPECT_EQ(marchedPoint(map, vec3(99.75f, 32, 32), vec3(1, 0, 0)), (Three{256, 32, 32}));
    EXPECT_EQ(marchedCell(corridor("#.#...."), vec3(440, 32, 32), vec3(-1, 0, 0)),
              (Three{2, 0, 0}));
}

TEST(March, EveryAxisNamesItsOwnIndex) {
    const MapManager map = onlySolid(4, 5, 6, 1, 2, 4);
    const vec3 middle(96, 160, 288);
    for (vec3 dir : {vec3(-1, 0, 0), vec3(0, -1, 0), vec3(0, 0, -1)}) {
        EXPECT_EQ(marchedCell(map, middle - dir * 188.25f, dir), (Three{1, 2, 4}));
        EXPECT_EQ(marchedPoint(map, middle - dir * 188.25f, dir), components(middle - dir * 32));
    }
}

TEST(March, HitIsInterpolatedAlongTenThousandStepsAndNotSnappedToTheFace) {
    const float justBeforeTheFace = std::nextafter(256.0f, 0.0f);
    EXPECT_EQ(marchedPoint(corridor("....#"), vec3(10, 32, 32), vec3(1, 0, 0)),
              (Three{justBeforeTheFace, 32, 32}))
        << "10 + 10000 · (246 / 10000), each step rounded";
}

TEST(March, InAnEmptyWorldFindsNothing) {
    const MapManager map = withoutSolids(3, 3, 3);
    EXPECT_EQ(marchedCell(map, vec3(96, 96, 96), vec3(1, 0, 0)), nothing);
    EXPECT_EQ(marchedPoint(map, vec3(96, 96, 96), vec3(1, 0, 0)), nothing);
}

TEST(March, OutsideTheWorldSolidEdgeCellsAreNotHitUnlessThePointIsInOne) {
    const MapManager map = corridor("##");
    EXPECT_EQ(marchedCell(map, vec3(130, 32, 32), vec3(1, 0, 0)), nothing);
    EXPECT_EQ(marchedCell(map, vec3(-10, 70, 32), vec3(1, 0, 0)), nothing) << "above it";
    EXPECT_EQ(marchedPoint(map, vec3(-100, 32, 32), vec3(1, 0, 0)), (Three{0, 32, 32}));
}

TEST(March, StepsAreExactlyAsLongAsTheDirection) {
    const MapManager map = corridor("..#.#");
    EXPECT_EQ(marchedCell(map, vec3(1, 32, 32), vec3(256, 0, 0)), (Three{4, 0, 0}))
        << "one step of 256 leaps over the nearer cube";
}

TEST(March, FromInsideACubeHitsAtTheStart) {
    const MapManager map = corridor(".#.");
    EXPECT_EQ(marchedCell(map, vec3(100, 32, 32), vec3(1, 0, 0)), (Three{1, 0, 0}));
    EXPECT_EQ(marchedPoint(map, vec3(100, 32, 32), vec3(1, 0, 0)), (Three{100, 32, 32}));
}

TEST(March, BackOffFromANearHitReachesBehindTheShooterAndMayFindAnotherCubeThere) {
    const MapManager map = corridor("#.#");
    const vec3 start(100, 32, 32);
    EXPECT_EQ(marchedCell(map, start, vec3(2, 0, 0)), (Three{0, 0, 0}))
        << "first hit at 128, back by 128 to 0";
    EXPECT_EQ(marchedPoint(map, start, vec3(2, 0, 0)), (Three{100, 32, 32}))
        << "the cube behind is clipped to the start";
    EXPECT_EQ(marchedCell(corridor("..#"), start, vec3(2, 0, 0)), (Three{2, 0, 0}));
}

TEST(March, BackOffIsSixtyFourStepsAndNotOneLess) {
    const vec3 dir(1 + 1 / 128.0f, 0, 0);
    const vec3 start(128 - 10 * dir.x, 32, 32);
    EXPECT_EQ(marchedCell(corridor("#.#"), start, dir), (Three{0, 0, 0}))
        << "64 steps before 128 is 63.5, in the cube behind the shooter";
}

// Steps of a 64th of a unit are exact; cell 1 begins at x = 64.
TEST(March, LooksFiveThousandStepsAheadAndSixtyFiveMore) {
    const MapManager map = corridor(".#");
    const vec3 dir(1 / 64.0f, 0, 0);
    for (float steps : {0.0f, 1.0f, 64.0f, 65.0f, 4999.0f, 5000.0f, 5001.0f, 5064.0f}) {
        const vec3 start(64 - steps / 64, 32, 32);
        EXPECT_EQ(marchedCell(map, start, dir), (Three{1, 0, 0})) << steps;
        EXPECT_EQ(marchedPoint(map, start, dir), (Three{64, 32, 32})) << steps;
    }
    const vec3 oneTooFar(64 - 5065 / 64.0f, 32, 32);
    EXPECT_EQ(marchedCell(map, oneTooFar, dir), nothing);
    EXPECT_EQ(marchedPoint(map, oneTooFar, dir), nothing);
}

TEST(March, FindsTheWorldFromOutsideAsFarAsItLooks) {
    EXPECT_EQ(marchedCell(oneCube, vec3(-5064, 32, 32), vec3(1, 0, 0)), (Three{0, 0, 0}));
    EXPECT_EQ(marchedCell(oneCube, vec3(-5065, 32, 32), vec3(1, 0, 0)), nothing);
    EXPECT_EQ(marchedCell(oneCube, vec3(32, 64 + 5064, 32), vec3(0, -1, 0)), (Three{0, 0, 0}));
    EXPECT_EQ(marchedCell(oneCube, vec3(32, 64 + 5065, 32), vec3(0, -1, 0)), nothing);
}

TEST(March, SeesCubesAsTheyAreNow) {
    MapManager map = corridor("...#.#");
    const vec3 start(10, 32, 32);
    const vec3 dir(1, 0, 0);
    map.cubes[3][0][0].solid = 0;
    EXPECT_EQ(marchedCell(map, start, dir), (Three{5, 0, 0}));
    map.cubes[2][0][0].solid = -1;
    EXPECT_EQ(marchedCell(map, start, dir), (Three{2, 0, 0}));
}

// Below 64, where cell 1 begins, floats are 2^-18 apart; 64 is an even one.
TEST(March, StepsShorterThanHalfTheSpacingOfFloatsLeadNowhere) {
    const MapManager map = corridor(".#");
    const float spacing = 0x1p-18f;
    const vec3 start(64 - 3 * spacing, 32, 32);
    EXPECT_EQ(marchedCell(map, start, vec3(0.49f * spacing, 0, 0)), nothing);
    EXPECT_EQ(marchedCell(map, start, vec3(0.51f * spacing, 0, 0)), (Three{1, 0, 0}));
}

TEST(March, StepsThatEndHalfwayBetweenFloatsLeadFromEvenOnesToEvenOnes) {
    const MapManager map = corridor(".#");
    const float spacing = 0x1p-18f;
    const vec3 dir(1.5f * spacing, 0, 0);
    const auto before = [&](int spacings) {
        return vec3(64 - static_cast<float>(spacings) * spacing, 32, 32);
    };
    EXPECT_EQ(marchedCell(map, before(2 * 5064), dir), (Three{1, 0, 0})) << "5064 moves by 2";
    EXPECT_EQ(marchedCell(map, before(2 * 5065), dir), nothing);
    EXPECT_EQ(marchedCell(map, before(1 + 2 * 5063), dir), (Three{1, 0, 0})) << "1 first, then 2";
    EXPECT_EQ(marchedCell(map, before(1 + 2 * 5064), dir), nothing);
}

TEST(March, RoundedStepsMayNotGetBackToWhereTheyBackedOffFrom) {
    const MapManager map = corridor(".#");
    const float spacing = 0x1p-18f;
    const vec3 start(64 - 100 * spacing, 32, 32);
    EXPECT_EQ(marchedCell(map, start, vec3(1.4f * spacing, 0, 0)), nothing)
        << "64 times 1.4 spacings back, 64 times 1 forth";
    EXPECT_EQ(marchedCell(map, start, vec3(1.6f * spacing, 0, 0)), (Three{1, 0, 0}))
        << "64 times 1.6 back, 64 times 2 forth";
}

TEST(March, WithoutADirectionFindsOnlyTheCubeAroundTheStart) {
    const MapManager map = corridor(".#");
    EXPECT_EQ(marchedCell(map, vec3(32, 32, 32), vec3()), nothing);
    EXPECT_EQ(marchedCell(map, vec3(96, 32, 32), vec3()), (Three{1, 0, 0}));
    EXPECT_EQ(marchedPoint(map, vec3(96, 32, 32), vec3()), (Three{96, 32, 32}));
}

TEST(March, OddFloatsFindNothing) {
    EXPECT_EQ(marchedPoint(oneCube, vec3(NaN, 32, 32), vec3(1, 0, 0)), nothing);
    EXPECT_EQ(marchedPoint(oneCube, vec3(-1, 32, 32), vec3(NaN, 0, 0)), nothing);
    EXPECT_EQ(marchedPoint(oneCube, vec3(1e30f, 32, 32), vec3(1e38f, 0, 0)), nothing);
    EXPECT_EQ(marchedPoint(oneCube, vec3(-infinity, 32, 32), vec3(1, 0, 0)), nothing);
}
