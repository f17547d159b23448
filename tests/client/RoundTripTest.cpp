#include "client/RoundTrip.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace drench;

namespace {

using client::Clock;
using client::RoundTrip;
using client::Time;

Time at(double milliseconds) {
    return Time() + std::chrono::duration_cast<Clock::duration>(
                        std::chrono::duration<double, std::milli>(milliseconds));
}

/// A datagram sent and answered on an otherwise quiet line.
void exchange(RoundTrip& roundTrip, double sent, double took) {
    roundTrip.sent(at(sent));
    roundTrip.receipt(at(sent + took));
}

/// A line with a client at its end, times in milliseconds.
struct SimulatedLine {
    std::function<double(double now)> roundTrip;

    /// Round trips are longer or shorter by up to this.
    double jitter;

    /// The chance that a datagram or its receipt is lost.
    double loss;
    bool mayReorder = false;

    /// The chance that the client rests for 50 to 350 ms after a datagram, and that it sends two at
    /// once; else it sends the next after `interval`.
    double rest = 0.0;
    double pair = 0.0;
    double interval = 16.67;
};

struct Outcome {
    /// The mean distance of the smoothed round trip from the true one.
    double meanError;
    double worstError;
    double lossShare;
    double trueLossShare;
};

/// Plays `datagrams` over the line, after a quiet one as a join record is. Errors of the first
/// tenth do not count.
Outcome play(const SimulatedLine& line, int datagrams, unsigned seed) {
    struct Moment {
        double time;
        bool isReceipt;
    };
    std::mt19937 random(seed);
    const auto chance = [&] { return static_cast<double>(random()) / 4294967296.0; };
    std::vector<Moment> moments;
    double now = 0.0;
    double lastReceipt = 0.0;
    int lost = 0;
    for (int i = 0; i < datagrams; ++i) {
        moments.push_back({now, false});
        const double took = line.roundTrip(now) + line.jitter * (2.0 * chance() - 1.0);
        double receipt = now + std::max(took, 0.01);
        if (!line.mayReorder)
            receipt = lastReceipt = std::max(receipt, lastReceipt);
        if (i > 0 && chance() < line.loss)
            ++lost;
        else
            moments.push_back({receipt, true});
        const double next = chance();
        if (i == 0)
            now += 700.0;
        else if (next < line.rest)
            now += 50.0 + 300.0 * chance();
        else if (next >= line.rest + line.pair)
            now += line.interval;
    }
    std::stable_sort(moments.begin(), moments.end(),
                     [](const Moment& a, const Moment& b) { return a.time < b.time; });

    RoundTrip roundTrip;
    Outcome outcome = {};
    int measured = 0;
    for (const Moment& moment : moments) {
        moment.isReceipt ? roundTrip.receipt(at(moment.time)) : roundTrip.sent(at(moment.time));
        if (moment.time < now / 10.0)
            continue;
        const double error = std::abs(*roundTrip.smoothed() - line.roundTrip(moment.time));
        outcome.meanError += error;
        outcome.worstError = std::max(outcome.worstError, error);
        ++measured;
    }
    outcome.meanError /= measured;
    outcome.lossShare = roundTrip.lossShare();
    outcome.trueLossShare = static_cast<double>(lost) / datagrams;
    return outcome;
}

std::function<double(double)> always(double milliseconds) {
    return [milliseconds](double) { return milliseconds; };
}

constexpr unsigned seeds = 10;

} // namespace

TEST(RoundTrip, IsUnknownBeforeTheFirstReceipt) {
    RoundTrip roundTrip;
    EXPECT_FALSE(roundTrip.latest());
    EXPECT_FALSE(roundTrip.smoothed());
    EXPECT_EQ(roundTrip.lossShare(), 0.0);
    roundTrip.sent(at(0));
    EXPECT_FALSE(roundTrip.latest());
    EXPECT_EQ(roundTrip.datagrams(), 1u);
    EXPECT_EQ(roundTrip.receipts(), 0u);
}

TEST(RoundTrip, IsSmoothedByAnEighth) {
    RoundTrip roundTrip;
    exchange(roundTrip, 0, 40);
    EXPECT_DOUBLE_EQ(*roundTrip.smoothed(), 40.0);
    EXPECT_DOUBLE_EQ(roundTrip.deviation(), 20.0);
    exchange(roundTrip, 1000, 48);
    EXPECT_DOUBLE_EQ(*roundTrip.latest(), 48.0);
    EXPECT_DOUBLE_EQ(*roundTrip.smoothed(), 41.0);
    EXPECT_DOUBLE_EQ(roundTrip.deviation(), 17.0);
    EXPECT_EQ(roundTrip.lossShare(), 0.0);
}

