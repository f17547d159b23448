#include "bots/Walker.h"

#include "arena/PlaceGraph.h"
#include "bots/Chart.h"
#include "bots/Legs.h"
#include "bots/Routes.h"
#include "src/FileLoader.h"
#include "tests/bots/LevelRoadmap.h"
#include "tests/support/Courts.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <gtest/gtest.h>
#include <random>

using namespace drench;

using arena::CellIndex;
using bots::chart;
using bots::Gait;
using bots::legsOnly;
using bots::pressForHeading;
using bots::Roadmap;
using bots::Steps;
using bots::Walker;

namespace {

/// How a player follows a walker: how many ticks late, looking where at first, and whether it turns
/// its view to where it goes.
struct Manner {
    int delay = 0;
    float yaw = 0.0f;
    bool turns = true;
};

constexpr Manner manners[] = {
    {0, 0.0f, true}, {3, 2.0f, true}, {6, -1.0f, true}, {0, 0.4f, false}, {4, 2.5f, false},
};

struct Journey {
    bool arrived = false;
    int ticks = 0;

    /// World units over the floor.
    double length = 0.0;
    int jumps = 0;
    vec3 end;
};

vec3 headingOf(float yaw) {
    return {std::sin(yaw), 0.0f, std::cos(yaw)};
}

Player playerAt(MapManager& map, vec3 position, float yaw) {
    return bodyAt(map, position, position + headingOf(yaw));
}

void act(Player& player, const Controls& controls) {
    player.apply(controls);
    player.update(0.0f);
}

vec3 positionOf(const Roadmap& roadmap, int place) {
    return roadmap.reach.places[static_cast<std::size_t>(place)].position;
}

/// Lets a player follow a route to its end or until the walker strays.
Journey journeyFrom(vec3 position, const Roadmap& roadmap, const std::vector<int>& route,
                    const Manner& manner = {}) {
    constexpr int longest = 4000;
    Player player = playerAt(*roadmap.map, position, manner.yaw);
    Player turned = player;
    std::deque<Controls> underWay(static_cast<std::size_t>(manner.delay));
    Walker walker;
    walker.follow(route);
    Journey journey;
    for (; journey.ticks < longest; ++journey.ticks) {
        const Steps steps = walker.step(roadmap, player.position, manner.delay);
        if (walker.isDone())
            break;
        Controls controls;
        if (manner.turns)
            controls = legsOnly(steps, turned.direction);
        else
            pressForHeading(controls, steps.heading, turned.direction);
        controls.jump = steps.jump;
        journey.jumps += steps.jump;
        turned.rotateView(controls.dx, controls.dy);
        underWay.push_back(controls);
        const vec3 before = player.position;
        act(player, underWay.front());
        underWay.pop_front();
        journey.length += static_cast<double>(
            std::hypot(player.position.x - before.x, player.position.z - before.z));
    }
    journey.arrived = walker.isDone() && !walker.hasStrayed();
    journey.end = player.position;
    return journey;
}

Journey journey(const Roadmap& roadmap, const std::vector<int>& route, const Manner& manner = {}) {
    return journeyFrom(positionOf(roadmap, route.front()), roadmap, route, manner);
}

std::vector<int> routeBetween(const Roadmap& roadmap, const CellIndex& from, const CellIndex& to) {
    return quickestRoute(roadmap, roadmap.placeIn(from), roadmap.placeIn(to));
}

/// Expects that players get from one cell to another in every manner, and stop there.
void expectArrivals(const Roadmap& roadmap, const CellIndex& from, const CellIndex& to) {
    const std::vector<int> route = routeBetween(roadmap, from, to);
    ASSERT_FALSE(route.empty());
    for (const Manner& manner : manners) {
        const Journey made = journey(roadmap, route, manner);
        EXPECT_TRUE(made.arrived) << "delay " << manner.delay << ", yaw " << manner.yaw
                                  << ", ends at " << made.end;
        EXPECT_EQ(roadmap.placeBelow(made.end), route.back()) << "delay " << manner.delay;
    }
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

/// Adds a road that nobody was seen to manage.
void addRoad(Roadmap& roadmap, const CellIndex& from, const CellIndex& to, Gait gait) {
    roadmap.roads[static_cast<std::size_t>(roadmap.placeIn(from))].push_back(
        {roadmap.placeIn(to), gait, 10});
}

} // namespace

// Getting there

TEST(Walker, CrossesALevelFloor) {
    MapManager map = court(10, 6, 10, nothing);
    expectArrivals(levelRoadmap(map), {1, 1, 1}, {8, 1, 6});
}

TEST(Walker, CutsCornersOfOpenFloors) {
    MapManager map = court(12, 6, 12, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    const std::vector<int> route = routeBetween(roadmap, {1, 1, 1}, {10, 1, 10});
    const double straight = static_cast<double>(
        (positionOf(roadmap, route.back()) - positionOf(roadmap, route.front())).length());
    for (const Manner& manner : manners) {
        const Journey made = journey(roadmap, route, manner);
        EXPECT_TRUE(made.arrived);
        EXPECT_LT(made.length, 1.1 * straight) << "along the cells it is 1.41 times as far";
    }
}

TEST(Walker, GoesWithoutPauses) {
    MapManager map = court(12, 6, 12, [](int i, int, int k) { return i == 6 && k < 9; });
    const Roadmap roadmap = levelRoadmap(map);
    const Journey made = journey(roadmap, routeBetween(roadmap, {1, 1, 1}, {10, 1, 1}));
    ASSERT_TRUE(made.arrived);
    EXPECT_GT(made.length / made.ticks, 5.5);
}

TEST(Walker, ThreadsCorridorsOfOneCube) {
    MapManager map =
        court(9, 6, 9, [](int i, int, int k) { return !(k == 2 && i < 7) && !(i == 6 && k < 7); });
    expectArrivals(levelRoadmap(map), {1, 1, 2}, {6, 1, 6});
}

TEST(Walker, KeepsOnABridgeOfOneCube) {
    MapManager map = court(9, 9, 9, [](int i, int j, int k) {
        return j < 4 && (i < 3 || (k == 4 && i < 7) || (i == 6 && k < 7));
    });
    const Roadmap roadmap = levelRoadmap(map);
    expectArrivals(roadmap, {1, 4, 1}, {6, 4, 6});
    expectArrivals(roadmap, {6, 4, 6}, {2, 4, 7});
}

TEST(Walker, JumpsUpOneCubeAndTwo) {
    for (const int height : {1, 2}) {
        MapManager map = courtWithBlock(height);
        const Roadmap roadmap = chart(map, {arrivalIn(map, 1, 1, 1)});
        expectArrivals(roadmap, {1, 1, 1}, {6, height + 1, 2});
    }
}

TEST(Walker, WalksDownFromAnyHeight) {
    MapManager map = court(8, 14, 4, [](int i, int j, int) { return i >= 4 && j <= 9; });
    Roadmap roadmap = levelRoadmap(map);
    addRoad(roadmap, {4, 10, 1}, {3, 1, 1}, Gait::walk);
    expectArrivals(roadmap, {6, 10, 2}, {1, 1, 2});
}

TEST(Walker, LeapsGaps) {
    for (const int gap : {1, 2, 3}) {
        MapManager map = platforms(gap);
        const Roadmap roadmap = chart(map, {arrivalIn(map, 1, 4, 1)});
        expectArrivals(roadmap, {1, 4, 1}, {gap + 4, 4, 1});
    }
}

TEST(Walker, ClimbsAStairWithOneJumpForEachStepOrTwo) {
    const int steps = 6;
    MapManager map = court(steps + 4, 12, 3,
                           [=](int i, int j, int) { return j <= std::clamp(i - 1, 0, steps); });
    const Roadmap roadmap = chart(map, {arrivalIn(map, 1, 1, 1)});
    expectArrivals(roadmap, {1, 1, 1}, {8, 7, 1});
    const Journey made = journey(roadmap, routeBetween(roadmap, {1, 1, 1}, {8, 7, 1}));
    EXPECT_GE(made.jumps, steps / 2);
    EXPECT_LE(made.jumps, steps);
}

TEST(Walker, JumpsAgainAsSoonAsItLands) {
    // Steps of two cubes; a jump up two cubes is 30 ticks long.
    const int steps = 3;
    MapManager map = court(steps + 4, 15, 3,
                           [=](int i, int j, int) { return j <= 2 * std::clamp(i - 1, 0, steps); });
    const Roadmap roadmap = chart(map, {arrivalIn(map, 1, 1, 1)});
    const Journey made = journey(roadmap, routeBetween(roadmap, {1, 1, 1}, {4, 7, 1}));
    EXPECT_TRUE(made.arrived);
    EXPECT_EQ(made.jumps, steps);
    EXPECT_LT(made.ticks, 30 * steps + 20);
}

TEST(Walker, StartsFromAnywhereOnItsPlace) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = chart(map, {arrivalIn(map, 1, 1, 1)});
    const std::vector<int> route = routeBetween(roadmap, {3, 1, 1}, {4, 3, 1});
    const vec3 middle = positionOf(roadmap, route.front());
    for (const float x : {-30.0f, 0.0f, 6.0f}) {
        for (const float z : {-6.0f, 0.0f, 30.0f})
            EXPECT_TRUE(journeyFrom(middle + vec3(x, 0.0f, z), roadmap, route).arrived)
                << x << ", " << z;
    }
}

TEST(Walker, StartsFromTheAir) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = chart(map, {arrivalIn(map, 1, 1, 1)});
    const std::vector<int> route = routeBetween(roadmap, {2, 1, 1}, {5, 3, 2});
    const vec3 above = positionOf(roadmap, route.front()) + vec3(10.0f, 100.0f, -6.0f);
    EXPECT_TRUE(journeyFrom(above, roadmap, route).arrived);
}

