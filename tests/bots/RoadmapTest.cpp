#include "bots/Roadmap.h"
#include "common/Files.h"
#include "tests/bots/LevelRoadmap.h"
#include "tests/support/Courts.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>

using namespace drench;

using arena::CellIndex;
using bots::chart;
using bots::Gait;
using bots::Road;
using bots::Roadmap;

namespace {

Roadmap chartedFrom(MapManager& map, int column, int row, int depth) {
    return chart(map, {arrivalIn(map, column, row, depth)});
}

/// The road between two cells, null when there is none.
const Road* roadBetween(const Roadmap& roadmap, const CellIndex& from, const CellIndex& to) {
    const int start = roadmap.placeIn(from);
    const int end = roadmap.placeIn(to);
    return start < 0 || end < 0 ? nullptr : roadmap.road(start, end);
}

vec3 middleOf(int column, int row, int depth) {
    return {64.0f * static_cast<float>(column) + 32.0f,
            64.0f * static_cast<float>(row) + bots::standingHeight,
            64.0f * static_cast<float>(depth) + 32.0f};
}

std::vector<CellIndex> cellsOf(const Roadmap& roadmap, const std::vector<int>& route) {
    std::vector<CellIndex> cells;
    for (const int place : route)
        cells.push_back(roadmap.reach.places[static_cast<std::size_t>(place)].feet);
    return cells;
}

/// A court with a block of so many cubes in the east half.
MapManager courtWithBlock(int height) {
    return court(8, 9, 4, [=](int i, int j, int) { return i >= 4 && j <= height; });
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

TEST(Roadmap, LevelFloorIsWalkedToAllEightNeighbours) {
    MapManager map = court(5, 6, 5, nothing);
    const Roadmap roadmap = chartedFrom(map, 2, 1, 2);
    ASSERT_EQ(roadmap.reach.places.size(), 9u);
    const int middle = roadmap.placeIn({2, 1, 2});
    const std::vector<Road>& roads = roadmap.roads[static_cast<std::size_t>(middle)];
    EXPECT_EQ(roads.size(), 8u);
    for (const Road& road : roads)
        EXPECT_EQ(road.gait, Gait::walk);
}

TEST(Roadmap, RoadTakesAsLongAsItsLengthAtWalkingSpeed) {
    MapManager map = court(4, 6, 4, nothing);
    const Roadmap roadmap = chartedFrom(map, 1, 1, 1);
    EXPECT_NEAR(roadBetween(roadmap, {1, 1, 1}, {2, 1, 1})->ticks, 64.0 / 6.0, 2.0);
    EXPECT_NEAR(roadBetween(roadmap, {1, 1, 1}, {2, 1, 2})->ticks, 90.5 / 6.0, 2.0);
}

TEST(Roadmap, StepsAreJumpedUpAndWalkedDown) {
    for (const int height : {1, 2}) {
        MapManager map = courtWithBlock(height);
        const Roadmap roadmap = chartedFrom(map, 1, 1, 1);
        const CellIndex below = {3, 1, 1};
        const CellIndex above = {4, height + 1, 1};
        const Road* up = roadBetween(roadmap, below, above);
        const Road* down = roadBetween(roadmap, above, below);
        ASSERT_TRUE(up && down) << height;
        EXPECT_EQ(up->gait, Gait::jump) << height;
        EXPECT_EQ(down->gait, Gait::walk) << height;
        EXPECT_GT(up->ticks, roadBetween(roadmap, below, {2, 1, 1})->ticks) << height;
    }
}

TEST(Roadmap, BlockThreeCubesHighIsLeftOut) {
    MapManager map = courtWithBlock(3);
    const Roadmap roadmap = chartedFrom(map, 1, 1, 1);
    EXPECT_EQ(roadmap.reach.places.size(), 6u);
    EXPECT_EQ(roadmap.placeIn({4, 4, 1}), -1);
}

TEST(Roadmap, GapsAreLeaped) {
    for (const int gap : {1, 2, 3}) {
        MapManager map = platforms(gap);
        const Roadmap roadmap = chartedFrom(map, 1, 4, 1);
        const Road* road = roadBetween(roadmap, {2, 4, 1}, {gap + 3, 4, 1});
        ASSERT_TRUE(road) << gap;
        EXPECT_EQ(road->gait, Gait::leap) << gap;
        EXPECT_TRUE(roadBetween(roadmap, {gap + 3, 4, 1}, {2, 4, 1})) << gap;
    }
}

TEST(Roadmap, GapTooWideForSureIsNoRoad) {
    // A running jump along both axes of the keys would cross it.
    MapManager map = platforms(7);
    const Roadmap roadmap = chartedFrom(map, 1, 4, 1);
    EXPECT_EQ(roadmap.reach.places.size(), 2u);
}

TEST(Roadmap, PlacesWithoutAWayBackAreLeftOut) {
    // Between the platforms one is caught.
    MapManager map = platforms(3);
    const Roadmap roadmap = chartedFrom(map, 1, 4, 1);
    EXPECT_EQ(roadmap.reach.places.size(), 4u);
    for (const arena::StandingPlace& place : roadmap.reach.places)
        EXPECT_EQ(place.feet.row, 4);
}

TEST(Roadmap, CornersOfWallsAreNotCut) {
    MapManager map = court(7, 6, 7, isWall);
    const Roadmap roadmap = chartedFrom(map, 1, 1, 1);
    EXPECT_FALSE(roadBetween(roadmap, {2, 1, 4}, {3, 1, 5}));
    EXPECT_TRUE(roadBetween(roadmap, {2, 1, 4}, {2, 1, 5}));
    EXPECT_TRUE(roadBetween(roadmap, {2, 1, 5}, {3, 1, 5}));
}

TEST(Roadmap, LeapThatSavesLittleIsLeftOut) {
    // The hole in the floor is passed as quickly as it is leaped.
    MapManager map =
        court(5, 9, 5, [](int i, int j, int k) { return j < 4 && !(i == 2 && k == 2 && j > 0); });
    const Roadmap roadmap = chartedFrom(map, 1, 4, 1);
    ASSERT_TRUE(roadBetween(roadmap, {1, 4, 2}, {1, 4, 3}));
    for (const std::vector<Road>& roads : roadmap.roads) {
        for (const Road& road : roads)
            EXPECT_EQ(road.gait, Gait::walk);
    }
}

TEST(Roadmap, PlacesLieInTheMiddleOfTheirCells) {
    MapManager map = platforms(2);
    const Roadmap roadmap = chartedFrom(map, 1, 4, 1);
    for (const arena::StandingPlace& place : roadmap.reach.places) {
        const vec3 middle = middleOf(place.feet.column, place.feet.row, place.feet.depth);
        EXPECT_EQ((place.position - middle).length(), 0.0f);
        EXPECT_FALSE(map.cubeIsNull(place.feet.column, place.feet.row - 1, place.feet.depth));
    }
}

TEST(Roadmap, NextPlacesAreTheEndsOfRoads) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = chartedFrom(map, 1, 1, 1);
    ASSERT_EQ(roadmap.roads.size(), roadmap.reach.places.size());
    for (std::size_t from = 0; from < roadmap.roads.size(); ++from) {
        std::set<int> ends;
        for (const Road& road : roadmap.roads[from])
            ends.insert(road.to);
        const std::vector<int>& next = roadmap.reach.places[from].next;
        EXPECT_EQ(std::set<int>(next.begin(), next.end()), ends);
        EXPECT_EQ(next.size(), roadmap.roads[from].size()) << "one road to each";
    }
}

TEST(Roadmap, LandingsFollowTheArrivals) {
    MapManager map = court(6, 8, 6, [](int i, int, int k) { return i == 3 && k == 3; });
    const Roadmap roadmap =
        chart(map, {arrivalIn(map, 3, 3, 3), arrivalIn(map, 1, 3, 2, 1), arrivalIn(map, 4, 1, 4)});
    EXPECT_EQ(roadmap.reach.landings,
              (std::vector<int>{-1, roadmap.placeIn({1, 1, 2}), roadmap.placeIn({4, 1, 4})}));
}

TEST(Roadmap, WhoLandsOnAnEdgeStandsOnTheCubeThatCarriesIt) {
    MapManager map = courtWithBlock(2);
    arena::Arrival arrival = arrivalIn(map, 4, 3, 1);
    arrival.landed.moveAll(vec3(-50.0f, 0.0f, 0.0f), 1.0f);
    ASSERT_EQ(map.getColumn(arrival.landed.position.x), 3);
    const Roadmap roadmap = chart(map, {arrival});
    EXPECT_EQ(roadmap.reach.landings, std::vector<int>{roadmap.placeIn({4, 3, 1})});
}

TEST(Roadmap, ProgressTellsOfEveryStage) {
    MapManager map = court(6, 6, 6, nothing);
    std::set<std::string> stages;
    chart(map, {arrivalIn(map, 2, 1, 2)},
          [&](const char* stage, std::size_t) { stages.insert(stage); });
    EXPECT_EQ(stages, (std::set<std::string>{"exploring", "trying steps", "trying leaps"}));
}

TEST(Roadmap, MapWithoutCellsIsAnError) {
    MapManager map;
    EXPECT_THROW(chart(map), InputError);
}

TEST(Roadmap, MapWhereNobodyStandsHasNoPlaces) {
    MapManager map = court(6, 6, 6, nothing);
    const Roadmap roadmap = chart(map, std::vector<arena::Arrival>{});
    EXPECT_TRUE(roadmap.reach.places.empty());
    EXPECT_EQ(roadmap.placeBelow(middleOf(2, 1, 2)), -1);
}

TEST(Roadmap, SameMapIsChartedTheSame) {
    MapManager map = courtWithBlock(2);
    const Roadmap one = chartedFrom(map, 1, 1, 1);
    const Roadmap other = chartedFrom(map, 1, 1, 1);
    ASSERT_EQ(one.roads.size(), other.roads.size());
    for (std::size_t from = 0; from < one.roads.size(); ++from) {
        ASSERT_EQ(one.roads[from].size(), other.roads[from].size());
        for (std::size_t i = 0; i < one.roads[from].size(); ++i) {
            EXPECT_EQ(one.roads[from][i].to, other.roads[from][i].to);
            EXPECT_EQ(one.roads[from][i].ticks, other.roads[from][i].ticks);
        }
    }
}

// Where a body is

TEST(RoadmapPlaceBelow, IsTheOneABodyStandsOn) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_EQ(roadmap.placeBelow(middleOf(2, 1, 2)), roadmap.placeIn({2, 1, 2}));
    EXPECT_EQ(roadmap.placeBelow(middleOf(5, 3, 2)), roadmap.placeIn({5, 3, 2}));
}

