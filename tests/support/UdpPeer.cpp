#include "tests/support/UdpPeer.h"

#include <arpa/inet.h>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace {

sockaddr_in loopback(int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<unsigned short>(port));
    return address;
}

} // namespace

UdpPeer::UdpPeer() : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_in any = loopback(0);
    if (socket_ < 0 || bind(socket_, reinterpret_cast<const sockaddr*>(&any), sizeof any) < 0)
        throw std::runtime_error(std::string("no socket on 127.0.0.1: ") + strerror(errno));
}

UdpPeer::~UdpPeer() {
    close(socket_);
}

Client UdpPeer::address() const {
    Client client;
    getsockname(socket_, reinterpret_cast<sockaddr*>(&client.addr), &client.addrLen);
    return client;
}

void UdpPeer::send(const std::string& datagram, int port) {
    const sockaddr_in to = loopback(port);
    if (sendto(socket_, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr*>(&to),
               sizeof to) < 0)
        throw std::runtime_error(std::string("cannot send: ") + strerror(errno));
}

std::optional<std::string> UdpPeer::receive(int milliseconds) {
    pollfd waiting = {socket_, POLLIN, 0};
    if (poll(&waiting, 1, milliseconds) <= 0)
        return std::nullopt;
    char buffer[2048];
    const ssize_t length = recv(socket_, buffer, sizeof buffer, 0);
    if (length < 0)
        return std::nullopt;
    return std::string(buffer, static_cast<size_t>(length));
}

std::vector<std::string> UdpPeer::received() {
    std::vector<std::string> all;
    while (auto datagram = receive(0))
        all.push_back(*datagram);
    return all;
}
