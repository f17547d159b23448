#include "src/MathOps.h"
#include "tests/support/Components.h"

#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

void expectNear(vec4 actual, vec4 expected) {
    EXPECT_NEAR(actual.x, expected.x, 1e-6f);
    EXPECT_NEAR(actual.y, expected.y, 1e-6f);
    EXPECT_NEAR(actual.z, expected.z, 1e-6f);
    EXPECT_NEAR(actual.w, expected.w, 1e-6f);
}

void expectNear(vec3 actual, vec3 expected) {
    expectNear(vec4(actual.x, actual.y, actual.z, 0), vec4(expected.x, expected.y, expected.z, 0));
}

void expectNear(vec2 actual, vec2 expected) {
    expectNear(vec4(actual.x, actual.y, 0, 0), vec4(expected.x, expected.y, 0, 0));
}

} // namespace

TEST(Truncation, CutsTowardsZero) {
    EXPECT_EQ(truncateToInt(1.9f), 1);
    EXPECT_EQ(truncateToInt(-1.9f), -1);
    EXPECT_EQ(truncateToInt(-0.5f), 0);
    EXPECT_EQ(truncateToInt(16777217.0f), 16777216);
}

TEST(Truncation, SaturatesAtTheEndsOfAnInt) {
    EXPECT_EQ(truncateToInt(2147483520.0f), 2147483520) << "the largest float that fits";
    EXPECT_EQ(truncateToInt(2147483648.0f), INT_MAX);
    EXPECT_EQ(truncateToInt(-2147483648.0f), INT_MIN);
    EXPECT_EQ(truncateToInt(-2147483904.0f), INT_MIN);
    for (float huge : {1e10f, 3.4e38f, infinity}) {
        EXPECT_EQ(truncateToInt(huge), INT_MAX);
        EXPECT_EQ(truncateToInt(-huge), INT_MIN);
    }
}

TEST(Truncation, NaNGivesZero) {
    EXPECT_EQ(truncateToInt(NaN), 0);
    EXPECT_EQ(truncateToInt(-NaN), 0);
}

TEST(Truncation, ToLongDoesTheSameInSixtyFourBits) {
    EXPECT_EQ(truncateToLong(-1.9f), -1);
    EXPECT_EQ(truncateToLong(4294967296.0f), 4294967296);
    EXPECT_EQ(truncateToLong(9223372036854775808.0f), LONG_MAX);
    EXPECT_EQ(truncateToLong(-9223372036854775808.0f), LONG_MIN);
    EXPECT_EQ(truncateToLong(-infinity), LONG_MIN);
    EXPECT_EQ(truncateToLong(NaN), 0);
}

TEST(WrappingArithmetic, StaysOrdinaryWithinAnInt) {
    EXPECT_EQ(wrappingAdd(2, -5), -3);
    EXPECT_EQ(wrappingAdd(INT_MAX, INT_MIN), -1);
    EXPECT_EQ(wrappingMultiply(-7, 6), -42);
    EXPECT_EQ(wrappingMultiply(46340, 46340), 2147395600);
}

TEST(WrappingArithmetic, WrapsModuloTwoToTheThirtyTwo) {
    EXPECT_EQ(wrappingAdd(INT_MAX, 1), INT_MIN);
    EXPECT_EQ(wrappingAdd(INT_MIN, -1), INT_MAX);
    EXPECT_EQ(wrappingAdd(INT_MIN, INT_MIN), 0);
    EXPECT_EQ(wrappingMultiply(INT_MIN, -1), INT_MIN);
    EXPECT_EQ(wrappingMultiply(INT_MAX, 64), -64);
    EXPECT_EQ(wrappingMultiply(33554432, 64), INT_MIN);
    EXPECT_EQ(wrappingMultiply(65536, 65536), 0);
    EXPECT_EQ(wrappingMultiply(46341, 46341), -2147479015);
}