TEST(RoadmapPlaceBelow, IsTheOneABodyFallsTo) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_EQ(roadmap.placeBelow(middleOf(2, 5, 2)), roadmap.placeIn({2, 1, 2}));
    EXPECT_EQ(roadmap.placeBelow(middleOf(5, 6, 2)), roadmap.placeIn({5, 3, 2}));
}

TEST(RoadmapPlaceBelow, IsTheEdgeThatCarriesABodyBesideIt) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = levelRoadmap(map);
    const vec3 overhang = middleOf(4, 3, 1) - vec3(50.0f, 0.0f, 0.0f);
    EXPECT_EQ(roadmap.placeBelow(overhang), roadmap.placeIn({4, 3, 1}));
    EXPECT_EQ(roadmap.placeBelow(overhang - vec3(0.0f, 2.0f, 0.0f)), roadmap.placeIn({3, 1, 1}));
    EXPECT_EQ(roadmap.placeBelow(overhang - vec3(20.0f, 0.0f, 0.0f)), roadmap.placeIn({3, 1, 1}));
}

TEST(RoadmapPlaceBelow, OfTwoOnOneRowIsTheNearer) {
    MapManager map = court(6, 6, 6, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_EQ(roadmap.placeBelow(middleOf(2, 1, 2) + vec3(30.0f, 0.0f, 0.0f)),
              roadmap.placeIn({2, 1, 2}));
    EXPECT_EQ(roadmap.placeBelow(middleOf(2, 1, 2) + vec3(34.0f, 0.0f, 0.0f)),
              roadmap.placeIn({3, 1, 2}));
}

TEST(RoadmapPlaceBelow, IsNotBelowARoof) {
    MapManager map = court(5, 9, 4, [](int i, int j, int) { return j == 4 && i > 1; });
    const Roadmap roadmap = chartedFrom(map, 1, 1, 1);
    ASSERT_GE(roadmap.placeIn({3, 1, 2}), 0);
    EXPECT_EQ(roadmap.placeIn({3, 5, 2}), -1);
    EXPECT_EQ(roadmap.placeBelow(middleOf(3, 5, 2)), -1);
}

TEST(RoadmapPlaceBelow, IsNoneOutsideTheWorld) {
    MapManager map = court(6, 6, 6, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_EQ(roadmap.placeBelow({-1375.2f, 797.7f, -1280.6f}), -1);
    EXPECT_EQ(roadmap.placeBelow({200.0f, -5000.0f, 200.0f}), -1);
    EXPECT_EQ(roadmap.placeBelow({200.0f, 5000.0f, 200.0f}), roadmap.placeIn({3, 1, 3}));
}

TEST(RoadmapPlaceIn, IsNoneForCellsOutsideTheGrid) {
    MapManager map = court(6, 6, 6, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    for (const CellIndex& cell : {CellIndex{-1, 1, 2}, CellIndex{6, 1, 2}, CellIndex{2, -1, 2},
                                  CellIndex{2, 6, 2}, CellIndex{2, 1, -1}, CellIndex{2, 1, 6}})
        EXPECT_EQ(roadmap.placeIn(cell), -1);
}

// What lies between two points

TEST(RoadmapIsOpen, WhereTheWholeBodyStaysOverPlacesOfTheRow) {
    MapManager map = court(7, 6, 7, isWall);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_TRUE(roadmap.isOpen(middleOf(1, 1, 1), middleOf(2, 1, 5), 1, 0.0f));
    EXPECT_TRUE(roadmap.isOpen(middleOf(1, 1, 5), middleOf(5, 1, 5), 1, 0.0f));
    EXPECT_FALSE(roadmap.isOpen(middleOf(2, 1, 3), middleOf(4, 1, 3), 1, 0.0f)) << "a wall";
    EXPECT_FALSE(roadmap.isOpen(middleOf(1, 1, 4), middleOf(4, 1, 5), 1, 0.0f)) << "its corner";
    EXPECT_FALSE(roadmap.isOpen(middleOf(1, 1, 1), middleOf(2, 1, 5), 2, 0.0f)) << "another row";
}

TEST(RoadmapIsOpen, MarginKeepsAwayFromWalls) {
    // In a passage one cube wide there are 7 units on either side of a body.
    MapManager map = court(7, 6, 7, isWall);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_TRUE(roadmap.isOpen(middleOf(2, 1, 5), middleOf(4, 1, 5), 1, 6.9f));
    EXPECT_FALSE(roadmap.isOpen(middleOf(2, 1, 5), middleOf(4, 1, 5), 1, 7.1f));
}

TEST(RoadmapIsOpen, NotOverHolesAndEdges) {
    MapManager map =
        court(9, 9, 9, [](int i, int j, int k) { return j < 4 && !(i == 4 && k == 4 && j > 0); });
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_FALSE(roadmap.isOpen(middleOf(2, 4, 4), middleOf(6, 4, 4), 4, 0.0f));
    EXPECT_TRUE(roadmap.isOpen(middleOf(2, 4, 3), middleOf(6, 4, 3), 4, 0.0f));
}

TEST(RoadmapIsClear, WhereNoCubeIsInTheWayOfABody) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_FALSE(roadmap.isClear(middleOf(3, 1, 1), middleOf(4, 1, 1), 1, 0.0f));
    EXPECT_FALSE(roadmap.isClear(middleOf(3, 2, 1), middleOf(4, 2, 1), 2, 0.0f));
    EXPECT_TRUE(roadmap.isClear(middleOf(3, 3, 1), middleOf(4, 3, 1), 3, 0.0f));
    EXPECT_FALSE(roadmap.isClear(middleOf(3, 3, 1), middleOf(4, 3, 1), 3, 8.0f)) << "the border";
}

TEST(RoadmapIsClear, AlsoAboveTheWorld) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_TRUE(roadmap.isClear(middleOf(3, 20, 1), middleOf(4, 20, 1), 20, 0.0f));
}

// Routes

TEST(RoadmapRoute, LeadsFromThePlaceToThePlaceByRoads) {
    MapManager map = court(7, 6, 7, isWall);
    const Roadmap roadmap = levelRoadmap(map);
    const std::vector<int> route =
        roadmap.route(roadmap.placeIn({2, 1, 1}), roadmap.placeIn({4, 1, 1}));
    ASSERT_GE(route.size(), 2u);
    EXPECT_EQ(route.front(), roadmap.placeIn({2, 1, 1}));
    EXPECT_EQ(route.back(), roadmap.placeIn({4, 1, 1}));
    for (std::size_t i = 1; i < route.size(); ++i)
        EXPECT_TRUE(roadmap.road(route[i - 1], route[i]));
}

TEST(RoadmapRoute, IsTheQuickest) {
    MapManager map = court(7, 6, 7, isWall);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_EQ(
        cellsOf(roadmap, roadmap.route(roadmap.placeIn({2, 1, 4}), roadmap.placeIn({4, 1, 4}))),
        (std::vector<CellIndex>{{2, 1, 4}, {2, 1, 5}, {3, 1, 5}, {4, 1, 5}, {4, 1, 4}}));
}

TEST(RoadmapRoute, ToThePlaceItselfIsThatPlace) {
    MapManager map = court(6, 6, 6, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_EQ(roadmap.route(3, 3), std::vector<int>{3});
}

TEST(RoadmapRoute, IsEmptyWhereNoneLeads) {
    MapManager map = platforms(7);
    const Roadmap roadmap = levelRoadmap(map);
    EXPECT_TRUE(roadmap.route(roadmap.placeIn({1, 4, 1}), roadmap.placeIn({11, 4, 1})).empty());
    EXPECT_TRUE(roadmap.route(-1, 2).empty());
    EXPECT_TRUE(roadmap.route(2, -1).empty());
}

TEST(RoadmapRoute, GoesRoundPlacesThatTakeAToll) {
    MapManager map = court(7, 6, 7, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    const int from = roadmap.placeIn({1, 1, 3});
    const int to = roadmap.placeIn({5, 1, 3});
    const int middle = roadmap.placeIn({3, 1, 3});
    const std::vector<int> straight = roadmap.route(from, to);
    EXPECT_EQ(std::count(straight.begin(), straight.end(), middle), 1);
    const std::vector<int> round =
        roadmap.route(from, to, [=](int place) { return place == middle ? 100.0 : 0.0; });
    EXPECT_EQ(std::count(round.begin(), round.end(), middle), 0);
    EXPECT_EQ(round.back(), to);
}

TEST(RoadmapRoute, PaysATollWhereThereIsNoOtherWay) {
    MapManager map = court(7, 6, 7, isWall);
    const Roadmap roadmap = levelRoadmap(map);
    const int passage = roadmap.placeIn({3, 1, 5});
    const std::vector<int> route =
        roadmap.route(roadmap.placeIn({2, 1, 1}), roadmap.placeIn({4, 1, 1}),
                      [=](int place) { return place == passage ? 1e6 : 0.0; });
    EXPECT_EQ(std::count(route.begin(), route.end(), passage), 1);
}

TEST(RoadmapRoute, TollBelowZeroCountsAsNone) {
    MapManager map = court(7, 6, 7, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    const int from = roadmap.placeIn({1, 1, 1});
    const int to = roadmap.placeIn({5, 1, 1});
    EXPECT_EQ(roadmap.route(from, to, [](int) { return -50.0; }), roadmap.route(from, to));
}
