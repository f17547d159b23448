#pragma once

#include "src/MapManager.h"

#include <optional>
#include <string>

namespace drench::arena {

/// Whether row 0 and the four sides are solid to the full height.
bool isEnclosed(const MapManager& map);

/// For the map of a text that is no arena as it stands: in which other order of the header's three
/// numbers or of the cells it is one, enclosed and with eight spawns that land, in words such as
/// "its header is taken as columns, depth, rows". Another header comes before other cells, and
/// those before both. Nothing where it is an arena as it stands, or in no order.
std::optional<std::string> orderOfAnArena(const MapManager& map);

} // namespace drench::arena
