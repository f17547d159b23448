#include "src/Collisions.h"
#include "tests/support/Boxes.h"
#include "tests/support/Components.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <vector>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

/// Outward face normals in the order of a box's face flags.
constexpr std::array<Three, 6> normals = {
    {{-1, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 1, 0}, {0, 0, -1}, {0, 0, 1}}};
constexpr Three left = normals[0];

Box flagged(const std::vector<size_t>& faces, Box box) {
    for (size_t face : faces)
        box.faceFlags[face] = true;
    return box;
}

template<class BoxOrPoint>
Three normalOf(const Box& box, const BoxOrPoint& other) {
    return components(normalOfAABBCollision(box, other));
}

} // namespace

TEST(PlaneSide, PointsOnThePlaneCountAsTheSideOfTheNormal) {
    const vec3 onPlane(0, 2, 0);
    EXPECT_TRUE(pointIsInSinglePlane(vec3(5, 3, -7), onPlane, vec3(0, 4, 0)));
    EXPECT_TRUE(pointIsInSinglePlane(vec3(5, 2, -7), onPlane, vec3(0, 4, 0)));
    EXPECT_FALSE(pointIsInSinglePlane(vec3(5, 1.999f, -7), onPlane, vec3(0, 4, 0)));
    EXPECT_FALSE(pointIsInSinglePlane(vec3(5, NaN, -7), onPlane, vec3(0, 4, 0)));
}

TEST(PointInBox, FacesAndCornersAreInside) {
    EXPECT_TRUE(intersects(unitBox, vec3(0.5f, 0.5f, 0.5f)));
    EXPECT_TRUE(intersects(unitBox, vec3(1, 1, 1)));
    EXPECT_TRUE(intersects(unitBox, vec3(0, 0, 0)));
    EXPECT_TRUE(intersects(unitBox, vec3(0, 0.5f, 1)));
}

TEST(PointInBox, JustBeyondAnyFaceIsOutside) {
    EXPECT_FALSE(intersects(unitBox, vec3(1.0001f, 0.5f, 0.5f)));
    for (auto axis : axes) {
        vec3 p = oblongMiddle;
        for (float face : {oblong.min.*axis, oblong.max.*axis}) {
            p.*axis = face;
            EXPECT_TRUE(intersects(oblong, p)) << p;
        }
        for (float outside :
             {std::nextafter(oblong.min.*axis, 0.0f), std::nextafter(oblong.max.*axis, 100.0f)}) {
            p.*axis = outside;
            EXPECT_FALSE(intersects(oblong, p)) << p;
        }
    }
}

TEST(PointInBox, NaNIsOutside) {
    EXPECT_FALSE(intersects(unitBox, vec3(NaN, 0.5f, 0.5f)));
    EXPECT_FALSE(intersects(unitBox, vec3(0.5f, NaN, 0.5f)));
    EXPECT_FALSE(intersects(unitBox, vec3(0.5f, 0.5f, NaN)));
}

TEST(BoxOnBox, TouchingFacesEdgesAndCornersIntersectFromEverySide) {
    for (float x : {-1.0f, 0.0f, 1.0f}) {
        for (float y : {-1.0f, 0.0f, 1.0f}) {
            for (float z : {-1.0f, 0.0f, 1.0f}) {
                const Box neighbour(vec3(0.5f + x, 0.5f + y, 0.5f + z), 1);
                EXPECT_TRUE(intersects(unitBox, neighbour)) << x << " " << y << " " << z;
            }
        }
    }
}

TEST(BoxOnBox, TheLeastGapOnAnyAxisPartsThem) {
    for (auto axis : axes) {
        Box beyond = oblong;
        beyond.min.*axis = oblong.max.*axis;
        beyond.max.*axis = 100;
        EXPECT_TRUE(intersects(oblong, beyond)) << beyond.min;
        EXPECT_TRUE(intersects(beyond, oblong)) << beyond.min;
        beyond.min.*axis = std::nextafter(oblong.max.*axis, 100.0f);
        EXPECT_FALSE(intersects(oblong, beyond)) << beyond.min;
        EXPECT_FALSE(intersects(beyond, oblong)) << beyond.min;
    }
}

TEST(BoxOnBox, ContainmentIntersects) {
    const Box inner(vec3(0.5f, 0.5f, 0.5f), 0.25f);
    EXPECT_TRUE(intersects(unitBox, inner));
    EXPECT_TRUE(intersects(inner, unitBox));
}

TEST(BoxOnBox, OnlyTheCornersAreRead) {
    Box moved = unitBox;
    moved.centre = vec3(1000);
    moved.solid = 1;
    EXPECT_TRUE(intersects(unitBox, moved));
    EXPECT_FALSE(intersects(unitBox, between(vec3(5), vec3(6)))) << "though its centre is within";
}

