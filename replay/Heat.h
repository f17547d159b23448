#pragma once

#include "arena/picture/Image.h"
#include "replay/Footage.h"
#include "src/MapManager.h"

#include <vector>

namespace drench::replay {

/// How long living players were where: the arena from above, each cell the redder the longer, up to
/// the cell with the most; and a scale below.
arena::Image heatPicture(const MapManager& map, const std::vector<Frame>& frames, int width,
                         int height);

} // namespace drench::replay
