#pragma once

#include "client/Events.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace drench::game {

/// A player as the latest snapshot shows it.
struct MatchPlayer {
    char id = 0;

    /// To be drawn, and as it came, for comparisons.
    std::string name;
    std::string rawName;
    int points = 0;

    /// When the player was first seen soaked; nothing while it is alive.
    std::optional<client::Time> soakedSince;

    /// The name, to be drawn, of who soaked it last; empty if unknown.
    std::string soakedBy;
};

/// A player in a notice: the name to be drawn, and the identifier of whoever has it, 0 if nobody or
/// several do.
struct Named {
    std::string name;
    char id = 0;
};

/// What the room told all players.
struct MatchNotice {
    enum class Kind { soaking, joined, left, other };

    Kind kind = Kind::other;
    client::Time moment;

    /// Who soaked, joined or left.
    Named who;

    /// Who was soaked.
    Named whom;

    /// "Ann soaked Bob", to be drawn.
    std::string words;
};

struct SaidLine {
    client::Time moment;
    Named speaker;

    /// To be drawn.
    std::string words;
};

/// What is known of the match and of our own place in it. All texts in it can be drawn as they are,
/// and all lists are bounded, whatever the room says.
class Match {
  public:
    static constexpr std::size_t mostNotices = 32;
    static constexpr std::size_t mostSaid = 64;

    /// Takes an event of the session in, at its moment.
    void take(const client::Event& event, client::Time now);

    /// Makes the player with this identifier ourselves, or nobody if it is 0: for a recorded match.
    void watchAs(char id) { ownId_ = id; }

    /// Our own identifier while playing, else 0.
    char ownId() const { return ownId_; }

    /// Ordered by identifier, at most one of each.
    const std::vector<MatchPlayer>& players() const { return players_; }

    /// The player with this identifier, or null.
    const MatchPlayer* player(char id) const;

    /// Ourselves, or null.
    const MatchPlayer* self() const { return ownId_ ? player(ownId_) : nullptr; }

    /// The oldest first.
    const std::deque<MatchNotice>& notices() const { return notices_; }
    const std::deque<SaidLine>& said() const { return said_; }

  private:
    void note(const client::Joined& joined);
    void note(const client::Refused&) { end(); }
    void note(const client::Unanswered&) { end(); }
    void note(const client::Dropped&) { end(); }
    void note(const client::Snapshot& snapshot);
    void note(const client::Chat& chat);
    void note(const client::PlayerJoined& joined);
    void note(const client::PlayerLeft& left);
    void note(const client::Soaking& soaking);
    void note(const client::Notice& notice);

    void see(const PlayerUpdate& update, const MatchPlayer* before, MatchPlayer& player) const;
    Named named(const std::string& rawName) const;
    MatchNotice& tell(MatchNotice::Kind kind);
    void end() { ownId_ = 0; }

    /// A soaking that was told; the snapshot that shows it may come before or after.
    struct ToldSoaking {
        client::Time moment;
        std::string shooter;
        std::string rawVictim;
    };

    char ownId_ = 0;
    std::vector<MatchPlayer> players_;
    std::deque<MatchNotice> notices_;
    std::deque<SaidLine> said_;
    std::deque<ToldSoaking> soakings_;

    /// The moment of the event under way.
    client::Time now_;
};

/// Seconds from `now` to the return of a soaked player, 0 if it is due or the player is alive.
double secondsUntilReturn(const MatchPlayer& player, client::Time now);

} // namespace drench::game
