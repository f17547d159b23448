#include "arena/UnreachedArea.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

using namespace drench;

using arena::Area;
using arena::CellIndex;
using arena::largestUnreachedArea;

TEST(UnreachedArea, IsNoneWhereAllIsReached) {
    const std::vector<CellIndex> cells = {{1, 1, 1}, {1, 1, 2}};
    EXPECT_EQ(largestUnreachedArea(cells, cells), std::nullopt);
    EXPECT_EQ(largestUnreachedArea({}, cells), std::nullopt);
}

TEST(UnreachedArea, IsTheLargestOfThoseThatHangTogether) {
    const std::vector<CellIndex> cells = {{1, 1, 1}, {1, 1, 2}, {4, 1, 1}, {4, 1, 2}, {5, 1, 1}};
    EXPECT_EQ(largestUnreachedArea(cells, {}), (Area{3, {4, 1, 1}}));
    const std::vector<CellIndex> reached = {{4, 1, 1}};
    EXPECT_EQ(largestUnreachedArea(cells, reached), (Area{2, {1, 1, 1}}));
}

TEST(UnreachedArea, GoesOnBySidesAndUpOrDownTwoCubes) {
    const auto sizeOf = [](const std::vector<CellIndex>& cells) {
        return largestUnreachedArea(cells, {})->cells;
    };
    for (const CellIndex& beside :
         {CellIndex{3, 5, 4}, {5, 5, 4}, {4, 5, 3}, {4, 5, 5}, {3, 3, 4}, {4, 7, 5}}) {
        std::vector<CellIndex> cells = {{4, 5, 4}, beside};
        std::sort(cells.begin(), cells.end());
        EXPECT_EQ(sizeOf(cells), 2u) << beside.column << beside.row << beside.depth;
    }
    EXPECT_EQ(sizeOf({{4, 5, 4}, {5, 5, 5}}), 1u) << "by a corner only";
    EXPECT_EQ(sizeOf({{4, 5, 4}, {4, 8, 5}}), 1u) << "three cubes higher";
    EXPECT_EQ(sizeOf({{4, 5, 4}, {4, 6, 4}}), 1u) << "above";
}
