#include "arena/UnreachedArea.h"

#include "arena/Reach.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <vector>

namespace drench::arena {

std::optional<Area> largestUnreachedArea(std::span<const CellIndex> walkable,
                                         std::span<const CellIndex> reached) {
    std::set<CellIndex> left;
    std::set_difference(walkable.begin(), walkable.end(), reached.begin(), reached.end(),
                        std::inserter(left, left.end()));
    std::optional<Area> largest;
    while (!left.empty()) {
        Area area{0, *left.begin()};
        std::vector<CellIndex> open = {area.first};
        left.erase(left.begin());
        while (!open.empty()) {
            const CellIndex cell = open.back();
            open.pop_back();
            ++area.cells;
            for (const auto& [columns, depths] : {std::pair{-1, 0}, {1, 0}, {0, -1}, {0, 1}}) {
                for (int rows = -highestClimb; rows <= highestClimb; ++rows) {
                    const CellIndex next{cell.column + columns, cell.row + rows,
                                         cell.depth + depths};
                    if (left.erase(next) > 0)
                        open.push_back(next);
                }
            }
        }
        if (!largest || area.cells > largest->cells)
            largest = area;
    }
    return largest;
}

} // namespace drench::arena