TEST(RoundTrip, ALostDatagramCountsOnceTwiceTheRoundTripHasPassed) {
    RoundTrip roundTrip;
    exchange(roundTrip, 0, 40);
    roundTrip.sent(at(1000));
    roundTrip.sent(at(1070));
    EXPECT_EQ(roundTrip.lost(), 0u);
    roundTrip.sent(at(1085));
    EXPECT_EQ(roundTrip.lost(), 1u);
    EXPECT_DOUBLE_EQ(roundTrip.lossShare(), 0.5);
}

TEST(RoundTrip, UntilItIsKnownPatienceLastsASecond) {
    RoundTrip roundTrip;
    roundTrip.sent(at(0));
    roundTrip.sent(at(1000));
    EXPECT_EQ(roundTrip.lost(), 0u);
    roundTrip.sent(at(1001));
    EXPECT_EQ(roundTrip.lost(), 1u);
    roundTrip.receipt(at(2002));
    EXPECT_EQ(roundTrip.lost(), 2u) << "of three, and one receipt that came too late for any";
    EXPECT_EQ(roundTrip.receipts(), 1u);
    EXPECT_FALSE(roundTrip.latest());
}

TEST(RoundTrip, AfterAPauseALossDoesNotBlurIt) {
    RoundTrip roundTrip;
    exchange(roundTrip, 0, 40);
    roundTrip.sent(at(1000));
    exchange(roundTrip, 1100, 40);
    EXPECT_DOUBLE_EQ(*roundTrip.latest(), 40.0);
    EXPECT_DOUBLE_EQ(*roundTrip.smoothed(), 40.0);
    EXPECT_EQ(roundTrip.lost(), 1u);
}

TEST(RoundTrip, AReceiptAmongSeveralUnansweredCanOnlyLowerIt) {
    RoundTrip roundTrip;
    exchange(roundTrip, 0, 40);
    roundTrip.sent(at(1000));
    roundTrip.sent(at(1016));
    roundTrip.sent(at(1032));
    roundTrip.receipt(at(1040));
    EXPECT_DOUBLE_EQ(*roundTrip.latest(), 40.0) << "it went out into a quiet line";
    roundTrip.sent(at(1048));
    roundTrip.receipt(at(1079));
    EXPECT_DOUBLE_EQ(*roundTrip.latest(), 40.0) << "63 ms, or 47 ms after a loss";
    roundTrip.receipt(at(1080));
    EXPECT_DOUBLE_EQ(*roundTrip.latest(), 40.0);
    roundTrip.sent(at(1081));
    roundTrip.sent(at(1082));
    roundTrip.receipt(at(1083));
    EXPECT_DOUBLE_EQ(*roundTrip.latest(), 40.0) << "35 ms, no clear difference";
    roundTrip.receipt(at(1084));
    EXPECT_DOUBLE_EQ(*roundTrip.latest(), 3.0) << "what it answers is no older";
    EXPECT_LT(*roundTrip.smoothed(), 40.0);
}

TEST(RoundTrip, AReceiptThatComesLateShowsThatItRose) {
    RoundTrip roundTrip;
    exchange(roundTrip, 0, 20);
    roundTrip.sent(at(1000));
    roundTrip.sent(at(1100));
    EXPECT_EQ(roundTrip.lost(), 1u);
    roundTrip.receipt(at(1180));
    roundTrip.receipt(at(1280));
    EXPECT_EQ(roundTrip.lost(), 0u);
    EXPECT_DOUBLE_EQ(*roundTrip.latest(), 180.0);
}

// The join that a room was not yet there to hear, its repetition, and then a busy player.
TEST(RoundTrip, AFirstSampleThatIsFarTooLongIsSoonForgotten) {
    RoundTrip roundTrip;
    roundTrip.sent(at(0));
    roundTrip.sent(at(500));
    roundTrip.receipt(at(600));
    EXPECT_DOUBLE_EQ(*roundTrip.smoothed(), 600.0);
    for (int i = 0; i < 50; ++i) {
        const double now = 610.0 + 20.0 * i;
        roundTrip.sent(at(now));
        if (i >= 5)
            roundTrip.receipt(at(now + 1.0));
    }
    EXPECT_NEAR(*roundTrip.smoothed(), 121.0, 41.0);
}

