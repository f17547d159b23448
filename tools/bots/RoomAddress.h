#pragma once

#include <netinet/in.h>
#include <string>

namespace bots {

/// A room to play in.
struct RoomAddress {
    /// As the user named it, with its port: "localhost:5000".
    std::string name;
    sockaddr_in address{};
};

/// The room at "HOST:PORT", "HOST" or ":PORT", as client::resolve() finds it. Throws
/// arena::InputError with the reason where it does not.
RoomAddress roomAt(const std::string& hostAndPort);

} // namespace bots
