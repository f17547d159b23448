#pragma once

#include "client/Tap.h"
#include "common/Descriptor.h"
#include "lag/Impairment.h"
#include "lag/TrafficReport.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace drench::lag {

/// A relay between clients and a room. Clients send to its port; the room sees each client as a
/// port of its own on the relay's host. Datagrams of any size pass byte for byte. Each client has a
/// line of its own, impaired separately from other lines and in each direction. Its draws follow
/// from the seed and from the number of clients before it.
///
/// No socket error ends a running relay: a room that is down refuses datagrams, and is heard again
/// once it is back.
class Relay {
  public:
    /// The most clients at a time. Datagrams of further clients are dropped, which is noted once.
    static constexpr std::size_t mostClients = 256;

    /// A client that sends nothing for this long is forgotten.
    static constexpr std::chrono::minutes longestSilence{1};

    /// The most bytes of waiting datagrams and of their records. Further datagrams are thrown away.
    static constexpr std::size_t mostBytesWaiting = 16u << 20;

    /// Listens on all addresses of this machine; port 0 lets the system choose. Throws
    /// std::runtime_error if that fails, or if the room is this very port.
    /// @param note  called with a line about each trouble
    Relay(std::uint16_t port, const sockaddr_in& room, const Settings& up, const Settings& down,
          std::uint64_t seed, std::function<void(const std::string&)> note);

    /// Has all datagrams shown to `tap` as the room's end of the lines has them: those to the room
    /// when they go on, others when they come in. Clients are numbered from 0 as they come.
    void showTo(client::LineTap tap) { tap_ = std::move(tap); }

    int port() const { return port_; }

    /// The moment at which service() has to send next; Time::max() if nothing waits.
    Time wakeAt() const;

    /// Waits until something has come in, the time is over, or a signal has come.
    void wait(Duration longest);

    /// Receives up to 64 datagrams from each socket that wait() found readable, and sends the due
    /// ones.
    void service(Time now);

    std::size_t clients() const { return clients_.size(); }
    std::uint64_t clientsSeen() const { return clientsSeen_; }
    std::uint64_t refusals() const { return refusals_; }
    std::size_t waiting() const { return queue_.size(); }
    const Traffic& up() const { return up_; }
    const Traffic& down() const { return down_; }

  private:
    /// One direction of one client's line.
    struct Line {
        Impairment impairment;
        std::uint64_t received = 0;

        /// The number of the newest datagram that has gone on.
        std::uint64_t newestSent = 0;
    };

    struct Client {
        sockaddr_in address;
        std::uint32_t number;
        Descriptor towardsRoom;
        Line up;
        Line down;
        Time lastHeard;
    };

    enum class Direction { up, down };

    struct Datagram {
        Time due;

        /// Orders datagrams that are due at the same moment, by their arrival.
        std::uint64_t order;
        Direction direction;
        bool isCopy;

        /// The datagram's number on its line, from 1.
        std::uint64_t number;
        Time arrival;

        /// Kept alive until its last datagram has gone on.
        std::shared_ptr<Client> peer;
        std::string bytes;
    };

    static bool isLater(const Datagram& a, const Datagram& b);
    static std::size_t bytesKept(const Datagram& datagram);
    void receiveFromClients(Time now);
    void receiveFromRoom(const std::shared_ptr<Client>& peer, Time now);
    std::shared_ptr<Client> clientAt(const sockaddr_in& address, Time now);
    std::shared_ptr<Client> letThrough(const sockaddr_in& address, Time now);
    void take(Direction direction, const std::shared_ptr<Client>& peer, std::size_t length,
              Time now);
    void keep(Datagram datagram);
    void sendDue(Time now);
    bool send(const Datagram& datagram, Time now);
    void show(client::Way way, const Client& peer, std::string_view datagram, Time now) const;
    void forgetSilent(Time now);

    Traffic& trafficOf(Direction direction) { return direction == Direction::up ? up_ : down_; }

    Descriptor towardsClients_;
    int port_ = 0;
    sockaddr_in room_;
    Settings upSettings_;
    Settings downSettings_;
    Chance chance_;
    std::function<void(const std::string&)> note_;
    client::LineTap tap_;

    /// The sockets of wait(): the one for clients, then those of `clients_` in their order.
    std::vector<pollfd> polled_;
    std::vector<std::shared_ptr<Client>> clients_;
    std::uint64_t clientsSeen_ = 0;

    /// The last note, which is not repeated.
    std::string noted_;
    std::uint64_t refusals_ = 0;

    /// A heap by due time: the first is due first.
    std::vector<Datagram> queue_;
    std::size_t bytesWaiting_ = 0;
    std::uint64_t datagramsKept_ = 0;
    Traffic up_;
    Traffic down_;
    std::vector<char> buffer_;
};

} // namespace drench::lag
