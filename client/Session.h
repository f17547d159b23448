#pragma once

#include "client/Clock.h"
#include "client/EventQueue.h"
#include "client/Events.h"
#include "client/Inputs.h"
#include "client/Joining.h"
#include "client/Records.h"
#include "client/RoundTrip.h"
#include "client/Socket.h"
#include "client/Tap.h"
#include "client/TickClock.h"

#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The player's side of the protocol in docs/protocol.md. One Session is one player in one room: it
// joins, hears, sends and leaves. It never blocks, starts no thread and reads no clock: wait with
// poll() on descriptor() until wakeAt(), call service(), take the events. Thousands fit into one
// thread. A whole client, which walks forward and tells who got wet:
//
//     std::string problem;
//     const std::optional<client::RoomAddress> room = client::resolve("localhost:5000", problem);
//     std::optional<client::Session> session;
//     if (room)
//         session = client::Session::join(room->address, "Ann", client::Clock::now(), problem);
//     while (session && session->isOpen()) {
//         client::wait(*session, client::Clock::now());
//         session->service(client::Clock::now());
//         while (const std::optional<client::Event> event = session->nextEvent()) {
//             if (std::get_if<client::Joined>(&*event))
//                 session->setKey(keyIndex::forward, true);
//             if (const auto* soaking = std::get_if<client::Soaking>(&*event))
//                 std::cout << soaking->shooter << " got " << soaking->victim << "\n";
//         }
//     }

namespace drench::client {

struct Statistics {
    /// Datagrams, of any kind.
    std::uint64_t sent = 0;
    std::uint64_t received = 0;

    /// Sends that the system refused, a full buffer or a dead network; the datagram is lost.
    std::uint64_t unsent = 0;

    /// Datagrams received that are no record of the protocol: see readRecord().
    std::uint64_t unknown = 0;

    std::uint64_t snapshots = 0;

    /// An estimate from the arrivals: see TickClock.
    std::uint64_t snapshotsMissed = 0;
};

class Session {
  public:
    /// Opens a socket and sends the first join record; Joined, Refused or Unanswered follows. The
    /// record is sent again while neither receipt nor answer has come. If both copies make a
    /// player, the session makes the second player leave. The room keeps the first 11 characters of
    /// the name. Returns nothing if the system gives no socket, with the reason in `problem`.
    /// @param tap  sees all datagrams, those of leaving included: must be callable until the
    /// session is destroyed
    static std::optional<Session> join(const sockaddr_in& room, std::string_view name, Time now,
                                       std::string& problem, Tap tap = {});

    /// Leaves as leave() does, at the last moment passed in. That moment may be long ago: after a
    /// pause in calling service(), call leave() first.
    ~Session();
    Session(Session&& other) noexcept;

    /// The session assigned to leaves as in its destructor.
    Session& operator=(Session&& other) noexcept;

    /// For poll(): readable when there is something for service() to read. -1 once not open.
    int descriptor() const { return parts_.socket.descriptor(); }

    /// The latest moment for the next call of service(), by what is due to be sent and by
    /// time-outs; a moment in the past when something is to be sent now.
    Time wakeAt() const;

    /// Receives what has arrived, up to 256 datagrams, and sends what is due: keys, then the view,
    /// then words, then a keep-alive. To be called at least once a second, or the room drops us.
    /// Round trips are as exact as the calls are prompt.
    void service(Time now);

    /// The oldest event not yet taken. When 1024 wait, further snapshots and words are lost.
    std::optional<Event> nextEvent();

    /// Joining or playing; false after Refused, Unanswered, Dropped or leave().
    bool isOpen() const { return parts_.socket.isOpen(); }
    bool isPlaying() const { return parts_.id != 0; }

    /// Our identifier while playing, else 0.
    char id() const { return parts_.id; }

    /// Our own slot in a snapshot, or null.
    const PlayerUpdate* self(const UpdateMessage& state) const;

    // Inputs, sent by the next service(). They do nothing while not playing. After a second without
    // a snapshot, or a pause of a second in calling service() until it has caught up, we may be out
    // of the room, and our identifier may be another player's. Then keys wait for the next
    // snapshot, and jumps, mouse counts and words are lost.

    /// Holds or releases a key. Both are sent several times, since a record may get lost and a
    /// respawn releases all keys: see Inputs. keyIndex::jump with `down` asks for one jump, which
    /// is sent once; its release is not sent. Keys outside keyIndex do nothing.
    void setKey(int key, bool down);

    /// Adds mouse counts, which the next service() sends as one view record. Sums stop at the ends
    /// of what a record can hold.
    void turn(int dx, int dy);

    /// Sends chat to everyone: at most 30 bytes, up to the first 0 byte.
    void say(std::string_view text);

    /// Makes an input good that got lost, with the next service(): tells how its key is now, asks
    /// for its jump or adds its mouse counts again. Words are not sent again.
    void sendAgain(const InputRecord& lost);

    /// The inputs that the last service() or leave() sent at the moment passed to it, in order,
    /// repeated keys included; for predicting their effect in the room.
    const std::vector<InputRecord>& sentInputs() const { return parts_.sentInputs; }

    /// Sends the inputs that are due and a leave record, and closes the socket; events not yet
    /// taken stay. Sends nothing after a second without a snapshot or without service(), since our
    /// identifier may be another player's by then. While joining, the leave record is sent only if
    /// the answer is among the first 256 datagrams waiting. Otherwise a join that reaches the room
    /// makes a player there without a client, for five seconds.
    void leave(Time now);

    const Statistics& statistics() const { return parts_.statistics; }
    const RoundTrip& roundTrip() const { return parts_.roundTrip; }
    const TickClock& tickClock() const { return parts_.tickClock; }

  private:
    /// All members, so that moving cannot forget one.
    struct Parts {
        Socket socket;
        Tap tap;
        std::string name;

        /// The last moment passed in.
        Time now;

        /// Whether the host said that no socket is bound to the port, and nothing has come since.
        bool nobodyListens = false;
        Joining joining;

        /// Not 0 while playing. This and the members up to `sentInputs` are meaningful only then.
        char id = 0;
        Time lastSnapshot;

        /// Whether the latest snapshots may have waited in the socket: another player may have our
        /// identifier by now.
        bool snapshotsMayBeOld = false;

        /// The moment of the last datagram that keeps us in the room.
        Time lastSign;
        Inputs inputs;
        std::vector<InputRecord> sentInputs;

        Statistics statistics;
        RoundTrip roundTrip;
        TickClock tickClock;
        EventQueue events;
    };

    Session() = default;

    template<class Take>
    bool receive(const Take& take);
    void take(std::string_view datagram);
    void take(const UnknownRecord& unknown);
    void take(const Receipt& receipt);
    void take(const AcceptanceMessage& acceptance);
    void take(const RefusalMessage& refusal);
    void take(const UpdateMessage& state);
    void take(const TalkMessage& talk);
    void takeWhileLeaving(std::string_view datagram);

    void continueJoining();
    void continuePlaying();
    void startPlaying(char id);
    void end(const Event& reason);
    void close();

    bool send(const void* datagram, std::size_t length);
    void sendJoin();
    void sendInputs();
    void sendKeepAlive();
    void sendLeave(char id);
    void noteNobodyListens();

    Time silenceDeadline() const;
    bool mayHaveBeenReplaced() const;

    Parts parts_;
};

/// Waits in poll() from `now` until the session has something to do; returns at once when it is not
/// open.
void wait(const Session& session, Time now);

} // namespace drench::client
