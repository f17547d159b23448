#pragma once

#include "arena/Arrivals.h"
#include "arena/Map.h"
#include "tests/support/Arenas.h"

#include <vector>

using namespace drench;

// Small arenas with players in them, and a whole one that is quickly explored.

/// A court of cubes with a floor one cube high and border walls to full height, and the further
/// cubes of `solid`.
inline MapManager court(int columns, int rows, int depth,
                        const std::function<bool(int, int, int)>& solid) {
    return loaded(arenaText(columns, rows, depth, [&](int i, int j, int k) {
        return j == 0 || i == 0 || i == columns - 1 || k == 0 || k == depth - 1 || solid(i, j, k);
    }));
}

inline bool nothing(int, int, int) {
    return false;
}

/// A player who appears in the middle of a cell, feet a little above its floor.
inline arena::Arrival arrivalIn(MapManager& map, int column, int row, int depth, int pose = 0) {
    using arena::cubeEdge;
    const auto middle = [](int index) { return cubeEdge * (static_cast<float>(index) + 0.5f); };
    const vec3 centre(middle(column), cubeEdge * static_cast<float>(row) + 80.0f, middle(depth));
    return arena::arrive(pose, bodyAt(map, centre, centre + vec3(0.0f, 0.0f, 1.0f)));
}

/// Whether cell (i, j, k) is solid in the ring arena: 32 × 16 × 32 cubes, solid except for one flat
/// corridor, two cubes wide, that passes all eight spawns; its floor is the top of row 2. Posts
/// left and right hide its corners from each other.
inline bool solidInRing(int i, int j, int k) {
    const auto between = [](int low, int value, int high) { return low <= value && value <= high; };
    const bool inner = between(5, i, 26) && between(5, k, 26);
    const bool ring = between(3, i, 28) && between(3, k, 28) && !inner;
    const auto isPost = [](int along, int across) {
        const bool first = along == 8 || along == 12 || along == 19 || along == 23;
        const bool second = along == 10 || along == 21;
        return (first && (across == 3 || across == 27)) ||
               (second && (across == 4 || across == 28));
    };
    const bool alcoves = (between(15, i, 16) && (between(1, k, 2) || between(29, k, 30))) ||
                         (between(15, k, 16) && (between(1, i, 2) || between(29, i, 30)));
    const bool firstLowSpawn = i == 2 && k == 4;
    return j < 3 || isPost(i, k) || isPost(k, i) || !(ring || alcoves || firstLowSpawn);
}

/// Whether both maps have the same dimensions and the same two numbers in every cell.
inline bool sameCells(const MapManager& a, const MapManager& b) {
    if (a.columns != b.columns || a.rows != b.rows || a.depth != b.depth)
        return false;
    for (int i = 0; i < a.columns; ++i) {
        for (int j = 0; j < a.rows; ++j) {
            for (int k = 0; k < a.depth; ++k) {
                const Box& one = arena::cell(a, i, j, k);
                const Box& other = arena::cell(b, i, j, k);
                if (one.solid != other.solid || one.cellValue != other.cellValue)
                    return false;
            }
        }
    }
    return true;
}
