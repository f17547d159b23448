#include "src/Collisions.h"
#include "tests/support/Boxes.h"
#include "tests/support/Components.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

constexpr vec3 unitMin(0, 0, 0);
constexpr vec3 unitMax(1, 1, 1);
constexpr vec3 marker(7, 8, 9);

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
