#include "arena/NewPlan.h"

#include "arena/Arrivals.h"
#include "arena/Map.h"
#include "arena/Plan.h"
#include "common/Files.h"

#include <algorithm>
#include <vector>

namespace drench::arena {

namespace {

constexpr int floorValue = 1;
constexpr int borderValue = 2;

MapManager emptyCourt(int columns, int rows, int depth) {
    MapManager map = emptyMap(columns, rows, depth);
    for (int i = 0; i < columns; ++i) {
        for (int j = 0; j < rows; ++j) {
            for (int k = 0; k < depth; ++k) {
                const bool isBorder = i == 0 || i == columns - 1 || k == 0 || k == depth - 1;
                Box& cube = cell(map, i, j, k);
                cube.solid = isBorder || j == 0;
                cube.cellValue = isBorder ? borderValue : j == 0 ? floorValue : 0;
            }
        }
    }
    return map;
}

/// The cells that a body is in, inside the arena or not.
std::vector<CellIndex> cellsOf(const Box& body) {
    const auto index = [](float coordinate) { return static_cast<int>(coordinate / cubeEdge); };
    std::vector<CellIndex> cells;
    for (int i = index(body.min.x); i <= index(body.max.x); ++i) {
        for (int j = index(body.min.y); j <= index(body.max.y); ++j) {
            for (int k = index(body.min.z); k <= index(body.max.z); ++k)
                cells.push_back({i, j, k});
        }
    }
    return cells;
}

} // namespace

std::string newPlan(const std::string& name, int columns, int rows, int depth) {
    const std::string size = sizeWords(columns, rows, depth);
    if (!isArenaSize(columns, rows, depth))
        throw InputError("an arena of " + size + " cells; 1 to " + std::to_string(mostCells) +
                         " are allowed");
    MapManager map = emptyCourt(columns, rows, depth);
    std::vector<PlanMark> marks;
    CellIndex last;
    for (const Arrival& arrival : arrivals(map)) {
        const std::string number = std::to_string(arrival.pose + 1);
        marks.push_back({.character = number.front(),
                         .name = "spawn-" + number,
                         .cells = cellsOf(arrival.spawned.box)});
        const CellIndex& farthest = marks.back().cells.back();
        last = {std::max(last.column, farthest.column), std::max(last.row, farthest.row),
                std::max(last.depth, farthest.depth)};
    }
    // Beyond the last of them there is the border, but none on top.
    if (columns < last.column + 2 || rows < last.row + 1 || depth < last.depth + 2)
        throw InputError("an arena of " + size + " cells; at least " +
                         sizeWords(last.column + 2, last.row + 1, last.depth + 2) +
                         " hold the cells in which players appear, and the border");
    return "# Players appear in the cells with digits: keep them free, and put floor below.\n" +
           writePlan({name, std::move(map)}, marks);
}

} // namespace drench::arena
