#pragma once

#include "client/SentRecords.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace drench::client {

/// When snapshots are due, and how long records take to act, learnt from snapshots whose ticks and
/// records are known.
class ArrivalLine {
  public:
    /// The snapshot of tick `tick` came. Earlier ones are renumbered first if the snapshot before
    /// it was of another tick than believed.
    void arrival(std::int64_t tick, std::int64_t tickBefore, Milliseconds at, Milliseconds period);

    bool hasArrivals() const { return count_ > 0; }

    /// When the newest snapshot was due: the earliest of the recent arrivals, carried on to it. On
    /// an even line one late arrival leaves it alone and a second moves it; the more arrivals
    /// jitter, the more late ones it takes.
    Milliseconds due() const { return due_; }
    Milliseconds period() const { return period_; }

    /// The mean delay of arrivals behind due(), and its standard deviation.
    Milliseconds lateness() const { return lateness_; }
    Milliseconds latenessSpread() const;

    /// The moment `fraction` ticks after the newest, gently corrected, for drawing: a step of due()
    /// shows as a small change of speed.
    double ticksSince(Milliseconds now) const { return (now - drawnDue_) / period_; }

    /// The moment at which a record sent at `sentAt` can act, in ticks after the newest: 0.2 acts
    /// in the first.
    double actsAfter(Milliseconds sentAt) const { return (sentAt + delay_ - due_) / period_; }

    /// A record sent at `sentAt` acted in the newest tick.
    void acted(Milliseconds sentAt);

    /// A guess of delay(), until the next record acts: the round trip, which may be far off.
    void guessDelay(Milliseconds roundTrip);

    /// From the sending of a record to the due moment of the first tick in which it can act.
    Milliseconds delay() const { return delay_; }

    /// Whether a record has acted since the last guess.
    bool knowsDelay() const { return samples_ > 0; }

    /// The standard deviation of delay(), apart from the wait for the tick.
    Milliseconds spread() const;

  private:
    static constexpr std::size_t kept = 16;

    /// A second of mouse movement.
    static constexpr std::size_t keptRecords = 128;

    struct Arrival {
        std::int64_t tick;
        Milliseconds at;
    };

    std::array<Arrival, kept> arrivals_ = {};
    std::size_t count_ = 0;
    Milliseconds due_ = 0.0;
    Milliseconds drawnDue_ = 0.0;
    Milliseconds period_ = 16.1;
    Milliseconds delay_ = 0.0;
    double variance_ = 0.0;
    std::size_t samples_ = 0;

    /// Of the newest records, the longest delay with which each can have acted, and these in order.
    std::array<Milliseconds, keptRecords> longest_ = {};
    std::vector<Milliseconds> sorted_;
    Milliseconds lateness_ = 0.0;
    double latenessVariance_ = 4.0;
};

} // namespace drench::client
