#include "game/LineQuality.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

using std::chrono::milliseconds;

constexpr client::Time start{std::chrono::hours(1)};

/// A second of a line: what was sent and came, of which how much was lost.
struct Second {
    std::uint64_t lostDatagrams = 0;
    std::uint64_t missedSnapshots = 0;
    double roundTrip = 20.0;
    double jitter = 1.0;
    double frame = 5.0;
};

class Line : public testing::Test {
  protected:
    LineQuality quality;
    LineQuality::Counts counts;
    client::Time now = start;

    /// Sixty snapshots and thirty datagrams, in frames of 10 ms.
    void pass(const Second& second) {
        const LineQuality::Counts before = counts;
        for (std::uint64_t i = 1; i <= 100; ++i) {
            now += milliseconds(10);
            counts.datagrams = before.datagrams + 30 * i / 100;
            counts.lostDatagrams = before.lostDatagrams + second.lostDatagrams * i / 100;
            counts.snapshots = before.snapshots + (60 - second.missedSnapshots) * i / 100;
            counts.missedSnapshots = before.missedSnapshots + second.missedSnapshots * i / 100;
            counts.roundTrip = second.roundTrip;
            counts.jitter = second.jitter;
            counts.frame = second.frame;
            counts.lastSnapshot = now;
            quality.add(now, counts);
        }
    }

    void pass(int seconds, const Second& second) {
        for (int i = 0; i < seconds; ++i)
            pass(second);
    }
};

} // namespace

TEST_F(Line, NothingIsSaidOfAGoodOne) {
    EXPECT_EQ(quality.words(), "") << "nor before anything is known";
    pass(10, {});
    EXPECT_EQ(quality.words(), "");
    EXPECT_DOUBLE_EQ(quality.lossShare(), 0.0);
}

TEST_F(Line, LossOfTheLastSecondsIsSaidInPercent) {
    pass(20, {});
    pass(5, {.missedSnapshots = 6});
    EXPECT_NEAR(quality.missedShare(), 0.1, 0.003) << "of five seconds, not of all";
    EXPECT_EQ(quality.words(), "bad line: 10 % lost");
    pass(6, {});
    EXPECT_EQ(quality.words(), "") << "it has got better";
}

TEST_F(Line, LossOfOwnDatagramsCountsToo) {
    pass(10, {.lostDatagrams = 6});
    EXPECT_NEAR(quality.lossShare(), 0.2, 0.01);
    EXPECT_EQ(quality.words(), "bad line: 20 % lost");
}

TEST_F(Line, LossThatTurnsOutToBeLatenessIsNoLoss) {
    pass(6, {});
    counts.lostDatagrams = 3;
    pass(5, {});
    counts.lostDatagrams = 0;
    pass(1, {});
    EXPECT_DOUBLE_EQ(quality.lossShare(), 0.0);
}

TEST_F(Line, ALongWayAndAnUnevenOneAreSaid) {
    pass(6, {.roundTrip = 180.0});
    EXPECT_EQ(quality.words(), "slow line: 180 ms there and back");
    pass(6, {.jitter = 30.0});
    EXPECT_EQ(quality.words(), "uneven line: 30 ms more or less");
}

TEST_F(Line, ABadMomentIsNoBadLine) {
    pass(6, {});
    pass(4, {.roundTrip = 400.0, .jitter = 90.0});
    EXPECT_EQ(quality.words(), "");
}

TEST_F(Line, WhatSlowFramesAddIsNoFaultOfTheLine) {
    pass(6, {.roundTrip = 180.0, .jitter = 60.0, .frame = 60.0});
    EXPECT_EQ(quality.words(), "");
}

TEST_F(Line, SilenceIsSaidBeforeAllElse) {
    pass(6, {.missedSnapshots = 30});
    quality.add(now + milliseconds(1500), counts);
    EXPECT_EQ(quality.words(), "no word from the room for 1.5 s");
}

TEST_F(Line, AFewDatagramsSayNothingAboutAShare) {
    counts.datagrams = 10;
    quality.add(now, counts);
    counts.datagrams = 20;
    counts.lostDatagrams = 5;
    counts.lastSnapshot = now;
    quality.add(now, counts);
    EXPECT_DOUBLE_EQ(quality.lossShare(), 0.0);
}

TEST_F(Line, ANewSessionCountsFromNothing) {
    pass(6, {.missedSnapshots = 30});
    quality.forget();
    EXPECT_EQ(quality.words(), "");
    counts = {};
    pass(6, {});
    EXPECT_EQ(quality.words(), "");
}
