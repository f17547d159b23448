#pragma once

#include "arena/MapItems.h"
#include "arena/TextPlace.h"

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

// What is wrong with a map text, from the items that it consists of.

namespace drench::arena {

/// How many numbers a map text begins with: columns, rows, depth.
constexpr std::size_t headerNumbers = 3;

using Dimensions = std::array<long, headerNumbers>;

/// How many numbers stand for the cells of an arena of this size.
std::size_t cellNumbers(const Dimensions& size);

/// Whether these are the dimensions of an arena.
bool isArenaSize(const Dimensions& size);

/// What follows the last cell's numbers.
struct MapRest {
    /// Offset in MapItems::bytes.
    std::size_t begin = 0;

    /// Whether it is words that the server skips and nobody can take for numbers.
    bool isRemark = false;
};

/// What is wrong with a text for somebody who reads it by one rule for its line ends.
struct MapJudgement {
    bool hasHeader = false;

    /// Without what there is to say of a remark.
    std::vector<TextProblem> problems;
    std::optional<MapRest> rest;
};

/// Judges the whole text, beyond where the server stops to read. What is no number counts as one,
/// for it may be a misspelt one.
MapJudgement judge(const MapItems& text);

/// Words that exist only because lines are joined, of the joined text before what follows the last
/// cell; all of them harmless or none.
std::vector<TextProblem> joinsIn(const MapItems& joined, const std::optional<MapRest>& rest,
                                 bool harmless);

} // namespace drench::arena
