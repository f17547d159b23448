#include "client/RoundTrip.h"

#include <algorithm>
#include <cmath>

namespace drench::client {

namespace {

/// Milliseconds. A datagram without a receipt for this long is lost: nobody plays on such a line.
constexpr double longestRoundTrip = 1000.0;

/// Milliseconds. Any receipt may come this much later than usual: schedulers alone cause that.
constexpr double leastPatience = 10.0;

/// The share of the smoothed round trip by which jitter may let a receipt come earlier than usual.
constexpr double mostJitter = 0.25;

/// RFC 6298's gain for the round trip.
constexpr double gain = 1.0 / 8.0;

/// RFC 6298's gain for the deviation.
constexpr double deviationGain = 1.0 / 4.0;

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

} // namespace

void RoundTrip::sent(Time now) {
    expire(now);
    if (unanswered_ > 0 && milliseconds(now - newestSend_) > patience())
        giveUpAll();
    if (unanswered_ == capacity)
        giveUpOldest();
    if (unanswered_ == 0)
        oldestIsCertain_ = true;
    sendTimes_[(first_ + unanswered_) % capacity] = now;
    ++unanswered_;
    ++datagrams_;
    newestSend_ = now;
}

void RoundTrip::receipt(Time now) {
    expire(now);
    ++receipts_;
    if (unanswered_ == 0) {
        // This receipt answers a datagram that was given up too soon, so the round trip is at least
        // this long.
        const double atLeast = milliseconds(now - newestSend_);
        if (givenUp_ > 0) {
            --givenUp_;
            if (atLeast <= longestRoundTrip && atLeast > smoothed_.value_or(0.0))
                addSample(atLeast);
        }
        return;
    }
    const double age = milliseconds(now - unansweredAt(0));
    // While the estimate is far off, its error swells the deviation, which then does not measure
    // jitter.
    const bool isClearlyLess =
        !smoothed_ || age < *smoothed_ - std::min(deviation_, mostJitter * *smoothed_);
    if (oldestIsCertain_ || unanswered_ == 1 || isClearlyLess)
        addSample(age);
    takeOldest();
}

std::uint64_t RoundTrip::lost() const {
    std::size_t overdue = 0;
    while (overdue < unanswered_ && milliseconds(newestEvent_ - unansweredAt(overdue)) > patience())
        ++overdue;
    return givenUp_ + overdue;
}

double RoundTrip::lossShare() const {
    const std::uint64_t known = lost() + receipts_;
    return known == 0 ? 0.0 : static_cast<double>(lost()) / static_cast<double>(known);
}

void RoundTrip::takeOldest() {
    first_ = (first_ + 1) % capacity;
    --unanswered_;
    oldestIsCertain_ = false;
}

void RoundTrip::giveUpOldest() {
    takeOldest();
    ++givenUp_;
}

void RoundTrip::giveUpAll() {
    givenUp_ += unanswered_;
    unanswered_ = 0;
}

void RoundTrip::expire(Time now) {
    newestEvent_ = now;
    while (unanswered_ > 0 && milliseconds(now - unansweredAt(0)) > longestRoundTrip)
        giveUpOldest();
}

/// The time in milliseconds after which a missing receipt is likely lost.
double RoundTrip::patience() const {
    if (!smoothed_)
        return longestRoundTrip;
    return *smoothed_ + std::max(leastPatience, *smoothed_);
}

void RoundTrip::addSample(double sample) {
    latest_ = sample;
    if (!smoothed_) {
        smoothed_ = sample;
        deviation_ = sample / 2.0;
        return;
    }
    deviation_ += deviationGain * (std::abs(sample - *smoothed_) - deviation_);
    *smoothed_ += gain * (sample - *smoothed_);
}

} // namespace drench::client