TEST(Clamp, KeepsWhatIsInRangeAndPutsTheRestOnTheNearerBound) {
    EXPECT_EQ(clamp(5, 0, 3), 3);
    EXPECT_EQ(clamp(-1, 0, 3), 0);
    EXPECT_EQ(clamp(2, 0, 3), 2);
    EXPECT_EQ(clamp(INT_MIN, 0, INT_MAX), 0);
    EXPECT_EQ(clamp(5.5f, 0.0f, 3.25f), 3.25f);
    EXPECT_EQ(clamp(-1.5f, -0.25f, 3.0f), -0.25f);
    EXPECT_EQ(clamp(0.75f, 0.0f, 3.0f), 0.75f);
}

TEST(Clamp, TestsTheLowerBoundFirstSoThatReversedBoundsGiveOneOfThem) {
    EXPECT_EQ(clamp(2, 3, 1), 3);
    EXPECT_EQ(clamp(4, 3, 1), 1);
    EXPECT_EQ(clamp(3, 3, 1), 1);
    EXPECT_EQ(clamp(2.0f, 3.0f, 1.0f), 3.0f);
    EXPECT_EQ(clamp(4.0f, 3.0f, 1.0f), 1.0f);
    EXPECT_EQ(clamp(-1, 0, -1), 0) << "an index in a grid without cells";
    EXPECT_EQ(clamp(0, 0, -1), -1);
}

TEST(Clamp, ReturnsNaNAndNeverANaNBound) {
    EXPECT_TRUE(std::isnan(clamp(NaN, 0.0f, 1.0f)));
    EXPECT_EQ(clamp(-1.0f, NaN, 3.0f), -1.0f);
    EXPECT_EQ(clamp(5.0f, NaN, 3.0f), 3.0f);
    EXPECT_EQ(clamp(5.0f, 0.0f, NaN), 5.0f);
    EXPECT_EQ(clamp(-5.0f, 0.0f, NaN), 0.0f);
}

TEST(Clamp, NegativeZeroIsNotBelowZero) {
    EXPECT_TRUE(std::signbit(clamp(-0.0f, 0.0f, 1.0f)));
}

TEST(Clamp, VectorsAreClampedComponentByComponent) {
    EXPECT_EQ(components(clamp(vec2(-2, 0.5f), 0, 1)), (Two{0, 0.5f}));
    EXPECT_EQ(components(clamp(vec3(-2, 0.5f, 9), 0, 1)), (Three{0, 0.5f, 1}));
    EXPECT_EQ(components(clamp(vec4(-2, 0.5f, 9, -7), 0, 1)), (Four{0, 0.5f, 1, 0}));
}

TEST(Lerp, ExtrapolatesBeyondBothEnds) {
    EXPECT_EQ(lerp(2.0f, 6.0f, 0.25f), 3);
    EXPECT_EQ(lerp(2.0f, 6.0f, 1.5f), 8);
    EXPECT_EQ(lerp(2.0f, 6.0f, -0.5f), 0);
}

TEST(Lerp, VectorsGoComponentByComponent) {
    EXPECT_EQ(components(lerp(vec2(2, 0), vec2(6, -8), 0.25f)), (Two{3, -2}));
    EXPECT_EQ(components(lerp(vec3(2, 0, 1), vec3(6, -8, 1), 1.5f)), (Three{8, -12, 1}));
    EXPECT_EQ(components(lerp(vec4(2, 0, 1, 5), vec4(6, -8, 1, 9), 0.5f)), (Four{4, -4, 1, 7}));
}

TEST(Lerp, StartsExactlyAtTheFirstButMayMissTheSecondInItsLastBit) {
    EXPECT_EQ(lerp(0.1f, 1e8f, 0.0f), 0.1f);
    EXPECT_EQ(lerp(1e8f, 1.0f, 1.0f), 0) << "1e8 + (1 - 1e8), where the 1 is lost";
    const vec3 a(0.1f, 1e8f, 0.3f);
    const vec3 b(1e8f, 1, 0.7f);
    EXPECT_EQ(components(lerp(a, b, 0)), components(a));
    EXPECT_EQ(components(lerp(a, b, 1)), components(a + (b - a)));
    EXPECT_EQ(lerp(a, b, 1).y, 0);
}

