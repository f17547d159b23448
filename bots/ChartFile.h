#pragma once

#include "bots/Roadmap.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace drench::bots {

/// All inputs that determine a chart.
struct ChartOrigin {
    /// Checksum of the extents and of which cells block; materials change no road.
    std::uint64_t arena = 0;

    /// Checksum of the program: another version may walk otherwise, or use another format.
    std::uint64_t program = 0;
};

std::uint64_t arenaChecksum(const MapManager& map);

/// A chart as the bytes of a file, in the byte order of this machine: a head with the origin and
/// the counts, the places with their roads, the landings, the departures, and a checksum of all
/// these.
std::string writeChart(const Roadmap& roadmap, const ChartOrigin& origin);

/// The chart of the map, which must outlive it. Nothing if the bytes are damaged, of another
/// origin, or lead out of the map or the chart.
std::optional<Roadmap> readChart(std::string_view bytes, const ChartOrigin& origin,
                                 MapManager& map);

} // namespace drench::bots
