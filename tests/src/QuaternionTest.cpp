#include "src/Quaternion.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Components.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr float pi = 3.14159265f;
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

/// A third of a turn about the diagonal: x becomes y, y becomes z, z becomes x, all exactly.
constexpr quat cycle(0.5f, 0.5f, 0.5f, 0.5f);
constexpr quat halfTurnAboutX(1, 0, 0, 0);

quat turn(vec3 axis, float angle) {
    quat q(9, 9, 9, 9);
    q.fromAxisAngle(axis, angle);
    return q;
}

quat normalized(quat q) {
    q.normalize();
    return q;
}

} // namespace

TEST(Quaternion, LiesInMemoryAsXYZWWithTheScalarLast) {
    EXPECT_EQ(std::bit_cast<Four>(quat(1, 2, 3, 4)), (Four{1, 2, 3, 4}));
    EXPECT_EQ(std::bit_cast<Four>(quat()), (Four{0, 0, 0, 1}));
}

TEST(Quaternion, NormalizeScalesToUnitLength) {
    EXPECT_EQ(components(normalized(quat(0, 0, 0, 2))), (Four{0, 0, 0, 1}));
    EXPECT_EQ(components(normalized(quat(1, -1, 1, -1))), (Four{0.5f, -0.5f, 0.5f, -0.5f}));
}

TEST(Quaternion, NormalizeLeavesZeroAndAlmostUnitLengthAlone) {
    EXPECT_EQ(components(normalized(quat(0, 0, 0, 0))), (Four{0, 0, 0, 0}));
    EXPECT_EQ(components(normalized(quat(0, 0, 0, 1.000001f))), (Four{0, 0, 0, 1.000001f}));
}

TEST(Quaternion, NormalizeTreatsASquaredLengthUpToTheToleranceAsZero) {
    constexpr float longestUntouched = 0.00316227763f;
    ASSERT_EQ(longestUntouched * longestUntouched, 1e-5f);
    EXPECT_EQ(normalized(quat(longestUntouched, 0, 0, 0)).x, longestUntouched);
    EXPECT_EQ(normalized(quat(0.003163f, 0, 0, 0)).x, 1);
}

TEST(Quaternion, NormalizeTreatsASquaredLengthWithinTheToleranceOfOneAsOne) {
    constexpr float step = std::numeric_limits<float>::epsilon();
    constexpr float above = 1 + 41 * step; // squared 82 steps above 1; the tolerance is 83.9
    EXPECT_EQ(normalized(quat(0, above, 0, 0)).y, above);
    EXPECT_EQ(normalized(quat(0, 1 + 42 * step, 0, 0)).y, 1);
    constexpr float below = 1 - 83 * step / 2; // squared 83 steps below
    EXPECT_EQ(normalized(quat(0, below, 0, 0)).y, below);
    EXPECT_EQ(normalized(quat(0, 1 - 84 * step / 2, 0, 0)).y, 1);
}

TEST(Quaternion, NormalizeSumsTheSquaresFromTheScalarOn) {
    EXPECT_EQ(components(normalized(quat(1, 1, 1, 4096))),
              (Four{1 / 4096.0f, 1 / 4096.0f, 1 / 4096.0f, 1}))
        << "each small square is lost beside 4096²";
}

TEST(Quaternion, NormalizeLeavesNaNAlone) {
    const quat q = normalized(quat(2, NaN, 3, 4));
    EXPECT_EQ(q.x, 2);
    EXPECT_TRUE(std::isnan(q.y));
    EXPECT_EQ(q.z, 3);
    EXPECT_EQ(q.w, 4);
}

TEST(Quaternion, ConjugateNegatesTheVectorPart) {
    EXPECT_EQ(components(quat(1, -2, 3, -4).getConjugate()), (Four{-1, 2, -3, -4}));
}

TEST(Quaternion, ConjugateTogglesTheSignOfZeroToo) {
    const quat q = quat(0, -0.0f, 0, 1).getConjugate();
    EXPECT_EQ(components(q), (Four{0, 0, 0, 1}));
    EXPECT_TRUE(std::signbit(q.x));
    EXPECT_FALSE(std::signbit(q.y));
    EXPECT_TRUE(std::signbit(q.z));
}

TEST(Quaternion, TurnDoesNotDependOnTheLengthOfItsAxis) {
    for (float axisLength : {1.0f, 2.0f, 100.0f}) {
        const quat q = turn(vec3(0, 0, axisLength), pi / 2);
        EXPECT_EQ(q.x, 0);
        EXPECT_EQ(q.y, 0);
        EXPECT_FLOAT_EQ(q.z, 0.7071068f);
        EXPECT_FLOAT_EQ(q.w, 0.7071068f);
    }
}

TEST(Quaternion, TurnTakesRadiansAndTheNormalizedAxis) {
    const quat q = turn(vec3(0, 3, 4), pi);
    EXPECT_EQ(components(quat(q.x, q.y, q.z, 0)), (Four{0, 0.6f, 0.8f, 0}));
    EXPECT_FLOAT_EQ(q.w, -4.371139e-8f) << "the cosine of half of pi as a float";
}

