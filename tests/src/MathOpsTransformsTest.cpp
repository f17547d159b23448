#include "src/MathOps.h"
#include "tests/support/Components.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

using Sixteen = std::array<float, 16>;

Sixteen elements(const mat4& a) {
    return std::to_array(a.m);
}

void expectNear(vec4 actual, vec4 expected) {
    EXPECT_NEAR(actual.x, expected.x, 1e-6f);
    EXPECT_NEAR(actual.y, expected.y, 1e-6f);
    EXPECT_NEAR(actual.z, expected.z, 1e-6f);
    EXPECT_NEAR(actual.w, expected.w, 1e-6f);
}

} // namespace

TEST(Frustum, IsWrittenRowByRow) {
    EXPECT_EQ(elements(perspective(-1, 3, -2, 6, 2, 6)),
              (Sixteen{1, 0, 0.5f, 0, 0, 0.5f, 0.5f, 0, 0, 0, -2, -6, 0, 0, -1, 0}));
}

TEST(Frustum, DoublesTheFarPlaneBeforeTheProductWithTheNearOne) {
    EXPECT_EQ(perspective(-1, 1, -1, 1, 1e-3f, 3e38f).m[11], -infinity);
}

TEST(Frustum, EqualPlanesDivideByZero) {
    EXPECT_EQ(perspective(1, 1, -1, 1, 1, 2).m[0], infinity);
    EXPECT_EQ(perspective(-1, 1, 2, 2, 1, 2).m[5], infinity);
    EXPECT_EQ(perspective(-1, 1, -1, 1, 2, 2).m[10], -infinity);
    EXPECT_TRUE(std::isnan(perspective(0, 0, -1, 1, 1, 2).m[2]));
}

TEST(Frustum, NinetyDegreesSeeAsFarUpAsAhead) {
    const mat4 a = perspective(1, 90, 1, 100);
    EXPECT_FLOAT_EQ(a.m[10], -1.020202f);
    EXPECT_FLOAT_EQ(a.m[11], -2.020202f);
    EXPECT_EQ(elements(a), (Sixteen{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, a.m[10], a.m[11], 0, 0, -1, 0}));
}

TEST(Frustum, AngleIsDividedInSinglePrecisionAndTheRestTakenInDouble) {
    // Either step in the other precision ends in 2.14450693.
    EXPECT_EQ(perspective(1, 50, 0.1f, 100).m[5], 2.14450669f);
}

TEST(Frustum, TakesWidthByHeightBeforeTheVerticalAngle) {
    const mat4 a = perspective(2, 90, 1, 100);
    EXPECT_EQ(a.m[0], 0.5f);
    EXPECT_EQ(a.m[5], 1);
}

TEST(Frustum, AngleDoesNotDependOnTheNearPlane) {
    EXPECT_EQ(perspective(1, 90, 4, 100).m[5], 1);
}

TEST(Orthographic, IsWrittenRowByRow) {
    EXPECT_EQ(elements(ortho(1, 5, -2, 6, 2, 4)),
              (Sixteen{0.5f, 0, 0, -1.5f, 0, 0.25f, 0, -0.5f, 0, 0, -1, -3, 0, 0, 0, 1}));
}

TEST(Orthographic, EqualPlanesDivideByZero) {
    const mat4 a = ortho(1, 1, -1, 1, 2, 2);
    EXPECT_EQ(a.m[0], infinity);
    EXPECT_EQ(a.m[3], -infinity);
    EXPECT_EQ(a.m[10], -infinity);
}

TEST(Orthographic, ByAspectPointsYDown) {
    EXPECT_EQ(elements(ortho(2, -1, 1)),
              (Sixteen{0.5f, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}));
}

