#include "keeper/Headcount.h"

#include <gtest/gtest.h>

using namespace drench::keeper;
using std::chrono::milliseconds;

namespace {

/// A network namespace in which a room and its keeper are alone.
struct Counters {
    NetworkHeadcount headcount;
    Time now;
    UdpCounters counters{1000, 5000};

    Counters() { headcount.take(counters, now); }

    /// Lets time pass in which players are sent states, and datagrams draw receipts.
    std::optional<int> pass(milliseconds time, double statesPerSecond, std::uint64_t answered) {
        now += time;
        counters.in += answered;
        counters.out += answered + static_cast<std::uint64_t>(
                                       statesPerSecond * static_cast<double>(time.count()) / 1000);
        headcount.take(counters, now);
        return headcount.players();
    }
};

constexpr milliseconds stretch{2000};

} // namespace

TEST(NetworkHeadcount, CountsThePlayersWhoAreSentStates) {
    Counters counters;
    EXPECT_FALSE(counters.headcount.players());
    for (const int players : {0, 1, 2, 3, 4, 0}) {
        EXPECT_EQ(counters.pass(stretch, 62.0 * players, 0), players);
        EXPECT_EQ(counters.pass(stretch, 58.0 * players, 0), players) << "in coarse hours";
    }
}

TEST(NetworkHeadcount, WhatIsAnsweredDoesNotCount) {
    Counters counters;
    EXPECT_EQ(counters.pass(stretch, 0.0, 100'000), 0);
    EXPECT_EQ(counters.pass(stretch, 3 * 62.0, 480), 3);
}

TEST(NetworkHeadcount, NeitherNoticesNorUnansweredDatagramsMakePlayers) {
    Counters counters;
    EXPECT_EQ(counters.pass(stretch, 10.0, 0), 0);
    counters.counters.in += 500;
    EXPECT_EQ(counters.pass(stretch, 0.0, 0), 0);
    EXPECT_EQ(counters.pass(stretch, 1e6, 0), 4) << "no more than a room holds";
}

TEST(NetworkHeadcount, WaitsForAStretchThatIsLongEnough) {
    Counters counters;
    EXPECT_FALSE(counters.pass(milliseconds(1400), 62.0, 0));
    EXPECT_EQ(counters.pass(milliseconds(600), 62.0, 0), 1);
    EXPECT_EQ(counters.pass(milliseconds(100), 1000.0, 0), 1) << "until the next is over";
}

TEST(NetworkHeadcount, BeginsAnewWhereItCannotCount) {
    Counters counters;
    EXPECT_EQ(counters.pass(stretch, 62.0, 0), 1);
    counters.headcount.take(std::nullopt, counters.now);
    EXPECT_FALSE(counters.headcount.players());
    EXPECT_FALSE(counters.pass(stretch, 62.0, 0));
    EXPECT_EQ(counters.pass(stretch, 62.0, 0), 1);
    counters.counters = {};
    EXPECT_FALSE(counters.pass(stretch, 62.0, 0)) << "counters that fell";
}

TEST(Headcount, FollowsTheNotices) {
    Headcount headcount;
    EXPECT_EQ(headcount.players(), 0);
    headcount.left();
    EXPECT_EQ(headcount.players(), 0);
    for (const int players : {1, 2, 3, 4, 4}) {
        headcount.joined();
        EXPECT_EQ(headcount.players(), players);
    }
    headcount.left();
    EXPECT_EQ(headcount.players(), 3);
    headcount.reset();
    EXPECT_EQ(headcount.players(), 0);
    EXPECT_EQ(headcount.corrections(), 0u);
}

TEST(Headcount, TakesTheNetworksNumberAfterThreeContradictionsInARow) {
    Headcount headcount;
    headcount.joined();
    headcount.joined();
    for (int times = 0; times < 2; ++times) {
        headcount.compare(0);
        EXPECT_EQ(headcount.players(), 2);
    }
    headcount.compare(0);
    EXPECT_EQ(headcount.players(), 0);
    EXPECT_EQ(headcount.corrections(), 1u);
    headcount.compare(0);
    headcount.joined();
    EXPECT_EQ(headcount.players(), 1) << "notices count on from there";
}

TEST(Headcount, InDoubtNobodysMatchEnds) {
    Headcount headcount;
    headcount.compare(3);
    EXPECT_EQ(headcount.players(), 3);
    headcount.compare(0);
    EXPECT_EQ(headcount.players(), 0);
    headcount.joined();
    headcount.joined();
    headcount.compare(1);
    EXPECT_EQ(headcount.players(), 2);
}

TEST(Headcount, ContradictionsThatDoNotLastChangeNothing) {
    Headcount headcount;
    headcount.joined();
    for (int times = 0; times < 10; ++times) {
        headcount.compare(2);
        headcount.compare(2);
        headcount.compare(1);
    }
    headcount.compare(2);
    headcount.compare(2);
    headcount.compare(std::nullopt);
    headcount.compare(2);
    headcount.compare(2);
    // A join in the middle of a stretch is sent half its states.
    headcount.joined();
    EXPECT_EQ(headcount.players(), 2);
    headcount.compare(1);
    headcount.compare(2);
    EXPECT_EQ(headcount.players(), 2);
    EXPECT_EQ(headcount.corrections(), 0u);
}
