#include "Collisions.h"
#include "Components.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <vector>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

using Three = std::array<float, 3>;

const Box unitBox(vec3(0.5f, 0.5f, 0.5f), 1);
constexpr vec3 unitMin(0, 0, 0);
constexpr vec3 unitMax(1, 1, 1);
constexpr vec3 marker(7, 8, 9);

constexpr std::array<float vec3::*, 3> axes = {&vec3::x, &vec3::y, &vec3::z};

Box between(vec3 min, vec3 max) {
    Box box;
    box.min = min;
    box.max = max;
    return box;
}

/// No two of its coordinates are alike, nor its edges.
const Box oblong = between(vec3(10, 20, 30), vec3(12, 24, 38));
constexpr vec3 oblongMiddle(11, 22, 34);

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

/// One slab, with the range that it leaves.
struct Slab {
    float enter;
    float exit;
    bool met;

    Slab(float start, float dir, float min, float max, float enter_ = 0, float exit_ = 1)
        : enter(enter_), exit(exit_), met(Line_AABB_1d(start, dir, min, max, enter, exit)) {}
};

struct Segment {
    vec3 hit = marker;
    bool met;

    Segment(vec3 start, vec3 end) : met(Line_AABB(start, end, unitMin, unitMax, hit)) {}
};

struct Clipped {
    vec3 point = marker;
    vec3 normal = marker;
    bool met;

    Clipped(vec3 start, vec3 end) : met(intersectsLineAABB(start, end, unitBox, point, normal)) {}
};

