#include "src/Timing.h"

#include <chrono>
#include <gtest/gtest.h>
#include <limits>
#include <thread>

namespace {

const long firstReading = getCurrentMillisecond();

} // namespace

TEST(Clock, StartsAtTheProcessesFirstReadingNotAtBoot) {
    EXPECT_GE(firstReading, 0);
    EXPECT_LT(firstReading, 100);
}

TEST(Clock, NeverDecreasesAndRepeatsItselfWithinAMillisecond) {
    int repeated = 0;
    long last = getCurrentMillisecond();
    for (int i = 0; i < 100000; ++i) {
        const long now = getCurrentMillisecond();
        ASSERT_GE(now, last);
        repeated += now == last;
        last = now;
    }
    EXPECT_GT(repeated, 0);
}

TEST(Clock, CountsMilliseconds) {
    using std::chrono::steady_clock;
    const auto outerStart = steady_clock::now();
    const long start = getCurrentMillisecond();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const long elapsed = getCurrentMillisecond() - start;
    const std::chrono::duration<double, std::milli> atMost = steady_clock::now() - outerStart;
    EXPECT_GE(elapsed, 5);
    EXPECT_LE(static_cast<double>(elapsed), atMost.count() + 1.0);
}

TEST(Clock, SecondsAreMillisecondsTruncated) {
    // Past the half, so that rounding would show.
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    const long before = getCurrentMillisecond();
    const long seconds = getCurrentSecond();
    const long after = getCurrentMillisecond();
    EXPECT_GE(seconds, before / 1000);
    EXPECT_LE(seconds, after / 1000);
}

TEST(TickPacing, TickIsSixteenAndTwoThirdsInSinglePrecision) {
    EXPECT_EQ(static_cast<double>(tickMilliseconds), 16.6666660308837890625);
}

TEST(TickPacing, IdleTickSleepsSixteenNotSeventeen) {
    for (long start : {0L, 1L, 1000L, 123457L, (1L << 23) - 17})
        EXPECT_EQ(millisecondsLeftInTick(start, start), 16) << start;
}

TEST(TickPacing, RemainderIsTruncatedToWholeMilliseconds) {
    EXPECT_EQ(millisecondsLeftInTick(1000, 1001), 15);
    EXPECT_EQ(millisecondsLeftInTick(1000, 1015), 1);
    EXPECT_EQ(millisecondsLeftInTick(1000, 1016), 0) << "two thirds of a millisecond";
}

TEST(TickPacing, OverrunLeavesNothingToSleepAndIsTruncatedTowardZero) {
    EXPECT_EQ(millisecondsLeftInTick(1000, 1017), 0);
    EXPECT_EQ(millisecondsLeftInTick(1000, 1018), -1);
    EXPECT_EQ(millisecondsLeftInTick(1000, 6000), -4983);
}

TEST(TickPacing, EachTickIsTimedFromItsOwnStart) {
    EXPECT_EQ(millisecondsLeftInTick(6000, 6000), 16) << "after an overrun of five seconds";
}

TEST(TickPacing, FromTwoHoursOnTheTargetRoundsToWholeMilliseconds) {
    constexpr long twoHours = 1L << 23;
    EXPECT_EQ(millisecondsLeftInTick(twoHours, twoHours), 17);
    EXPECT_EQ(millisecondsLeftInTick(twoHours, twoHours + 16), 1);
}

TEST(TickPacing, FromFourHoursOnTimesComeInStepsOfTwoMilliseconds) {
    constexpr long fourHours = 1L << 24;
    EXPECT_EQ(millisecondsLeftInTick(fourHours, fourHours), 16);
    EXPECT_EQ(millisecondsLeftInTick(fourHours, fourHours + 1), 16) << "half way rounds to even";
    EXPECT_EQ(millisecondsLeftInTick(fourHours, fourHours + 2), 14);
    EXPECT_EQ(millisecondsLeftInTick(fourHours, fourHours + 3), 12);
    EXPECT_EQ(millisecondsLeftInTick(fourHours + 1, fourHours + 1), 16);
    EXPECT_EQ(millisecondsLeftInTick(fourHours + 3, fourHours + 4), 16);
}

TEST(TickPacing, FromNineHoursOnTimesComeInStepsOfFourMilliseconds) {
    constexpr long nineHours = 1L << 25;
    EXPECT_EQ(millisecondsLeftInTick(nineHours, nineHours + 2), 16);
    EXPECT_EQ(millisecondsLeftInTick(nineHours, nineHours + 3), 12);
}

TEST(TickPacing, AfterThreeDaysATickLastsThirtyTwoMillisecondsAndAfterSixItNeverPauses) {
    constexpr long threeDays = 1L << 28;
    constexpr long sixDays = 1L << 29;
    EXPECT_EQ(millisecondsLeftInTick(threeDays, threeDays), 32);
    EXPECT_EQ(millisecondsLeftInTick(sixDays, sixDays), 0);
}

TEST(TickPacing, ClocksTooFarApartSaturate) {
    constexpr long largest = std::numeric_limits<long>::max();
    constexpr long smallest = std::numeric_limits<long>::min();
    EXPECT_EQ(millisecondsLeftInTick(largest, smallest), largest);
    EXPECT_EQ(millisecondsLeftInTick(smallest, largest), smallest);
}
