#pragma once

#include "client/Hypothesis.h"
#include "client/PredictionSearch.h"
#include "src/MapManager.h"
#include "src/Messages.h"

#include <cstdint>
#include <optional>
#include <vector>

// Where a prediction begins: at a spawn, whose state is known whole, or, where nothing explains a
// snapshot, at what that shows.

namespace drench::client {

/// The ways in which a player who was not there, or soaked, can have come to what is seen from one
/// of the spawn poses, to the bit; none if there is no way.
/// @param tick  the number of the newest tick known
std::vector<Hypothesis> startsAtSpawn(MapManager& map, const Evidence& evidence, std::int64_t tick);

/// Guesses what the snapshot does not tell, in several ways; the next one chooses.
/// @param before  the snapshot before this one, if any
/// @param likeliest  what was believed until then, or null
std::vector<Hypothesis> startsAtSight(MapManager& map, const Evidence& evidence, std::int64_t tick,
                                      const std::optional<PlayerUpdate>& before,
                                      const Hypothesis* likeliest);

} // namespace drench::client
