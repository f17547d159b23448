#pragma once

#include "src/MapManager.h"

#include <compare>
#include <string>

namespace drench::arena {

/// A cell of the grid; ordered as in the map text.
struct CellIndex {
    int column = 0;
    int row = 0;
    int depth = 0;

    auto operator<=>(const CellIndex&) const = default;
};

/// Edge length of a cube in world units, as coordinates need it.
constexpr float cubeEdge = MapManager::cubeEdge;

/// The most cells that any tool makes a map of: 256 × 32 × 256 take 110 MB.
constexpr long mostCells = 256L * 32 * 256;

/// Whether a map of these dimensions has cells, and at most mostCells of them.
bool isArenaSize(long columns, long rows, long depth);

/// "32 x 16 x 32"
std::string sizeWords(long columns, long rows, long depth);

/// A map of empty cells. The dimensions must be an arena's size.
MapManager emptyMap(int columns, int rows, int depth);

/// Throws InputError "the map has no cells" if the map has none.
void requireCells(const MapManager& map);

/// The cell (i, j, k), which must lie in the grid: its `solid` and `cellValue` may be set.
Box& cell(MapManager& map, int column, int row, int depth);
const Box& cell(const MapManager& map, int column, int row, int depth);

/// The cell of the grid that holds the point, or the nearest one. The map must have cells.
CellIndex cellAt(const MapManager& map, vec3 point);

} // namespace drench::arena
