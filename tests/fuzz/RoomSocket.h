#pragma once

#include "common/Descriptor.h"
#include "tests/fuzz/Require.h"

#include <netinet/in.h>
#include <optional>
#include <string>
#include <sys/socket.h>

/// A socket on 127.0.0.1, where what is sent has arrived: the room's end of a line, or a client's.
class RoomSocket {
  public:
    RoomSocket() : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address_;
        require(socket_.number >= 0 && ::bind(socket_.number, generic(address_), length) == 0 &&
                    ::getsockname(socket_.number, generic(address_), &length) == 0,
                "there is a socket on 127.0.0.1");
    }

    const sockaddr_in& address() const { return address_; }

    /// The next datagram, whose sender is answered from then on.
    std::optional<std::string> receive() {
        char bytes[600];
        socklen_t length = sizeof peer_;
        const ssize_t size =
            ::recvfrom(socket_.number, bytes, sizeof bytes, 0, generic(peer_), &length);
        if (size < 0)
            return std::nullopt;
        return std::string(bytes, static_cast<std::size_t>(size));
    }

    /// Whom send() reaches: the sender of the last datagram that came, unless told otherwise.
    const sockaddr_in& peer() const { return peer_; }
    void turnTo(const sockaddr_in& peer) { peer_ = peer; }

    void send(const std::string& datagram) {
        require(::sendto(socket_.number, datagram.data(), datagram.size(), 0, generic(peer_),
                         sizeof peer_) == static_cast<ssize_t>(datagram.size()),
                "a datagram leaves for 127.0.0.1");
    }

  private:
    static sockaddr* generic(sockaddr_in& address) { return reinterpret_cast<sockaddr*>(&address); }

    drench::Descriptor socket_;
    sockaddr_in address_ = {};
    sockaddr_in peer_ = {};
};
