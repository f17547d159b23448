#include "bots/Chart.h"

#include "common/Files.h"
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
    return bots::bodyIn({column, row, depth});
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

TEST(Chart, LevelFloorIsWalkedToAllEightNeighbours) {
    MapManager map = court(5, 6, 5, nothing);
    const Roadmap roadmap = chartedFrom(map, 2, 1, 2);
    ASSERT_EQ(roadmap.reach.places.size(), 9u);
    const int middle = roadmap.placeIn({2, 1, 2});
    const std::vector<Road>& roads = roadmap.roads[static_cast<std::size_t>(middle)];
    EXPECT_EQ(roads.size(), 8u);
    for (const Road& road : roads)
        EXPECT_EQ(road.gait, Gait::walk);
}

TEST(Chart, RoadTakesAsLongAsItsLengthAtWalkingSpeed) {
    MapManager map = court(4, 6, 4, nothing);
    const Roadmap roadmap = chartedFrom(map, 1, 1, 1);
    EXPECT_NEAR(roadBetween(roadmap, {1, 1, 1}, {2, 1, 1})->ticks, 64.0 / 6.0, 2.0);
    EXPECT_NEAR(roadBetween(roadmap, {1, 1, 1}, {2, 1, 2})->ticks, 90.5 / 6.0, 2.0);
}

TEST(Chart, StepsAreJumpedUpAndWalkedDown) {
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

TEST(Chart, BlockThreeCubesHighIsLeftOut) {
    MapManager map = courtWithBlock(3);
    const Roadmap roadmap = chartedFrom(map, 1, 1, 1);
    EXPECT_EQ(roadmap.reach.places.size(), 6u);
    EXPECT_EQ(roadmap.placeIn({4, 4, 1}), -1);
}

TEST(Chart, GapsAreLeaped) {
    for (const int gap : {1, 2, 3}) {
        MapManager map = platforms(gap);
        const Roadmap roadmap = chartedFrom(map, 1, 4, 1);
        const Road* road = roadBetween(roadmap, {2, 4, 1}, {gap + 3, 4, 1});
        ASSERT_TRUE(road) << gap;
        EXPECT_EQ(road->gait, Gait::leap) << gap;
        EXPECT_TRUE(roadBetween(roadmap, {gap + 3, 4, 1}, {2, 4, 1})) << gap;
    }
}

TEST(Chart, GapTooWideForSureIsNoRoad) {
    // A running jump along both axes of the keys would cross it.
    MapManager map = platforms(7);
    const Roadmap roadmap = chartedFrom(map, 1, 4, 1);
    EXPECT_EQ(roadmap.reach.places.size(), 2u);
}

TEST(Chart, PlacesWithoutAWayBackAreLeftOut) {
    // Between the platforms one is caught.
    MapManager map = platforms(3);
    const Roadmap roadmap = chartedFrom(map, 1, 4, 1);
    EXPECT_EQ(roadmap.reach.places.size(), 4u);
    for (const arena::StandingPlace& place : roadmap.reach.places)
        EXPECT_EQ(place.feet.row, 4);
}

TEST(Chart, CornersOfWallsAreNotCut) {
    MapManager map = court(7, 6, 7, isWall);
    const Roadmap roadmap = chartedFrom(map, 1, 1, 1);
    EXPECT_FALSE(roadBetween(roadmap, {2, 1, 4}, {3, 1, 5}));
    EXPECT_TRUE(roadBetween(roadmap, {2, 1, 4}, {2, 1, 5}));
    EXPECT_TRUE(roadBetween(roadmap, {2, 1, 5}, {3, 1, 5}));
}

TEST(Chart, LeapThatSavesLittleIsLeftOut) {
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

TEST(Chart, PlacesLieInTheMiddleOfTheirCells) {
    MapManager map = platforms(2);
    const Roadmap roadmap = chartedFrom(map, 1, 4, 1);
    for (const arena::StandingPlace& place : roadmap.reach.places) {
        const vec3 middle = middleOf(place.feet.column, place.feet.row, place.feet.depth);
        EXPECT_EQ((place.position - middle).length(), 0.0f);
        EXPECT_FALSE(map.cubeIsNull(place.feet.column, place.feet.row - 1, place.feet.depth));
    }
}

TEST(Chart, NextPlacesAreTheEndsOfRoads) {
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

TEST(Chart, LandingsFollowTheArrivals) {
    MapManager map = court(6, 8, 6, [](int i, int, int k) { return i == 3 && k == 3; });
    const Roadmap roadmap =
        chart(map, {arrivalIn(map, 3, 3, 3), arrivalIn(map, 1, 3, 2, 1), arrivalIn(map, 4, 1, 4)});
    EXPECT_EQ(roadmap.reach.landings,
              (std::vector<int>{-1, roadmap.placeIn({1, 1, 2}), roadmap.placeIn({4, 1, 4})}));
}

TEST(Chart, WhoLandsOnAnEdgeStandsOnTheCubeThatCarriesIt) {
    MapManager map = courtWithBlock(2);
    arena::Arrival arrival = arrivalIn(map, 4, 3, 1);
    arrival.landed.moveAll(vec3(-50.0f, 0.0f, 0.0f), 1.0f);
    ASSERT_EQ(map.getColumn(arrival.landed.position.x), 3);
    const Roadmap roadmap = chart(map, {arrival});
    EXPECT_EQ(roadmap.reach.landings, std::vector<int>{roadmap.placeIn({4, 3, 1})});
}

TEST(Chart, ProgressTellsOfEveryStage) {
    MapManager map = court(6, 6, 6, nothing);
    std::set<std::string> stages;
    chart(map, {arrivalIn(map, 2, 1, 2)},
          [&](const char* stage, std::size_t) { stages.insert(stage); });
    EXPECT_EQ(stages, (std::set<std::string>{"exploring", "trying steps", "trying leaps"}));
}

TEST(Chart, MapWithoutCellsIsAnError) {
    MapManager map;
    EXPECT_THROW(chart(map), InputError);
}

TEST(Chart, MapWhereNobodyStandsHasNoPlaces) {
    MapManager map = court(6, 6, 6, nothing);
    const Roadmap roadmap = chart(map, std::vector<arena::Arrival>{});
    EXPECT_TRUE(roadmap.reach.places.empty());
    EXPECT_EQ(roadmap.placeBelow(middleOf(2, 1, 2)), -1);
}

TEST(Chart, SameMapIsChartedTheSame) {
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
