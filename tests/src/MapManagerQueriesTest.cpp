#include "src/MapManager.h"
#include "tests/support/Arenas.h"
#include "tests/support/Components.h"

#include <climits>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

constexpr Three nothing = {-1, -1, -1};

const MapManager oneCube = onlySolid(1, 1, 1, 0, 0, 0);

} // namespace

TEST(CellIndex, IsTheCoordinateBySixtyFourWithEachAxisClampedToItsOwnCount) {
    const MapManager map = withoutSolids(2, 3, 5);
    EXPECT_EQ(map.getColumn(63.9f), 0);
    EXPECT_EQ(map.getColumn(64), 1);
    EXPECT_EQ(map.getColumn(127.9f), 1);
    EXPECT_EQ(map.getColumn(128), 1);
    EXPECT_EQ(map.getRow(128), 2);
    EXPECT_EQ(map.getRow(192), 2);
    EXPECT_EQ(map.getDepth(319.9f), 4);
    EXPECT_EQ(map.getDepth(320), 4);
    EXPECT_EQ(components(map.cubeIndices(vec3(70, 130, 260))), (Three{1, 2, 4}));
    EXPECT_EQ(components(map.cubeIndices(vec3(-5, 1e6f, -1e6f))), (Three{0, 2, 0}));
}

TEST(CellIndex, TruncatesSoThatACellsWidthBelowZeroIsStillTheFirst) {
    const MapManager map = withoutSolids(2, 2, 2);
    for (float x : {-1e6f, -64.0f, -63.9f, -10.0f, -0.0f, 0.5f})
        EXPECT_EQ(map.getColumn(x), 0) << x;
}

TEST(CellIndex, SaturatesForHugeCoordinatesAndTakesNaNAsZero) {
    const MapManager map = withoutSolids(2, 3, 5);
    for (float huge : {1e6f, 2147483648.0f, 1e30f, infinity}) {
        EXPECT_EQ(components(map.cubeIndices(vec3(huge))), (Three{1, 2, 4})) << huge;
        EXPECT_EQ(components(map.cubeIndices(vec3(-huge))), (Three{0, 0, 0})) << huge;
    }
    EXPECT_EQ(components(map.cubeIndices(vec3(NaN))), (Three{0, 0, 0}));
}

TEST(CubeIsNull, IsTrueOnlyForAnEmptyCellInTheGrid) {
    const MapManager map = onlySolid(2, 3, 5, 1, 2, 4);
    EXPECT_FALSE(map.cubeIsNull(1, 2, 4));
    EXPECT_TRUE(map.cubeIsNull(0, 2, 4));
    EXPECT_TRUE(map.cubeIsNull(1, 0, 4));
    EXPECT_TRUE(map.cubeIsNull(1, 2, 0));
}

TEST(CubeIsNull, OutsideTheGridNothingIsEmpty) {
    const MapManager map = withoutSolids(2, 3, 5);
    ASSERT_TRUE(map.cubeIsNull(0, 0, 0));
    for (int outside : {-1, INT_MIN, 5, INT_MAX}) {
        EXPECT_FALSE(map.cubeIsNull(outside, 0, 0)) << outside;
        EXPECT_FALSE(map.cubeIsNull(0, outside, 0)) << outside;
        EXPECT_FALSE(map.cubeIsNull(0, 0, outside)) << outside;
    }
    EXPECT_FALSE(map.cubeIsNull(2, 0, 0));
    EXPECT_FALSE(map.cubeIsNull(0, 3, 0));
}

TEST(CubeIsNull, AnySolidValueButZeroIsPresent) {
    const MapManager map = loaded("1 1 3 -1 0 2 0 0 9");
    EXPECT_FALSE(map.cubeIsNull(0, 0, 0));
    EXPECT_FALSE(map.cubeIsNull(0, 0, 1));
    EXPECT_TRUE(map.cubeIsNull(0, 0, 2)) << "the cell value says nothing";
}

TEST(OutOfBounds, FacesOfTheWorldAreInBounds) {
    EXPECT_FALSE(oneCube.outOfBounds(vec3(64, 64, 64)));
    EXPECT_FALSE(oneCube.outOfBounds(vec3(0, -0.0f, 0)));
}

