#include "common/Chance.h"

#include <gtest/gtest.h>
#include <set>

using namespace drench;

TEST(Chance, DrawsThePublishedNumbers) {
    // The reference sequence of SplitMix64 for this seed.
    Chance chance(1234567);
    EXPECT_EQ(chance.bits(), 6457827717110365317u);
    EXPECT_EQ(chance.bits(), 3203168211198807973u);
    EXPECT_EQ(chance.bits(), 9817491932198370423u);
    EXPECT_EQ(chance.bits(), 4593380528125082431u);
    EXPECT_EQ(chance.bits(), 16408922859458223821u);
}

TEST(Chance, SharesFillTheUnitIntervalEvenly) {
    Chance chance(1);
    int tenths[10] = {};
    constexpr int draws = 100000;
    for (int i = 0; i < draws; ++i) {
        const double share = chance.share();
        ASSERT_GE(share, 0.0);
        ASSERT_LT(share, 1.0);
        ++tenths[static_cast<int>(share * 10.0)];
    }
    for (const int count : tenths)
        EXPECT_NEAR(count, draws / 10, 500);
}

TEST(Chance, BelowGivesEveryNumberUpToTheLimitAndNoOther) {
    Chance chance(2);
    std::set<int> seen;
    for (int i = 0; i < 1000; ++i)
        seen.insert(chance.below(7));
    EXPECT_EQ(seen, (std::set<int>{0, 1, 2, 3, 4, 5, 6}));
}

TEST(Chance, BetweenStaysBetween) {
    Chance chance(3);
    double lowest = 100.0;
    double highest = -100.0;
    for (int i = 0; i < 10000; ++i) {
        const double drawn = chance.between(-2.0, 6.0);
        lowest = std::min(lowest, drawn);
        highest = std::max(highest, drawn);
    }
    EXPECT_GE(lowest, -2.0);
    EXPECT_NEAR(lowest, -2.0, 0.01);
    EXPECT_LT(highest, 6.0);
    EXPECT_NEAR(highest, 6.0, 0.01);
}

TEST(Chance, HappensAsOftenAsItsProbabilitySays) {
    Chance chance(4);
    int happened = 0;
    for (int i = 0; i < 100000; ++i)
        happened += chance.happens(0.3);
    EXPECT_NEAR(happened, 30000, 600);
}

TEST(Chance, WhatHasNoChanceNeverHappensNotEvenAtTheLowestShare) {
    Chance drawn(4);
    Chance again(4);
    for (int i = 0; i < 100; ++i)
        EXPECT_FALSE(again.happens(drawn.share())) << "a share below its own";
}

TEST(Chance, BellHasMeanZeroAndVarianceOne) {
    Chance chance(5);
    constexpr int draws = 100000;
    double sum = 0.0;
    double squares = 0.0;
    int beyondTwo = 0;
    for (int i = 0; i < draws; ++i) {
        const double drawn = chance.bell();
        ASSERT_LE(std::abs(drawn), 6.0);
        sum += drawn;
        squares += drawn * drawn;
        beyondTwo += std::abs(drawn) > 2.0;
    }
    EXPECT_NEAR(sum / draws, 0.0, 0.015);
    EXPECT_NEAR(squares / draws, 1.0, 0.02);
    EXPECT_NEAR(beyondTwo / double(draws), 0.0455, 0.004);
}

TEST(Chance, SplitSourcesGoDifferentWays) {
    Chance chance(6);
    Chance first = chance.split();
    Chance second = chance.split();
    EXPECT_NE(first.bits(), second.bits());
    Chance again(6);
    EXPECT_EQ(again.split().bits(), Chance(6).split().bits());
}
