#pragma once

#include "client/RoomAddress.h"
#include "common/CommandLine.h"

#include <string>
#include <vector>

namespace drench {

// Shared by the command lines of drench-bots and drench-lag.

/// The highest UDP port.
constexpr int largestPort = 65535;

/// The room that an argument names, by client::resolve(). Throws InputError with the argument and
/// the reason if there is none.
client::RoomAddress roomAt(const std::string& argument);

/// The rooms at the ports "A-B" of a host, at most 250. Throws InputError if that is not a range of
/// ports, or if the host names a port as well.
std::vector<client::RoomAddress> roomsAt(const std::string& host, const std::string& ports);

} // namespace drench