TEST(Lerp, QuaternionsAreWeightedSoThatBothEndsAreExactAndNothingIsNormalized) {
    const quat half = lerp(quat(), quat(1, 0, 0, 0), 0.5f);
    EXPECT_EQ(components(half), (Four{0.5f, 0, 0, 0.5f}));
    EXPECT_EQ(components(lerp(quat(), quat(1, 0, 0, 0), 2)), (Four{2, 0, 0, -1}));
    EXPECT_EQ(components(lerp(quat(1e8f, 0, 0, 1), quat(1, 2, 3, 4), 1)), (Four{1, 2, 3, 4}));
    EXPECT_EQ(components(lerp(quat(1, 2, 3, 4), quat(1e8f, 0, 0, 1), 0)), (Four{1, 2, 3, 4}));
}

TEST(Lerp, QuaternionsDoNotTakeTheShorterWay) {
    const quat q(0, 0.6f, 0, 0.8f);
    const quat same(0, -0.6f, 0, -0.8f);
    EXPECT_EQ(components(lerp(q, same, 0.5f)), (Four{0, 0, 0, 0}));
    EXPECT_EQ(components(nlerp(q, same, 0.5f)), (Four{0, 0, 0, 0}));
}

TEST(Nlerp, IsLerpAtUnitLength) {
    EXPECT_EQ(components(nlerp(vec2(3, 0), vec2(3, 8), 0.5f)), (Two{0.6f, 0.8f}));
    EXPECT_EQ(components(nlerp(vec3(0, 3, 0), vec3(0, 3, 8), 0.5f)), (Three{0, 0.6f, 0.8f}));
    EXPECT_EQ(components(nlerp(vec4(0, 3, 0, 0), vec4(0, 3, 0, 8), 0.5f)),
              (Four{0, 0.6f, 0, 0.8f}));
    EXPECT_EQ(components(nlerp(quat(1, 1, 1, 1), quat(3, 3, 3, 3), 0.5f)),
              (Four{0.5f, 0.5f, 0.5f, 0.5f}));
}

TEST(Nlerp, ZeroIsNotNormalized) {
    EXPECT_EQ(components(nlerp(vec2(1, 0), vec2(-1, 0), 0.5f)), (Two{0, 0}));
    EXPECT_EQ(components(nlerp(vec3(1, 0, 0), vec3(-1, 0, 0), 0.5f)), (Three{0, 0, 0}));
    EXPECT_EQ(components(nlerp(vec4(1, 0, 0, 0), vec4(-1, 0, 0, 0), 0.5f)), (Four{0, 0, 0, 0}));
}

TEST(Nlerp, QuaternionsKeepTheToleranceOfTheirNormalization) {
    const quat almostUnit(0, 0, 0, 1.000001f);
    EXPECT_EQ(components(nlerp(almostUnit, almostUnit, 0)), components(almostUnit));
    const quat tiny(0.001f, 0, 0, 0);
    EXPECT_EQ(components(nlerp(tiny, tiny, 0)), components(tiny));
    EXPECT_EQ(nlerp(vec3(0.001f, 0, 0), vec3(0.001f, 0, 0), 0).x, 1) << "a vector has none";
}

TEST(Slerp, TurnsAlongTheArc) {
    expectNear(slerp(vec2(1, 0), vec2(0, 1), 0.5f), vec2(0.7071068f, 0.7071068f));
    expectNear(slerp(vec3(1, 0, 0), vec3(0, 1, 0), 0.5f), vec3(0.7071068f, 0.7071068f, 0));
    expectNear(slerp(vec4(0, 0, 0, 1), vec4(1, 0, 0, 0), 1 / 3.0f), vec4(0.5f, 0, 0, 0.8660254f));
}

