#pragma once

#include "arena/Map.h"
#include "arena/TextPlace.h"

#include <string>
#include <vector>

namespace drench::arena {

/// A map text and what the server makes of it.
struct MapText {
    /// Whether the header gives the dimensions of an arena. If not, `map` has no cells.
    bool hasHeader = false;

    /// Read by MapManager::init from the file's lines joined without a separator, as the server
    /// does.
    MapManager map;

    /// In the order of the file.
    std::vector<TextProblem> problems;

    /// Where each number stands that the server gets to read: columns, rows, depth, then two for
    /// each cell.
    std::vector<TextPlace> numbers;

    /// Where the cell's `solid` stands; {0, 0} for a cell that the text does not reach. The cell
    /// must lie in the grid.
    TextPlace placeOf(const CellIndex& cell) const;
};

/// Reads a map text and finds what is wrong with it: a header that gives no dimensions, too few or
/// too many numbers, something that is no number, lines that the loader joins into one number. What
/// joined lines make of the rest is not reported; where the text is right only with its lines
/// joined, the joins are harmless, and so is a remark after the last cell. Of a kind of problem the
/// first three are told, then how many more there are.
MapText readMapText(const std::string& bytes);

/// The map as text: the header, then one line for each column and row, each starting with a blank
/// because the loader joins lines.
std::string writeMapText(const MapManager& map);

} // namespace drench::arena
