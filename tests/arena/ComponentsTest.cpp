#include "arena/Components.h"

#include <gtest/gtest.h>

using namespace drench;

using arena::digraph;
using arena::strongComponents;

namespace {

/// Components numbered in the order of their first nodes.
std::vector<int> components(std::size_t nodes, const std::vector<std::pair<int, int>>& edges) {
    std::vector<int> found = strongComponents(digraph(nodes, edges));
    std::vector<int> numbers(found.size(), -1);
    int count = 0;
    for (int& component : found) {
        int& number = numbers[static_cast<std::size_t>(component)];
        if (number < 0)
            number = count++;
        component = number;
    }
    return found;
}

using Numbers = std::vector<int>;

} // namespace

TEST(Digraph, EdgesOfANodeKeepTheirOrder) {
    const arena::Digraph graph = digraph(4, {{2, 1}, {0, 3}, {2, 0}, {0, 1}});
    EXPECT_EQ(graph.first, (std::vector<std::size_t>{0, 2, 2, 4, 4}));
    EXPECT_EQ(graph.targets, (Numbers{3, 1, 1, 0}));
}

TEST(StrongComponents, NodesThatLeadToEachOtherAreOne) {
    EXPECT_EQ(components(4, {{0, 1}, {1, 2}, {2, 0}, {2, 3}}), (Numbers{0, 0, 0, 1}));
    EXPECT_EQ(components(3, {{0, 1}, {1, 2}}), (Numbers{0, 1, 2}));
    EXPECT_EQ(components(2, {{0, 0}}), (Numbers{0, 1}));
}

TEST(StrongComponents, TwoLoopsWithABridgeOneWayAreTwo) {
    EXPECT_EQ(components(6, {{0, 1}, {1, 0}, {1, 2}, {2, 3}, {3, 4}, {4, 2}, {5, 0}}),
              (Numbers{0, 0, 1, 1, 1, 2}));
}

TEST(StrongComponents, EdgeToAFinishedComponentJoinsNothing) {
    EXPECT_EQ(components(4, {{0, 1}, {0, 2}, {2, 1}, {2, 3}, {3, 0}}), (Numbers{0, 1, 0, 0}));
}

TEST(StrongComponents, LongLoopIsOne) {
    std::vector<std::pair<int, int>> edges;
    for (int i = 0; i < 100000; ++i)
        edges.emplace_back(i, (i + 1) % 100000);
    EXPECT_EQ(components(100000, edges), Numbers(100000, 0));
}
