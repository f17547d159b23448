#pragma once

#include "client/Clock.h"
#include "client/RoundTrip.h"
#include "client/TickClock.h"
#include "src/Messages.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// The player's side of the protocol in docs/protocol.md. One Session is one player in one room: it
// joins, hears, sends and leaves. It never blocks and starts no thread: wait with poll() on
// descriptor() until wakeAt(), call service(), take the events. Thousands fit into one thread. A
// whole client, which walks forward and tells who got wet:
//
//     std::string problem;
//     const std::optional<client::RoomAddress> room = client::resolve("localhost:5000", problem);
//     std::optional<client::Session> session;
//     if (room)
//         session = client::Session::join(room->address, "Ann", client::Clock::now(), problem);
//     while (session && session->isOpen()) {
//         client::wait(*session);
//         session->service(client::Clock::now());
//         while (const std::optional<client::Event> event = session->nextEvent()) {
//             if (std::get_if<client::Joined>(&*event))
//                 session->setKey(keyIndex::forward, true);
//             if (const auto* soaking = std::get_if<client::Soaking>(&*event))
//                 std::cout << soaking->shooter << " got " << soaking->victim << "\n";
//         }
//     }

namespace drench::client {

// What happens to a player. Records of other kinds or sizes are counted in Statistics and dropped.

/// The room let us in; snapshots follow.
struct Joined {
    char id;
};

/// The room is full; the session is over.
struct Refused {};

/// No answer to any of the join records; the session is over. `nobodyListens` when the host said
/// that nothing is bound to the port.
struct Unanswered {
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

/// The state of all players after one tick, the record as it came: an unfriendly room may send
/// floats that are no numbers, and names without an end.
struct Snapshot {
    UpdateMessage state;

    /// Number of the tick, counted from the first snapshot of this session, missed ones included.
    std::int64_t tick;
    Time arrival;
};

/// Somebody speaks; `speaker` is an identifier of a player.
struct Chat {
    char speaker;
    std::string text;
};

/// The server's notices. Names may hold any bytes; the first reading that fits is taken. The last
/// character of a soaking between two names of 11 characters is lost: the "!".
struct PlayerJoined {
    std::string name;
};
struct PlayerLeft {
    std::string name;
};
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

/// The slot of the player with this identifier, or null; nobody has the identifier 0.
const PlayerUpdate* playerWith(const UpdateMessage& state, char id);

struct Statistics {
    /// Datagrams, of any kind.
    std::uint64_t sent = 0;
    std::uint64_t received = 0;

    /// Sends that the system refused, a full buffer or a dead network; the datagram is lost.
    std::uint64_t unsent = 0;

    /// Datagrams that are no record of the protocol.
    std::uint64_t unknown = 0;

    std::uint64_t snapshots = 0;

    /// As far as arrivals tell: see TickClock.
    std::uint64_t snapshotsMissed = 0;
};

class Session {
  public:
    /// Opens a socket and sends the first join record; Joined, Refused or Unanswered follows. The
    /// record is sent again while neither receipt nor answer comes; should both copies make a
    /// player, the second one is sent away. The room keeps the first 11 characters of the name.
    /// Nothing when the system gives no socket, with the reason in `problem`.
    static std::optional<Session> join(const sockaddr_in& room, std::string_view name, Time now,
                                       std::string& problem);

    /// Leaves.
    ~Session();
    Session(Session&& other) noexcept;
    Session& operator=(Session&& other) noexcept;

    /// For poll(): readable when there is something for service() to read. -1 once not open.
    int descriptor() const { return parts_.socket; }

    /// When service() is to be called at the latest, for what is due to be sent and for time-outs;
    /// a moment in the past when something is to be sent now.
    Time wakeAt() const;

    /// Receives what has arrived, up to 256 datagrams, and sends what is due: keys, then the view,
    /// then a keep-alive. To be called at least once a second, or the room drops us. Round trips
    /// are as exact as the calls are prompt.
    void service(Time now);