TEST(Slerp, BetweenEqualVectorsIsThatVectorForAnyParameter) {
    for (float t : {-3.0f, 0.0f, 0.3f, 1.0f, 50.0f}) {
        EXPECT_EQ(components(slerp(vec2(0, 1), vec2(0, 1), t)), (Two{0, 1}));
        EXPECT_EQ(components(slerp(vec3(1, 0, 0), vec3(1, 0, 0), t)), (Three{1, 0, 0}));
        EXPECT_EQ(components(slerp(vec4(0, 0, 1, 0), vec4(0, 0, 1, 0), t)), (Four{0, 0, 1, 0}));
    }
}

TEST(Slerp, BetweenOppositeVectorsShrinksThroughZero) {
    const vec3 a(1, 0, 0);
    const vec3 b(-1, 0, 0);
    expectNear(slerp(a, b, 0.25f), vec3(0.7071068f, 0, 0));
    expectNear(slerp(a, b, 0.5f), vec3(0, 0, 0));
    EXPECT_EQ(components(slerp(a, b, 1)), (Three{-1, 0, 0}));
}

TEST(Slerp, ContinuesPastBothEnds) {
    expectNear(slerp(vec3(1, 0, 0), vec3(0, 1, 0), 2), vec3(-1, 0, 0));
    expectNear(slerp(vec3(1, 0, 0), vec3(0, 1, 0), -1), vec3(0, -1, 0));
}

TEST(Slerp, ClampsTheCosineOfVectorsThatAreTooLong) {
    EXPECT_EQ(components(slerp(vec3(2, 0, 0), vec3(2, 0, 0), 0.5f)), (Three{2, 0, 0}));
    EXPECT_EQ(components(slerp(vec2(0, 2), vec2(0, -2), 1)), (Two{0, -2}));
    EXPECT_EQ(components(slerp(vec4(2, 0, 0, 0), vec4(2, 0, 0, 0), 0.5f)), (Four{2, 0, 0, 0}));
}

TEST(Slerp, DoesNotFallBackToLerpForAlmostEqualVectors) {
    EXPECT_EQ(components(slerp(vec3(1, 0, 0), vec3(1, 1e-4f, 0), 0.5f)), (Three{1, 0, 0}))
        << "the cosine is 1, so the angle is 0";
}

TEST(Slerp, OfQuaternionsIsTheIdentityWhateverTheArguments) {
    EXPECT_EQ(components(slerp(quat(1, 0, 0, 0), quat(0, 1, 0, 0), 0.5f)), (Four{0, 0, 0, 1}));
    EXPECT_EQ(components(slerp(quat(1, 2, 3, 4), quat(1, 2, 3, 4), 1)), (Four{0, 0, 0, 1}));
    EXPECT_EQ(components(slerp(quat(NaN, 0, 0, 1), quat(), NaN)), (Four{0, 0, 0, 1}));
}

TEST(Reflect, MirrorsByThePlaneOfAUnitNormal) {
    EXPECT_EQ(components(reflect(vec2(1, -1), vec2(0, 1))), (Two{1, 1}));
    EXPECT_EQ(components(reflect(vec3(1, -1, 0), vec3(0, 1, 0))), (Three{1, 1, 0}));
    EXPECT_EQ(components(reflect(vec4(1, 2, 3, -4), vec4(0, 0, 0, -1))), (Four{1, 2, 3, 4}));
}

TEST(Reflect, DoesNotNormalizeTheNormal) {
    EXPECT_EQ(components(reflect(vec3(1, -1, 0), vec3(0, 2, 0))), (Three{1, 7, 0}));
}

TEST(Reflect, DoublesTheNormalBeforeItIsScaled) {
    EXPECT_EQ(reflect(vec2(0, 1e-38f), vec2(0, 2e38f)).y, -infinity) << "2e38 · 2 overflows";
}
