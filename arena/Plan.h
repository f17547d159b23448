#pragma once

#include "arena/Map.h"
#include "arena/MapText.h"

#include <span>
#include <string>
#include <vector>

namespace drench::arena {

/// A value is one of three: 0 for air (`solid` 0, cellValue 0); the cellValue alone for `solid` 1;
/// otherwise `<solid>:<cellValue>`. Each value has one character. Only air is named "air"; other
/// names are for the reader. Further characters with value 0 are marks of the maker for spawn
/// places; their names begin with "spawn-".
struct Plan {
    std::string name;
    MapManager map;

    /// For each row, the first line of its grid in the text; empty for a plan that was not read.
    std::vector<int> gridLines = {};

    /// The place of the cell's character in the text that was read. The cell must lie in the grid.
    TextPlace placeOf(const CellIndex& cell) const;
};

/// Cells of air that a plan writes with a character of their own.
struct PlanMark {
    /// A character that writePlan gives to no kind of the map's cells.
    char character;

    /// Begins with "spawn-".
    std::string name;
    std::vector<CellIndex> cells;
};

/// Whether the file is meant as a plan: its first word after comments is "arena".
bool isPlan(const std::string& text);

/// Reads a plan. Lines may end in "\r\n", and a byte order mark may stand in front. Throws
/// InputError "file:line:column: <the text found>, <the text allowed>", with `file` as the name and
/// the column in bytes from 1.
Plan readPlan(const std::string& text, const std::string& file);

/// The plan of a map, without comments. The same map always gives the same text, and readPlan gives
/// back the same cells and name. Throws InputError if it could not: for a name that is empty or has
/// blanks at its ends or control characters, for a map that is no arena's size, and for cells of
/// more than 93 kinds, air included, since there are 93 characters.
std::string writePlan(const Plan& plan, std::span<const PlanMark> marks = {});

} // namespace drench::arena
