#pragma once

#include "arena/Arrivals.h"
#include "bots/Roadmap.h"
#include "src/MapManager.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace drench::bots {

/// Called now and then with what is being done and how many places that has come to.
using Progress = std::function<void(const char* stage, std::size_t places)>;

/// Explores the map, which must outlive the result, from its spawns, and tries every move between
/// standing places with the Walker that bots use. Leaves out places that no road leads to from a
/// landing, and those from which none leads to one. Throws InputError for a map without cells.
Roadmap chart(MapManager& map, const Progress& progress = {});

/// The same for these arrivals, whose landings follow in their order.
Roadmap chart(MapManager& map, const std::vector<arena::Arrival>& arrivals,
              const Progress& progress = {});

} // namespace drench::bots