TEST(BoxOnBox, NaNCornerNeverIntersects) {
    EXPECT_FALSE(intersects(unitBox, between(vec3(0, NaN, 0), vec3(1, 1, 1))));
    EXPECT_FALSE(intersects(unitBox, between(vec3(0, 0, 0), vec3(1, 1, NaN))));
}

TEST(CollisionNormal, WithoutFlagsIsAlwaysTheLeftFaces) {
    EXPECT_EQ(normalOf(unitBox, Box(vec3(0.5f, 1.4f, 0.5f), 1)), left);
    EXPECT_EQ(normalOf(unitBox, vec3(0.5f, 0.99f, 0.5f)), left);
}

TEST(CollisionNormal, IsTheLastFlaggedFaceAndNotTheOneOfLeastOverlap) {
    const Box barelyOnTop(vec3(0.5f, 1.49f, 0.5f), 1);
    const vec3 barelyOnTheLeft(0.01f, 0.5f, 0.5f);
    for (size_t last = 0; last < 6; ++last) {
        std::vector<size_t> upToLast(last + 1);
        std::iota(upToLast.begin(), upToLast.end(), size_t{0});
        EXPECT_EQ(normalOf(unitBox, flagged(upToLast, barelyOnTop)), normals[last]);
        EXPECT_EQ(normalOf(flagged(upToLast, unitBox), barelyOnTheLeft), normals[last]);
    }
}

TEST(CollisionNormal, OfTwoBoxesReadsOnlyTheFlagsOfTheSecond) {
    EXPECT_EQ(normalOf(flagged({0, 1, 2, 3, 4, 5}, unitBox), unitBox), left);
}

TEST(CollisionNormal, NegativeDistancesCountToo) {
    EXPECT_EQ(normalOf(unitBox, flagged({1, 4}, Box(vec3(500), 1))), normals[4]);
}

TEST(CollisionNormal, DistancesFromTenToTheTenthOnAreOutOfReach) {
    const Box deep = flagged({1, 5}, between(vec3(), vec3(1, 1, 1e10f)));
    EXPECT_EQ(normalOf(unitBox, deep), normals[1]);
    EXPECT_EQ(normalOf(deep, vec3()), normals[1]);
    const float justBelow = std::nextafter(1e10f, 0.0f);
    EXPECT_EQ(normalOf(unitBox, flagged({1, 5}, between(vec3(), vec3(1, 1, justBelow)))),
              normals[5]);
}

TEST(CollisionNormal, EveryFaceIsMeasuredBetweenItsOwnTwoCoordinates) {
    for (size_t i = 0; i < 3; ++i) {
        vec3 high;
        high.*axes[i] = 6e9f; // two of it are out of reach
        const vec3 low = high * -1;
        const Box upTo = between(vec3(), high);
        const Box downTo = between(low, vec3());

        const size_t lower = 2 * i;
        EXPECT_EQ(normalOf(upTo, flagged({lower}, Box())), normals[lower]);
        EXPECT_EQ(normalOf(upTo, flagged({lower}, downTo)), left);
        EXPECT_EQ(normalOf(flagged({lower}, downTo), vec3()), normals[lower]);
        EXPECT_EQ(normalOf(flagged({lower}, downTo), high), left);

        const size_t upper = 2 * i + 1;
        EXPECT_EQ(normalOf(Box(), flagged({upper}, upTo)), normals[upper]);
        EXPECT_EQ(normalOf(downTo, flagged({upper}, upTo)), left);
        EXPECT_EQ(normalOf(flagged({upper}, upTo), vec3()), normals[upper]);
        EXPECT_EQ(normalOf(flagged({upper}, upTo), low), left);
    }
}

TEST(CollisionNormal, FallsBackToTheLeftFaceThoughOnlyAnotherIsFlagged) {
    EXPECT_EQ(normalOf(unitBox, flagged({5}, between(vec3(), vec3(1, 1, infinity)))), left);
    EXPECT_EQ(normalOf(flagged({5}, unitBox), vec3(0, 0, NaN)), left);
}

TEST(Distance, IsEuclidean) {
    EXPECT_EQ(distanceVec3(vec3(1, 1, 1), vec3(3, 4, 7)), 7);
    EXPECT_EQ(distanceVec3(vec3(3, 4, 7), vec3(1, 1, 1)), 7);
    EXPECT_EQ(distanceVec3(vec3(1, 2, 3), vec3(1, 2, 3)), 0);
}

TEST(Distance, OverflowsAndUnderflowsWithItsSinglePrecisionSquares) {
    EXPECT_EQ(distanceVec3(vec3(1e20f, 0, 0), vec3()), infinity);
    EXPECT_EQ(distanceVec3(vec3(0, 1e-30f, 0), vec3()), 0);
}
