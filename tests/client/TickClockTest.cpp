#include "client/TickClock.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

using namespace drench;

namespace {

using client::Clock;
using client::TickClock;
using client::Time;

Time at(double milliseconds) {
    return Time() + std::chrono::duration_cast<Clock::duration>(
                        std::chrono::duration<double, std::milli>(milliseconds));
}

/// A room and the line to it; times in milliseconds.
struct SimulatedRoom {
    std::function<double(int tick)> period;

    /// Ticks are late by up to this, for good.
    double unevenness = 0.3;

    /// How late a tick is for good beyond that, by chance from 0 to 1.
    std::function<double(int tick, double chance)> lateness = [](int, double) { return 0.0; };

    /// Snapshots take this long at least, and longer by this on average, exponentially.
    double delay = 30.0;
    double jitter = 0.1;

    /// The chance that a snapshot is lost.
    std::function<double(int tick)> loss = [](int) { return 0.0; };

    /// Nothing arrives while this is true, but after it.
    std::function<bool(double now)> isHeldUp = [](double) { return false; };

    /// All snapshots sent while this is true are lost.
    std::function<bool(double now)> isDown = [](double) { return false; };
};

struct Outcome {
    TickClock clock;

    /// Snapshots lost between two that came.
    std::uint64_t lost = 0;

    /// How far the period was from the true one, at worst in the second half.
    double periodError = 0.0;

    /// How far tickAt() was from the truth when the snapshots were due, in ticks: the middle and
    /// the 99th percentile, in the second half.
    double middleTickError = 0.0;
    double largeTickError = 0.0;
};

/// Plays `ticks` ticks. Snapshots arrive in order.
Outcome play(const SimulatedRoom& room, int ticks, unsigned seed) {
    const auto dice = [](unsigned diceSeed) {
        return [random = std::mt19937(diceSeed)]() mutable {
            return (static_cast<double>(random()) + 0.5) / 4294967296.0;
        };
    };
    auto chance = dice(seed);
    auto latenessChance = dice(seed + 1000);
    Outcome outcome;
    std::vector<double> errors;
    double now = 0.0;
    double lastArrival = 0.0;
    std::uint64_t lostSince = 0;
    for (int tick = 0; tick < ticks; ++tick) {
        now +=
            room.period(tick) + room.unevenness * chance() + room.lateness(tick, latenessChance());
        double arrival = now + room.delay - room.jitter * std::log(chance());
        while (room.isHeldUp(arrival))
            arrival += 1.0;
        lastArrival = arrival = std::max(arrival, lastArrival);
        if (chance() < room.loss(tick) || room.isDown(now)) {
            ++lostSince;
            continue;
        }
        outcome.clock.arrival(at(arrival));
        outcome.lost += lostSince;
        lostSince = 0;
        if (tick < ticks / 2)
            continue;
        outcome.periodError =
            std::max(outcome.periodError, std::abs(outcome.clock.period() -
                                                   (room.period(tick) + room.unevenness / 2.0)));
        const double trueTick = static_cast<double>(tick - static_cast<int>(outcome.lost) +
                                                    static_cast<int>(outcome.clock.missed()));
        errors.push_back(std::abs(outcome.clock.tickAt(at(now + room.delay)) - trueTick));
    }
    std::sort(errors.begin(), errors.end());
    outcome.middleTickError = errors[errors.size() / 2];
    outcome.largeTickError = errors[errors.size() * 99 / 100];
    return outcome;
}

std::function<double(int)> always(double milliseconds) {
    return [milliseconds](int) { return milliseconds; };
}

/// The last `length` of every `interval` milliseconds.
std::function<bool(double)> nowAndThen(double interval, double length) {
    return [=](double now) { return std::fmod(now, interval) > interval - length; };
}

/// One tick in so many is late, by up to `most` milliseconds.
std::function<double(int, double)> lateByUpTo(double most, double share) {
    return [=](int, double chance) { return chance < share ? most * chance / share : 0.0; };
}

/// One tick in so many is late, by `mean` milliseconds on average, exponentially.
std::function<double(int, double)> lateBy(double mean, double share) {
    return
        [=](int, double chance) { return chance < share ? -mean * std::log(chance / share) : 0.0; };
}

constexpr unsigned seeds = 10;
constexpr int oneMinute = 3700;

} // namespace

TEST(TickClock, KnowsNothingBeforeTheFirstSnapshot) {
    const TickClock clock;
    EXPECT_EQ(clock.tickAt(at(1234)), 0.0);
    EXPECT_DOUBLE_EQ(clock.period(), 16.1);
    EXPECT_EQ(clock.missed(), 0u);
    EXPECT_EQ(clock.jitter(), 0.0);
}

