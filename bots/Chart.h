#pragma once

#include "arena/Arrivals.h"
#include "bots/Roadmap.h"
#include "src/MapManager.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace drench::bots {

/// Called now and then with the current stage and the number of places done in it.
using Progress = std::function<void(const char* stage, std::size_t places)>;

/// Explores the map, which must outlive the result, from its spawns, and tries every move between
/// standing places with the Walker that bots use. Leaves out places that no road reaches from a
/// landing, and places without a road back to a landing. Throws InputError for a map without cells.
Roadmap chart(MapManager& map, const Progress& progress = {});

/// The same for these arrivals; the roadmap's landings are in their order.
Roadmap chart(MapManager& map, const std::vector<arena::Arrival>& arrivals,
              const Progress& progress = {});

} // namespace drench::bots
