#include "replay/PaleMap.h"

#include "arena/Reach.h"

#include <algorithm>
#include <vector>

namespace drench::replay {

namespace {

/// The share of white in everything.
constexpr double paleness = 0.3;

} // namespace

PaleMap paleMap(const MapManager& map, int width, int height, int mapHeight) {
    const std::vector<arena::CellIndex> floors = arena::walkableCells(map);
    const arena::Image plain = arena::topPicture(map, {}, floors, floors, width, mapHeight);
    PaleMap pale{arena::Image(width, height, plain.at(0, 0)),
                 arena::topView(map, floors, floors, width, mapHeight)};
    std::copy(plain.pixels.begin(), plain.pixels.end(), pale.image.pixels.begin());
    arena::fillRectangle(pale.image, {0.0, 0.0}, {double(width), double(height)}, arena::white,
                         paleness);
    return pale;
}

bool isAbove(const MapManager& map, vec3 point) {
    return point.x >= 0.0f && point.x <= map.width && point.z >= 0.0f && point.z <= map.length;
}

} // namespace drench::replay
