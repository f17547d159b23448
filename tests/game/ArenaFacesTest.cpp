#include "game/ArenaFaces.h"

#include "arena/Rays.h"
#include "tests/support/Arenas.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

TEST(ArenaFaces, OfALoneCubeAreAllSix) {
    const std::vector<CubeFace> faces = visibleFaces(onlySolid(3, 3, 3, 1, 1, 1));
    EXPECT_EQ(faces.size(), 6u);
    for (int axis = 0; axis < 3; ++axis) {
        for (const int side : {-1, 1})
            EXPECT_EQ(std::count(faces.begin(), faces.end(), CubeFace{{1, 1, 1}, axis, side}), 1);
    }
}

TEST(ArenaFaces, BetweenTwoCubesAreLeftOut) {
    const std::vector<CubeFace> faces = visibleFaces(corridor(".##."));
    for (const CubeFace& face : faces) {
        EXPECT_NE(face, (CubeFace{{1, 0, 0}, 0, 1}));
        EXPECT_NE(face, (CubeFace{{2, 0, 0}, 0, -1}));
    }
}

TEST(ArenaFaces, AtTheEdgeOfTheMapAreLeftOutUnlessTheyLookUp) {
    const std::vector<CubeFace> faces = visibleFaces(onlySolid(1, 1, 1, 0, 0, 0));
    ASSERT_EQ(faces.size(), 1u);
    EXPECT_EQ(faces[0], (CubeFace{{0, 0, 0}, 1, 1}));
}

TEST(ArenaFaces, AreNoneWithoutCubes) {
    EXPECT_TRUE(visibleFaces(withoutSolids(4, 3, 2)).empty());
    EXPECT_TRUE(visibleFaces(MapManager{}).empty());
}
