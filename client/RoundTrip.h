#pragma once

#include "client/Clock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace drench::client {

/// Round trip and loss on one line, from the moments of sends and receipts alone. The room answers
/// every datagram with one receipt, mostly in order, but no receipt tells which datagram it
/// answers.
///
/// So a certain sample is only the first receipt after a datagram that went out while nothing was
/// unanswered, or one that finds a single datagram unanswered; these are smoothed as in RFC 6298.
/// Any other receipt answers the oldest datagram unanswered or, after losses, a later one: its age
/// is an upper bound, which counts when it is clearly below the estimate (Karn's rule: an ambiguous
/// answer is no sample). After a pause in sending of about two round trips everything unanswered is
/// given up as lost, and certain samples return.
///
/// Limits: while a client sends without such a pause, a longer round trip stays unseen, or is
/// read as a shorter one and a loss where that fits as well; the next pause puts it right. Under
/// jitter the estimate lies somewhat below the mean. Round trips of more than a second read as
/// less.
class RoundTrip {
  public:
    /// A datagram went out.
    void sent(Time now);

    /// A receipt came in.
    void receipt(Time now);

    /// The host said that nobody listens: nothing unanswered will be answered any more.
    void refused() { giveUpAll(); }

    /// The newest round trip measured and the smoothed one, in milliseconds; nothing before the
    /// first.
    std::optional<double> latest() const { return latest_; }
    std::optional<double> smoothed() const { return smoothed_; }

    /// Smoothed distance of samples from the smoothed round trip, in milliseconds.
    double deviation() const { return deviation_; }

    std::uint64_t datagrams() const { return datagrams_; }
    std::uint64_t receipts() const { return receipts_; }

    /// Datagrams that stayed, or are by now likely to stay, without a receipt. Falls again when
    /// receipts come late.
    std::uint64_t lost() const;

    /// lost() among the datagrams whose fate is known, 0 to 1: their loss or that of their
    /// receipts.
    double lossShare() const;

  private:
    /// No player sends so many datagrams in a second; beyond it the oldest count as lost sooner.
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

    /// Whether nothing was unanswered when the oldest was sent.
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
