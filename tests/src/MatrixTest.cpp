#include "src/Matrix.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Components.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

using Nine = std::array<float, 9>;
using Sixteen = std::array<float, 16>;

/// The used values, row by row.
Nine elements(const mat3& a) {
    Nine used = {};
    for (size_t i = 0; i < used.size(); ++i)
        used[i] = a.m[i];
    return used;
}

Sixteen elements(const mat4& a) {
    return std::to_array(a.m);
}

const mat4 counting(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
const mat4 mixed(1, 0, 2, -1, 3, 1, 0, 2, 0, -2, 1, 1, 2, 0, 0, 1);

} // namespace

TEST(Matrix, DefaultIsTheIdentity) {
    EXPECT_EQ(elements(mat3()), (Nine{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(elements(mat4()), (Sixteen{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
}

TEST(Matrix, ValuesAreGivenAndKeptRowByRow) {
    EXPECT_EQ(elements(mat3(1, 2, 3, 4, 5, 6, 7, 8, 9)), (Nine{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(elements(counting), (Sixteen{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
}

TEST(Matrix, ThreeByThreeHasRoomForSixteenValuesAndCopiesThemAll) {
    mat3 original;
    EXPECT_EQ(std::size(original.m), 16u);
    original.m[15] = 7;
    const mat3 copy = original;
    EXPECT_EQ(copy.m[15], 7);
}

TEST(Matrix, TransposeExchangesRowsAndColumns) {
    const mat3 small(1, 2, 3, 4, 5, 6, 7, 8, 9);
    EXPECT_EQ(elements(small.transpose()), (Nine{1, 4, 7, 2, 5, 8, 3, 6, 9}));
    EXPECT_EQ(elements(small), (Nine{1, 2, 3, 4, 5, 6, 7, 8, 9})) << "left as it was";
    EXPECT_EQ(elements(counting.transpose()),
              (Sixteen{0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15}));
}

TEST(Matrix, UpperLeftBlockIsTakenRowByRow) {
    EXPECT_EQ(elements(counting.toMat3()), (Nine{0, 1, 2, 4, 5, 6, 8, 9, 10}));
}

TEST(Matrix, IdentityChangesNothing) {
    EXPECT_EQ(elements(mat4() * counting), elements(counting));
    EXPECT_EQ(elements(counting * mat4()), elements(counting));
    EXPECT_EQ(components(mat4() * vec4(1, -2, 3.5f, 4)), (Four{1, -2, 3.5f, 4}));
    EXPECT_EQ(components(mat4() * vec4(0, 0, 0, 0)), (Four{0, 0, 0, 0}));
}

TEST(Matrix, ProductMultipliesRowsOfTheLeftByColumnsOfTheRight) {
    EXPECT_EQ(elements(counting * mixed),
              (Sixteen{9, -3, 2, 7, 33, -7, 14, 19, 57, -11, 26, 31, 81, -15, 38, 43}));
}

TEST(Matrix, VectorIsAColumnOnTheRight) {
    EXPECT_EQ(components(counting * vec4(1, 10, 100, 1000)), (Four{3210, 7654, 12098, 16542}));
}

TEST(Matrix, SumsRunFromLeftToRightInSinglePrecision) {
    mat4 row;
    row.m[0] = 1e8f;
    row.m[1] = 1;
    row.m[2] = -1e8f;
    row.m[3] = 1;
    const mat4 ones(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1);
    EXPECT_EQ((row * vec4(1, 1, 1, 1)).x, 1) << "the first 1 is lost beside 1e8";
    EXPECT_EQ((row * ones).m[0], 1);
}

TEST(Matrix, ThreeByThreeUsesTheVectorsYTwiceAndNeverItsZ) {
    const mat3 a(1, 2, 3, 4, 5, 6, 7, 8, 9);
    EXPECT_EQ(components(a * vec3(1, 1, 100)), (Three{6, 15, 24}));
    EXPECT_EQ(components(a * vec3(2, 10, NaN)), (Three{52, 118, 184}));
    EXPECT_EQ(components(mat3() * vec3(1, 2, 3)), (Three{1, 2, 2})) << "not even the identity";
}

TEST(Matrix, DisplayWritesOneLineForEachRow) {
    const CapturedOutput output;
    mat3().display();
    EXPECT_EQ(output.text(), "|1, 0, 0|\n|0, 1, 0|\n|0, 0, 1|\n");
}

TEST(Matrix, DisplayOfFourRowsUsesOrdinaryFloatFormatting) {
    const CapturedOutput output;
    mat4(1.5f, -2, 1234567, 0.1f, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15).display();
    EXPECT_EQ(output.text(), "|1.5, -2, 1.23457e+06, 0.1|\n|4, 5, 6, 7|\n"
                             "|8, 9, 10, 11|\n|12, 13, 14, 15|\n");
}
