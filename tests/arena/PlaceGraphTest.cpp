#include "arena/PlaceGraph.h"

#include <gtest/gtest.h>

using namespace drench;

using arena::DeadEnd;
using arena::Reach;

namespace {

using Group = std::vector<int>;

/// Places in a line along x; each leads to those listed for it.
Reach line(const std::vector<std::vector<int>>& next, const std::vector<int>& landings) {
    Reach reach;
    for (std::size_t i = 0; i < next.size(); ++i)
        reach.places.push_back({{static_cast<int>(i), 1, 0}, vec3(), next[i]});
    reach.landings = landings;
    return reach;
}

/// A plan of places, 'S' with a landing and '.' without, each leading to its eight neighbours.
Reach drawn(const std::vector<std::string>& rows) {
    Reach reach;
    for (int z = 0; z < static_cast<int>(rows.size()); ++z) {
        const std::string& row = rows[static_cast<std::size_t>(z)];
        for (int x = 0; x < static_cast<int>(row.size()); ++x) {
            const char drawing = row[static_cast<std::size_t>(x)];
            if (drawing == ' ')
                continue;
            if (drawing == 'S')
                reach.landings.push_back(static_cast<int>(reach.places.size()));
            reach.places.push_back({{x, 1, z}, vec3(), {}});
        }
    }
    for (std::size_t i = 0; i < reach.places.size(); ++i) {
        for (std::size_t j = 0; j < reach.places.size(); ++j) {
            const auto& a = reach.places[i].feet;
            const auto& b = reach.places[j].feet;
            if (i != j && std::abs(a.column - b.column) <= 1 && std::abs(a.depth - b.depth) <= 1)
                reach.places[i].next.push_back(static_cast<int>(j));
        }
    }
    return reach;
}

} // namespace

TEST(PlaceGraph, ReachableFollowsTheDirectionOfMoves) {
    const Reach reach = line({{1}, {2}, {}, {0}}, {0});
    EXPECT_EQ(reachableFrom(reach, 0), (std::vector<bool>{true, true, true, false}));
    EXPECT_EQ(reachableFrom(reach, 2), (std::vector<bool>{false, false, true, false}));
    EXPECT_EQ(reachableFrom(reach, 3), (std::vector<bool>{true, true, true, true}));
}

TEST(Pits, AreNoneWhereEveryPlaceLeadsToALanding) {
    EXPECT_TRUE(pits(line({{1}, {2}, {0}}, {0})).empty());
}

TEST(Pits, AreTheConnectedPlacesThatNoLandingFollowsLargestFirst) {
    const Reach reach = line({{1, 2}, {}, {3}, {2}, {0}}, {0});
    EXPECT_EQ(pits(reach), (std::vector<Group>{{2, 3}, {1}}));
}

TEST(Pits, WayToAnyOneLandingIsEnough) {
    const Reach reach = line({{1}, {2}, {}, {}}, {-1, 0, 2});
    EXPECT_EQ(pits(reach), (std::vector<Group>{{3}}));
}

TEST(DeadEnds, AlleyIsAsDeepAsItsFarthestPlace) {
    const Reach reach = drawn({"...     ", //
                               ".S......", //
                               "...     "});
    const std::vector<DeadEnd> found = deadEnds(reach);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(reach.places[static_cast<std::size_t>(found[0].mouth)].feet.column, 3);
    EXPECT_EQ(reach.places[static_cast<std::size_t>(found[0].end)].feet.column, 7);
    EXPECT_EQ(found[0].depth, 4);
}

TEST(DeadEnds, LoopIsNone) {
    EXPECT_TRUE(deadEnds(drawn({".....", //
                                ".   .", //
                                "S   .", //
                                ".   .", //
                                "....."}))
                    .empty());
}

TEST(DeadEnds, WayToAnotherSpawnIsNone) {
    EXPECT_TRUE(deadEnds(drawn({"S.....S"})).empty());
}

TEST(DeadEnds, RoomBehindADoorIsOneEvenWithBranches) {
    const Reach reach = drawn({"..  .....", //
                               "S.....  .", //
                               "..  .....", //
                               "    .    ", //
                               "    .    "});
    const std::vector<DeadEnd> found = deadEnds(reach);
    ASSERT_EQ(found.size(), 1u) << "what hangs on a dead end belongs to it";
    EXPECT_EQ(found[0].depth, 6);
}

TEST(DeadEnds, DeepestComesFirst) {
    const Reach reach = drawn({"....S......"});
    const std::vector<DeadEnd> found = deadEnds(reach);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].depth, 6);
    EXPECT_EQ(found[1].depth, 4);
}

TEST(DeadEnds, MoveThatGoesOnlyOneWayCounts) {
    Reach reach = drawn({"S...."});
    for (arena::StandingPlace& place : reach.places)
        place.next.erase(std::remove_if(place.next.begin(), place.next.end(),
                                        [&](int next) {
                                            return next <
                                                   static_cast<int>(&place - reach.places.data());
                                        }),
                         place.next.end());
    EXPECT_EQ(deadEnds(reach).size(), 1u);
}
