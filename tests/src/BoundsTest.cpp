#include "src/Bounds.h"
#include "tests/support/CapturedOutput.h"

#include <array>
#include <bit>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>

namespace {

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

using Eight = std::array<float, 8>;

/// The fields as they lie in memory: l, r, b, t, w, h, halfW, halfH.
Eight fields(const Bounds& bounds) {
    return std::bit_cast<Eight>(bounds);
}

} // namespace

TEST(Bounds, FromTheLowerLeftCornerAndASize) {
    EXPECT_EQ(fields(Bounds(vec2(1, 2), 4, 6)), (Eight{1, 5, 2, 8, 4, 6, 2, 3}));
}

TEST(Bounds, FromItsEdges) {
    EXPECT_EQ(fields(Bounds(0, 10, -1, 5)), (Eight{0, 10, -1, 5, 10, 6, 5, 3}));
}

TEST(Bounds, SizeStaysAsGivenWhereAnEdgeRounds) {
    const Bounds bounds(vec2(16777216, 0), 1, 1);
    EXPECT_EQ(bounds.r, 16777216);
    EXPECT_EQ(bounds.w, 1);
    EXPECT_EQ(bounds.halfW, 0.5f);
}

TEST(Bounds, EdgesAndCornersAreInside) {
    const Bounds bounds(0, 10, 0, 5);
    for (vec2 p : {vec2(0, 0), vec2(10, 5), vec2(10, 0), vec2(0, 5), vec2(3, 5), vec2(4, 2)})
        EXPECT_TRUE(bounds.contains(p)) << p;
}

TEST(Bounds, JustBeyondAnyEdgeIsOutside) {
    const Bounds bounds(0, 10, 0, 5);
    for (vec2 p : {vec2(10.001f, 2), vec2(-0.001f, 2), vec2(5, -0.001f), vec2(5, 5.001f)})
        EXPECT_FALSE(bounds.contains(p)) << p;
}

TEST(Bounds, NaNIsNeverInside) {
    const Bounds bounds(0, 10, 0, 5);
    EXPECT_FALSE(bounds.contains(vec2(NaN, 2)));
    EXPECT_FALSE(bounds.contains(vec2(2, NaN)));
}

TEST(Bounds, ReversedEdgesAreKeptAndContainNothing) {
    const Bounds reversed(5, 0, 0, 5);
    EXPECT_EQ(fields(reversed), (Eight{5, 0, 0, 5, -5, 5, -2.5f, 2.5f}));
    const Bounds negativeSize(vec2(0, 0), 4, -6);
    EXPECT_EQ(fields(negativeSize), (Eight{0, 4, 0, -6, 4, -6, 2, -3}));
    for (vec2 p : {vec2(0, 0), vec2(5, 0), vec2(2.5f, 2.5f), vec2(2, -3), vec2(2, -6)}) {
        EXPECT_FALSE(reversed.contains(p)) << p;
        EXPECT_FALSE(negativeSize.contains(p)) << p;
    }
}

TEST(Bounds, IsWrittenAsTwoLinesWithoutTheHalfSizes) {
    std::ostringstream out;
    EXPECT_EQ(&(out << Bounds(0, 10, 0, 5)), &out);
    EXPECT_EQ(out.str(), "l,r,b,t: 0, 10, 0, 5\nw,h: 10, 5\n");
}

TEST(Bounds, BothLinesAreFlushed) {
    FlushCounter buffer;
    std::ostream out(&buffer);
    out << Bounds(0, 10, 0, 5);
    EXPECT_EQ(buffer.flushes, 2);
}
