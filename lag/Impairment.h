#pragma once

#include "client/Clock.h"
#include "common/Chance.h"

#include <cstdint>
#include <optional>

namespace drench::lag {

using client::Time;
using Duration = client::Clock::duration;

/// How one direction of a line treats its datagrams. All zero: passes them on at once.
struct Settings {
    /// How long every datagram takes at least.
    Duration delay{0};

    /// The most that is added to the delay, drawn evenly for each datagram. Jitter never reorders:
    /// a datagram that would overtake the one before waits for it, as in a queue. Where datagrams
    /// follow each other more closely than the jitter, delays therefore lie above the even draw,
    /// yet never above delay + jitter.
    Duration jitter{0};

    /// The share of datagrams lost, 0 to 1.
    double loss = 0.0;

    /// The mean number of datagrams lost one after the other, at least 1; absent when each is lost
    /// by a chance of its own, which makes runs of 1 / (1 - loss) on average.
    std::optional<double> meanBurst;

    /// Of the datagrams not lost, the share of which a copy follows right behind.
    double duplication = 0.0;

    /// Of the datagrams not lost, the share held back by `heldBack` beyond their place in the
    /// queue, their copies as well. Those behind keep their places, and so overtake if they come
    /// within that time.
    double reordering = 0.0;
    Duration heldBack = std::chrono::milliseconds(50);
};

/// The largest share that can be lost in bursts of this mean length: at least one datagram gets
/// through between two bursts.
double mostLoss(double meanBurst);

/// The decision about one datagram.
struct Fate {
    /// 0: lost. 2: duplicated.
    int copies;

    /// The moment at which the copies go on.
    Time due;
};

/// One direction of one line. Losses follow the two-state model of Gilbert ("Capacity of a
/// burst-noise channel", 1960) and Elliott ("Estimates of error rates for codes on burst-noise
/// channels", 1963), with a good state that loses nothing and a bad one that loses everything.
///
/// The same settings and seed decide alike on every machine. Each datagram takes the same draws
/// whatever the settings, so that one seed loses the same datagrams at any delay and jitter.
class Impairment {
  public:
    /// The loss must not exceed mostLoss() of the mean burst.
    Impairment(const Settings& settings, std::uint64_t seed);

    /// Decides about a datagram that comes in now. Moments must not go backwards.
    Fate decide(Time now);

  private:
    Settings settings_;
    Chance chance_;
    double becomesBad_;
    double becomesGood_;
    bool isBad_;

    /// The moment at which the last datagram leaves the queue.
    Time queueEnd_ = Time::min();
};

} // namespace drench::lag
