#include "Map.h"

#include <string>

namespace arena {

bool isArenaSize(long columns, long rows, long depth) {
    if (columns < 1 || rows < 1 || depth < 1)
        return false;
    return columns <= mostCells && rows <= mostCells / columns &&
           depth <= mostCells / (columns * rows);
}

MapManager emptyMap(int columns, int rows, int depth) {
    MapManager map;
    map.init(std::to_string(columns) + " " + std::to_string(rows) + " " + std::to_string(depth));
    return map;
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

bool sameCells(const MapManager& a, const MapManager& b) {
    if (a.columns != b.columns || a.rows != b.rows || a.depth != b.depth)
        return false;
    for (int i = 0; i < a.columns; ++i) {
        for (int j = 0; j < a.rows; ++j) {
            for (int k = 0; k < a.depth; ++k) {
                const Box& one = cell(a, i, j, k);
                const Box& other = cell(b, i, j, k);
                if (one.solid != other.solid || one.cellValue != other.cellValue)
                    return false;
            }
        }
    }
    return true;
}

} // namespace arena