TEST(RoundTrip, WhatWasRefusedDoesNotBlurTheNextOne) {
    RoundTrip roundTrip;
    roundTrip.sent(at(0));
    roundTrip.refused();
    EXPECT_EQ(roundTrip.lost(), 1u);
    roundTrip.sent(at(500));
    roundTrip.receipt(at(502));
    EXPECT_DOUBLE_EQ(*roundTrip.smoothed(), 2.0);
}

TEST(RoundTrip, MoreReceiptsThanDatagramsAreHarmless) {
    RoundTrip roundTrip;
    roundTrip.receipt(at(0));
    exchange(roundTrip, 1000, 20);
    roundTrip.receipt(at(1030));
    roundTrip.receipt(at(1040));
    EXPECT_EQ(roundTrip.receipts(), 4u);
    EXPECT_EQ(roundTrip.lost(), 0u);
    EXPECT_DOUBLE_EQ(*roundTrip.smoothed(), 20.0);
}

TEST(RoundTrip, AnEndlessSilenceTakesNoEndlessMemory) {
    RoundTrip roundTrip;
    exchange(roundTrip, 0, 900);
    for (int i = 0; i < 1000; ++i)
        roundTrip.sent(at(1000.0 + i / 100.0));
    EXPECT_EQ(roundTrip.lost(), 1000u - 256u) << "as many may be on their way";
    roundTrip.sent(at(5000));
    EXPECT_EQ(roundTrip.lost(), 1000u);
    EXPECT_LT(sizeof roundTrip, 4096u);
}

TEST(RoundTrip, OnANearLineIsExactUnderLossWithoutAnyPause) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        for (const double near : {0.2, 1.0, 5.0}) {
            const SimulatedLine line = {always(near), near / 5.0, 0.02};
            const Outcome outcome = play(line, 2000, seed);
            EXPECT_LT(outcome.worstError, near / 5.0) << near;
            EXPECT_NEAR(outcome.lossShare, outcome.trueLossShare, 0.001) << near;
        }
    }
}

TEST(RoundTrip, OnAFarLineIsGoodToATenthUnderJitterAndLoss) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedLine line = {always(50.0), 5.0, 0.02};
        line.rest = 0.03;
        line.pair = 0.2;
        const Outcome outcome = play(line, 3000, seed);
        EXPECT_LT(outcome.meanError, 5.0);
        EXPECT_LT(outcome.worstError, 12.0);
        EXPECT_NEAR(outcome.lossShare, outcome.trueLossShare, 0.003);
    }
}

TEST(RoundTrip, OfASlowPlayerIsGoodWhateverIsLost) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedLine line = {always(80.0), 5.0, 0.2};
        line.interval = 1000.0;
        const Outcome outcome = play(line, 300, seed);
        EXPECT_LT(outcome.worstError, 5.0);
        EXPECT_NEAR(outcome.lossShare, outcome.trueLossShare, 0.005);
    }
}

TEST(RoundTrip, ReorderingCostsAFewMilliseconds) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedLine line = {always(50.0), 10.0, 0.02, true};
        line.rest = 0.03;
        const Outcome outcome = play(line, 3000, seed);
        EXPECT_LT(outcome.meanError, 7.0);
        EXPECT_NEAR(outcome.lossShare, outcome.trueLossShare, 0.003);
    }
}

TEST(RoundTrip, FollowsTheLineUpAndDownWhereThePlayerPausesNowAndThen) {
    const auto risesForAWhile = [](double now) {
        return now > 30000.0 && now < 60000.0 ? 150.0 : 30.0;
    };
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SimulatedLine line = {risesForAWhile, 3.0, 0.01};
        line.rest = 0.05;
        const Outcome outcome = play(line, 5000, seed);
        EXPECT_LT(outcome.meanError, 12.0);
        EXPECT_NEAR(outcome.lossShare, outcome.trueLossShare, 0.003);
    }
}

TEST(RoundTrip, WithoutAnyPauseStaysWithinReachOfTheLastCertainSample) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        const SimulatedLine line = {always(50.0), 5.0, 0.02};
        const Outcome outcome = play(line, 3000, seed);
        EXPECT_LT(outcome.worstError, 10.0);
        EXPECT_NEAR(outcome.lossShare, outcome.trueLossShare, 0.003);
    }
}
