#pragma once

#include "client/Clock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace drench::client {

/// Round trip and loss on one line, from the moments of sends and receipts alone. The room answers
/// every datagram with one receipt, mostly in order, but a receipt does not say which datagram it
/// answers.
///
/// A receipt gives a certain sample in two cases: the receipt is the first after a datagram that
/// was sent while nothing was unanswered, or only one datagram is unanswered. Certain samples are
/// smoothed as in RFC 6298. Any other receipt answers the oldest unanswered datagram or, after
/// losses, a later one. The age of the oldest is then an upper bound, and is used if it is clearly
/// below the estimate (Karn's rule: an ambiguous answer is not a sample). After a pause in sending
/// of about two round trips all unanswered datagrams count as lost, and certain samples return.
///
/// Limits: while a client sends without such a pause, a longer round trip stays unseen, or is read
/// as a shorter one with a loss if that fits as well; the next pause corrects this. Under jitter
/// the estimate lies somewhat below the mean. Round trips of more than a second are read as
/// shorter.
class RoundTrip {
  public:
    /// A datagram went out.
    void sent(Time now);

    /// A receipt came in.
    void receipt(Time now);

    /// The host said that no socket is bound to the port: no datagram will be answered any more.
    void refused() { giveUpAll(); }

    /// The newest and the smoothed round trip in milliseconds; nothing before the first sample.
    std::optional<double> latest() const { return latest_; }
    std::optional<double> smoothed() const { return smoothed_; }

    /// Smoothed distance of samples from the smoothed round trip, in milliseconds.
    double deviation() const { return deviation_; }

    std::uint64_t datagrams() const { return datagrams_; }
    std::uint64_t receipts() const { return receipts_; }

    /// Datagrams without a receipt that are unlikely to get one. Falls again when receipts come
    /// late.
    std::uint64_t lost() const;

    /// The share, 0 to 1, of lost() in the datagrams whose fate is known. Either the datagram or
    /// its receipt was lost.
    double lossShare() const;

  private:
    /// More datagrams than a player sends in a second. When the ring is full, the oldest counts as
    /// lost.
    static constexpr std::size_t capacity = 256;

    Time unansweredAt(std::size_t i) const { return sendTimes_[(first_ + i) % capacity]; }
    void takeOldest();
    void giveUpOldest();
    void giveUpAll();
    void expire(Time now);
    double patience() const;
    void addSample(double milliseconds);

    /// The unanswered datagrams, a ring.
    std::array<Time, capacity> sendTimes_ = {};
    std::size_t first_ = 0;
    std::size_t unanswered_ = 0;

    /// Whether the oldest was sent while nothing else was unanswered.
    bool oldestIsCertain_ = false;

    Time newestSend_;
    Time newestEvent_;
    std::optional<double> latest_;
    std::optional<double> smoothed_;
    double deviation_ = 0.0;
    std::uint64_t datagrams_ = 0;
    std::uint64_t receipts_ = 0;
    std::uint64_t givenUp_ = 0;
};

} // namespace drench::client
