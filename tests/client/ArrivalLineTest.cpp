#include "client/ArrivalLine.h"
#include "common/Chance.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::client;

namespace {

constexpr Milliseconds period = 16.0;

/// A line whose snapshots come `at` after their ticks.
struct Ticks {
    ArrivalLine line;
    std::int64_t tick = 0;
    Milliseconds now = 1e6;

    void next(Milliseconds late, int ticks = 1) {
        tick += ticks;
        now += ticks * period;
        line.arrival(tick, tick - ticks, now + late, period);
    }
};

} // namespace

TEST(ArrivalLine, HasTheEarliestArrivalsDue) {
    Ticks ticks;
    EXPECT_FALSE(ticks.line.hasArrivals());
    ticks.next(0.0);
    EXPECT_TRUE(ticks.line.hasArrivals());
    EXPECT_EQ(ticks.line.due(), ticks.now);
    EXPECT_EQ(ticks.line.period(), period);
    ticks.next(9.0);
    EXPECT_EQ(ticks.line.due(), ticks.now);
    ticks.next(3.0, 4);
    EXPECT_EQ(ticks.line.due(), ticks.now);
    ticks.next(-2.0);
    EXPECT_EQ(ticks.line.due(), ticks.now - 2.0);
}

TEST(ArrivalLine, RenumbersWhatItBelieved) {
    Ticks ticks;
    ticks.next(0.0);
    ticks.next(0.0);
    // The snapshot before was in truth that of the next tick.
    ticks.line.arrival(10, 9, ticks.now + period, period);
    EXPECT_EQ(ticks.line.due(), ticks.now + period);
}

TEST(ArrivalLine, ForgetsAStallSoonOnAnEvenLine) {
    Ticks ticks;
    for (int i = 0; i < 200; ++i)
        ticks.next(0.0);
    int snapshots = 0;
    do {
        ticks.next(12.0);
        ++snapshots;
    } while (ticks.line.due() < ticks.now + 11.9 && snapshots < 50);
    EXPECT_GE(snapshots, 2);
    EXPECT_LE(snapshots, 8);
}

TEST(ArrivalLine, KeepsToTheEarliestOnAJitteringLine) {
    Chance chance(1);
    Ticks ticks;
    for (int i = 0; i < 2000; ++i) {
        ticks.next(chance.between(0.0, 20.0));
        if (i > 200) {
            EXPECT_LT(ticks.line.due() - ticks.now, 12.0);
        }
    }
    EXPECT_NEAR(ticks.line.lateness(), 9.0, 2.5);
    EXPECT_NEAR(ticks.line.latenessSpread(), 20.0 / std::sqrt(12.0), 1.5);
}

TEST(ArrivalLine, HasASpreadEvenIfNothingVaries) {
    Ticks ticks;
    for (int i = 0; i < 500; ++i)
        ticks.next(0.0);
    EXPECT_EQ(ticks.line.latenessSpread(), 1.5);
    EXPECT_EQ(ticks.line.lateness(), 0.0);
}

TEST(ArrivalLine, DrawsAStallAsASmallChangeOfSpeed) {
    Ticks ticks;
    for (int i = 0; i < 100; ++i)
        ticks.next(0.0);
    double farthest = 0.0;
    for (int i = 0; i < 200; ++i) {
        const double before = ticks.line.ticksSince(ticks.now + 20.0);
        ticks.next(10.0);
        const double after = ticks.line.ticksSince(ticks.now - period + 20.0) + 1.0;
        farthest = std::max(farthest, std::abs(after - before));
    }
    // A sixteenth of ten milliseconds, in ticks.
    EXPECT_GT(farthest, 0.03);
    EXPECT_LT(farthest, 0.05);
    EXPECT_NEAR(ticks.line.ticksSince(ticks.now + 10.0), 0.0, 0.01);
}

TEST(ArrivalLine, MakesUpForALargeStepFirmlyAndForAVeryLargeOneAtOnce) {
    Ticks ticks;
    for (int i = 0; i < 100; ++i)
        ticks.next(0.0);
    ticks.now += 100.0;
    for (int i = 0; i < 16; ++i)
        ticks.next(0.0);
    EXPECT_NEAR(ticks.line.ticksSince(ticks.now), 0.0, 0.5);

    ticks.now += 2000.0;
    for (int i = 0; i < 16; ++i)
        ticks.next(0.0);
    EXPECT_NEAR(ticks.line.ticksSince(ticks.now), 0.0, 0.01);
    EXPECT_NEAR(ticks.line.ticksSince(ticks.now + period), 1.0, 0.01);
}

TEST(ArrivalLine, LearnsHowLongRecordsTake) {
    Chance chance(1);
    Ticks ticks;
    ticks.next(0.0);
    ticks.line.guessDelay(250.0);
    EXPECT_EQ(ticks.line.delay(), 250.0);
    EXPECT_GT(ticks.line.spread(), 100.0);
    // A record that takes 70 ms acts in the tick after that, 0 to 16 ms later.
    for (int i = 0; i < 400; ++i) {
        ticks.next(0.0);
        for (int record = 0; record < 2; ++record)
            ticks.line.acted(ticks.now - 70.0 - chance.between(0.0, period));
        if (i == 0) {
            EXPECT_NEAR(ticks.line.delay(), 70.0, period / 2.0) << "at once from the first record";
        }
    }
    EXPECT_NEAR(ticks.line.delay(), 70.0, 2.0);
    EXPECT_LT(ticks.line.spread(), 2.5);
}

TEST(ArrivalLine, FollowsALongerWay) {
    Ticks ticks;
    ticks.next(0.0);
    for (int i = 0; i < 100; ++i) {
        ticks.next(0.0);
        ticks.line.acted(ticks.now - 50.0);
    }
    EXPECT_NEAR(ticks.line.delay(), 50.0 - period / 2.0, 0.1);
    const Milliseconds spread = ticks.line.spread();
    ticks.line.acted(ticks.now - 150.0);
    EXPECT_LT(ticks.line.delay(), 45.0) << "one record may be misread";
    for (int i = 0; i < 150; ++i)
        ticks.line.acted(ticks.now - 150.0);
    EXPECT_NEAR(ticks.line.delay(), 150.0 - period / 2.0, 5.0);
    EXPECT_GT(ticks.line.spread(), spread);
}

TEST(ArrivalLine, BelievesNoVeryLongGuess) {
    ArrivalLine line;
    line.guessDelay(1e9);
    EXPECT_EQ(line.delay(), 300.0);
    line.guessDelay(-5.0);
    EXPECT_EQ(line.delay(), 0.0);
}
