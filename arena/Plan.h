#pragma once

#include "arena/Map.h"
#include "arena/MapText.h"

#include <span>
#include <string>
#include <vector>

namespace drench::arena {

/// An arena as people edit it: text with one grid of characters for each row of cubes. Line by line
/// (a line that starts with '#' is a comment, and it or an empty line may stand anywhere but inside
/// a grid):
///
///     arena <name>
///     size <columns> <rows> <depth>
///     legend
///     <character> <value> <name>         one line for each kind of cell; any visible ASCII but '#'
///     row <j>  or  row <first>-<last>    every row of cubes once, the lowest (0) first; below it:
///     <depth lines of columns characters>    depth index 0 first; in a line, column 0 first
///
/// A value is the cellValue of cells with `solid` 1, or 0 for air, whose both numbers are 0, or
/// else `<solid>:<cellValue>`, and each has one character. Only air is named "air"; other names are
/// for the reader. Further characters with value 0 mark where players appear, for the maker's eyes;
/// their names begin with "spawn-".
struct Plan {
    std::string name;
    MapManager map;

    /// For each row, the line where its grid begins; empty for a plan that was not read.
    std::vector<int> gridLines = {};

    /// Where the cell's character stands in the text that was read. The cell must lie in the grid.
    TextPlace placeOf(const CellIndex& cell) const;
};

/// Cells of air that a plan shows by another character.
struct PlanMark {
    /// One that writePlan gives to no kind of the map's cells.
    char character;

    /// Begins with "spawn-".
    std::string name;
    std::vector<CellIndex> cells;
};

/// Whether a file is meant as a plan: its first word, comments apart, is "arena".
bool isPlan(const std::string& text);

/// Reads a plan; lines may end in "\r\n", and a byte order mark may stand in front. `file` is the
/// name that errors begin with: throws InputError "file:line:column: what stands there, what is
/// allowed", the column in bytes from 1.
Plan readPlan(const std::string& text, const std::string& file);

/// The plan of a map, without comments: the same map always gives the same text, and readPlan gives
/// back the same cells and name. Throws InputError when it could not: for a name that is empty, has
/// blanks at its ends or control characters, for a map that is no arena's size, and for cells of
/// more than 93 kinds, air included, which is how many characters there are.
std::string writePlan(const Plan& plan, std::span<const PlanMark> marks = {});

} // namespace drench::arena
