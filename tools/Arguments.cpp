#include "tools/Arguments.h"

#include "common/Files.h"

#include <arpa/inet.h>

namespace drench {

namespace {

/// Bots take four sockets in each room; this stays below the usual limit of 1024 descriptors.
constexpr int mostRooms = 250;

} // namespace

client::RoomAddress roomAt(const std::string& argument) {
    std::string problem;
    std::optional<client::RoomAddress> room = client::resolve(argument, problem);
    if (!room)
        throw InputError(argument + ": " + problem);
    return *room;
}

std::vector<client::RoomAddress> roomsAt(const std::string& host, const std::string& ports) {
    const auto fail = [&ports](const std::string& words) {
        throw InputError("--rooms " + ports + ": " + words);
    };
    const std::size_t dash = std::min(ports.find('-'), ports.size());
    const int first = numberIn<int>(ports.substr(0, dash)).value_or(0);
    const int last = numberIn<int>(ports.substr(std::min(dash + 1, ports.size()))).value_or(0);
    if (first < 1 || last < first || last > largestPort)
        fail("not two ports as in 5000-5063");
    if (last - first >= mostRooms)
        fail("more than " + std::to_string(mostRooms) + " rooms");
    if (host.find(':') != std::string::npos)
        fail(host + " must not name a port as well");
    const client::RoomAddress any = roomAt(host);
    std::vector<client::RoomAddress> rooms;
    for (int port = first; port <= last; ++port) {
        rooms.push_back(any);
        rooms.back().name = host + ':' + std::to_string(port);
        rooms.back().address.sin_port = htons(static_cast<std::uint16_t>(port));
    }
    return rooms;
}

} // namespace drench
