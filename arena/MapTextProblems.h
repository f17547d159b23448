#pragma once

#include "arena/MapItems.h"
#include "arena/TextPlace.h"

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

// Finds the problems of a map text in its items.

namespace drench::arena {

/// The count of numbers at the start of a map text: columns, rows, depth.
constexpr std::size_t headerNumbers = 3;

using Dimensions = std::array<long, headerNumbers>;

/// The count of numbers for the cells of an arena of this size.
std::size_t cellNumbers(const Dimensions& size);

/// Whether these are the dimensions of an arena.
bool isArenaSize(const Dimensions& size);

/// The text after the last cell's numbers.
struct MapRest {
    /// Offset in MapItems::bytes.
    std::size_t begin = 0;

    /// Whether the rest is words that the server skips and nobody can take for numbers.
    bool isRemark = false;
};

/// The problems of a text under one rule for its line ends.
struct MapJudgement {
    bool hasHeader = false;

    /// Without any problem about a remark.
    std::vector<TextProblem> problems;
    std::optional<MapRest> rest;
};

/// Judges the whole text, also beyond the point where the server stops reading. An item that is not
/// a number counts as one, for it may be a misspelt number.
MapJudgement judge(const MapItems& text);

/// Finds the words before `rest` that exist only because lines are joined. Marks all of them
/// harmless or none.
std::vector<TextProblem> joinsIn(const MapItems& joined, const std::optional<MapRest>& rest,
                                 bool harmless);

} // namespace drench::arena