TEST(Orthographic, ByAspectGivesTheShorterSideTheLengthTwo) {
    EXPECT_EQ(elements(ortho(0.5f, -1, 1)),
              (Sixteen{1, 0, 0, 0, 0, -0.5f, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(ortho(1, -1, 1).m[0], 1);
    EXPECT_EQ(ortho(1, -1, 1).m[5], -1);
}

TEST(Orthographic, NaNAspectCountsAsWide) {
    const mat4 a = ortho(NaN, -1, 1);
    EXPECT_TRUE(std::isnan(a.m[0]));
    EXPECT_EQ(a.m[5], -1);
}

TEST(Orthographic, ZeroAspectIsInfinitelyHigh) {
    const mat4 a = ortho(0, -1, 1);
    EXPECT_EQ(a.m[0], 1);
    EXPECT_EQ(a.m[5], 0);
    EXPECT_TRUE(std::signbit(a.m[5]));
    EXPECT_TRUE(std::isnan(a.m[7]));
}

TEST(LookAt, XAxisIsMirroredSinceTheSideComesFromTheBackwardDirection) {
    EXPECT_EQ(elements(lookAt(vec3(1, 2, 8), vec3(1, 2, 3), vec3(0, 1, 0))),
              (Sixteen{-1, 0, 0, 1, 0, 1, 0, -2, 0, 0, 1, -8, 0, 0, 0, 1}));
}

TEST(LookAt, RowsAreSideUpAndBackward) {
    EXPECT_EQ(elements(lookAt(vec3(5, 6, 7), vec3(1, 6, 7), vec3(0, 0, 1))),
              (Sixteen{0, -1, 0, 6, 0, 0, 1, -7, 1, 0, 0, -5, 0, 0, 0, 1}));
}

TEST(LookAt, SideIsNormalizedThoughTheUpVectorIsTiltedAndLong) {
    EXPECT_EQ(elements(lookAt(vec3(0, 0, 5), vec3(), vec3(0, 3, 4))),
              (Sixteen{-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -5, 0, 0, 0, 1}));
}

TEST(LookAt, DegenerateInputGivesZeroRows) {
    EXPECT_EQ(elements(lookAt(vec3(1, 2, 3), vec3(1, 2, 3), vec3(0, 1, 0))),
              (Sixteen{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(elements(lookAt(vec3(0, 5, 0), vec3(), vec3(0, 1, 0))),
              (Sixteen{0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, -5, 0, 0, 0, 1}));
}

TEST(Translation, StandsInTheLastColumnAndMovesPointsOnly) {
    const mat4 a = translate(1, 2, 3);
    EXPECT_EQ(elements(a), (Sixteen{1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1}));
    EXPECT_EQ(components(a * vec4(0, 0, 0, 1)), (Four{1, 2, 3, 1}));
    EXPECT_EQ(components(a * vec4(0, 0, 0, 0)), (Four{0, 0, 0, 0}));
    EXPECT_EQ(elements(translate(vec3(1, 2, 3))), elements(a));
}

TEST(Scaling, StandsOnTheDiagonal) {
    EXPECT_EQ(elements(scale(2, 3, 4)), (Sixteen{2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}));
    EXPECT_EQ(elements(scale(5)), elements(scale(5, 5, 5)));
}

TEST(Rotation, QuarterTurnsCarryEachAxisToTheNext) {
    expectNear(rotateX(90) * vec4(0, 1, 0, 0), vec4(0, 0, 1, 0));
    expectNear(rotateY(90) * vec4(0, 0, 1, 0), vec4(1, 0, 0, 0));
    expectNear(rotateZ(90) * vec4(1, 0, 0, 0), vec4(0, 1, 0, 0));
}

TEST(Rotation, IsWrittenRowByRow) {
    const float c = rotateX(90).m[5];
    EXPECT_EQ(elements(rotateX(90)), (Sixteen{1, 0, 0, 0, 0, c, -1, 0, 0, 1, c, 0, 0, 0, 0, 1}));
    EXPECT_EQ(elements(rotateY(90)), (Sixteen{c, 0, 1, 0, 0, 1, 0, 0, -1, 0, c, 0, 0, 0, 0, 1}));
    EXPECT_EQ(elements(rotateZ(90)), (Sixteen{c, -1, 0, 0, 1, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
}

TEST(Rotation, DegreesBecomeRadiansInDoublePrecision) {
    EXPECT_FLOAT_EQ(rotateZ(90).m[0], 6.123234e-17f) << "with pi as a float it were -4.4e-8";
}

TEST(Rotation, AgreesWithTheMatrixOfAQuaternion) {
    quat q;
    q.fromAxisAngle(vec3(0, 1, 0), 0.5235987756f);
    const mat4 expected = rotateY(30);
    const mat4 actual = q.toMatrix();
    for (size_t i = 0; i < 16; ++i)
        EXPECT_NEAR(actual.m[i], expected.m[i], 1e-6f) << "element " << i;
}
