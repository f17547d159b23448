#include "client/RoomAddress.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <netdb.h>
#include <sys/socket.h>

namespace drench::client {

namespace {

constexpr int defaultPort = 5000;

} // namespace

std::optional<RoomAddress> resolve(std::string_view hostAndPort, std::string& problem) {
    const std::size_t colon = hostAndPort.rfind(':');
    const std::string host(hostAndPort.substr(0, colon));
    int port = defaultPort;
    if (colon != std::string_view::npos) {
        const std::string_view digits = hostAndPort.substr(colon + 1);
        const char* const end = digits.data() + digits.size();
        // Not numberIn() of common/: the client library stands on the game alone.
        const auto [stop, failure] = std::from_chars(digits.data(), end, port);
        if (failure != std::errc() || stop != end || port < 1 || port > 65535) {
            problem = "\"" + std::string(digits) + "\" is no port from 1 to 65535";
            return std::nullopt;
        }
    }
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    const std::string portText = std::to_string(port);
    const int failure =
        getaddrinfo(host.empty() ? nullptr : host.c_str(), portText.c_str(), &hints, &found);
    if (failure != 0) {
        problem = "cannot find the host \"" + host +
                  "\": " + (failure == EAI_SYSTEM ? std::strerror(errno) : gai_strerror(failure));
        return std::nullopt;
    }
    RoomAddress room;
    room.name = (host.empty() ? "localhost" : host) + ':' + portText;
    std::memcpy(&room.address, found->ai_addr, sizeof room.address);
    freeaddrinfo(found);
    return room;
}

} // namespace drench::client