void expectRange(const Slab& slab, float enter, float exit) {
    EXPECT_EQ(slab.enter, enter);
    EXPECT_EQ(slab.exit, exit);
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

TEST(Slab, NarrowsTheRangeToWhereTheLineIsBetweenTheBounds) {
    const Slab forwards(-1, 4, 0, 1);
    EXPECT_TRUE(forwards.met);
    expectRange(forwards, 0.25f, 0.5f);
    const Slab backwards(2, -4, 0, 1);
    EXPECT_TRUE(backwards.met);
    expectRange(backwards, 0.25f, 0.5f);
}

TEST(Slab, NeverWidensTheRange) {
    const Slab slab(-1, 4, 0, 1, 0.375f, 0.4375f);
    EXPECT_TRUE(slab.met);
    expectRange(slab, 0.375f, 0.4375f);
}

TEST(Slab, DisjointRangesMissAndLeaveTheRangeAlone) {
    const Slab behindTheEnd(-2, 1, 0, 1);
    EXPECT_FALSE(behindTheEnd.met);
    expectRange(behindTheEnd, 0, 1);
    const Slab beforeTheStart(2, 1, 0, 1);
    EXPECT_FALSE(beforeTheStart.met);
    expectRange(beforeTheStart, 0, 1);
}

TEST(Slab, RangesThatOnlyTouchMeet) {
    const Slab atTheEnd(-1, 1, 0, 1);
    EXPECT_TRUE(atTheEnd.met);
    expectRange(atTheEnd, 1, 1);
    const Slab atTheStart(1, 1, 0, 1);
    EXPECT_TRUE(atTheStart.met);
    expectRange(atTheStart, 0, 0);
}

TEST(Slab, ParallelLineIsTestedByItsStartAloneAndLeavesTheRange) {
    for (float start : {0.0f, 0.5f, 1.0f}) {
        const Slab inside(start, 0, 0, 1, 0.25f, 0.75f);
        EXPECT_TRUE(inside.met) << start;
        expectRange(inside, 0.25f, 0.75f);
    }
    for (float start : {-0.001f, 1.001f, NaN})
        EXPECT_FALSE(Slab(start, 0, 0, 1).met) << start;
}

TEST(Slab, ParallelIsDecidedInDoublePrecision) {
    const float justParallel = 1e-8f; // as a float a little below 1e-8
    for (float dir : {justParallel, -justParallel}) {
        const Slab parallel(0.5f, dir, 0, 1, 0, 1e9f);
        EXPECT_TRUE(parallel.met);
        expectRange(parallel, 0, 1e9f);
    }
    const Slab slanted(0.5f, std::nextafter(justParallel, 1.0f), 0, 1, 0, 1e9f);
    EXPECT_TRUE(slanted.met);
    EXPECT_LT(slanted.exit, 1e8f);
}

TEST(Slab, MultipliesByTheInverseOfTheDirection) {
    constexpr float threeTimesASeventh = 0.428571463f;
    ASSERT_NE(threeTimesASeventh, 3.0f / 7.0f);
    EXPECT_EQ(Slab(-3, 7, 0, 100).enter, threeTimesASeventh);
    EXPECT_EQ(Slab(-3, 7, -100, 0).exit, threeTimesASeventh);
}

TEST(Slab, NaNStartOrDirectionRejectsNothingAndNarrowsNothing) {
    for (const Slab& slab : {Slab(NaN, 1, 0, 1), Slab(0.5f, NaN, 0, 1), Slab(9, NaN, 0, 1)}) {
        EXPECT_TRUE(slab.met);
        expectRange(slab, 0, 1);
    }
}

TEST(Slab, NaNBoundIsOpenAndItsPartnerIsNotSwapped) {
    const Slab openBelow(-1, 4, NaN, 1);
    EXPECT_TRUE(openBelow.met);
    expectRange(openBelow, 0, 0.5f);
    const Slab openAbove(-1, 4, 0, NaN);
    EXPECT_TRUE(openAbove.met);
    expectRange(openAbove, 0.25f, 1);
    const Slab backwards(2, -1, NaN, 1, 0, 3);
    EXPECT_TRUE(backwards.met);
    expectRange(backwards, 0, 1);
    EXPECT_FALSE(Slab(-2, 1, 0, NaN).met) << "the bound that is known still rejects";
}

TEST(Slab, NaNRangeStaysNaN) {
    const Slab slab(-1, 4, 0, 1, NaN, NaN);
    EXPECT_TRUE(slab.met);
    EXPECT_TRUE(std::isnan(slab.enter) && std::isnan(slab.exit));
}

TEST(SegmentOnBox, HitIsTheEntryPoint) {
    const Segment along({-1, 0.5f, 0.5f}, {2, 0.5f, 0.5f});
    EXPECT_TRUE(along.met);
    EXPECT_EQ(components(along.hit), (Three{0, 0.5f, 0.5f}));
    const Segment down({0.25f, 3, 0.75f}, {0.25f, -1, 0.75f});
    EXPECT_TRUE(down.met);
    EXPECT_EQ(components(down.hit), (Three{0.25f, 1, 0.75f}));
}

TEST(SegmentOnBox, EveryFaceCanBeEntered) {
    for (auto axis : axes) {
        for (float sign : {-1.0f, 1.0f}) {
            const float face = sign < 0 ? oblong.min.*axis : oblong.max.*axis;
            vec3 start = oblongMiddle;
            vec3 end = oblongMiddle;
            vec3 expected = oblongMiddle;
            start.*axis = face + sign * 4;
            end.*axis = face - sign * 12;
            expected.*axis = face;
            vec3 hit;
            EXPECT_TRUE(Line_AABB(start, end, oblong.min, oblong.max, hit)) << start;
            EXPECT_EQ(components(hit), components(expected));
        }
    }
}

TEST(SegmentOnBox, BoxBeyondEitherEndIsMissedAndTheHitLeftAlone) {
    for (const Segment& miss : {Segment({-1, 0.5f, 0.5f}, {-0.5f, 0.5f, 0.5f}),
                                Segment({1.5f, 0.5f, 0.5f}, {4, 0.5f, 0.5f}),
                                Segment({0.5f, 0.5f, -1}, {0.5f, 0.5f, -0.5f})}) {
        EXPECT_FALSE(miss.met);
        EXPECT_EQ(components(miss.hit), components(marker));
    }
}

TEST(SegmentOnBox, SegmentPastACornerIsMissedThoughEachAxisAloneMeets) {
    const Segment miss({-1, 0.5f, 0.5f}, {0.5f, 3.5f, 0.5f});
    EXPECT_FALSE(miss.met);
    EXPECT_EQ(components(miss.hit), components(marker));
}

TEST(SegmentOnBox, TouchingWithItsEndIsAHit) {
    const Segment touch({-1, 0.5f, 0.5f}, {0, 0.5f, 0.5f});
    EXPECT_TRUE(touch.met);
    EXPECT_EQ(components(touch.hit), (Three{0, 0.5f, 0.5f}));
}

TEST(SegmentOnBox, StartInsideIsTheHitItself) {
    EXPECT_EQ(components(Segment({0.25f, 0.5f, 0.75f}, {9, 9, 9}).hit),
              (Three{0.25f, 0.5f, 0.75f}));
    const Segment point({0.25f, 0.5f, 0.75f}, {0.25f, 0.5f, 0.75f});
    EXPECT_TRUE(point.met);
    EXPECT_EQ(components(point.hit), (Three{0.25f, 0.5f, 0.75f}));
}

TEST(SegmentOnBox, LevelSegmentBesideTheBoxMissesWhateverTheOtherAxesDo) {
    EXPECT_FALSE(Segment({-1, 1.001f, -1}, {2, 1.001f, 2}).met);
    EXPECT_FALSE(Segment({0.5f, -0.001f, 0.5f}, {0.5f, -0.001f, 0.5f}).met);
    EXPECT_FALSE(Segment({0.5f, -1e-10f, 0.5f}, {2, 5e-9f, 0.5f}).met) << "rises into the box, "
                                                                          "but by less than 1e-8";
    EXPECT_TRUE(Segment({-1, 1, -1}, {2, 1, 2}).met) << "along the top face";
}

TEST(SegmentOnBox, HitIsInterpolatedAndNotSnappedToTheFace) {
    const Segment segment({-3, 0.5f, 0.5f}, {4, 0.5f, 0.5f});
    EXPECT_TRUE(segment.met);
    EXPECT_EQ(segment.hit.x, 2.38418579e-07f);
}

TEST(SegmentOnBox, NaNCoordinateDoesNotReject) {
    const Segment segment({NaN, 0.5f, 0.5f}, {2, 0.5f, 0.5f});
    EXPECT_TRUE(segment.met);
    EXPECT_TRUE(std::isnan(segment.hit.x));
    EXPECT_EQ(segment.hit.y, 0.5f);
}

TEST(ClippedSegment, EntersThroughTheFaceThatItMeets) {
    const Clipped alongX({-1, 0.5f, 0.5f}, {2, 0.5f, 0.5f});
    EXPECT_TRUE(alongX.met);
    EXPECT_EQ(components(alongX.point), (Three{0, 0.5f, 0.5f}));
    EXPECT_EQ(components(alongX.normal), (Three{-1, 0, 0}));
}

TEST(ClippedSegment, EveryFaceHasItsOutwardNormal) {
    for (auto axis : axes) {
        for (float sign : {-1.0f, 1.0f}) {
            vec3 expectedPoint = oblongMiddle;
            expectedPoint.*axis = sign < 0 ? oblong.min.*axis : oblong.max.*axis;
            vec3 expectedNormal;
            expectedNormal.*axis = sign;
            vec3 point;
            vec3 normal;
            EXPECT_TRUE(intersectsLineAABB(expectedPoint + expectedNormal * 4,
                                           expectedPoint - expectedNormal * 12, oblong, point,
                                           normal));
            EXPECT_EQ(components(point), components(expectedPoint));
            EXPECT_EQ(components(normal), components(expectedNormal));
        }
    }
}

TEST(ClippedSegment, LastFaceThatMovesTheStartGivesTheNormal) {
    const Clipped clipped({-1, -3, 0.5f}, {3, 5, 0.5f});
    EXPECT_TRUE(clipped.met);
    EXPECT_EQ(components(clipped.point), (Three{0.5f, 0, 0.5f}));
    EXPECT_EQ(components(clipped.normal), (Three{0, -1, 0}));
}

TEST(ClippedSegment, MissBesideTheBoxStillWritesTheClippedStartAndNormal) {
    const Clipped beside({-1, 2, 0.5f}, {2, 2, 0.5f});
    EXPECT_FALSE(beside.met);
    EXPECT_EQ(components(beside.point), (Three{0, 2, 0.5f}));
    EXPECT_EQ(components(beside.normal), (Three{-1, 0, 0}));
}

TEST(ClippedSegment, EndIsClippedTooSoThatLaterFacesDoNotMoveTheStartBeyondIt) {
    const Clipped below({-2, -2, 0.5f}, {6, 2, 0.5f});
    EXPECT_FALSE(below.met);
    EXPECT_EQ(components(below.point), (Three{0, -1, 0.5f})) << "rises to the box only behind it";
    EXPECT_EQ(components(below.normal), (Three{-1, 0, 0}));
}

TEST(ClippedSegment, SegmentThatCrossesNoFacePlaneReportsItsOwnStart) {
    const Clipped before({-2, 0.5f, 0.5f}, {-1, 0.5f, 0.5f});
    EXPECT_FALSE(before.met);
    EXPECT_EQ(components(before.point), (Three{-2, 0.5f, 0.5f}));
    EXPECT_EQ(components(before.normal), components(marker));
}

TEST(ClippedSegment, StartInsideIsTheHitAndTheNormalKeepsWhatTheCallerPutThere) {
    const Clipped clipped({0.25f, 0.5f, 0.75f}, {5, 0.5f, 0.75f});
    EXPECT_TRUE(clipped.met);
    EXPECT_EQ(components(clipped.point), (Three{0.25f, 0.5f, 0.75f}));
    EXPECT_EQ(components(clipped.normal), components(marker));
}

TEST(ClippedSegment, StartOnAFaceCountsAsOutsideIt) {
    const Clipped clipped({0, 0.5f, 0.5f}, {2, 0.5f, 0.5f});
    EXPECT_TRUE(clipped.met);
    EXPECT_EQ(components(clipped.point), (Three{0, 0.5f, 0.5f}));
    EXPECT_EQ(components(clipped.normal), (Three{-1, 0, 0}));
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
