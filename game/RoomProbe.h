#pragma once

#include "client/Clock.h"
#include "client/Socket.h"
#include "game/Resolving.h"

#include <optional>
#include <string>

namespace drench::game {

/// Asks whether a room is there, and how far away, with datagrams that make no player. Whether it
/// is full it tells only those who join.
class RoomProbe {
  public:
    using Time = client::Time;

    enum class Finding { asking, answers, silent, nobodyListens, noSuchHost };

    explicit RoomProbe(const std::string& hostAndPort) : resolving_(hostAndPort) {}

    /// Sends what is due and hears what came. Round trips are as exact as the calls are prompt.
    void service(Time now);

    Finding finding() const { return finding_; }

    /// The shortest so far, in milliseconds; nothing before an answer.
    std::optional<double> roundTrip() const { return roundTrip_; }

    /// For poll(); -1 if there is nothing to read.
    int descriptor() const { return socket_.descriptor(); }

  private:
    void start();
    void hear(Time now);
    void ask(Time now);

    Resolving resolving_;
    client::Socket socket_;
    Finding finding_ = Finding::asking;
    std::optional<double> roundTrip_;

    /// When the datagram without an answer went out, and when the next one does.
    std::optional<Time> asked_;
    Time next_{};
    int unanswered_ = 0;
};

/// What a probe found, in words for a list of rooms: "12 ms", "does not answer".
std::string findingWords(const RoomProbe& probe);

} // namespace drench::game
