#pragma once

#include "arena/Reach.h"

#include <vector>

// Searches in the graph of standing places.

namespace drench::arena {

/// For each place whether it can be reached from `start`, itself included.
std::vector<bool> reachableFrom(const Reach& reach, int start);

/// Connected groups of places from which no landing can be reached any more, the largest first.
std::vector<std::vector<int>> pits(const Reach& reach);

/// A group of places that hangs on a single other place and holds no landing.
struct DeadEnd {
    /// The place it hangs on.
    int mouth;

    /// The place in the group that is most steps from the mouth, and the count of those steps.
    int end;
    int depth;
};

/// The dead ends that lie in no other, the deepest first. A step leads to a neighbouring column of
/// cubes, diagonally too, up or down, and counts both ways. Only parts that steps connect with a
/// landing are searched. If all the rest of such a part hangs on its one landing, that is not a
/// dead end. Found by cut vertices (Hopcroft and Tarjan).
std::vector<DeadEnd> deadEnds(const Reach& reach);

} // namespace drench::arena
