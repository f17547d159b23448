#pragma once

#include "bots/Bot.h"
#include "bots/Report.h"
#include "bots/Roadmap.h"
#include "bots/Tally.h"
#include "client/Bodies.h"
#include "client/RoomAddress.h"
#include "client/Session.h"
#include "client/Tap.h"
#include "common/Chance.h"
#include "replay/Tracks.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace drench::bots {

/// What bots take for the state of the room.
enum class Sight {
    /// The newest snapshot.
    newest,
    /// What a window shows: oneself predicted, the others smoothly between snapshots.
    drawn,
    /// The same, but the others where they will be when a shot fired now acts.
    ahead
};

struct PlayOptions {
    int playersPerRoom = 3;
    double skill = 0.5;
    std::uint64_t seed = 0;

    /// Players are named by this and a number; if empty, by names of their own.
    std::string name;

    Sight sight = Sight::newest;

    /// Whether to keep the tracks of the first room's players.
    bool keepTracks = false;

    /// Sees the datagrams of the first room's players, each with a line of its own, from 0.
    client::LineTap tap = {};
};

/// The state of a run at some moment.
struct Standing {
    std::size_t players = 0;
    std::size_t playing = 0;
    std::uint64_t snapshots = 0;
    long soaks = 0;
    std::optional<double> medianRoundTrip;
};

/// Merges two decisions that have not been sent yet: the later one's keys, the mouse counts of
/// both, and a jump if either asks for one.
Controls combined(const Controls& earlier, const Controls& later);

/// Lets a session send what a bot decided.
void send(client::Session& session, const Controls& controls);

/// Bots at play in any number of rooms, in one thread. A bot that is not let in, or is dropped,
/// tries again after a while.
class Play {
  public:
    /// @param roadmap  must outlive the play, and so must its map
    /// @param note  called once, with one line, for each room that cannot be played in
    Play(const Roadmap& roadmap, std::vector<client::RoomAddress> rooms, const PlayOptions& options,
         std::function<void(const std::string&)> note);

    /// Leaves.
    ~Play();
    Play(const Play&) = delete;
    Play& operator=(const Play&) = delete;

    /// Waits for something to do until `until` or a signal, and does it.
    void step(client::Time until);

    /// Makes all players leave their rooms; nothing happens afterwards.
    void leave();

    Standing standing() const;

    /// All players, those of a room together, the rooms in their order.
    std::vector<PlayerReport> players() const;
    const std::vector<replay::Track>& tracks() const { return tracks_; }

  private:
    struct Seat {
        std::size_t room = 0;
        std::string name;
        Chance chance;
        std::optional<client::Session> session = std::nullopt;
        std::optional<Bot> bot = std::nullopt;

        /// Unless it goes by the newest snapshot.
        std::optional<client::Bodies> bodies = std::nullopt;
        Scorer scorer = {};
        replay::Track* track = nullptr;
        client::Time nextJoin = {};
        int failures = 0;
    };

    /// The last notes about a room.
    struct Told {
        std::string trouble;
        bool otherArena = false;
    };

    void serve(Seat& seat, client::Time now);
    void join(Seat& seat, client::Time now);
    bool takeEvents(Seat& seat, client::Time now);
    void see(Seat& seat, const client::Snapshot& snapshot, std::optional<Controls>& controls);
    UpdateMessage sightOf(Seat& seat, const client::Snapshot& snapshot) const;
    static void send(Seat& seat, const Controls& controls);
    void giveUp(Seat& seat, client::Time again, const std::string& trouble);
    void tellOfOtherArena(const Seat& seat, const PlayerUpdate& self);

    const Roadmap& roadmap_;
    std::vector<client::RoomAddress> rooms_;
    double skill_;
    Sight sight_;
    client::LineTap tap_;
    std::function<void(const std::string&)> note_;
    int epoll_;
    std::vector<Seat> seats_;
    std::vector<replay::Track> tracks_;
    std::vector<Told> told_;
};

} // namespace drench::bots
