#include "arena/Map.h"

#include "common/Files.h"

#include <string>

namespace drench::arena {

bool isArenaSize(long columns, long rows, long depth) {
    if (columns < 1 || rows < 1 || depth < 1)
        return false;
    return columns <= mostCells && rows <= mostCells / columns &&
           depth <= mostCells / (columns * rows);
}

std::string sizeWords(long columns, long rows, long depth) {
    return std::to_string(columns) + " x " + std::to_string(rows) + " x " + std::to_string(depth);
}

MapManager emptyMap(int columns, int rows, int depth) {
    MapManager map;
    map.init(std::to_string(columns) + " " + std::to_string(rows) + " " + std::to_string(depth));
    return map;
}

void requireCells(const MapManager& map) {
    if (!map.hasCells())
        throw InputError("the map has no cells");
}

Box& cell(MapManager& map, int column, int row, int depth) {
    return map.cubes[static_cast<std::size_t>(column)][static_cast<std::size_t>(row)]
                    [static_cast<std::size_t>(depth)];
}

const Box& cell(const MapManager& map, int column, int row, int depth) {
    return map.cubes[static_cast<std::size_t>(column)][static_cast<std::size_t>(row)]
                    [static_cast<std::size_t>(depth)];
}

CellIndex cellAt(const MapManager& map, vec3 point) {
    return {map.getColumn(point.x), map.getRow(point.y), map.getDepth(point.z)};
}

} // namespace drench::arena
