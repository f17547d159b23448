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

/// A line whose room takes records, at any moment between two ticks.
struct Records : Ticks {
    Chance chance = Chance(1);

    Records() { next(0.0); }

    /// Records take `delay` to the room, and then act in its next tick.
    void take(Milliseconds delay, int count = 1) {
        for (int i = 0; i < count; ++i) {
            next(0.0);
            line.acted(now - delay - chance.between(0.0, period));
        }
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

TEST(ArrivalLine, LearnsLatenessSlowly) {
    Ticks ticks;
    ticks.next(0.0);
    ticks.next(0.0);
    ticks.next(3.2);
    EXPECT_NEAR(ticks.line.lateness(), 0.1, 1e-9) << "by a thirty-second of each";
    ticks.next(1000.0);
    EXPECT_NEAR(ticks.line.lateness(), 0.1 + 6.0 / 32.0, 0.1) << "no single one tells much";
}

TEST(ArrivalLine, RemembersTheMoreArrivalsTheLaterTheyCome) {
    const auto memoryAt = [](Milliseconds late) {
        Ticks ticks;
        for (int i = 0; i < 400; ++i)
            ticks.next(i % 2 == 0 ? 0.0 : 2.0 * late);
        int snapshots = 0;
        do {
            ticks.next(12.0 + 2.0 * late);
            ++snapshots;
        } while (ticks.line.due() < ticks.now + 11.9 && snapshots < 50);
        return snapshots;
    };
    EXPECT_EQ(memoryAt(0.0), 2);
    EXPECT_GE(memoryAt(0.5), 4);
    EXPECT_LE(memoryAt(0.5), 12);
    EXPECT_GE(memoryAt(1.0), 8);
    EXPECT_GE(memoryAt(6.0), 14);
}

TEST(ArrivalLine, DrawsAnewBeyondHalfASecond) {
    for (const auto& [step, isAnew] : {std::pair(450.0, false), {550.0, true}}) {
        Ticks ticks;
        for (int i = 0; i < 100; ++i)
            ticks.next(0.0);
        ticks.now += step;
        ticks.next(0.0);
        ticks.next(0.0);
        EXPECT_EQ(std::abs(ticks.line.ticksSince(ticks.now)) < 0.01, isAnew) << step;
    }
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
    for (int i = 0; i < 2; ++i)
        ticks.next(0.0);
    EXPECT_NEAR(ticks.line.ticksSince(ticks.now), 100.0 / period / 2.0, 0.1) << "by half";
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
    for (const Milliseconds guess : {0.0, 250.0}) {
        Records records;
        records.line.guessDelay(guess);
        EXPECT_EQ(records.line.delay(), guess);
        EXPECT_FALSE(records.line.knowsDelay());
        EXPECT_GT(records.line.spread(), 100.0);
        records.take(70.0);
        EXPECT_TRUE(records.line.knowsDelay());
        EXPECT_NEAR(records.line.delay(), 70.0, period) << "at once from the first record";
        EXPECT_NEAR(records.line.spread(), period / std::sqrt(12.0), 1e-6);
        records.take(70.0, 200);
        EXPECT_NEAR(records.line.delay(), 70.0, 0.4);
        EXPECT_EQ(records.line.spread(), 1.5);
    }
}

TEST(ArrivalLine, KeepsAGuessThatFits) {
    Records records;
    records.line.guessDelay(70.3);
    records.take(70.0, 4);
    EXPECT_EQ(records.line.delay(), 70.3);
    records.take(70.0, 200);
    EXPECT_NEAR(records.line.delay(), 70.0, 0.4);
}

TEST(ArrivalLine, PassesSingleRecordsThatWereHeldUp) {
    Records records;
    records.take(50.0, 200);
    for (int i = 0; i < 3; ++i)
        records.take(130.0);
    EXPECT_NEAR(records.line.delay(), 50.0, 0.5);
    EXPECT_GT(records.line.spread(), 1.5);
    records.take(50.0, 128);
    EXPECT_EQ(records.line.spread(), 1.5) << "in the end they are forgotten";
}

TEST(ArrivalLine, FollowsALongerWayAndAShorterOne) {
    Records records;
    for (const Milliseconds delay : {50.0, 150.0, 30.0}) {
        records.take(delay, 140);
        EXPECT_NEAR(records.line.delay(), delay, 0.5);
    }
}

TEST(ArrivalLine, TakesTheMeanOfJitteringRecords) {
    Chance chance(2);
    Records records;
    double sum = 0.0;
    double spreads = 0.0;
    for (int i = 0; i < 2200; ++i) {
        records.take(chance.between(70.0, 80.0));
        if (i >= 200) {
            EXPECT_NEAR(records.line.delay(), 75.0, 2.5);
            sum += records.line.delay();
            spreads += records.line.spread();
        }
    }
    EXPECT_NEAR(sum / 2000.0, 75.0, 0.5);
    EXPECT_NEAR(spreads / 2000.0, 10.0 / std::sqrt(12.0), 0.5);
}

TEST(ArrivalLine, BelievesNoVeryLongGuess) {
    ArrivalLine line;
    line.guessDelay(1e9);
    EXPECT_EQ(line.delay(), 300.0);
    line.guessDelay(-5.0);
    EXPECT_EQ(line.delay(), 0.0);
}
