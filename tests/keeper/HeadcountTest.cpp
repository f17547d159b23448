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
    std::optional<PlayerRange> pass(milliseconds time, double statesPerSecond,
                                    std::uint64_t answered) {
        now += time;
        counters.in += answered;
        counters.out += answered + static_cast<std::uint64_t>(
                                       statesPerSecond * static_cast<double>(time.count()) / 1000);
        headcount.take(counters, now);
        return headcount.players();
    }
};

constexpr milliseconds stretch{2000};
constexpr PlayerRange nobody{0, 0};

} // namespace

TEST(NetworkHeadcount, CountsThePlayersWhoAreSentStates) {
    Counters counters;
    EXPECT_FALSE(counters.headcount.players());
    EXPECT_EQ(counters.pass(stretch, 0.0, 0), (PlayerRange{0, 0}));
    for (const int players : {1, 2, 3, 4}) {
        EXPECT_EQ(counters.pass(stretch, 62.0 * players, 0), (PlayerRange{1, 4}));
        EXPECT_EQ(counters.pass(stretch, 58.0 * players, 0), (PlayerRange{1, 4}))
            << "in coarse hours";
    }
}

TEST(NetworkHeadcount, PlayerWhoChatsIsNoCrowd) {
    for (const double chats : {31.0, 62.0, 186.0, 1000.0}) {
        Counters counters;
        // Each draws a receipt, and goes to all players: to the one who wrote it.
        EXPECT_EQ(counters.pass(stretch, 62.0 + chats, static_cast<std::uint64_t>(2 * chats)),
                  (PlayerRange{1, 4}))
            << chats;
        Headcount headcount;
        headcount.joined();
        for (int times = 0; times < 10; ++times)
            headcount.compare(counters.headcount.players());
        EXPECT_EQ(headcount.players(), 1) << chats;
        EXPECT_EQ(headcount.corrections(), 0u) << chats;
    }
}

TEST(NetworkHeadcount, RoomThatTicksSlowlyMayHoldMore) {
    Counters counters;
    EXPECT_EQ(counters.pass(stretch, 3 * 40.0, 0), (PlayerRange{1, 4}));
    EXPECT_EQ(counters.pass(stretch, 4 * 31.0, 0), (PlayerRange{1, 4})) << "older than three days";
    EXPECT_EQ(counters.pass(stretch, 2 * 12.0, 0), (PlayerRange{0, 2}));
    EXPECT_EQ(counters.pass(stretch, 30.0, 0)->least, 0);
    EXPECT_EQ(counters.pass(stretch, 31.0, 0)->least, 1);
    EXPECT_EQ(counters.pass(stretch, 9.0, 0), (PlayerRange{0, 0}));
}

