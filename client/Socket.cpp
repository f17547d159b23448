#include "client/Socket.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace drench::client {

namespace {

Socket::Result resultOf(ssize_t length) {
    if (length >= 0)
        return Socket::Result::done;
    if (errno == ECONNREFUSED)
        return Socket::Result::nobodyListens;
    return errno == EAGAIN ? Socket::Result::nothing : Socket::Result::failed;
}

} // namespace

Socket::Socket(Socket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

bool Socket::open(const sockaddr_in& room, std::string& problem) {
    descriptor_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor_ < 0) {
        problem = std::string("no socket: ") + std::strerror(errno);
        return false;
    }
    // Connected, so that strangers cannot reach us, and a closed port is reported.
    if (::connect(descriptor_, reinterpret_cast<const sockaddr*>(&room), sizeof room) != 0) {
        problem = std::string("no way to the room: ") + std::strerror(errno);
        close();
        return false;
    }
    return true;
}

void Socket::close() {
    if (isOpen())
        ::close(std::exchange(descriptor_, -1));
}

Socket::Result Socket::send(const void* datagram, std::size_t length) {
    return resultOf(::send(descriptor_, datagram, length, 0));
}

Socket::Result Socket::receive(char* buffer, std::size_t size, std::size_t& length) {
    const ssize_t received = ::recv(descriptor_, buffer, size, 0);
    length = received < 0 ? 0 : static_cast<std::size_t>(received);
    return resultOf(received);
}

} // namespace drench::client
