#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace drench::arena {

/// A directed graph: the edges of node n lead to targets[first[n]] and on, up to first[n + 1].
struct Digraph {
    std::vector<std::size_t> first;
    std::vector<int> targets;
};

/// The graph with this number of nodes and these edges, each from its first node to its second. The
/// edges of a node keep their order.
Digraph digraph(std::size_t nodes, const std::vector<std::pair<int, int>>& edges);

/// For each node the number of its strongly connected component: two nodes have the same number
/// when each leads to the other. Tarjan, "Depth-first search and linear graph algorithms", 1972.
std::vector<int> strongComponents(const Digraph& graph);

} // namespace drench::arena
