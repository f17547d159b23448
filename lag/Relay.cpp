#include "lag/Relay.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace drench::lag {

namespace {

/// A limit, so that a flood on one socket cannot keep the others waiting.
constexpr int datagramsPerService = 64;

/// The most bytes of a UDP datagram.
constexpr std::size_t largestDatagram = 65535;

const sockaddr* generic(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

bool isSame(const sockaddr_in& a, const sockaddr_in& b) {
    return a.sin_addr.s_addr == b.sin_addr.s_addr && a.sin_port == b.sin_port;
}

std::string failed(const std::string& what) {
    return what + ": " + std::strerror(errno);
}

int openSocket() {
    const int opened = socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (opened < 0)
        throw std::runtime_error(failed("no socket"));
    return opened;
}

} // namespace

Relay::Relay(std::uint16_t port, const sockaddr_in& room, const Settings& up, const Settings& down,
             std::uint64_t seed, std::function<void(const std::string&)> note)
    : towardsClients_(openSocket()), room_(room), upSettings_(up), downSettings_(down),
      chance_(seed), note_(std::move(note)), buffer_(largestDatagram) {
    sockaddr_in own = {};
    own.sin_family = AF_INET;
    own.sin_port = htons(port);
    if (bind(towardsClients_.number, generic(own), sizeof own) != 0)
        throw std::runtime_error(failed("port " + std::to_string(port)));
    socklen_t length = sizeof own;
    getsockname(towardsClients_.number, reinterpret_cast<sockaddr*>(&own), &length);
    port_ = ntohs(own.sin_port);

    // Only an address of this machine can be bound.
    sockaddr_in onRoomsHost = room;
    onRoomsHost.sin_port = 0;
    const Descriptor probe(openSocket());
    if (room.sin_port == own.sin_port &&
        bind(probe.number, generic(onRoomsHost), sizeof onRoomsHost) == 0)
        throw std::runtime_error("port " + std::to_string(port_) +
                                 ": the room cannot be the relay itself");
    polled_.push_back({towardsClients_.number, POLLIN, 0});
}

Time Relay::wakeAt() const {
    return queue_.empty() ? Time::max() : queue_.front().due;
}

void Relay::wait(Duration longest) {
    const Duration left = std::max(longest, Duration(0));
    const auto whole = std::chrono::floor<std::chrono::seconds>(left);
    timespec timeout = {};
    timeout.tv_sec = whole.count();
    timeout.tv_nsec = std::chrono::nanoseconds(left - whole).count();
    if (ppoll(polled_.data(), polled_.size(), &timeout, nullptr) >= 0)
        return;
    for (pollfd& polled : polled_)
        polled.revents = 0;
}

void Relay::service(Time now) {
    for (std::size_t i = 0; i < clients_.size(); ++i) {
        if (std::exchange(polled_[i + 1].revents, short{0}) != 0)
            receiveFromRoom(clients_[i], now);
    }
    if (std::exchange(polled_.front().revents, short{0}) != 0)
        receiveFromClients(now);
    sendDue(now);
    forgetSilent(now);
}

void Relay::receiveFromClients(Time now) {
    for (int i = 0; i < datagramsPerService; ++i) {
        sockaddr_in from = {};
        socklen_t size = sizeof from;
        const ssize_t length = recvfrom(towardsClients_.number, buffer_.data(), buffer_.size(), 0,
                                        reinterpret_cast<sockaddr*>(&from), &size);
        if (length < 0)
            return;
        const std::shared_ptr<Client> peer = clientAt(from, now);
        if (peer)
            take(Direction::up, peer, static_cast<std::size_t>(length), now);
    }
}

void Relay::receiveFromRoom(const std::shared_ptr<Client>& peer, Time now) {
    for (int i = 0; i < datagramsPerService; ++i) {
        const ssize_t length = recv(peer->towardsRoom.number, buffer_.data(), buffer_.size(), 0);
        if (length >= 0) {
            const auto size = static_cast<std::size_t>(length);
            show(client::Way::fromRoom, *peer, {buffer_.data(), size}, now);
            take(Direction::down, peer, size, now);
        } else if (errno == ECONNREFUSED) {
            ++refusals_;
        } else {
            return;
        }
    }
}

/// The client at this address, a new one if need be; null if it cannot be let through.
std::shared_ptr<Relay::Client> Relay::clientAt(const sockaddr_in& address, Time now) {
    for (const std::shared_ptr<Client>& peer : clients_) {
        if (isSame(peer->address, address)) {
            peer->lastHeard = now;
            return peer;
        }
    }
    try {
        return letThrough(address, now);
    } catch (const std::runtime_error& error) {
        if (noted_ != error.what())
            note_(noted_ = error.what());
        return nullptr;
    }
}

/// Throws std::runtime_error if there is no place for another client, or no way to the room.
std::shared_ptr<Relay::Client> Relay::letThrough(const sockaddr_in& address, Time now) {
    if (clients_.size() >= mostClients)
        throw std::runtime_error(std::to_string(mostClients) +
                                 " clients are here; more are not let through");
    std::shared_ptr<Client> peer(
        new Client{.address = address,
                   .number = static_cast<std::uint32_t>(clientsSeen_),
                   .towardsRoom = Descriptor(openSocket()),
                   .up = {.impairment = Impairment(upSettings_, chance_.bits())},
                   .down = {.impairment = Impairment(downSettings_, chance_.bits())},
                   .lastHeard = now});
    // Connected, so that datagrams from elsewhere never reach it.
    if (connect(peer->towardsRoom.number, generic(room_), sizeof room_) != 0)
        throw std::runtime_error(failed("no way to the room"));
    polled_.push_back({peer->towardsRoom.number, POLLIN, 0});
    clients_.push_back(peer);
    ++clientsSeen_;
    return peer;
}

void Relay::take(Direction direction, const std::shared_ptr<Client>& peer, std::size_t length,
                 Time now) {
    Traffic& traffic = trafficOf(direction);
    Line& line = direction == Direction::up ? peer->up : peer->down;
    ++traffic.in;
    ++line.received;
    const Fate fate = line.impairment.decide(now);
    if (fate.copies == 0)
        ++traffic.lost;
    for (int copy = 0; copy < fate.copies; ++copy)
        keep({.due = fate.due,
              .order = datagramsKept_++,
              .direction = direction,
              .isCopy = copy > 0,
              .number = line.received,
              .arrival = now,
              .peer = peer,
              .bytes = std::string(buffer_.data(), length)});
}

void Relay::keep(Datagram datagram) {
    if (bytesWaiting_ + bytesKept(datagram) > mostBytesWaiting) {
        ++trafficOf(datagram.direction).overflowed;
        return;
    }
    bytesWaiting_ += bytesKept(datagram);
    queue_.push_back(std::move(datagram));
    std::push_heap(queue_.begin(), queue_.end(), isLater);
}

void Relay::sendDue(Time now) {
    while (!queue_.empty() && queue_.front().due <= now) {
        std::pop_heap(queue_.begin(), queue_.end(), isLater);
        const Datagram datagram = std::move(queue_.back());
        queue_.pop_back();
        bytesWaiting_ -= bytesKept(datagram);
        Traffic& traffic = trafficOf(datagram.direction);
        if (!send(datagram, now)) {
            ++traffic.unsent;
            continue;
        }
        ++traffic.out;
        traffic.delays.add(now - datagram.arrival);
        if (datagram.isCopy) {
            ++traffic.duplicated;
            continue;
        }
        Line& line = datagram.direction == Direction::up ? datagram.peer->up : datagram.peer->down;
        if (datagram.number < line.newestSent)
            ++traffic.reordered;
        else
            line.newestSent = datagram.number;
    }
}

bool Relay::send(const Datagram& datagram, Time now) {
    const Client& peer = *datagram.peer;
    const std::string& bytes = datagram.bytes;
    if (datagram.direction == Direction::down)
        return sendto(towardsClients_.number, bytes.data(), bytes.size(), 0, generic(peer.address),
                      sizeof peer.address) >= 0;
    // A refusal answers an earlier datagram; this one has not been sent yet.
    for (int tries = 0; tries < 2; ++tries) {
        if (::send(peer.towardsRoom.number, bytes.data(), bytes.size(), 0) >= 0) {
            show(client::Way::toRoom, peer, bytes, now);
            return true;
        }
        if (errno != ECONNREFUSED)
            return false;
        ++refusals_;
    }
    return false;
}

void Relay::show(client::Way way, const Client& peer, std::string_view datagram, Time now) const {
    if (tap_)
        tap_(way, peer.number, datagram, now);
}

void Relay::forgetSilent(Time now) {
    for (std::size_t i = clients_.size(); i-- > 0;) {
        if (now - clients_[i]->lastHeard < longestSilence)
            continue;
        const auto index = static_cast<std::ptrdiff_t>(i);
        clients_.erase(clients_.begin() + index);
        polled_.erase(polled_.begin() + 1 + index);
    }
}

bool Relay::isLater(const Datagram& a, const Datagram& b) {
    return a.due != b.due ? a.due > b.due : a.order > b.order;
}

std::size_t Relay::bytesKept(const Datagram& datagram) {
    return sizeof datagram + datagram.bytes.size();
}

} // namespace drench::lag
