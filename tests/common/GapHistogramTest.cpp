#include "common/GapHistogram.h"

#include <gtest/gtest.h>
#include <random>

using namespace drench;
using std::chrono::microseconds;
using std::chrono::milliseconds;

TEST(GapHistogram, WithoutGapsKnowsNoLength) {
    const GapHistogram gaps;
    EXPECT_EQ(gaps.count(), 0u);
    EXPECT_EQ(gaps.percentile(0.5), std::nullopt);
    EXPECT_EQ(gaps.longest(), std::nullopt);
}

TEST(GapHistogram, PercentileIsTheNearestRank) {
    GapHistogram gaps;
    for (int i = 1; i <= 100; ++i)
        gaps.add(milliseconds(i));
    EXPECT_EQ(gaps.percentile(0.50), 50.0);
    EXPECT_EQ(gaps.percentile(0.99), 99.0);
    EXPECT_EQ(gaps.percentile(1.00), 100.0);
    EXPECT_EQ(gaps.percentile(0.00), 1.0);

    GapHistogram one;
    one.add(milliseconds(16));
    EXPECT_EQ(one.percentile(0.01), 16.0);
    EXPECT_EQ(one.percentile(0.99), 16.0);
}

TEST(GapHistogram, OrderDoesNotMatter) {
    GapHistogram gaps;
    for (const int i : {30, 10, 20, 40})
        gaps.add(milliseconds(i));
    EXPECT_EQ(gaps.percentile(0.25), 10.0);
    EXPECT_EQ(gaps.percentile(0.5), 20.0);
    EXPECT_EQ(gaps.percentile(0.75), 30.0);
}

TEST(GapHistogram, RoundsToTenthsButTheLongest) {
    GapHistogram gaps;
    gaps.add(microseconds(16049));
    gaps.add(microseconds(16051));
    EXPECT_EQ(gaps.percentile(0.5), 16.0);
    EXPECT_EQ(gaps.percentile(1.0), 16.1);
    EXPECT_DOUBLE_EQ(gaps.longest().value(), 16.051);
}

TEST(GapHistogram, NegativeGapIsNone) {
    GapHistogram gaps;
    gaps.add(milliseconds(-5));
    EXPECT_EQ(gaps.count(), 1u);
    EXPECT_EQ(gaps.percentile(0.5), 0.0);
    EXPECT_EQ(gaps.longest(), 0.0);
}

TEST(GapHistogram, SumIsAsIfAllHadBeenAddedToOne) {
    GapHistogram a;
    GapHistogram b;
    GapHistogram both;
    std::mt19937 random(7);
    for (int i = 0; i < 1000; ++i) {
        const microseconds gap(random() % 40000);
        (i % 3 == 0 ? a : b).add(gap);
        both.add(gap);
    }
    a.add(b);
    EXPECT_EQ(a.count(), 1000u);
    EXPECT_EQ(a.longest(), both.longest());
    for (const double share : {0.0, 0.01, 0.3, 0.5, 0.9, 0.99, 1.0})
        EXPECT_EQ(a.percentile(share), both.percentile(share)) << share;
}
