#include "src/Vector.h"
#include "tests/support/Components.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <iomanip>
#include <limits>
#include <sstream>
#include <type_traits>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

template<class Vector>
Vector normalized(Vector v) {
    v.normalize();
    return v;
}

template<class Vector>
std::string written(Vector v) {
    std::ostringstream out;
    out << v;
    return out.str();
}

} // namespace

TEST(Vector, ComponentsLieInMemoryInTheOrderXYZW) {
    EXPECT_EQ(components(vec2(1, 2)), (Two{1, 2}));
    EXPECT_EQ(components(vec3(1, 2, 3)), (Three{1, 2, 3}));
    EXPECT_EQ(components(vec4(1, 2, 3, 4)), (Four{1, 2, 3, 4}));
}

TEST(Vector, DefaultIsZeroAndOneValueFillsAllThreeComponents) {
    EXPECT_EQ(components(vec3()), (Three{0, 0, 0}));
    EXPECT_EQ(components(vec3(2.5f)), (Three{2.5f, 2.5f, 2.5f}));
    const vec3 converted = 2.5f;
    EXPECT_EQ(components(converted), (Three{2.5f, 2.5f, 2.5f}));
}

TEST(Vector, SumsAndDifferencesAreComponentwise) {
    EXPECT_EQ(components(vec2(1, 2) + vec2(10, 30)), (Two{11, 32}));
    EXPECT_EQ(components(vec2(1, 2) - vec2(10, 30)), (Two{-9, -28}));
    EXPECT_EQ(components(vec3(1, 2, 3) + vec3(10, 30, 50)), (Three{11, 32, 53}));
    EXPECT_EQ(components(vec3(1, 2, 3) - vec3(10, 30, 50)), (Three{-9, -28, -47}));
    EXPECT_EQ(components(vec4(1, 2, 3, 4) + vec4(10, 30, 50, 70)), (Four{11, 32, 53, 74}));
    EXPECT_EQ(components(vec4(1, 2, 3, 4) - vec4(10, 30, 50, 70)), (Four{-9, -28, -47, -66}));
}

TEST(Vector, ScalarOnTheRightMultipliesEveryComponent) {
    EXPECT_EQ(components(vec2(1, -2) * 2.5f), (Two{2.5f, -5}));
    EXPECT_EQ(components(vec3(1, -2, 4) * 2.5f), (Three{2.5f, -5, 10}));
    EXPECT_EQ(components(vec4(1, -2, 4, 8) * 2.5f), (Four{2.5f, -5, 10, 20}));
    EXPECT_FALSE((std::is_invocable_v<std::multiplies<>, float, vec3>)) << "never on the left";
}

TEST(Vector, QuotientByAScalarOrAVectorIsComponentwise) {
    EXPECT_EQ(components(vec3(1, -2, 4) / 4.0f), (Three{0.25f, -0.5f, 1}));
    EXPECT_EQ(components(vec3(1, -2, 4) / vec3(4, 2, 8)), (Three{0.25f, -1, 0.5f}));
}

TEST(Vector, DivisionByZeroIsNotGuarded) {
    EXPECT_EQ(components(vec3(1, 2, 3) / 0.0f), (Three{infinity, infinity, infinity}));
    EXPECT_EQ(components(vec3(1, 2, 3) / vec3(1, 0, 1)), (Three{1, infinity, 3}));
    EXPECT_TRUE(std::isnan((vec3() / 0.0f).x));
}

TEST(Vector, QuotientDividesAndDoesNotMultiplyByTheInverse) {
    constexpr float threeSevenths = 0.428571433f;
    ASSERT_NE(threeSevenths, 3.0f * (1.0f / 7.0f));
    EXPECT_EQ((vec3(3, 0, 0) / 7.0f).x, threeSevenths);
    vec3 v(3, 3, 3);
    v /= 7.0f;
    EXPECT_EQ(components(v), (Three{threeSevenths, threeSevenths, threeSevenths}));
}

TEST(Vector, CompoundSumAndDifferenceChangeInPlace) {
    vec3 v(1, 2, 3);
    v += vec3(10, 30, 50);
    EXPECT_EQ(components(v), (Three{11, 32, 53}));
    v -= vec3(1, 3, 2);
    EXPECT_EQ(components(v), (Three{10, 29, 51}));
    v += v;
    EXPECT_EQ(components(v), (Three{20, 58, 102}));
}

TEST(Vector, CompoundOperatorsReturnNothingSoTheyCannotBeChained) {
    vec2 v2(1, 1);
    vec3 v3;
    vec4 v4(1, 1, 1, 1);
    EXPECT_TRUE(std::is_void_v<decltype(v3 += v3)>);
    EXPECT_TRUE(std::is_void_v<decltype(v3 -= v3)>);
    EXPECT_TRUE(std::is_void_v<decltype(v2 /= 1.0f)>);
    EXPECT_TRUE(std::is_void_v<decltype(v3 /= 1.0f)>);
    EXPECT_TRUE(std::is_void_v<decltype(v4 /= 1.0f)>);
}

TEST(Vector, CompoundQuotientReadsItsDivisorAnewForEachComponent) {
    vec2 v2(2, 4);
    v2 /= v2.x;
    EXPECT_EQ(components(v2), (Two{1, 4}));
    vec3 v3(2, 4, 6);
    v3 /= v3.x;
    EXPECT_EQ(components(v3), (Three{1, 4, 6}));
    vec4 v4(8, 4, 2, 6);
    v4 /= v4.z;
    EXPECT_EQ(components(v4), (Four{4, 2, 1, 6}));
}

