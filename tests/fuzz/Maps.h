#pragma once

#include "arena/Map.h"
#include "arena/MapText.h"
#include "tests/fuzz/Require.h"
#include "tests/support/Courts.h"

#include <string>

using namespace drench;

/// Larger maps are valid, and their inputs passed over: they take time and show nothing new.
constexpr long mostFuzzedCells = 4096;

inline bool isSlow(long columns, long rows, long depth) {
    return arena::isArenaSize(columns, rows, depth) && columns * rows * depth > mostFuzzedCells;
}

/// The map's text is one without problems, and gives the same map.
inline void requireTextOf(const MapManager& map) {
    const std::string text = arena::writeMapText(map);
    const arena::MapText again = arena::readMapText(text);
    require(again.hasHeader && again.problems.empty(), "what is written has no problems");
    require(sameCells(again.map, map), "what is written is read as the same map");
    require(arena::writeMapText(again.map) == text, "the same map gives the same text");
}
