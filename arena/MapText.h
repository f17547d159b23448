#pragma once

#include "arena/Map.h"
#include "arena/TextPlace.h"

#include <string>
#include <vector>

namespace drench::arena {

/// A map text as the server reads it.
struct MapText {
    /// Whether the header gives the dimensions of an arena. If not, `map` has no cells.
    bool hasHeader = false;

    /// Read by MapManager::init from the file's lines joined without a separator, as the server
    /// does.
    MapManager map;

    /// In the order of the file.
    std::vector<TextProblem> problems;

    /// The place of each number that the server reads: columns, rows, depth, then two for each
    /// cell.
    std::vector<TextPlace> numbers;

    /// The place of the cell's `solid`; {0, 0} for a cell that the text does not reach. The cell
    /// must lie in the grid.
    TextPlace placeOf(const CellIndex& cell) const;
};

/// Reads a map text and finds its problems: a header that gives no dimensions, too few or too many
/// numbers, items that are not numbers, lines that the loader joins into one number. After a wrong
/// join, further effects of joined lines are not reported. If the text is right only with its lines
/// joined, the joins are harmless, and so is a remark after the last cell. Of each kind of problem
/// the first three are listed, then the count of the others.
MapText readMapText(const std::string& bytes);

/// The map as text: the header, then one line for each column and row, each starting with a blank
/// because the loader joins lines.
std::string writeMapText(const MapManager& map);

} // namespace drench::arena