TEST(NetworkHeadcount, WhatIsAnsweredDoesNotCount) {
    Counters counters;
    EXPECT_EQ(counters.pass(stretch, 0.0, 100'000), (PlayerRange{0, 0}));
    EXPECT_EQ(counters.pass(stretch, 3 * 62.0, 480), (PlayerRange{1, 4}));
}

TEST(NetworkHeadcount, NeitherNoticesNorUnansweredDatagramsMakePlayers) {
    Counters counters;
    EXPECT_EQ(counters.pass(stretch, 62.0 + 20.0, 0)->least, 1);
    counters.counters.in += 500;
    EXPECT_EQ(counters.pass(stretch, 0.0, 0), (PlayerRange{0, 0}));
    EXPECT_EQ(counters.pass(stretch, 1e6, 0), (PlayerRange{1, 4})) << "no more than a room holds";
}

TEST(NetworkHeadcount, WaitsForAStretchThatIsLongEnough) {
    Counters counters;
    EXPECT_FALSE(counters.pass(milliseconds(1400), 62.0, 0));
    EXPECT_EQ(counters.pass(milliseconds(600), 62.0, 0)->least, 1);
    EXPECT_EQ(counters.pass(milliseconds(100), 1000.0, 0)->least, 1) << "until the next is over";
}

TEST(NetworkHeadcount, BeginsAnewWhereItCannotCount) {
    Counters counters;
    EXPECT_EQ(counters.pass(stretch, 62.0, 0), (PlayerRange{1, 4}));
    counters.headcount.take(std::nullopt, counters.now);
    EXPECT_FALSE(counters.headcount.players());
    EXPECT_FALSE(counters.pass(stretch, 62.0, 0));
    EXPECT_EQ(counters.pass(stretch, 62.0, 0), (PlayerRange{1, 4}));
    counters.counters = {};
    EXPECT_FALSE(counters.pass(stretch, 62.0, 0)) << "counters that fell";
    counters.counters.in = 100;
    EXPECT_TRUE(counters.pass(stretch, 62.0, 0));
    counters.counters.in = 99;
    EXPECT_FALSE(counters.pass(stretch, 62.0, 0)) << "one of them";
    counters.counters.out = 0;
    EXPECT_FALSE(counters.pass(stretch, 62.0, 0)) << "the other";
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

TEST(Headcount, TakesWhatTheNetworkSaysAfterThreeContradictionsInARow) {
    Headcount headcount;
    headcount.joined();
    headcount.joined();
    for (int times = 0; times < 2; ++times) {
        headcount.compare(nobody);
        EXPECT_EQ(headcount.players(), 2);
    }
    headcount.compare(nobody);
    EXPECT_EQ(headcount.players(), 0);
    EXPECT_EQ(headcount.corrections(), 1u);
    headcount.compare(nobody);
    headcount.joined();
    EXPECT_EQ(headcount.players(), 1) << "notices count on from there";
}

TEST(Headcount, RoomWithPlayersWhoAreSentNothingSeemsToHang) {
    Headcount headcount;
    for (int times = 0; times < 5; ++times)
        headcount.compare(nobody);
    EXPECT_FALSE(headcount.seemsToHang()) << "an empty room sends nothing";
    headcount.joined();
    headcount.compare(nobody);
    headcount.compare(nobody);
    EXPECT_FALSE(headcount.seemsToHang());
    headcount.compare(nobody);
    EXPECT_TRUE(headcount.seemsToHang());
    headcount.compare(nobody);
    headcount.compare(std::nullopt);
    EXPECT_TRUE(headcount.seemsToHang());
    headcount.compare(PlayerRange{1, 4});
    EXPECT_FALSE(headcount.seemsToHang()) << "it ticks again";
    headcount.joined();
    for (int times = 0; times < 3; ++times)
        headcount.compare(nobody);
    EXPECT_TRUE(headcount.seemsToHang());
    headcount.reset();
    EXPECT_FALSE(headcount.seemsToHang());
    headcount.joined();
    headcount.joined();
    for (int times = 0; times < 3; ++times)
        headcount.compare(PlayerRange{0, 1});
    EXPECT_EQ(headcount.corrections(), 3u);
    EXPECT_FALSE(headcount.seemsToHang()) << "it ticks slowly";
}

TEST(Headcount, IsCorrectedNoFurtherThanItMust) {
    Headcount headcount;
    for (int times = 0; times < 3; ++times)
        headcount.compare(PlayerRange{2, 4});
    EXPECT_EQ(headcount.players(), 2);
    headcount.joined();
    headcount.joined();
    for (int times = 0; times < 3; ++times)
        headcount.compare(PlayerRange{0, 3});
    EXPECT_EQ(headcount.players(), 3);
    EXPECT_EQ(headcount.corrections(), 2u);
}

TEST(Headcount, InDoubtNobodysMatchEnds) {
    Headcount headcount;
    headcount.compare(PlayerRange{3, 4});
    EXPECT_EQ(headcount.players(), 3);
    headcount.compare(nobody);
    EXPECT_EQ(headcount.players(), 0);
    headcount.joined();
    headcount.joined();
    headcount.compare(nobody);
    EXPECT_EQ(headcount.players(), 2);
}

TEST(Headcount, ContradictionsThatDoNotLastChangeNothing) {
    Headcount headcount;
    headcount.joined();
    for (int times = 0; times < 10; ++times) {
        headcount.compare(PlayerRange{2, 4});
        headcount.compare(PlayerRange{2, 4});
        headcount.compare(PlayerRange{1, 4});
    }
    headcount.compare(PlayerRange{2, 4});
    headcount.compare(PlayerRange{2, 4});
    headcount.compare(std::nullopt);
    headcount.compare(PlayerRange{2, 4});
    headcount.compare(PlayerRange{2, 4});
    // Who joins in the middle of a stretch is sent half its states.
    headcount.joined();
    EXPECT_EQ(headcount.players(), 2);
    headcount.compare(PlayerRange{1, 1});
    headcount.compare(PlayerRange{2, 4});
    EXPECT_EQ(headcount.players(), 2);
    EXPECT_EQ(headcount.corrections(), 0u);
}