TEST(OutOfBounds, EverySideIsTestedByItsOwnExtent) {
    const MapManager map = withoutSolids(2, 3, 5);
    EXPECT_FALSE(map.outOfBounds(vec3(128, 192, 320)));
    EXPECT_TRUE(map.outOfBounds(vec3(-0.001f, 1, 1)));
    EXPECT_TRUE(map.outOfBounds(vec3(1, -0.001f, 1)));
    EXPECT_TRUE(map.outOfBounds(vec3(1, 1, -0.001f)));
    EXPECT_TRUE(map.outOfBounds(vec3(128.1f, 1, 1)));
    EXPECT_TRUE(map.outOfBounds(vec3(1, 192.1f, 1)));
    EXPECT_TRUE(map.outOfBounds(vec3(1, 1, 320.1f)));
}

TEST(OutOfBounds, NaNIsNotOut) {
    EXPECT_FALSE(oneCube.outOfBounds(vec3(NaN)));
    EXPECT_TRUE(oneCube.outOfBounds(vec3(NaN, -1, NaN)));
}

TEST(PointInMap, CollidesInAndOnASolidCube) {
    EXPECT_TRUE(oneCube.collides(vec3(32, 32, 32)));
    EXPECT_TRUE(oneCube.collides(vec3(64, 64, 64)));
    EXPECT_TRUE(oneCube.collides(vec3(0, 0, 0)));
    EXPECT_FALSE(oneCube.collides(vec3(64.5f, 10, 10)));
    EXPECT_FALSE(oneCube.collides(vec3(10, -0.5f, 10))) << "the edge cell, but not in it";
    EXPECT_FALSE(oneCube.collides(vec3(NaN, 10, 10)));
}

TEST(PointInMap, EveryAxisNamesItsOwnIndex) {
    const MapManager map = onlySolid(4, 5, 6, 1, 2, 4);
    EXPECT_TRUE(map.collides(vec3(96, 160, 288)));
    EXPECT_FALSE(map.collides(vec3(160, 96, 288)));
    EXPECT_FALSE(map.collides(vec3(96, 288, 160)));
}

TEST(PointInMap, BetweenTwoCellsBelongsToTheUpperOneAlone) {
    EXPECT_FALSE(corridor("#.").collides(vec3(64, 32, 32)));
    EXPECT_TRUE(corridor(".#").collides(vec3(64, 32, 32)));
}

TEST(BoxInMap, BodyThatTouchesACubeFromBelowCollides) {
    const MapManager map = onlySolid(1, 4, 1, 0, 3, 0);
    const vec3 body(50, 150, 50);
    EXPECT_TRUE(map.collides(Box(vec3(32, 117, 32), body))) << "its top is at 192";
    EXPECT_FALSE(map.collides(Box(vec3(32, 116.75f, 32), body)));
}

TEST(BoxInMap, BodyThatStandsOnACubeDoesNotSeeItInTheCellBelow) {
    const MapManager map = onlySolid(1, 4, 1, 0, 0, 0);
    const vec3 body(50, 150, 50);
    EXPECT_FALSE(map.collides(Box(vec3(32, 139, 32), body))) << "its bottom is at 64";
    EXPECT_TRUE(map.collides(Box(vec3(32, 138.75f, 32), body)));
}

TEST(BoxInMap, LastCellIsTouchedFromBeyondTheWorld) {
    EXPECT_TRUE(oneCube.collides(Box(vec3(65, 32, 32), 2)));
    EXPECT_TRUE(oneCube.collides(Box(vec3(-1, 32, 32), 2)));
}

TEST(BoxInMap, WhollyOutsideTheWorldIsFreeThoughTheEdgeCellsAreSolid) {
    EXPECT_FALSE(oneCube.collides(Box(vec3(67, 32, 32), 2)));
    EXPECT_FALSE(oneCube.collides(Box(vec3(32, -3, 32), 2)));
    EXPECT_FALSE(oneCube.collides(Box(vec3(1e9f, 1e9f, 1e9f), 2)));
}

