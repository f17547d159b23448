#include "arena/Components.h"

#include <algorithm>
#include <cstddef>

namespace drench::arena {

Digraph digraph(std::size_t nodes, const std::vector<std::pair<int, int>>& edges) {
    // A counting sort by the node that an edge leaves.
    Digraph graph{std::vector<std::size_t>(nodes + 1, 0), std::vector<int>(edges.size())};
    for (const auto& [from, to] : edges)
        ++graph.first[static_cast<std::size_t>(from) + 1];
    for (std::size_t node = 0; node < nodes; ++node)
        graph.first[node + 1] += graph.first[node];
    std::vector<std::size_t> next(graph.first.begin(), graph.first.end() - 1);
    for (const auto& [from, to] : edges)
        graph.targets[next[static_cast<std::size_t>(from)]++] = to;
    return graph;
}

std::vector<int> strongComponents(const Digraph& graph) {
    const std::size_t count = graph.first.size() - 1;
    std::vector<int> component(count, -1);
    std::vector<int> entered(count, -1);
    std::vector<int> low(count, 0);
    std::vector<std::size_t> edge(graph.first.begin(), graph.first.end() - 1);

    // The nodes on the walk's path from the root, and the entered nodes that have no component yet.
    std::vector<std::size_t> way;
    std::vector<std::size_t> open;
    int entries = 0;
    int components = 0;
    const auto enter = [&](std::size_t node) {
        entered[node] = low[node] = entries++;
        way.push_back(node);
        open.push_back(node);
    };
    for (std::size_t root = 0; root < count; ++root) {
        if (entered[root] < 0)
            enter(root);
        while (!way.empty()) {
            const std::size_t node = way.back();
            if (edge[node] < graph.first[node + 1]) {
                const auto target = static_cast<std::size_t>(graph.targets[edge[node]++]);
                if (entered[target] < 0)
                    enter(target);
                else if (component[target] < 0)
                    low[node] = std::min(low[node], entered[target]);
                continue;
            }
            way.pop_back();
            if (!way.empty())
                low[way.back()] = std::min(low[way.back()], low[node]);

            // Nothing entered since leads back beyond this node: they are one component.
            if (low[node] == entered[node]) {
                std::size_t member = count;
                while (member != node) {
                    member = open.back();
                    open.pop_back();
                    component[member] = components;
                }
                ++components;
            }
        }
    }
    return component;
}

} // namespace drench::arena
