#pragma once

#include "client/Clock.h"
#include "common/Chance.h"

#include <cstdint>
#include <optional>

namespace drench::lag {

using client::Time;
using Duration = client::Clock::duration;

/// The treatment of datagrams on one direction of a line. With all zero, they pass at once.
struct Settings {
    /// The least delay of every datagram.
    Duration delay{0};

    /// The most that is added to the delay, drawn evenly for each datagram. Jitter never reorders:
    /// a datagram that would overtake the previous one waits for it, as in a queue. If datagrams
    /// follow each other more closely than the jitter, delays therefore lie above the even draw,
    /// but never above delay + jitter.
    Duration jitter{0};

    /// The share of datagrams lost, 0 to 1.
    double loss = 0.0;

    /// The mean number of datagrams lost in a row, at least 1. If absent, each datagram is lost by
    /// a chance of its own, which gives runs of 1 / (1 - loss) on average.
    std::optional<double> meanBurst;

    /// Of the datagrams not lost, the share that are followed by a copy at once.
    double duplication = 0.0;

    /// Of the datagrams not lost, the share held back by `heldBack` beyond their place in the
    /// queue, copies included. Later datagrams keep their places, and so overtake if they come
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

/// The same settings and seed give the same decisions on every machine. Each datagram takes the
/// same draws under any settings, so one seed loses the same datagrams at any delay and jitter.
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
