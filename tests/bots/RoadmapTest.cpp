#include "bots/Roadmap.h"

#include "bots/Chart.h"

#include "tests/bots/LevelRoadmap.h"

#include <gtest/gtest.h>

using namespace drench;

using arena::CellIndex;
using bots::chart;
using bots::Roadmap;

namespace {

Roadmap chartedFrom(MapManager& map, int column, int row, int depth) {
    return chart(map, {arrivalIn(map, column, row, depth)});
}

vec3 middleOf(int column, int row, int depth) {
    return bots::bodyIn({column, row, depth});
}

/// A court with a block of so many cubes in the east half.
MapManager courtWithBlock(int height) {
    return court(8, 9, 4, [=](int i, int j, int) { return i >= 4 && j <= height; });
}

/// A wall across a court, from one border to a passage of one cube.
bool isWall(int i, int, int k) {
    return i == 3 && k < 5;
}

} // namespace

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
