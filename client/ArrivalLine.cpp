#include "client/ArrivalLine.h"

#include <algorithm>
#include <cmath>

namespace drench::client {

namespace {

/// The share of a new arrival in lateness and deviation.
constexpr double gain = 1.0 / 32.0;

/// The least spread, in milliseconds: schedulers alone cause that.
constexpr Milliseconds leastSpread = 1.5;

/// The variance of what may lie anywhere in an interval, in squares of its width.
constexpr double evenVariance = 1.0 / 12.0;

/// A first guess of the delay is a round trip, which may be that of a datagram that was lost and
/// sent again: the most that is believed, and the spread of the truth about it, in milliseconds.
constexpr Milliseconds longestGuess = 300.0;
constexpr Milliseconds guessSpread = 150.0;

/// An arrival counts for at most this many standard deviations: single ones may be misread.
constexpr double mostDeviations = 3.0;

/// A distance of the drawn clock beyond which it starts anew, in milliseconds.
constexpr Milliseconds clockJump = 500.0;

/// The shares of a distance that the drawn clock makes up for with each snapshot: of one under a
/// period, and of a larger one.
constexpr double gentleCorrection = 1.0 / 16.0;
constexpr double firmCorrection = 1.0 / 2.0;

/// The number of arrivals of which the earliest tells when the next is due: the later they come in
/// the mean, the more. With two of them a late tick of the room, which delays all that follow, is
/// known from its second snapshot.
std::size_t memoryFor(Milliseconds lateness) {
    return static_cast<std::size_t>(std::clamp(2.0 + 6.0 * lateness, 2.0, 16.0));
}

} // namespace

void ArrivalLine::arrival(std::int64_t tick, std::int64_t tickBefore, Milliseconds at,
                          Milliseconds period) {
    if (count_ > 0) {
        const std::int64_t shift = tickBefore - arrivals_[(count_ - 1) % kept].tick;
        for (Arrival& earlier : arrivals_)
            earlier.tick += shift;
    }
    arrivals_[count_++ % kept] = {tick, at};
    period_ = period;
    due_ = at;
    const std::size_t memory = std::min(count_, memoryFor(lateness_));
    for (std::size_t i = 2; i <= memory; ++i) {
        const Arrival& earlier = arrivals_[(count_ - i) % kept];
        due_ = std::min(due_, earlier.at + static_cast<double>(tick - earlier.tick) * period);
    }
    const double most = mostDeviations * std::sqrt(latenessVariance_);
    const Milliseconds apart = std::min(at - due_ - lateness_, most);
    lateness_ += gain * apart;
    latenessVariance_ += gain * (apart * apart - latenessVariance_);
    drawnDue_ += static_cast<double>(tick - tickBefore) * period;
    const Milliseconds distance = due_ - drawnDue_;
    if (count_ == 1 || std::abs(distance) > clockJump)
        drawnDue_ = due_;
    else
        drawnDue_ += distance * (std::abs(distance) > period ? firmCorrection : gentleCorrection);
}

void ArrivalLine::guessDelay(Milliseconds roundTrip) {
    delay_ = std::clamp(roundTrip, 0.0, longestGuess);
    samples_ = 0;
    sorted_.clear();
}

void ArrivalLine::acted(Milliseconds sentAt) {
    Milliseconds& longest = longest_[samples_ % keptRecords];
    if (samples_ >= keptRecords)
        sorted_.erase(std::lower_bound(sorted_.begin(), sorted_.end(), longest));
    longest = due_ - sentAt;
    sorted_.insert(std::upper_bound(sorted_.begin(), sorted_.end(), longest), longest);
    ++samples_;

    // A record took at most its longest time, and at most a period less. No delay suits all where
    // they jitter: then one that as many found too short as found too long.
    std::size_t first = 0;
    std::size_t last = sorted_.size() - 1;
    while (sorted_[last] - sorted_[first] > period_) {
        ++first;
        --last;
    }
    const Milliseconds least = sorted_[last] - period_;
    const Milliseconds most = sorted_[first];
    delay_ = std::clamp(delay_, least, most);

    // Out of a period of moments, a record whose delay differs by x from this acts in another tick
    // with a chance of x / period, then misfits by x / 2 in the mean: x² / (2 period) in all.
    Milliseconds misfit = 0.0;
    for (const Milliseconds atMost : sorted_)
        misfit += std::max({0.0, delay_ - atMost, atMost - period_ - delay_});
    variance_ = 2.0 * period_ * misfit / static_cast<double>(sorted_.size()) +
                evenVariance * (most - least) * (most - least);
}

Milliseconds ArrivalLine::latenessSpread() const {
    return std::sqrt(std::max(leastSpread * leastSpread, latenessVariance_));
}

Milliseconds ArrivalLine::spread() const {
    if (samples_ == 0)
        return guessSpread;
    return std::sqrt(std::max(leastSpread * leastSpread, variance_));
}

} // namespace drench::client