TEST(Vector, DotProductSumsFromLeftToRightInSinglePrecision) {
    EXPECT_EQ(vec2(1, 2).dot(vec2(3, 4)), 11);
    EXPECT_EQ(vec3(1, 2, 3).dot(vec3(4, 5, 6)), 32);
    EXPECT_EQ(vec4(1, 2, 3, 4).dot(vec4(5, 6, 7, 8)), 70);
    EXPECT_EQ(vec3(1e8f, 1, -1e8f).dot(vec3(1)), 0) << "the 1 is lost first";
    EXPECT_EQ(vec4(1e8f, 1, -1e8f, 1).dot(vec4(1, 1, 1, 1)), 1);
    EXPECT_EQ(vec2(4097, 1).dot(vec2(4097, -16785408)), 0) << "4097² is rounded before the sum";
}

TEST(Vector, CrossProductIsRightHanded) {
    EXPECT_EQ(components(vec3(1, 0, 0).cross(vec3(0, 1, 0))), (Three{0, 0, 1}));
    EXPECT_EQ(components(vec3(0, 1, 0).cross(vec3(1, 0, 0))), (Three{0, 0, -1}));
    EXPECT_EQ(components(vec3(1, 2, 3).cross(vec3(4, 5, 7))), (Three{-1, 5, -3}));
}

TEST(Vector, CrossProductRoundsEachProductBeforeTheDifference) {
    EXPECT_EQ(vec3(0, 4097, 1).cross(vec3(0, 16785408, 4097)).x, 0);
}

TEST(Vector, LengthIsTheRootOfTheDotProduct) {
    EXPECT_EQ(vec3(3, 4, 0).length(), 5);
    EXPECT_EQ(vec3(2, -3, 6).length(), 7);
    EXPECT_EQ(vec3().length(), 0);
}

TEST(Vector, LengthOverflowsAndUnderflowsWithItsSinglePrecisionDotProduct) {
    EXPECT_EQ(vec3(1e20f, 0, 0).length(), infinity);
    EXPECT_EQ(vec3(1e-30f, 0, 0).length(), 0);
}

TEST(Vector, NormalizeScalesToUnitLength) {
    EXPECT_EQ(components(normalized(vec2(3, 4))), (Two{0.6f, 0.8f}));
    EXPECT_EQ(components(normalized(vec3(3, 4, 0))), (Three{0.6f, 0.8f, 0}));
    EXPECT_EQ(components(normalized(vec4(0, 3, 0, 4))), (Four{0, 0.6f, 0, 0.8f}));
}

TEST(Vector, NormalizeDividesByTheLength) {
    EXPECT_EQ(components(normalized(vec3(2, 3, 6))),
              (Three{0.285714298f, 0.428571433f, 0.857142866f}));
}

TEST(Vector, NormalizingZeroLeavesZero) {
    EXPECT_EQ(components(normalized(vec2(0, 0))), (Two{0, 0}));
    EXPECT_EQ(components(normalized(vec3())), (Three{0, 0, 0}));
    EXPECT_EQ(components(normalized(vec4(0, 0, 0, 0))), (Four{0, 0, 0, 0}));
    EXPECT_TRUE(std::signbit(normalized(vec3(0, -0.0f, 0)).y)) << "not even the sign changes";
}

TEST(Vector, NormalizingWhatIsTooShortToMeasureLeavesItAndTooLongGivesZero) {
    EXPECT_EQ(components(normalized(vec3(1e-30f, 0, 2e-30f))), (Three{1e-30f, 0, 2e-30f}));
    EXPECT_EQ(components(normalized(vec3(1e20f, 0, 2e20f))), (Three{0, 0, 0}));
}

TEST(Vector, NormalizingNaNDividesAnywayAndSpreadsIt) {
    const vec2 v2 = normalized(vec2(1, NaN));
    EXPECT_TRUE(std::isnan(v2.x) && std::isnan(v2.y));
    const vec3 v3 = normalized(vec3(NaN, 1, 0));
    EXPECT_TRUE(std::isnan(v3.x) && std::isnan(v3.y) && std::isnan(v3.z));
    const vec4 v4 = normalized(vec4(1, 0, NaN, 2));
    EXPECT_TRUE(std::isnan(v4.x) && std::isnan(v4.y) && std::isnan(v4.z) && std::isnan(v4.w));
}

TEST(Vector, IsWrittenWithCommasAndWithoutBracketsOrLineEnd) {
    EXPECT_EQ(written(vec2(1, -2.25f)), "1, -2.25");
    EXPECT_EQ(written(vec3(1.5f, 0, -2)), "1.5, 0, -2");
}

TEST(Vector, FourComponentsAreWrittenWithTheLastTwoRunTogether) {
    EXPECT_EQ(written(vec4(1, 2, 3, 4)), "1, 2, 34");
}

TEST(Vector, OutputFollowsTheStreamsOwnFormatting) {
    EXPECT_EQ(written(vec2(1234567, 0.1f)), "1.23457e+06, 0.1");
    std::ostringstream out;
    out << std::fixed << std::setprecision(2);
    EXPECT_EQ(&(out << vec3(1, 2, 3)), &out);
    EXPECT_EQ(out.str(), "1.00, 2.00, 3.00");
}