    /// The oldest event not yet taken. When 1024 wait, further snapshots and words are lost.
    std::optional<Event> nextEvent();

    /// Joining or playing; false after Refused, Unanswered, Dropped or leave().
    bool isOpen() const { return parts_.socket >= 0; }
    bool isPlaying() const { return parts_.id != 0; }

    /// Our identifier while playing, else 0.
    char id() const { return parts_.id; }

    /// Our own slot in a snapshot, or null.
    const PlayerUpdate* self(const UpdateMessage& state) const;

    // Nothing of the following happens while not playing. What is sent while we may be out of the
    // room could move whoever has our identifier by then: when no snapshot has come for a second,
    // or service() was not called for as long and has not caught up yet, keys wait for the next
    // one, and jumps, mouse counts and words are lost.

    /// Holds or releases a key. Keys held are told again now and then, and so is a release, since a
    /// record may get lost and a respawn releases all keys. keyIndex::jump with `down` asks for one
    /// jump; it is told once, and its release never. Other keys than those of keyIndex do nothing.
    void setKey(int key, bool down);

    /// Adds mouse counts, which the next service() sends as one view record. Sums stop at the ends
    /// of what a record can hold.
    void turn(int dx, int dy);

    /// Speaks to everyone; at most 30 bytes are sent, none from a 0 byte on.
    void say(std::string_view text);

    /// Sends what was asked for since the last service(), tells the room and closes the socket;
    /// events not yet taken stay. A session that is still joining leaves if the answer has arrived;
    /// else the room keeps a player without a client for five seconds, should the join reach it.
    /// After a second without snapshots, or since the last service(), the room is told nothing,
    /// since the identifier may be somebody else's.
    void leave();

    const Statistics& statistics() const { return parts_.statistics; }
    const RoundTrip& roundTrip() const { return parts_.roundTrip; }
    const TickClock& tickClock() const { return parts_.tickClock; }

  private:
    struct Key {
        bool isDown = false;

        /// How often a release is still to be told.
        int releasesLeft = 0;
        Time tellAt;
    };

    /// Everything, so that moving cannot forget a part.
    struct Parts {
        int socket = -1;
        char id = 0;
        std::string name;

        /// Of the last service(): as it was told, and by the clock, since leave() is told no time.
        Time now;
        Time servedAt;

        // Joining.
        Time firstAsked;
        Time lastAsked;
        int timesAsked = 0;
        bool hasHeard = false;
        bool nobodyListens = false;
        std::optional<Time> refused;
        std::optional<Time> firstSnapshot;

        // Playing.
        Time lastSnapshot;

        /// Snapshots that waited in the socket do not show who has our identifier now.
        bool snapshotsMayBeOld = false;
        Time lastSign;
        std::array<Key, keyIndex::count> keys;
        bool wantsJump = false;
        std::int32_t dx = 0;
        std::int32_t dy = 0;
        std::vector<std::string> words;

        Statistics statistics;
        RoundTrip roundTrip;
        TickClock tickClock;

        /// Those before `taken` have been taken.
        std::vector<Event> events;
        std::size_t taken = 0;
    };

    Session() = default;

    /// Whether nothing more waits in the socket.
    bool receive();
    void take(const char* datagram, std::size_t length);
    void takeAccepted(char id);
    void takeRefused();
    void takeSnapshot(const char* datagram);
    void takeTalk(const char* datagram);

    void ask();
    void tellKeys();
    void tellTurn();
    void speak();
    void send(const void* datagram, std::size_t length);
    void noteNobodyListens();
    void sendLeave(char id);

    void continueJoining();
    void continuePlaying();
    void startPlaying(char id);
    void end(const Event& reason);
    void close();
    void push(Event event);
    Time answerDeadline() const;
    Time silenceDeadline() const;
    bool mayHaveBeenReplaced() const;

    Parts parts_;
};

/// Waits in poll() until the session has something to do; returns at once when it is not open.
void wait(const Session& session);

} // namespace drench::client
