#pragma once

#include "arena/Reach.h"

#include <vector>

// Questions asked of the graph of standing places.

namespace drench::arena {

/// For each place whether it can be reached from `start`, itself included.
std::vector<bool> reachableFrom(const Reach& reach, int start);

/// Connected groups of places from which no landing can be reached any more, the largest first.
std::vector<std::vector<int>> pits(const Reach& reach);

/// A group of places that hangs on one single place of the rest and holds no landing.
struct DeadEnd {
    /// The place it hangs on.
    int mouth;

    /// The place in it that is most steps from the mouth, and how many.
    int end;
    int depth;
};

/// The dead ends that lie in no other, the deepest first. A step leads to a neighbouring column of
/// cubes, diagonally too, up or down, and counts both ways; only parts that steps connect with a
/// landing are looked at, and all of such a part that hangs on its one landing is no dead end.
/// Found by cut vertices (Hopcroft and Tarjan).
std::vector<DeadEnd> deadEnds(const Reach& reach);

} // namespace drench::arena