TEST(BoxInMap, ExactlyTheCellsThatTheBoxReachesAreTested) {
    const vec3 body(50, 150, 50);
    const Box nearAndFar(vec3(96, 200, 350), body); // column 1, rows 1 to 4, depth 5
    const Box farAndNear(vec3(350, 200, 96), body); // column 5, rows 1 to 4, depth 1
    for (int i = 0; i < 7; ++i) {
        for (int j = 0; j < 6; ++j) {
            for (int k = 0; k < 7; ++k) {
                const MapManager map = onlySolid(7, 6, 7, i, j, k);
                const bool inRows = j >= 1 && j <= 4;
                EXPECT_EQ(map.collides(nearAndFar), i == 1 && inRows && k == 5) << i << j << k;
                EXPECT_EQ(map.collides(farAndNear), i == 5 && inRows && k == 1) << i << j << k;
            }
        }
    }
}

TEST(BoxInMap, LargestBodyReachesSixteenCells) {
    const Box body(vec3(64, 320, 192), vec3(50, 150, 50));
    int reached = 0;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 8; ++j) {
            for (int k = 0; k < 5; ++k)
                reached += onlySolid(3, 8, 5, i, j, k).collides(body);
        }
    }
    EXPECT_EQ(reached, 16);
}

TEST(BoxInMap, BoxLargerThanTheWorldFindsItsOnlyCube) {
    const Box endless(vec3(), 1e30f);
    EXPECT_TRUE(onlySolid(3, 3, 3, 1, 2, 1).collides(endless));
    EXPECT_FALSE(withoutSolids(3, 3, 3).collides(endless));
}

TEST(BoxInMap, NaNBodyCollidesWithNothing) {
    EXPECT_FALSE(oneCube.collides(Box(vec3(32, NaN, 32), 10)));
    EXPECT_FALSE(oneCube.collides(Box(vec3(NaN), 10)));
}

TEST(MapWithoutCells, NothingCollidesAndNoMarchFindsAnything) {
    for (const char* text : {"", "0 1 1", "1 0 1", "1 1 0", "2 3 x", "-1 2 3", "2 -1 3", "2 2 -3",
                             "-2147483648 1 1", "1 -2147483648 1", "1 1 -2147483648",
                             "-2147483648 -2147483648 -2147483648", "0 2147483647 2147483647"}) {
        const MapManager map = loaded(text);
        for (vec3 p : {vec3(), vec3(32), vec3(-1e6f), vec3(1e30f), vec3(NaN)}) {
            EXPECT_FALSE(map.collides(p)) << text;
            EXPECT_FALSE(map.collides(Box(p, 50))) << text;
            EXPECT_EQ(components(map.boxToCheckForLineIntersection(p, vec3(0, -1, 0))), nothing)
                << text;
            EXPECT_EQ(components(map.pointOfIntersection(p, vec3(0, -1, 0))), nothing) << text;
        }
        EXPECT_FALSE(map.collides(Box(vec3(), 1e30f))) << text;
        EXPECT_FALSE(map.cubeIsNull(0, 0, 0)) << text;
    }
}

TEST(MapWithoutCells, IndexIsMinusOneExceptBelowTheFirstCellWhereItIsZero) {
    const MapManager map = loaded("0 0 0");
    EXPECT_EQ(components(map.cubeIndices(vec3(10, 0, -10))), nothing) << "-10 by 64 is 0";
    EXPECT_EQ(components(map.cubeIndices(vec3(1e30f, 640, NaN))), nothing);
    EXPECT_EQ(components(map.cubeIndices(vec3(-64, -640, -1e30f))), (Three{0, 0, 0}));
}

TEST(MapWithoutCells, BeforeLoadingNothingCollides) {
    const MapManager map;
    EXPECT_FALSE(map.collides(vec3()));
    EXPECT_FALSE(map.collides(Box(vec3(32), 64)));
    EXPECT_FALSE(map.cubeIsNull(0, 0, 0));
    EXPECT_EQ(components(map.pointOfIntersection(vec3(), vec3(1, 0, 0))), nothing);
}
