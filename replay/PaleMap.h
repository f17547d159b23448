#pragma once

#include "arena/picture/Image.h"
#include "arena/picture/Picture.h"
#include "src/MapManager.h"

namespace drench::replay {

/// An arena from above to draw on.
struct PaleMap {
    arena::Image image;
    arena::TopView view;
};

/// The arena paler than arena::topPicture draws it and with all floors alike, as this does not
/// judge where players get to. It takes up the upper `mapHeight` pixels of the image.
PaleMap paleMap(const MapManager& map, int width, int height, int mapHeight);

/// Whether a point lies above the map. A hostile room may send a point elsewhere, or NaN.
bool isAbove(const MapManager& map, vec3 point);

} // namespace drench::replay
