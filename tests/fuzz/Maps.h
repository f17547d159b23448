#pragma once

#include "Map.h"
#include "MapText.h"
#include "Require.h"

#include <string>

/// Larger maps are valid, and their inputs passed over: they take time and show nothing new.
constexpr long mostFuzzedCells = 4096;

inline bool isSlow(long columns, long rows, long depth) {
    return arena::isArenaSize(columns, rows, depth) && columns * rows * depth > mostFuzzedCells;
}

inline bool areEqual(const MapManager& a, const MapManager& b) {
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

/// The map's text is one without problems, and gives the same map.
inline void requireTextOf(const MapManager& map) {
    const std::string text = arena::writeMapText(map);
    const arena::MapText again = arena::readMapText(text);
    require(again.hasHeader && again.problems.empty(), "what is written has no problems");
    require(areEqual(again.map, map), "what is written is read as the same map");
    require(arena::writeMapText(again.map) == text, "the same map gives the same text");
}
