#pragma once

#include "src/MapManager.h"

#include <optional>
#include <string>

namespace drench::arena {

/// Whether row 0 and the four sides are solid to the full height.
bool isEnclosed(const MapManager& map);

/// Looks for another order of the header's three numbers or of the cells in which the map is an
/// arena: enclosed, with eight spawns that land. Returns that order in words such as "its header is
/// taken as columns, depth, rows". Another header is tried before other cells, and both at once
/// last. Returns nothing if the map is an arena as it stands, or in no order.
std::optional<std::string> orderOfAnArena(const MapManager& map);

} // namespace drench::arena