TEST(TickClock, NumbersSnapshotsFromZero) {
    TickClock clock;
    for (int tick = 0; tick < 300; ++tick)
        EXPECT_EQ(clock.arrival(at(1000.0 + 17.0 * tick)), tick);
    EXPECT_NEAR(clock.period(), 17.0, 1e-6);
    EXPECT_EQ(clock.missed(), 0u);
}

TEST(TickClock, TellsTheTickBetweenAndAfterSnapshots) {
    TickClock clock;
    for (int tick = 0; tick <= 300; ++tick)
        clock.arrival(at(16.0 * tick));
    EXPECT_NEAR(clock.tickAt(at(16.0 * 300)), 300.0, 1e-3);
    EXPECT_NEAR(clock.tickAt(at(16.0 * 300 + 4.0)), 300.25, 1e-3);
    EXPECT_NEAR(clock.tickAt(at(16.0 * 302)), 302.0, 1e-3);
    EXPECT_NEAR(clock.tickAt(at(16.0 * 298 + 8.0)), 298.5, 1e-3);
}

TEST(TickClock, AMissedSnapshotShowsAfterEightMore) {
    TickClock clock;
    for (int tick = 0; tick < 100; ++tick)
        clock.arrival(at(16.0 * tick));
    for (int tick = 103; tick < 110; ++tick)
        EXPECT_EQ(clock.arrival(at(16.0 * tick)), tick - 3);
    EXPECT_EQ(clock.missed(), 0u);
    EXPECT_EQ(clock.arrival(at(16.0 * 110)), 110);
    EXPECT_EQ(clock.missed(), 3u);
    EXPECT_EQ(clock.arrival(at(16.0 * 111)), 111);
}

TEST(TickClock, ALateSnapshotIsNoMissedOne) {
    TickClock clock;
    for (int tick = 0; tick < 300; ++tick)
        EXPECT_EQ(clock.arrival(at(16.0 * tick + (tick % 7 == 0 ? 12.0 : 0.0))), tick);
    EXPECT_EQ(clock.missed(), 0u);
    EXPECT_NEAR(clock.tickAt(at(16.0 * 300)), 300.0, 0.01) << "the earliest draw the line";
}

TEST(TickClock, ALineThatWasHeldUpMissesNothing) {
    TickClock clock;
    for (int tick = 0; tick < 400; ++tick) {
        const bool isHeld = tick >= 200 && tick < 260;
        EXPECT_EQ(clock.arrival(at(16.0 * (isHeld ? 260 : tick))), tick);
    }
    EXPECT_EQ(clock.missed(), 0u);
    EXPECT_NEAR(clock.tickAt(at(16.0 * 400)), 400.0, 0.01);
}

TEST(TickClock, ARoomThatStoodStillLooksLikeMissedSnapshots) {
    TickClock clock;
    std::int64_t last = 0;
    for (int tick = 0; tick < 300; ++tick)
        last = clock.arrival(at(16.0 * tick + (tick < 150 ? 0.0 : 160.0)));
    EXPECT_EQ(last, 299 + 10);
    EXPECT_EQ(clock.missed(), 10u);
}

TEST(TickClock, AShortPauseOfTheRoomIsNoMissedSnapshot) {
    TickClock clock;
    for (int tick = 0; tick < 300; ++tick)
        EXPECT_EQ(clock.arrival(at(16.0 * tick + (tick < 150 ? 0.0 : 8.0))), tick);
    EXPECT_EQ(clock.missed(), 0u);
    EXPECT_NEAR(clock.tickAt(at(16.0 * 300 + 8.0)), 300.0, 0.01);
}

TEST(TickClock, TakesBackWhatTurnsOutToBeLate) {
    TickClock clock;
    for (int tick = 0; tick < 400; ++tick)
        clock.arrival(at(16.0 * tick + (tick >= 150 && tick < 200 ? 48.0 : 0.0)));
    EXPECT_EQ(clock.missed(), 0u);
    const double before = clock.period();
    EXPECT_NEAR(before, 16.0, 0.05);
}

TEST(TickClock, JitterIsTheMeanLateness) {
    TickClock clock;
    for (int tick = 0; tick < 1000; ++tick)
        clock.arrival(at(16.0 * tick + (tick % 2 == 0 ? 4.0 : 0.0)));
    EXPECT_NEAR(clock.jitter(), 2.0, 0.2);
}

