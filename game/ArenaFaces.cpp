#include "game/ArenaFaces.h"

#include "arena/Rays.h"

namespace drench::game {

std::vector<CubeFace> visibleFaces(const MapManager& map) {
    const auto isOpen = [&](const arena::CellIndex& cell) {
        const bool above = cell.row == map.rows;
        return above || map.cubeIsNull(cell.column, cell.row, cell.depth);
    };
    std::vector<CubeFace> faces;
    for (int i = 0; i < map.columns; ++i) {
        for (int j = 0; j < map.rows; ++j) {
            for (int k = 0; k < map.depth; ++k) {
                if (map.cubeIsNull(i, j, k))
                    continue;
                for (int axis = 0; axis < 3; ++axis) {
                    for (const int side : {-1, 1}) {
                        arena::CellIndex front = {i, j, k};
                        arena::indexAlong(front, axis) += side;
                        if (isOpen(front))
                            faces.push_back({{i, j, k}, axis, side});
                    }
                }
            }
        }
    }
    return faces;
}

} // namespace drench::game