TEST(Walker, GoesOnFromWhereverOnItsRouteItIs) {
    MapManager map = court(10, 6, 4, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    Walker walker;
    walker.follow(routeBetween(roadmap, {1, 1, 1}, {8, 1, 1}));
    walker.step(roadmap, positionOf(roadmap, roadmap.placeIn({5, 1, 1})));
    EXPECT_EQ(walker.route(), std::vector<int>{roadmap.placeIn({8, 1, 1})});
}

TEST(Walker, WaitsInTheAirWhileACubesFaceIsBeforeIt) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = chart(map, {arrivalIn(map, 1, 1, 1)});
    Walker walker;
    walker.follow(routeBetween(roadmap, {3, 1, 1}, {4, 3, 1}));
    vec3 position = positionOf(roadmap, roadmap.placeIn({3, 1, 1}));
    EXPECT_TRUE(walker.step(roadmap, position).jump);
    for (const float height : {20.0f, 60.0f, 110.0f}) {
        const Steps steps = walker.step(roadmap, position + vec3(0.0f, height, 0.0f));
        EXPECT_TRUE(walker.isAloft());
        EXPECT_EQ(steps.heading.length(), 0.0f) << height;
        EXPECT_FALSE(steps.jump);
    }
    EXPECT_GT(walker.step(roadmap, position + vec3(0.0f, 130.0f, 0.0f)).heading.x, 0.9f);
}

