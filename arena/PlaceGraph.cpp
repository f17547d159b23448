#include "arena/PlaceGraph.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <unordered_map>
#include <utility>

namespace drench::arena {

namespace {

/// Whether a step leads from one place to the other: their columns of cubes touch.
bool areNeighbours(const StandingPlace& a, const StandingPlace& b) {
    return std::abs(a.feet.column - b.feet.column) <= 1 &&
           std::abs(a.feet.depth - b.feet.depth) <= 1;
}

/// For each place the places one step away, either way.
std::vector<std::vector<int>> neighbourGraph(const Reach& reach) {
    std::vector<std::vector<int>> neighbours(reach.places.size());
    for (std::size_t from = 0; from < reach.places.size(); ++from) {
        for (const int next : reach.places[from].next) {
            const auto to = static_cast<std::size_t>(next);
            if (areNeighbours(reach.places[from], reach.places[to])) {
                neighbours[from].push_back(next);
                neighbours[to].push_back(static_cast<int>(from));
            }
        }
    }
    return neighbours;
}

/// A depth-first walk over a graph from one node.
struct DepthFirst {
    /// Nodes in the order of entering; for each node the time of its entering (-1 if never) and the
    /// node before it.
    std::vector<int> entered;
    std::vector<int> order;
    std::vector<int> parent;

    /// The earliest node that the node's subtree has an edge to.
    std::vector<int> low;

    /// The count of nodes in the node's subtree: they are in `entered` from the node on.
    std::vector<int> size;

    /// The count of subtrees that hang on the root.
    int rootChildren = 0;
};

DepthFirst walkDepthFirst(const std::vector<std::vector<int>>& graph, int root) {
    const std::size_t count = graph.size();
    DepthFirst walk{{},
                    std::vector<int>(count, -1),
                    std::vector<int>(count, -1),
                    std::vector<int>(count, 0),
                    std::vector<int>(count, 1),
                    0};
    std::vector<std::size_t> nextEdge(count, 0);
    const auto enter = [&](int node) {
        const auto n = static_cast<std::size_t>(node);
        walk.order[n] = walk.low[n] = static_cast<int>(walk.entered.size());
        walk.entered.push_back(node);
    };
    enter(root);
    for (int node = root; node >= 0;) {
        const auto n = static_cast<std::size_t>(node);
        if (nextEdge[n] < graph[n].size()) {
            const int other = graph[n][nextEdge[n]++];
            const auto o = static_cast<std::size_t>(other);
            if (walk.order[o] < 0) {
                walk.parent[o] = node;
                walk.rootChildren += node == root;
                enter(other);
                node = other;
            } else {
                walk.low[n] = std::min(walk.low[n], walk.order[o]);
            }
            continue;
        }
        node = walk.parent[n];
        if (node >= 0) {
            const auto p = static_cast<std::size_t>(node);
            walk.low[p] = std::min(walk.low[p], walk.low[n]);
            walk.size[p] += walk.size[n];
        }
    }
    return walk;
}

/// The node most steps from `mouth` among the nodes of `inside`, which hang on it.
DeadEnd deepestFrom(const std::vector<std::vector<int>>& graph, int mouth,
                    std::span<const int> inside) {
    std::unordered_map<int, int> depthOf;
    for (const int node : inside)
        depthOf[node] = -1;
    std::vector<int> open = {mouth};
    DeadEnd deadEnd = {mouth, mouth, 0};
    for (int depth = 1; !open.empty(); ++depth) {
        std::vector<int> following;
        for (const int node : open) {
            for (const int other : graph[static_cast<std::size_t>(node)]) {
                const auto found = depthOf.find(other);
                if (found == depthOf.end() || found->second >= 0)
                    continue;
                found->second = depth;
                following.push_back(other);
                if (depth > deadEnd.depth)
                    deadEnd = {mouth, other, depth};
            }
        }
        open = std::move(following);
    }
    return deadEnd;
}

} // namespace

std::vector<bool> reachableFrom(const Reach& reach, int start) {
    std::vector<bool> reached(reach.places.size(), false);
    reached[static_cast<std::size_t>(start)] = true;
    std::vector<int> open = {start};
    while (!open.empty()) {
        const StandingPlace& place = reach.places[static_cast<std::size_t>(open.back())];
        open.pop_back();
        for (const int next : place.next) {
            if (!reached[static_cast<std::size_t>(next)]) {
                reached[static_cast<std::size_t>(next)] = true;
                open.push_back(next);
            }
        }
    }
    return reached;
}

std::vector<std::vector<int>> pits(const Reach& reach) {
    const std::size_t count = reach.places.size();
    std::vector<std::vector<int>> previous(count);
    for (std::size_t place = 0; place < count; ++place) {
        for (const int next : reach.places[place].next)
            previous[static_cast<std::size_t>(next)].push_back(static_cast<int>(place));
    }
    std::vector<bool> done(count, false);
    const auto collectFrom = [&](int start, const auto& forEachEdge) {
        std::vector<int> group;
        const auto add = [&](int place) {
            if (!done[static_cast<std::size_t>(place)]) {
                done[static_cast<std::size_t>(place)] = true;
                group.push_back(place);
            }
        };
        add(start);
        for (std::size_t i = 0; i < group.size(); ++i)
            forEachEdge(static_cast<std::size_t>(group[i]), add);
        return group;
    };

    for (const int landing : reach.landings) {
        if (landing >= 0)
            collectFrom(landing, [&](std::size_t place, const auto& add) {
                std::for_each(previous[place].begin(), previous[place].end(), add);
            });
    }
    std::vector<std::vector<int>> groups;
    for (std::size_t place = 0; place < count; ++place) {
        if (done[place])
            continue;
        groups.push_back(
            collectFrom(static_cast<int>(place), [&](std::size_t member, const auto& add) {
                std::for_each(previous[member].begin(), previous[member].end(), add);
                const std::vector<int>& next = reach.places[member].next;
                std::for_each(next.begin(), next.end(), add);
            }));
    }
    std::stable_sort(groups.begin(), groups.end(),
                     [](const auto& a, const auto& b) { return a.size() > b.size(); });
    return groups;
}

std::vector<DeadEnd> deadEnds(const Reach& reach) {
    const std::vector<std::vector<int>> graph = neighbourGraph(reach);
    std::vector<bool> isLanding(graph.size(), false);
    for (const int landing : reach.landings) {
        if (landing >= 0)
            isLanding[static_cast<std::size_t>(landing)] = true;
    }

    std::vector<DeadEnd> found;
    std::vector<bool> walked(graph.size(), false);
    for (const int root : reach.landings) {
        if (root < 0 || walked[static_cast<std::size_t>(root)])
            continue;
        const DepthFirst walk = walkDepthFirst(graph, root);
        for (std::size_t i = 0; i < walk.entered.size(); ++i) {
            const auto node = static_cast<std::size_t>(walk.entered[i]);
            walked[node] = true;
            const int mouth = walk.parent[node];
            if (mouth < 0 || walk.low[node] < walk.order[static_cast<std::size_t>(mouth)] ||
                (mouth == root && walk.rootChildren == 1))
                continue;
            const std::span<const int> inside(walk.entered.data() + i,
                                              static_cast<std::size_t>(walk.size[node]));
            if (std::any_of(inside.begin(), inside.end(),
                            [&](int place) { return isLanding[static_cast<std::size_t>(place)]; }))
                continue;
            found.push_back(deepestFrom(graph, mouth, inside));
            i += inside.size() - 1;
        }
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const DeadEnd& a, const DeadEnd& b) { return a.depth > b.depth; });
    return found;
}

} // namespace drench::arena
