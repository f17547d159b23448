#include "bots/Routes.h"

#include "bots/Chart.h"
#include "tests/bots/LevelRoadmap.h"

#include <gtest/gtest.h>
#include <vector>

using namespace drench;

using arena::CellIndex;
using bots::quickestRoute;
using bots::Roadmap;

namespace {

std::vector<CellIndex> cellsOf(const Roadmap& roadmap, const std::vector<int>& route) {
    std::vector<CellIndex> cells;
    for (const int place : route)
        cells.push_back(roadmap.place(place).feet);
    return cells;
}

/// Two platforms three cubes high, with a gap of so many cubes between them.
MapManager platforms(int gap) {
    return court(gap + 6, 9, 3,
                 [=](int i, int j, int) { return j < 4 && (i < 3 || i >= gap + 3); });
}

/// A wall across a court, from one border to a passage of one cube.
bool isWall(int i, int, int k) {
    return i == 3 && k < 5;
}

} // namespace

TEST(QuickestRoute, LeadsFromThePlaceToThePlaceByRoads) {
    MapManager map = court(7, 6, 7, isWall);
    const Roadmap roadmap = levelRoadmap(map);
    const std::vector<int> route =
        quickestRoute(roadmap, roadmap.placeIn({2, 1, 1}), roadmap.placeIn({4, 1, 1}));
    ASSERT_GE(route.size(), 2u);
    EXPECT_EQ(route.front(), roadmap.placeIn({2, 1, 1}));
    EXPECT_EQ(route.back(), roadmap.placeIn({4, 1, 1}));
    for (std::size_t i = 1; i < route.size(); ++i)
        EXPECT_TRUE(roadmap.road(route[i - 1], route[i]));
}

TEST(QuickestRoute, IsTheQuickest) {
    MapManager map = court(7, 6, 7, isWall);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_EQ(cellsOf(roadmap, quickestRoute(roadmap, roadmap.placeIn({2, 1, 4}),
                                             roadmap.placeIn({4, 1, 4}))),
              (std::vector<CellIndex>{{2, 1, 4}, {2, 1, 5}, {3, 1, 5}, {4, 1, 5}, {4, 1, 4}}));
}

TEST(QuickestRoute, ToThePlaceItselfIsThatPlace) {
    MapManager map = court(6, 6, 6, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_EQ(quickestRoute(roadmap, 3, 3), std::vector<int>{3});
}

TEST(QuickestRoute, IsEmptyWhereNoneLeads) {
    MapManager map = platforms(7);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_TRUE(
        quickestRoute(roadmap, roadmap.placeIn({1, 4, 1}), roadmap.placeIn({11, 4, 1})).empty());
    EXPECT_TRUE(quickestRoute(roadmap, -1, 2).empty());
    EXPECT_TRUE(quickestRoute(roadmap, 2, -1).empty());
}

TEST(QuickestRoute, GoesRoundPlacesThatTakeAToll) {
    MapManager map = court(7, 6, 7, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    const int from = roadmap.placeIn({1, 1, 3});
    const int to = roadmap.placeIn({5, 1, 3});
    const int middle = roadmap.placeIn({3, 1, 3});
    const std::vector<int> straight = quickestRoute(roadmap, from, to);
    EXPECT_EQ(std::count(straight.begin(), straight.end(), middle), 1);
    const std::vector<int> round =
        quickestRoute(roadmap, from, to, [=](int place) { return place == middle ? 100.0 : 0.0; });
    EXPECT_EQ(std::count(round.begin(), round.end(), middle), 0);
    EXPECT_EQ(round.back(), to);
}

TEST(QuickestRoute, PaysATollWhereThereIsNoOtherWay) {
    MapManager map = court(7, 6, 7, isWall);
    const Roadmap roadmap = levelRoadmap(map);
    const int passage = roadmap.placeIn({3, 1, 5});
    const std::vector<int> route =
        quickestRoute(roadmap, roadmap.placeIn({2, 1, 1}), roadmap.placeIn({4, 1, 1}),
                      [=](int place) { return place == passage ? 1e6 : 0.0; });
    EXPECT_EQ(std::count(route.begin(), route.end(), passage), 1);
}

TEST(QuickestRoute, TollBelowZeroCountsAsNone) {
    MapManager map = court(7, 6, 7, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    const int from = roadmap.placeIn({1, 1, 1});
    const int to = roadmap.placeIn({5, 1, 1});
    EXPECT_EQ(quickestRoute(roadmap, from, to, [](int) { return -50.0; }),
              quickestRoute(roadmap, from, to));
}
