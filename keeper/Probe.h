#pragma once

#include "client/Clock.h"
#include "client/Socket.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace drench::keeper {

using client::Time;
using std::chrono::milliseconds;

/// Asks a room on this machine every two seconds whether it answers, by a record of nobody: all
/// that it does is draw a receipt.
class Probe {
  public:
    static constexpr milliseconds period{2000};

    /// A new server is asked so often until it answers for the first time.
    static constexpr milliseconds startingPeriod{50};

    /// A receipt that takes longer counts as missing.
    static constexpr milliseconds patience{1500};

    /// The room answers while its last receipt is younger: one may be lost.
    static constexpr milliseconds trust{5000};

    explicit Probe(std::uint16_t port);

    /// A new server has to answer anew, from now on.
    void reset(Time now);

    /// Sends what is due and takes what has come. Returns the round trip of a receipt.
    std::optional<std::chrono::duration<double>> service(Time now);

    /// The end of the trust in the last receipt; nothing before a server's first.
    std::optional<Time> answersUntil() const {
        return answeredAt_ ? std::optional(*answeredAt_ + trust) : std::nullopt;
    }

    bool answers(Time now) const { return answeredAt_ && now < *answersUntil(); }

    /// The probes without a receipt in time, but for those before a server's first.
    std::uint64_t unanswered() const { return unanswered_; }

    /// When service() has to be called even if nothing comes.
    Time wakeAt() const { return sentAt_ ? *sentAt_ + patience : sendAt_; }

    /// For poll(2) while a receipt is awaited; else -1.
    int descriptor() const { return sentAt_ ? socket_.descriptor() : -1; }

    /// The local port of its socket, or 0.
    std::uint16_t port() const;

  private:
    bool open();
    void send(Time now);
    void giveUp();

    std::uint16_t roomPort_;
    client::Socket socket_;
    Time sendAt_;
    std::optional<Time> sentAt_;
    std::optional<Time> answeredAt_;
    std::uint64_t unanswered_ = 0;
};

} // namespace drench::keeper