TEST(TickClock, FindsThePeriodOfYoungAndOldRooms) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        for (const double period : {15.8, 16.2, 16.5, 17.1, 18.0, 20.0, 32.0}) {
            SimulatedRoom room = {always(period)};
            room.loss = always(0.01);
            const Outcome outcome = play(room, 1000, seed);
            EXPECT_LT(outcome.periodError, 0.15) << period;
            EXPECT_NEAR(static_cast<double>(outcome.clock.missed()),
                        static_cast<double>(outcome.lost), 3.0)
                << period;
        }
    }
}

TEST(TickClock, OnANearLineCountsEveryLoss) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedRoom room = {always(16.1)};
        room.delay = 0.05;
        room.loss = always(0.01);
        const Outcome outcome = play(room, oneMinute, seed);
        EXPECT_LE(outcome.clock.missed(), outcome.lost);
        EXPECT_GE(outcome.clock.missed() + 4, outcome.lost) << "those of the first second";
        EXPECT_LT(outcome.periodError, 0.05);
        EXPECT_LT(outcome.middleTickError, 0.03);
    }
}

TEST(TickClock, WithoutLossCountsLessThanOneInAThousandUnderJitter) {
    for (unsigned seed = 0; seed < 3 * seeds; ++seed) {
        for (const double jitter : {0.5, 2.0, 5.0}) {
            SimulatedRoom room = {always(16.3)};
            room.jitter = jitter;
            const Outcome outcome = play(room, oneMinute, seed);
            EXPECT_LT(outcome.clock.missed(), oneMinute / 1000u) << jitter;
            EXPECT_LT(outcome.periodError, 0.06) << jitter;
            EXPECT_LT(outcome.largeTickError, 0.1) << jitter;
            EXPECT_GT(outcome.clock.jitter(), jitter / 3.0) << jitter;
            EXPECT_LT(outcome.clock.jitter(), 3.0 * jitter) << jitter;
        }
    }
}

TEST(TickClock, OfALoadedRoomCountsNearlyNothing) {
    const std::pair<const char*, std::function<double(int, double)>> loads[] = {
        {"by 20 ms, seldom", lateBy(20.0, 0.02)},  {"by 5 ms, often", lateBy(5.0, 0.2)},
        {"by 10 ms, often", lateBy(10.0, 0.3)},    {"by 3 ms, always", lateBy(3.0, 1.0)},
        {"by up to 40 ms", lateByUpTo(40.0, 0.1)}, {"by up to 80 ms", lateByUpTo(80.0, 0.05)}};
    for (const auto& [name, lateness] : loads) {
        for (const double jitter : {0.1, 2.0}) {
            std::uint64_t missed = 0;
            for (unsigned seed = 0; seed < seeds; ++seed) {
                SimulatedRoom room = {always(16.1)};
                room.lateness = lateness;
                room.jitter = jitter;
                missed += play(room, oneMinute, seed).clock.missed();
            }
            EXPECT_LT(missed, seeds * oneMinute / 200u) << name << ", jitter " << jitter;
        }
    }
}

TEST(TickClock, OfARoomThatIsLateNowAndThenStillCountsLosses) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedRoom room = {always(16.1)};
        room.lateness = lateBy(3.0, 0.02);
        room.jitter = 1.0;
        room.loss = always(0.02);
        const Outcome outcome = play(room, oneMinute, seed);
        EXPECT_NEAR(static_cast<double>(outcome.clock.missed()), static_cast<double>(outcome.lost),
                    0.1 * static_cast<double>(outcome.lost));
    }
}

TEST(TickClock, CountsLossesAgainAfterALoad) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedRoom room = {always(16.1)};
        room.lateness = [](int tick, double chance) {
            return tick < oneMinute ? lateByUpTo(40.0, 0.1)(tick, chance) : 0.0;
        };
        room.loss = [](int tick) { return tick < oneMinute ? 0.0 : 0.05; };
        const Outcome outcome = play(room, 4 * oneMinute, seed);
        EXPECT_GT(outcome.clock.missed(), outcome.lost * 4 / 5) << "all but those of a while";
        EXPECT_LT(outcome.clock.missed(), outcome.lost + 40);
    }
}

TEST(TickClock, KeepsThePeriodOfARoomWithLongPauses) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedRoom room = {always(16.1)};
        room.lateness = lateByUpTo(80.0, 0.05);
        EXPECT_LT(play(room, oneMinute, seed).periodError, 0.3);
    }
}

TEST(TickClock, UnderJitterAndLossCountsNearlyAll) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedRoom room = {always(16.3)};
        room.jitter = 3.0;
        room.loss = always(0.03);
        const Outcome outcome = play(room, oneMinute, seed);
        EXPECT_NEAR(static_cast<double>(outcome.clock.missed()), static_cast<double>(outcome.lost),
                    0.12 * static_cast<double>(outcome.lost));
        EXPECT_LT(outcome.periodError, 0.3);
        EXPECT_LT(outcome.middleTickError, 0.1);
    }
}

