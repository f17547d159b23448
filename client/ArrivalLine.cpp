#include "client/ArrivalLine.h"

#include <algorithm>
#include <cmath>

namespace drench::client {

namespace {

/// The share of a new sample in delay and deviation. 32 records are a quarter of a second of mouse
/// movement.
constexpr double gain = 1.0 / 32.0;

/// The least spread, in milliseconds: schedulers alone cause that.
constexpr Milliseconds leastSpread = 1.5;

/// The variance of moments that fall evenly into a period, in squared periods.
constexpr double evenVariance = 1.0 / 12.0;

/// A first guess of the delay is a round trip, which may be that of a datagram that was lost and
/// sent again: the most that is believed, and the spread of the truth about it, in milliseconds.
constexpr Milliseconds longestGuess = 300.0;
constexpr Milliseconds guessSpread = 150.0;

/// A sample counts for at most this many standard deviations: single ones may be misread.
constexpr double mostDeviations = 3.0;

/// A distance of the drawn clock beyond which it starts anew, in milliseconds.
constexpr Milliseconds clockJump = 500.0;

/// The shares of a distance that the drawn clock makes up for with each snapshot: of one under a
/// period, and of a larger one.
constexpr double gentleCorrection = 1.0 / 16.0;
constexpr double firmCorrection = 1.0 / 2.0;

/// The number of arrivals of which the earliest tells when the next is due: the more they jitter,
/// the more. With few of them a stall of the room is soon forgotten.
std::size_t memoryFor(Milliseconds deviation) {
    return static_cast<std::size_t>(std::clamp(2.0 + 2.0 * deviation, 3.0, 16.0));
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
    const std::size_t memory = std::min(count_, memoryFor(std::sqrt(latenessVariance_)));
    for (std::size_t i = 1; i <= memory; ++i) {
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
}

void ArrivalLine::acted(Milliseconds sentAt) {
    const Milliseconds sample = due_ - period_ / 2.0 - sentAt;
    if (++samples_ == 1) {
        delay_ = sample;
        return;
    }
    const double share = std::max(gain, 1.0 / static_cast<double>(samples_));
    const double most = mostDeviations * std::sqrt(variance_);
    const Milliseconds distance = std::clamp(sample - delay_, -most, most);
    delay_ += share * distance;
    variance_ += gain * (distance * distance - variance_);
}

Milliseconds ArrivalLine::latenessSpread() const {
    return std::sqrt(std::max(leastSpread * leastSpread, latenessVariance_));
}

Milliseconds ArrivalLine::spread() const {
    if (samples_ == 0)
        return guessSpread;
    return std::sqrt(
        std::max(leastSpread * leastSpread, variance_ - evenVariance * period_ * period_));
}

} // namespace drench::client
