#include "arena/CellOrder.h"
#include "tests/support/Courts.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>

using arena::orderOfAnArena;

namespace {

/// The text of the ring arena when its maker has another idea of both orders: axes 0, 1 and 2 are
/// columns, rows and depth.
MapManager ringIn(const std::array<int, 3>& header, const std::array<int, 3>& cells,
                  int columns = 32, const std::function<bool(int, int, int)>& solid = solidInRing) {
    const std::array<int, 3> size = {columns, 16, 32};
    const auto part = [](const std::array<int, 3>& place, int axis) {
        return place[static_cast<std::size_t>(axis)];
    };
    std::string text;
    for (const int axis : header)
        text += std::to_string(part(size, axis)) + " ";
    std::array<int, 3> at{};
    for (int slow = 0; slow < part(size, cells[0]); ++slow) {
        for (int middle = 0; middle < part(size, cells[1]); ++middle) {
            for (int fast = 0; fast < part(size, cells[2]); ++fast) {
                at[static_cast<std::size_t>(cells[0])] = slow;
                at[static_cast<std::size_t>(cells[1])] = middle;
                at[static_cast<std::size_t>(cells[2])] = fast;
                text += solid(at[0], at[1], at[2]) ? "1 1 " : "0 0 ";
            }
        }
    }
    return loaded(text);
}

std::string wordsFor(const MapManager& map) {
    return orderOfAnArena(map).value_or("nothing");
}

const std::string lastIsFastest = ", of which the last varies fastest";

} // namespace

TEST(CellOrder, ArenaAsItStandsNeedsNoOther) {
    EXPECT_EQ(wordsFor(ringIn({0, 1, 2}, {0, 1, 2})), "nothing");
}

TEST(CellOrder, HeaderInAnotherOrderIsFound) {
    EXPECT_EQ(wordsFor(ringIn({0, 2, 1}, {0, 1, 2}, 34)),
              "its header is taken as columns, depth, rows");
    EXPECT_EQ(wordsFor(ringIn({2, 1, 0}, {0, 1, 2}, 34)),
              "its header is taken as depth, rows, columns");
    EXPECT_EQ(wordsFor(ringIn({1, 2, 0}, {0, 1, 2}, 34)),
              "its header is taken as rows, depth, columns");
}

TEST(CellOrder, CellsInAnotherOrderAreFound) {
    EXPECT_EQ(wordsFor(ringIn({0, 1, 2}, {1, 2, 0}, 34)),
              "its cells are taken in the order rows, depth, columns" + lastIsFastest);
    EXPECT_EQ(wordsFor(ringIn({0, 1, 2}, {0, 2, 1}, 34)),
              "its cells are taken in the order columns, depth, rows" + lastIsFastest);
}

TEST(CellOrder, AllOrdersOfCellsThatFitAreTold) {
    const auto sameAcrossItsDiagonal = [](int i, int j, int k) {
        return solidInRing(i, j, k) && solidInRing(k, j, i);
    };
    EXPECT_EQ(wordsFor(ringIn({0, 1, 2}, {1, 2, 0}, 32, sameAcrossItsDiagonal)),
              "its cells are taken in the order rows, columns, depth or rows, depth, columns" +
                  lastIsFastest);
}

TEST(CellOrder, BothInAnotherOrderAreFound) {
    EXPECT_EQ(wordsFor(ringIn({0, 2, 1}, {1, 2, 0}, 34)),
              "its header is taken as columns, depth, rows, and its cells are taken in the order "
              "rows, depth, columns" +
                  lastIsFastest);
}

TEST(CellOrder, WhatIsAnArenaInNoOrderIsNone) {
    EXPECT_EQ(wordsFor(loaded(arenaText(32, 16, 32, nothing))), "nothing") << "not enclosed";
    EXPECT_EQ(wordsFor(loaded(arenaText(32, 16, 32, [](int, int, int) { return true; }))),
              "nothing")
        << "nowhere to appear";
    EXPECT_EQ(wordsFor(loaded(arenaText(4, 4, 4, solidInRing))), "nothing");
}

TEST(CellOrder, EnclosedArenaHasAWholeFloorAndWholeSides) {
    const auto courtBut = [](int column, int row, int depth) {
        MapManager map = court(6, 4, 7, nothing);
        arena::cell(map, column, row, depth).solid = 0;
        return map;
    };
    EXPECT_TRUE(arena::isEnclosed(court(6, 4, 7, nothing)));
    EXPECT_TRUE(arena::isEnclosed(courtBut(2, 1, 2))) << "which is empty already";
    for (const arena::CellIndex& hole : {arena::CellIndex{2, 0, 2},
                                         {1, 0, 1},
                                         {4, 0, 5},
                                         {0, 3, 2},
                                         {5, 1, 2},
                                         {2, 2, 0},
                                         {2, 3, 6}})
        EXPECT_FALSE(arena::isEnclosed(courtBut(hole.column, hole.row, hole.depth)))
            << hole.column << ", " << hole.row << ", " << hole.depth;
}
