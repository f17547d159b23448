#include "client/TickClock.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace drench::client {

namespace {

/// If the median gap differs from the period by more than this factor, the period is wrong.
constexpr double grossMismatch = 1.25;

/// Bursts set the median and the mean gap apart by more than this factor.
constexpr double burstMismatch = 1.25;

/// Milliseconds. An overloaded room may tick faster, but nobody draws so often.
constexpr double shortestPeriod = 1.0;

/// Arrivals that follow within this part of a period belong to a burst: the line was held up, and
/// its next snapshots may be in time again.
constexpr double burstGap = 0.5;

/// A lag is judged after this many arrivals: it stays if none of them made up for it.
constexpr std::size_t patientArrivals = 8;

/// A lag that stays is compared with those of this many arrivals before: under a period that is a
/// little too short, lags grow as well, but slowly.
constexpr std::size_t arrivalsBefore = 4;

/// The least step, in periods. Less is a late tick in any case.
constexpr double leastStep = 0.6;

/// The largest distance from a whole number of periods at which a step votes for missed snapshots.
/// By chance three in ten late ticks lie within it.
constexpr double wholeStepTolerance = 0.15;

/// Steps after which a vote has lost most of its weight: a room may be loaded for a while.
constexpr double voteMemory = 64.0;

/// The part of the least lag that the line takes over with every arrival.
constexpr double lineGain = 0.5;

/// Ticks from one anchor to the next.
constexpr std::int64_t anchorDistance = 128;

/// The weight of the present period against the slope of the line, in ticks.
constexpr double periodInertia = 64.0;

/// The gain of RFC 3550 for jitter.
constexpr double jitterGain = 1.0 / 16.0;

/// The number of missed snapshots that would make this step, 0 if it is too small for one.
double ticksOf(double step, double period) {
    return std::floor(step / period + 1.0 - leastStep);
}

bool isWhole(double periods) {
    return std::abs(periods - std::round(periods)) <= wholeStepTolerance;
}

} // namespace

std::int64_t TickClock::arrival(Time now) {
    if (!hasStarted_) {
        hasStarted_ = true;
        start_ = now;
        return tick_;
    }
    const double arrival = millisecondsAt(now);
    const double gap = arrival - lastArrival_;
    lastArrival_ = arrival;
    ++tick_;
    due_ += period_;
    gaps_[gapCount_++] = gap;
    if (gapCount_ == keptGaps) {
        gapCount_ = 0;
        if (recalibrate()) {
            due_ = arrival;
            lags_.fill(0.0);
            olderAnchor_ = newerAnchor_ = {tick_, due_};
        }
    }

    double lateness = arrival - due_;
    if (lateness < 0.0) {
        if (const double tooMany = ticksOf(-lateness, period_); tooMany > 0.0) {
            // The line as a whole was drawn too late, perhaps because a burst was taken for losses.
            if (stepsAreLosses())
                missed_ -= std::min(missed_, static_cast<std::uint64_t>(tooMany));
            moveAnchors(lateness);
        }
        moveLine(lateness);
        lateness = 0.0;
    }
    jitter_ += jitterGain * (lateness - jitter_);
    keepLag(lateness, gap < burstGap * period_);
    if (isCalibrated_) {
        judgeLags();
        measureSlope();
    }
    return tick_;
}

double TickClock::tickAt(Time now) const {
    if (!hasStarted_)
        return 0.0;
    return static_cast<double>(tick_) + (millisecondsAt(now) - due_) / period_;
}

double TickClock::millisecondsAt(Time now) const {
    return std::chrono::duration<double, std::milli>(now - start_).count();
}

/// Sets the period by the kept gaps if they are the first, or if they show a very different one.
/// Returns whether it did; then a new line is to be drawn.
bool TickClock::recalibrate() {
    std::array<double, keptGaps> sorted = gaps_;
    std::sort(sorted.begin(), sorted.end());
    const double median = sorted[keptGaps / 2];
    const double sum = std::accumulate(sorted.begin(), sorted.end(), 0.0);
    // Without the longest, which may be an outage.
    const double mean = (sum - sorted.back()) / (keptGaps - 1);
    const auto [shorter, longer] = std::minmax(median, mean);
    const bool isBursty = longer >= shorter * burstMismatch;
    const bool fits =
        isBursty || (longer > period_ / grossMismatch && shorter < period_ * grossMismatch);
    if (isCalibrated_ && fits)
        return false;
    isCalibrated_ = true;
    period_ = std::max(isBursty ? sum / keptGaps : median, shortestPeriod);
    return true;
}

/// Moves the line later if positive.
void TickClock::moveLine(double milliseconds) {
    due_ += milliseconds;
    for (double& lag : lags_)
        lag -= milliseconds;
}

void TickClock::keepLag(double lateness, bool inBurst) {
    if (inBurst) {
        lags_[newestLag_] = std::min(lags_[newestLag_], lateness);
        return;
    }
    newestLag_ = (newestLag_ + 1) % keptLags;
    lags_[newestLag_] = lateness;
}

void TickClock::judgeLags() {
    const double grown = leastLag(0, patientArrivals) - leastLag(patientArrivals, arrivalsBefore);
    if (const double ticks = ticksOf(grown, period_); ticks > 0.0) {
        vote(isWhole(grown / period_));
        double step = grown;
        if (stepsAreLosses()) {
            tick_ += static_cast<std::int64_t>(ticks);
            missed_ += static_cast<std::uint64_t>(ticks);
            step = ticks * period_;
        } else {
            // No tick came in that time, so the step says nothing about the period.
            moveAnchors(step);
        }
        due_ += step;
        for (std::size_t i = 0; i < patientArrivals; ++i)
            lags_[(newestLag_ + keptLags - i) % keptLags] -= step;
    }
    // Over more arrivals than are judged, so that the line does not follow a lag under judgement.
    moveLine(lineGain * leastLag(0, keptLags));
}

void TickClock::vote(bool forLosses) {
    votesForLosses_ -= votesForLosses_ / voteMemory;
    votesForLateTicks_ -= votesForLateTicks_ / voteMemory;
    (forLosses ? votesForLosses_ : votesForLateTicks_) += 1.0;
}

/// Moves the anchors later if positive.
void TickClock::moveAnchors(double milliseconds) {
    olderAnchor_.due += milliseconds;
    newerAnchor_.due += milliseconds;
}

void TickClock::measureSlope() {
    if (tick_ - newerAnchor_.tick >= anchorDistance) {
        olderAnchor_ = newerAnchor_;
        newerAnchor_ = {tick_, due_};
    }
    const double ticks = static_cast<double>(tick_ - olderAnchor_.tick);
    const double slope =
        (due_ - olderAnchor_.due + periodInertia * period_) / (ticks + periodInertia);
    period_ = std::max(slope, shortestPeriod);
}

/// The least of `count` lags, of which the newest came `skipped` arrivals ago.
double TickClock::leastLag(std::size_t skipped, std::size_t count) const {
    double least = lags_[(newestLag_ + keptLags - skipped) % keptLags];
    for (std::size_t i = skipped + 1; i < skipped + count; ++i)
        least = std::min(least, lags_[(newestLag_ + keptLags - i) % keptLags]);
    return least;
}

} // namespace drench::client
