#pragma once

#include "client/Clock.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace drench::client {

/// The room's ticks, estimated from the arrivals of snapshots: the tick of a snapshot, the length
/// of a tick, and the tick at any moment.
///
/// Snapshots carry no number. Each counts as the tick after the last, and the earliest of recent
/// arrivals draw a line of ticks over time. A few late snapshots, followed by a burst, leave the
/// line where it is. When eight in a row lag behind the line by most of a period or more, the line
/// steps after them, for one of two reasons: snapshots were missed, and the tick number jumps; or
/// the room was late, and goes on from there without catching up. A loss makes a step of whole
/// periods, a late room a step of any length. The recent steps vote, and the majority decides for
/// all of them.
///
/// Limits: a room that is late by whole periods looks like a loss and counts as one; a room that
/// was stopped once may be so. If a loaded room's snapshots get lost as well, the count may be off
/// by a third or more, either way. Under load alone a few of the first late ticks may count.
/// Nothing counts among the first 64 arrivals, from which the period is taken; jitter of half a
/// period makes the count too low.
///
/// To draw smoothly, keep the snapshots of the last moments and draw the world as of `tickAt(now) -
/// 2`, blended between the two snapshots whose ticks lie around it. Draw further behind if jitter()
/// is more than a period.
class TickClock {
  public:
    /// A snapshot came in. Returns the number of its tick, 0 for the first one.
    std::int64_t arrival(Time now);

    /// The tick at a moment, with its fraction: n when the snapshot of tick n is due. 0 before the
    /// first arrival.
    double tickAt(Time now) const;

    /// Milliseconds from tick to tick, without the long pauses of a late room; about 16.1 in a
    /// young room, more in one that ran for hours.
    double period() const { return period_; }

    /// The mean delay of arrivals behind the earliest, in milliseconds.
    double jitter() const { return jitter_; }

    /// Snapshots missed so far. Falls again when a supposed loss turns out to be lateness.
    std::uint64_t missed() const { return missed_; }

  private:
    /// Milliseconds: the period of nearly all rooms. The first arrivals correct it.
    static constexpr double usualPeriod = 16.1;

    static constexpr std::size_t keptGaps = 64;
    static constexpr std::size_t keptLags = 16;

    /// A point of the line.
    struct Anchor {
        std::int64_t tick = 0;
        double due = 0.0;
    };

    double millisecondsAt(Time now) const;
    bool recalibrate();
    void moveLine(double milliseconds);
    void keepLag(double lateness, bool inBurst);
    void judgeLags();
    void measureSlope();
    void vote(bool forLosses);
    bool stepsAreLosses() const { return votesForLosses_ > votesForLateTicks_; }
    void moveAnchors(double milliseconds);
    double leastLag(std::size_t skipped, std::size_t count) const;

    /// The first arrival. The other times here are milliseconds since then.
    Time start_;
    bool hasStarted_ = false;

    /// The tick of the newest snapshot, and the time at which the line has it due.
    std::int64_t tick_ = 0;
    double due_ = 0.0;
    double period_ = usualPeriod;

    double lastArrival_ = 0.0;
    double jitter_ = 0.0;
    std::uint64_t missed_ = 0;

    /// The lags of recent arrivals behind the line, a ring.
    std::array<double, keptLags> lags_ = {};
    std::size_t newestLag_ = 0;

    /// The votes of the line's steps. Older votes weigh less.
    double votesForLosses_ = 0.0;
    double votesForLateTicks_ = 0.0;

    /// The line's slope from the older anchor on gives the period. The newer anchor replaces the
    /// older one later.
    Anchor olderAnchor_;
    Anchor newerAnchor_;

    /// The gaps between arrivals since the last recalibration.
    std::array<double, keptGaps> gaps_ = {};
    std::size_t gapCount_ = 0;
    bool isCalibrated_ = false;
};

} // namespace drench::client
