#pragma once

#include <netinet/in.h>
#include <optional>
#include <string>
#include <string_view>

namespace drench::client {

/// The address of a room.
struct RoomAddress {
    /// As the user named it, with its port: "localhost:5000".
    std::string name;
    sockaddr_in address{};
};

/// The room at "HOST:PORT", "HOST" (port 5000) or ":PORT" (this machine), IPv4 only. Asks the
/// system's resolver, which may block for seconds. Nothing on failure, with the reason in
/// `problem`.
std::optional<RoomAddress> resolve(std::string_view hostAndPort, std::string& problem);

} // namespace drench::client
