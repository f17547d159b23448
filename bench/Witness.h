#pragma once

#include "client/ArrivalLine.h"
#include "client/Explanation.h"
#include "src/MapManager.h"
#include "src/Player.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace drench::bench {

/// A player in a snapshot of somebody who misses none.
struct Sighting {
    PlayerUpdate seen;

    /// Milliseconds on the clock of the records.
    double at = 0.0;

    /// Milliseconds from tick to tick, as known then.
    double period = 0.0;
};

/// What became of a player's records in the room.
struct Truth {
    /// After each tick, to the bit, from the first sighting on.
    std::vector<Player> states;

    /// For each record that acted, the index of the tick in which it did.
    std::map<std::uint64_t, std::size_t> acted;

    /// From the sending of a record to the earliest moment at which the witness sees it act, in
    /// milliseconds.
    double delay = 0.0;
};

/// Finds out from gapless sightings of one life, the first one in the tick of the spawn, which
/// records acted in which tick. Nothing if a sighting has no explanation to the bit; then
/// `problem` says which.
/// @param guessedDelay  a first guess of Truth::delay
std::optional<Truth> testify(MapManager& map, const std::vector<Sighting>& sightings,
                             const client::SentRecords& records, double guessedDelay,
                             std::string& problem);

} // namespace drench::bench
