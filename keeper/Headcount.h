#pragma once

#include "client/Clock.h"
#include "keeper/Proc.h"

#include <cstdint>
#include <optional>

namespace drench::keeper {

using client::Time;

/// How many players there can be.
struct PlayerRange {
    int least = 0;
    int most = 0;

    bool operator==(const PlayerRange&) const = default;
};

/// The players by what leaves the room: one state for each of them in each tick, and what they say
/// to each. All else is in balance: each datagram that comes in draws one receipt. Valid where the
/// room is alone with its keeper in a network namespace, whose counters these are.
class NetworkHeadcount {
  public:
    /// Takes the counters of a moment. Without counters, or when they fall, counting begins anew.
    void take(const std::optional<UdpCounters>& counters, Time now);

    /// The players over the last stretch of at least a second and a half; nothing before its end.
    /// At most those whom a room sends states to that ticks with a sixth of its rate, since a busy
    /// machine slows it. At least one where as much leaves as to one player by half that rate: how
    /// many more, a single player who chats could make up.
    std::optional<PlayerRange> players() const { return players_; }

  private:
    std::optional<UdpCounters> counters_;
    Time countedAt_;
    std::optional<PlayerRange> players_;
};

/// The number of players by two sources: the notices, and the network where it can be counted.
class Headcount {
  public:
    /// A server has started: nobody plays.
    void reset();

    void joined();
    void left();

    /// Compares with what the network says, once for each stretch of it. After three contradictions
    /// in a row the notices were wrong, and the number that is nearest to theirs and possible takes
    /// their place.
    void compare(const std::optional<PlayerRange>& byNetwork);

    /// 0 to maxPlayers. While the two sources contradict each other, the larger number: nobody's
    /// match ends on a doubt.
    int players() const;

    /// Whether a room with players was sending no states any more when the network took the
    /// notices' place: it may answer datagrams, but does not tick. Ends with the next state or
    /// server.
    bool seemsToHang() const { return seemsToHang_; }

    /// The notices' numbers that were replaced.
    std::uint64_t corrections() const { return corrections_; }

  private:
    int byNotices_ = 0;
    int leastByNetwork_ = 0;
    int contradictions_ = 0;
    bool seemsToHang_ = false;
    std::uint64_t corrections_ = 0;
};

} // namespace drench::keeper
