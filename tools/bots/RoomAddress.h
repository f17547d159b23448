#pragma once

#include <netinet/in.h>
#include <string>

namespace bots {

/// A room to play in.
struct RoomAddress {
    /// As the user named it: "localhost:5000".
    std::string name;
    sockaddr_in address{};
};

} // namespace bots
