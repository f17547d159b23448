#pragma once

#include "common/GapHistogram.h"
#include "lag/Impairment.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

namespace drench::lag {

/// The datagrams of one direction, over all clients.
struct Traffic {
    std::uint64_t in = 0;

    /// Datagrams that went on, copies included.
    std::uint64_t out = 0;

    /// Datagrams lost on purpose, by the settings.
    std::uint64_t lost = 0;

    /// Copies that went on behind their originals.
    std::uint64_t duplicated = 0;

    /// Datagrams that went on after a later arrival, as in RFC 4737; copies do not count.
    std::uint64_t reordered = 0;

    /// Datagrams thrown away because too many bytes were waiting.
    std::uint64_t overflowed = 0;

    /// Datagrams that the system did not send.
    std::uint64_t unsent = 0;

    /// The times from arrival to departure.
    GapHistogram delays;
};

struct Report {
    int port = 0;

    /// As the user named it: "localhost:5000".
    std::string room;
    double seconds = 0.0;
    std::uint64_t seed = 0;

    /// All clients that came, also those that fell silent.
    std::uint64_t clients = 0;

    /// The count of refusals by the room's host: no socket was bound there.
    std::uint64_t refusals = 0;

    /// Copies and datagrams that were on their way at the end.
    std::size_t waiting = 0;

    /// Towards the room.
    Settings upSettings;
    Traffic up;

    /// Towards the clients.
    Settings downSettings;
    Traffic down;
};

/// Writes a table for people, with a line for each direction and one for each other notable event.
void writeTable(std::ostream& out, const Report& report);

/// Writes the same, with the settings, as one JSON object for programs.
void writeJson(std::ostream& out, const Report& report);

} // namespace drench::lag
