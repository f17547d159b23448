#pragma once

#include "client/Clock.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace drench::client {

/// The room's ticks as the arrivals of snapshots show them: which tick a snapshot belongs to, how
/// long a tick takes, and which one it is now.
///
/// Snapshots carry no number. Each counts as the one after the last, and the earliest of recent
/// arrivals draw a line of ticks over time. A few that come late, and then all at once, leave the
/// line where it is; when eight in a row lag behind it by most of a period or more, so many are
/// taken for missed, and the number jumps. A room that stood still looks the same, and counts as
/// missed snapshots too. Nothing counts as missed among the first 64 arrivals, from which the
/// period is taken; jitter of half a period, or a loss of a tenth, makes the count of missed ones
/// too low.
///
/// To draw smoothly, keep the snapshots of the last moments and draw the world as it was at
/// `tickAt(now) - 2`, blended between the two snapshots whose ticks lie around it; draw further
/// behind where jitter() is more than a period.
class TickClock {
  public:
    /// A snapshot came in. Returns the number of its tick, 0 for the first one.
    std::int64_t arrival(Time now);

    /// The tick at a moment, with its fraction: n when the snapshot of tick n is due. 0 before the
    /// first arrival.
    double tickAt(Time now) const;

    /// Milliseconds from tick to tick; about 16.4 in a young room, more in one that ran for hours.
    double period() const { return period_; }

    /// How late arrivals are on average, in milliseconds behind the earliest.
    double jitter() const { return jitter_; }

    std::uint64_t missed() const { return missed_; }

  private:
    /// What nearly all rooms keep; the first arrivals correct it.
    static constexpr double usualPeriod = 16.4;

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
    void keepLag(double lag, bool inBurst);
    void judgeLags();
    void measureSlope();
    double leastLag(std::size_t skipped, std::size_t count) const;

    /// The first arrival; all that follows is in milliseconds since then.
    Time start_;
    bool hasStarted_ = false;

    /// The tick of the newest snapshot, and when the line says that it was due.
    std::int64_t tick_ = 0;
    double due_ = 0.0;
    double period_ = usualPeriod;

    double lastArrival_ = 0.0;
    double jitter_ = 0.0;
    std::uint64_t missed_ = 0;

    /// How far recent arrivals were behind the line, a ring.
    std::array<double, keptLags> lags_ = {};
    std::size_t newestLag_ = 0;

    /// The period is the slope of the line since the older anchor.
    Anchor olderAnchor_;
    Anchor newerAnchor_;

    /// The gaps since they were last looked at.
    std::array<double, keptGaps> gaps_ = {};
    std::size_t gapCount_ = 0;
    bool isCalibrated_ = false;
};

} // namespace drench::client
