#pragma once

#include "client/Clock.h"
#include "src/Messages.h"

#include <cstdint>
#include <string>
#include <variant>

// The events that Session hands out, in the order in which they happened.

namespace drench::client {

/// The room let us in; snapshots follow.
struct Joined {
    char id;
};

/// The room is full; the session is over.
struct Refused {};

/// No answer to any of the join records; the session is over.
struct Unanswered {
    /// The host said that nothing is bound to the port.
    bool nobodyListens;
};

/// We are out of the room without having left it; the session is over.
struct Dropped {
    enum class Reason {
        /// No snapshot for a while: the room has ended, dropped us, or the line is dead.
        silence,

        /// Snapshots go on, but without us, or with another player under our identifier.
        replaced
    };
    Reason reason;
};

/// The state of all players after one tick.
struct Snapshot {
    /// From readRecord(): safe to read even if the room is hostile, but its numbers may be of any
    /// size.
    UpdateMessage state;

    /// Number of the tick, counted from the first snapshot of this session, missed ones included.
    std::int64_t tick;
    Time arrival;
};

/// A player speaks, ourselves included.
struct Chat {
    char speaker;
    std::string text;
};

/// The server's notice of a join.
struct PlayerJoined {
    std::string name;
};

/// The server's notice of a player who left or was dropped.
struct PlayerLeft {
    std::string name;
};

/// The server's notice of a hit.
struct Soaking {
    std::string shooter;
    std::string victim;
};

/// A notice of another form.
struct Notice {
    std::string text;
};

using Event = std::variant<Joined, Refused, Unanswered, Dropped, Snapshot, Chat, PlayerJoined,
                           PlayerLeft, Soaking, Notice>;

} // namespace drench::client