TEST(Quaternion, TurnScalesEveryAxisComponentByTheSine) {
    const quat q = turn(vec3(2, -3, 6), pi / 3);
    EXPECT_FLOAT_EQ(q.x, 1 / 7.0f);
    EXPECT_FLOAT_EQ(q.y, -3 / 14.0f);
    EXPECT_FLOAT_EQ(q.z, 3 / 7.0f);
    EXPECT_FLOAT_EQ(q.w, 0.8660254f);
}

TEST(Quaternion, TurnAboutZeroKeepsOnlyTheCosine) {
    const quat q = turn(vec3(), 2 * pi / 3);
    EXPECT_EQ(components(quat(q.x, q.y, q.z, 0)), (Four{0, 0, 0, 0}));
    EXPECT_FLOAT_EQ(q.w, 0.5f);
}

TEST(Quaternion, AngleIsTwiceTheArcCosineOfTheScalar) {
    EXPECT_EQ(quat().getAxisAngle(vec3(), 0), 0);
    EXPECT_FLOAT_EQ(quat(0, 0, 0.7071068f, 0.7071068f).getAxisAngle(vec3(), 0), pi / 2);
    EXPECT_FLOAT_EQ(quat(0, 0, 0, -1).getAxisAngle(vec3(), 0), 2 * pi);
    EXPECT_TRUE(std::isnan(quat(0, 0, 0, 2).getAxisAngle(vec3(), 0))) << "nothing is guarded";
}

TEST(Quaternion, AngleIsReturnedAndTheAxisIsNotDelivered) {
    vec3 axis(1, 2, 3);
    float angle = 7;
    EXPECT_FLOAT_EQ(halfTurnAboutX.getAxisAngle(axis, angle), pi);
    EXPECT_EQ(components(axis), (Three{1, 2, 3}));
    EXPECT_EQ(angle, 7);
}

TEST(Quaternion, ProductIsHamiltons) {
    EXPECT_EQ(components(quat(1, 0, 0, 0) * quat(0, 1, 0, 0)), (Four{0, 0, 1, 0}));
    EXPECT_EQ(components(quat(0, 1, 0, 0) * quat(1, 0, 0, 0)), (Four{0, 0, -1, 0}));
    EXPECT_EQ(components(quat(1, 2, 3, 4) * quat(5, 6, 7, 8)), (Four{24, 48, 48, -6}));
}

TEST(Quaternion, IdentityTimesAnyIsThatOne) {
    EXPECT_EQ(components(quat() * quat(1, -2, 3, 4)), (Four{1, -2, 3, 4}));
}

TEST(Quaternion, ProductSumsFromLeftToRightInSinglePrecision) {
    EXPECT_EQ((quat(-1, 1e8f, 0, 1e8f) * quat(1, 1, 0, 1)).w, 0) << "1e8 + 1 - 1e8";
    EXPECT_EQ((quat(1, -1e8f, 0, 1e8f) * quat(1, 0, 1, 1)).x, 0) << "1e8 + 1 - 1e8";
}

TEST(Quaternion, ProductTurnsByTheRightFactorFirst) {
    EXPECT_EQ(components((halfTurnAboutX * cycle) * vec3(1, 0, 0)), (Three{0, -1, 0}));
    EXPECT_EQ(components((cycle * halfTurnAboutX) * vec3(1, 0, 0)), (Three{0, 1, 0}));
}

TEST(Quaternion, TurnedVectorHasUnitLengthWhateverItHadBefore) {
    EXPECT_EQ(components(cycle * vec3(5, 0, 0)), (Three{0, 1, 0}));
    EXPECT_EQ(components(cycle * vec3(0, 0, 0.125f)), (Three{1, 0, 0}));
    const vec3 turned = turn(vec3(0, 0, 1), pi / 2) * vec3(2, 0, 0);
    EXPECT_NEAR(turned.x, 0, 1e-6f);
    EXPECT_NEAR(turned.y, 1, 1e-6f);
    EXPECT_EQ(turned.z, 0);
}

TEST(Quaternion, TurnedZeroStaysZero) {
    EXPECT_EQ(components(cycle * vec3()), (Three{0, 0, 0}));
}

TEST(Quaternion, TurnScalesByItsOwnSquaredLength) {
    EXPECT_EQ(components(quat(0, 0, 0, 2) * vec3(0, 0, 5)), (Three{0, 0, 4}));
}

TEST(Quaternion, MatrixOfATurnIsWrittenRowByRow) {
    const float expected[16] = {0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(std::to_array(cycle.toMatrix().m), std::to_array(expected));
}

TEST(Quaternion, MatrixDoesNotNormalizeFirst) {
    const float expected[16] = {-25, -20, 22, 0, 28, -19, 4, 0, -10, 20, -9, 0, 0, 0, 0, 1};
    EXPECT_EQ(std::to_array(quat(1, 2, 3, 4).toMatrix().m), std::to_array(expected));
}

TEST(Quaternion, DisplayWritesTheFourValuesWithoutALineEnd) {
    const CapturedOutput output;
    quat().display();
    EXPECT_EQ(output.text(), "quat(0, 0, 0, 1)");
    quat(-0.5f, 1.25f, 0, 1234567).display();
    EXPECT_EQ(output.text(), "quat(0, 0, 0, 1)quat(-0.5, 1.25, 0, 1.23457e+06)");
}
