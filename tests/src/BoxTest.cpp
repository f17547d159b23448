#include "src/Box.h"
#include "tests/support/Components.h"

#include <cstddef>
#include <gtest/gtest.h>

namespace {

void expectCorners(const Box& box, vec3 min, vec3 max) {
    EXPECT_EQ(components(box.min), components(min));
    EXPECT_EQ(components(box.max), components(max));
}

void expectClearedValues(const Box& box) {
    for (bool flag : box.faceFlags)
        EXPECT_FALSE(flag);
    EXPECT_EQ(box.solid, 0);
    EXPECT_EQ(box.cellValue, 0);
}

} // namespace

TEST(Box, FieldsStandInTheOrderCentreMinMaxFlagsSolidValue) {
    EXPECT_EQ(offsetof(Box, centre), 0u);
    EXPECT_EQ(offsetof(Box, min), 12u);
    EXPECT_EQ(offsetof(Box, max), 24u);
    EXPECT_EQ(offsetof(Box, faceFlags), 36u);
    EXPECT_EQ(std::size(Box().faceFlags), 6u);
    EXPECT_EQ(offsetof(Box, solid), 44u);
    EXPECT_EQ(offsetof(Box, cellValue), 48u);
}

TEST(Box, DefaultIsAPointAtTheOrigin) {
    const Box box;
    EXPECT_EQ(components(box.centre), (Three{0, 0, 0}));
    expectCorners(box, vec3(), vec3());
}

TEST(Box, CubeReachesHalfItsSizeFromTheCentre) {
    const Box box(vec3(32, 32, 32), 64);
    EXPECT_EQ(components(box.centre), (Three{32, 32, 32}));
    expectCorners(box, vec3(0, 0, 0), vec3(64, 64, 64));
}

TEST(Box, DimensionsAreFullEdgeLengths) {
    const Box box(vec3(10, 20, 30), vec3(50, 150, 5));
    EXPECT_EQ(components(box.centre), (Three{10, 20, 30}));
    expectCorners(box, vec3(-15, -55, 27.5f), vec3(35, 95, 32.5f));
}

TEST(Box, WithoutDimensionsIsItsCentre) {
    const vec3 centre(1, -2, 3.5f);
    expectCorners(Box(centre, vec3(0, 0, 0)), centre, centre);
}

TEST(Box, NegativeSizeIsNotCorrected) {
    expectCorners(Box(vec3(0, 0, 0), vec3(2, -4, 6)), vec3(-1, 2, -3), vec3(1, -2, 3));
    expectCorners(Box(vec3(0, 0, 0), -2), vec3(1, 1, 1), vec3(-1, -1, -1));
}

TEST(Box, EveryConstructorClearsFlagsAndCellValues) {
    expectClearedValues(Box());
    expectClearedValues(Box(vec3(32, 32, 32), 64));
    expectClearedValues(Box(vec3(32, 32, 32), vec3(1, 2, 3)));
}

TEST(Box, MoveShiftsAllThreePointsAndNothingElse) {
    Box box(vec3(32, 32, 32), 64);
    box.solid = 3;
    box.cellValue = 7;
    box.faceFlags[4] = true;
    box.move(vec3(1, 0, 0), 5);
    EXPECT_EQ(components(box.centre), (Three{37, 32, 32}));
    expectCorners(box, vec3(5, 0, 0), vec3(69, 64, 64));
    EXPECT_EQ(box.solid, 3);
    EXPECT_EQ(box.cellValue, 7);
    EXPECT_TRUE(box.faceFlags[4]);
}

TEST(Box, MoveDoesNotNormalizeItsDirection) {
    Box box;
    box.move(vec3(2, -3, 4), -10);
    EXPECT_EQ(components(box.centre), (Three{-20, 30, -40}));
}

TEST(Box, MoveRoundsEachPointByItselfAndRestoresNoSize) {
    Box box(vec3(0.5f, 0, 0), vec3(1, 0, 0));
    box.move(vec3(1, 0, 0), 16777216);
    box.move(vec3(-1, 0, 0), 16777216);
    EXPECT_EQ(box.centre.x, 0);
    expectCorners(box, vec3(0, 0, 0), vec3(0, 0, 0));
}

TEST(Box, FacePointsTakeOneCoordinateFromACornerAndTheOthersFromTheCentre) {
    Box box;
    box.centre = {10, 32, 20};
    box.min = {-1, 0, -3};
    box.max = {71, 64, 83};
    EXPECT_EQ(components(box.left()), (Three{-1, 32, 20}));
    EXPECT_EQ(components(box.right()), (Three{71, 32, 20}));
    EXPECT_EQ(components(box.bottom()), (Three{10, 0, 20}));
    EXPECT_EQ(components(box.top()), (Three{10, 64, 20}));
    EXPECT_EQ(components(box.near()), (Three{10, 32, -3}));
    EXPECT_EQ(components(box.far()), (Three{10, 32, 83}));
}