TEST(TickClock, BearsALineThatStallsAndCatchesUp) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        for (const double stall : {60.0, 150.0, 1000.0}) {
            SimulatedRoom room = {always(16.3)};
            room.isHeldUp = nowAndThen(8.0 * stall, stall);
            const Outcome outcome = play(room, oneMinute, seed);
            EXPECT_EQ(outcome.clock.missed(), 0u) << stall;
            EXPECT_LT(outcome.periodError, 0.05) << stall;
            EXPECT_LT(outcome.middleTickError, 0.05) << stall;
        }
    }
}

TEST(TickClock, BearsALineThatStallsMostOfTheTime) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedRoom room = {always(16.3)};
        room.isHeldUp = nowAndThen(330.0, 200.0);
        const Outcome outcome = play(room, oneMinute, seed);
        EXPECT_EQ(outcome.clock.missed(), 0u);
        EXPECT_LT(outcome.periodError, 0.1);
    }
}

TEST(TickClock, BearsALineThatCatchesUpSlowly) {
    TickClock clock;
    double arrival = 0.0;
    for (int tick = 0; tick < 1000; ++tick) {
        if (tick >= 200 && tick % 45 == 0)
            arrival = 16.0 * tick + 260.0;
        arrival = std::max(16.0 * tick, arrival + 6.0);
        clock.arrival(at(arrival));
        if (tick >= 64) {
            EXPECT_NEAR(clock.period(), 16.0, 0.1) << tick;
        }
    }
    EXPECT_EQ(clock.missed(), 0u);
}

TEST(TickClock, BearsSnapshotsThatComeInClumps) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedRoom room = {always(16.3)};
        room.isHeldUp = nowAndThen(50.0, 48.0);
        const Outcome outcome = play(room, oneMinute, seed);
        EXPECT_EQ(outcome.clock.missed(), 0u);
        EXPECT_LT(outcome.periodError, 0.2);
    }
}

TEST(TickClock, CountsWhatAnOutageSwallowed) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedRoom room = {always(16.3)};
        room.isDown = nowAndThen(10000.0, 800.0);
        const Outcome outcome = play(room, oneMinute, seed);
        EXPECT_GT(outcome.lost, 200u);
        EXPECT_NEAR(static_cast<double>(outcome.clock.missed()), static_cast<double>(outcome.lost),
                    2.0);
        EXPECT_LT(outcome.periodError, 0.05);
    }
}

TEST(TickClock, BearsAnOutageInItsFirstSecond) {
    TickClock clock;
    for (int tick = 0; tick <= 70; ++tick)
        clock.arrival(at(16.0 * tick + (tick < 30 ? 0.0 : 800.0)));
    EXPECT_NEAR(clock.period(), 16.0, 0.01);
    EXPECT_NEAR(clock.tickAt(at(16.0 * 70 + 800.0)), 70.0, 0.01);
}

TEST(TickClock, FollowsARoomThatSlowsDown) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedRoom room = {[](int tick) { return tick < 1000 ? 16.2 : 17.4; }};
        room.jitter = 1.0;
        room.loss = always(0.01);
        const Outcome outcome = play(room, 3000, seed);
        EXPECT_LT(outcome.periodError, 0.1);
        EXPECT_NEAR(static_cast<double>(outcome.clock.missed()), static_cast<double>(outcome.lost),
                    3.0);
    }
}

TEST(TickClock, FindsAPeriodThatDoubledOrHalved) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        const SimulatedRoom slower = {[](int tick) { return tick < 500 ? 16.2 : 32.0; }};
        const Outcome slowed = play(slower, 2000, seed);
        EXPECT_LT(slowed.periodError, 0.05);
        EXPECT_LT(slowed.clock.missed(), 128u) << "until the gaps are looked at";
        const SimulatedRoom faster = {[](int tick) { return tick < 500 ? 32.0 : 16.2; }};
        const Outcome hurried = play(faster, 2000, seed);
        EXPECT_LT(hurried.periodError, 0.05);
        EXPECT_EQ(hurried.clock.missed(), 0u);
    }
}

TEST(TickClock, SurvivesARoomThatDoesNotPaceItself) {
    const SimulatedRoom room = {always(0.05), 0.01};
    const Outcome outcome = play(room, 20000, 0);
    EXPECT_EQ(outcome.clock.missed(), 0u);
    EXPECT_GE(outcome.clock.period(), 1.0);
    EXPECT_LT(outcome.clock.period(), 1.1) << "the shortest that it takes for true";
}