TEST(Walker, ForeseesWhereItWillBeWhenItsStepsAct) {
    MapManager map = court(10, 6, 4, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    const std::vector<int> route = routeBetween(roadmap, {1, 1, 1}, {8, 1, 1});
    const vec3 end = positionOf(roadmap, route.back());
    // Three steps of 6 units are under way when it is seen 21 units before the end.
    for (const int delay : {0, 3}) {
        Walker walker;
        walker.follow(route);
        for (const float before : {39.0f, 33.0f, 27.0f})
            walker.step(roadmap, end - vec3(before, 0.0f, 0.0f), delay);
        const Steps steps = walker.step(roadmap, end - vec3(21.0f, 0.0f, 0.0f), delay);
        EXPECT_EQ(steps.heading.length(), delay == 0 ? 1.0f : 0.0f) << delay;
    }
}

// Not getting there

TEST(Walker, IsDoneWithoutARouteAndAtItsEnd) {
    MapManager map = court(6, 6, 6, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    Walker walker;
    EXPECT_TRUE(walker.isDone());
    walker.follow({});
    EXPECT_TRUE(walker.isDone());
    walker.follow({3});
    EXPECT_TRUE(walker.isDone());
    EXPECT_FALSE(walker.hasStrayed());
    const Steps steps = walker.step(roadmap, positionOf(roadmap, 3));
    EXPECT_EQ(steps.heading.length(), 0.0f);
    EXPECT_FALSE(steps.jump);
}

TEST(Walker, WhoGetsNoNearerForASecondAndAHalfHasStrayed) {
    MapManager map = court(6, 6, 6, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    const std::vector<int> route = routeBetween(roadmap, {1, 1, 1}, {1, 1, 4});
    Walker walker;
    walker.follow(route);
    int snapshots = 0;
    while (!walker.isDone() && snapshots < 200) {
        EXPECT_FALSE(walker.failedStretch());
        walker.step(roadmap, positionOf(roadmap, route.front()));
        ++snapshots;
    }
    EXPECT_TRUE(walker.hasStrayed());
    EXPECT_NEAR(snapshots / 62.5, 1.5, 0.05);
}

TEST(Walker, WhoFallsToALowerPlaceHasStrayed) {
    MapManager map = platforms(3);
    Roadmap roadmap = levelRoadmap(map);
    addRoad(roadmap, {2, 4, 1}, {6, 4, 1}, Gait::leap);
    const std::vector<int> route = routeBetween(roadmap, {2, 4, 1}, {6, 4, 1});
    Walker walker;
    walker.follow(route);
    walker.step(roadmap, positionOf(roadmap, route.front()));
    EXPECT_FALSE(walker.hasStrayed());
    walker.step(roadmap, positionOf(roadmap, roadmap.placeIn({4, 1, 1})));
    ASSERT_TRUE(walker.hasStrayed());
    const auto failed = walker.failedStretch();
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->from, route[0]);
    EXPECT_EQ(failed->to, route[1]);
    EXPECT_EQ(walker.route(), std::vector<int>{route[1]});
}

TEST(Walker, JumpThatMissesAgainAndAgainIsGivenUp) {
    MapManager map = courtWithBlock(3);
    Roadmap roadmap = levelRoadmap(map);
    addRoad(roadmap, {3, 1, 1}, {4, 4, 1}, Gait::jump);
    const Journey made = journey(roadmap, routeBetween(roadmap, {2, 1, 1}, {4, 4, 1}));
    EXPECT_FALSE(made.arrived);
    EXPECT_EQ(made.jumps, 3);
}

TEST(Walker, JumpThatShowsNoEffectIsAskedForAgain) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = chart(map, {arrivalIn(map, 1, 1, 1)});
    const std::vector<int> route = routeBetween(roadmap, {3, 1, 1}, {4, 3, 1});
    Walker walker;
    walker.follow(route);
    std::vector<int> asked;
    for (int snapshot = 0; snapshot < 60; ++snapshot) {
        if (walker.step(roadmap, positionOf(roadmap, route.front())).jump)
            asked.push_back(snapshot);
    }
    EXPECT_EQ(asked, (std::vector<int>{0, 25, 50})) << "while a jump is under way, no second one";
}

TEST(Walker, RouteWithoutARoadIsStrayedFrom) {
    MapManager map = platforms(3);
    const Roadmap roadmap = levelRoadmap(map);
    Walker walker;
    walker.follow({roadmap.placeIn({2, 4, 1}), roadmap.placeIn({6, 4, 1})});
    walker.step(roadmap, positionOf(roadmap, roadmap.placeIn({2, 4, 1})));
    EXPECT_TRUE(walker.hasStrayed());
}

TEST(Walker, NewRouteIsFollowedAfterOneThatFailed) {
    MapManager map = court(6, 6, 6, nothing);
    const Roadmap roadmap = levelRoadmap(map);
    const std::vector<int> route = routeBetween(roadmap, {1, 1, 1}, {4, 1, 4});
    Walker walker;
    walker.follow(route);
    while (!walker.isDone())
        walker.step(roadmap, positionOf(roadmap, route.front()));
    ASSERT_TRUE(walker.hasStrayed());
    walker.follow(route);
    EXPECT_FALSE(walker.isDone());
    EXPECT_FALSE(walker.failedStretch());
    EXPECT_GT(walker.step(roadmap, positionOf(roadmap, route.front())).heading.length(), 0.9f);
}

TEST(Walker, SamePositionsGiveTheSameSteps) {
    MapManager map = courtWithBlock(2);
    const Roadmap roadmap = chart(map, {arrivalIn(map, 1, 1, 1)});
    const std::vector<int> route = routeBetween(roadmap, {1, 1, 1}, {6, 3, 2});
    Walker one;
    Walker other;
    one.follow(route);
    other.follow(route);
    Player player = playerAt(map, positionOf(roadmap, route.front()), 0.0f);
    while (!one.isDone()) {
        const Steps steps = one.step(roadmap, player.position, 1);
        const Steps same = other.step(roadmap, player.position, 1);
        ASSERT_EQ(steps.heading.x, same.heading.x);
        ASSERT_EQ(steps.heading.z, same.heading.z);
        ASSERT_EQ(steps.jump, same.jump);
        act(player, legsOnly(steps, player.direction));
    }
    EXPECT_FALSE(one.hasStrayed());
    EXPECT_TRUE(other.isDone());
}

// Legs

TEST(WalkerLegs, KeysMoveAlongTheNearestOfEightDirections) {
    MapManager map = court(20, 6, 20, nothing);
    for (int sixteenth = 0; sixteenth < 16; ++sixteenth) {
        const float aside = 0.3926991f * static_cast<float>(sixteenth) + 0.1f;
        for (const float yaw : {0.0f, 1.3f, -2.6f}) {
            Player player = playerAt(map, {640.0f, standing, 640.0f}, yaw);
            const vec3 before = player.position;
            Controls controls;
            pressForHeading(controls, headingOf(yaw + aside), player.direction);
            act(player, controls);
            vec3 moved = player.position - before;
            moved.y = 0.0f;
            moved.normalize();
            EXPECT_GT(moved.dot(headingOf(yaw + aside)), std::cos(0.3927f)) << aside << ", " << yaw;
        }
    }
}

TEST(WalkerLegs, NoHeadingHoldsNoKey) {
    Controls controls;
    controls.held[keyIndex::forward] = true;
    controls.held[keyIndex::shoot] = true;
    pressForHeading(controls, vec3(), headingOf(1.0f));
    for (int key = 0; key < keyIndex::jump; ++key)
        EXPECT_FALSE(controls.held[key]);
    EXPECT_TRUE(controls.held[keyIndex::shoot]) << "not the legs' business";
    const Controls still = legsOnly({}, headingOf(1.0f));
    EXPECT_EQ(still.dx, 0);
    EXPECT_EQ(still.dy, 0);
}

TEST(WalkerLegs, AloneTheyTurnTheViewToTheHeadingAndLevelIt) {
    MapManager map = court(6, 6, 6, nothing);
    Player player = playerAt(map, {160.0f, standing, 160.0f}, 0.3f);
    player.rotateView(0, 150);
    const vec3 heading = headingOf(2.8f);
    for (int tick = 0; tick < 30; ++tick) {
        const Controls controls = legsOnly({heading, false}, player.direction);
        EXPECT_LE(std::abs(controls.dx), 40);
        EXPECT_LE(std::abs(controls.dy), 40);
        player.rotateView(controls.dx, controls.dy);
    }
    EXPECT_GT(player.direction.dot(heading), 0.9999f);
}

TEST(WalkerLegs, JumpIsPassedOn) {
    EXPECT_TRUE(legsOnly({headingOf(0.0f), true}, headingOf(0.0f)).jump);
    EXPECT_FALSE(legsOnly({headingOf(0.0f), false}, headingOf(0.0f)).jump);
}

#ifndef DRENCH_SANITIZED

TEST(WalkerInTheDefaultArena, ArrivesFromAnywhereAnywhere) {
    MapManager map;
    map.init(fileStringContents(DRENCH_MAPDATA));
    const Roadmap roadmap = chart(map);
    const auto count = static_cast<int>(roadmap.reach.places.size());
    EXPECT_GT(count, 900) << "hardly a place is left out";
    EXPECT_TRUE(arena::pits(roadmap.reach).empty());
    for (const int landing : roadmap.reach.landings) {
        ASSERT_GE(landing, 0);
        const std::vector<bool> reached = arena::reachableFrom(roadmap.reach, landing);
        EXPECT_EQ(std::count(reached.begin(), reached.end(), true), count);
    }

    std::mt19937 random(17);
    const auto anyPlace = [&] { return static_cast<int>(random() % static_cast<unsigned>(count)); };
    for (int i = 0; i < 100; ++i) {
        const std::vector<int> route = quickestRoute(roadmap, anyPlace(), anyPlace());
        const Manner& manner = manners[static_cast<std::size_t>(i) % std::size(manners)];
        const Journey made = journey(roadmap, route, manner);
        EXPECT_TRUE(made.arrived) << "route " << i << " ends at " << made.end;
    }
}

#endif
