#include "bots/Cover.h"

#include "arena/Sight.h"
#include "bots/Routes.h"
#include "bots/Sightline.h"
#include "src/Player.h"
#include "tests/bots/LevelRoadmap.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>

using namespace drench;

namespace {

/// A court with two walls along x, before z = 8 and z = 12, that leave their ends open.
MapManager courtWithWalls() {
    return court(16, 10, 20,
                 [](int i, int, int k) { return i > 2 && i < 13 && (k == 8 || k == 12); });
}

vec3 endOf(const bots::Roadmap& roadmap, const std::vector<int>& route) {
    return roadmap.reach.places[static_cast<std::size_t>(route.back())].position;
}

} // namespace

TEST(Cover, IsWhereNobodySees) {
    MapManager map = courtWithWalls();
    const bots::Roadmap roadmap = levelRoadmap(map);
    const vec3 enemies[] = {standingIn(8, 3), standingIn(4, 2)};
    const int here = roadmap.placeBelow(standingIn(2, 6));
    const std::vector<int> route = bots::routeToCover(roadmap, here, enemies);
    ASSERT_FALSE(route.empty());
    EXPECT_EQ(route.front(), here);
    for (const vec3 enemy : enemies) {
        EXPECT_FALSE(
            arena::sees(roadmap.grid, enemy, Box(endOf(roadmap, route), Player::bodySize)));
    }
    for (std::size_t i = 1; i < route.size(); ++i)
        EXPECT_NE(roadmap.road(route[i - 1], route[i]), nullptr);
}

TEST(Cover, IsTheNearestThereIs) {
    MapManager map = courtWithWalls();
    const bots::Roadmap roadmap = levelRoadmap(map);
    const vec3 enemy = standingIn(8, 3);
    const vec3 enemies[] = {enemy};
    for (const auto& [column, depth] : {std::pair{2, 8}, std::pair{1, 6}, std::pair{13, 5}}) {
        const int here = roadmap.placeBelow(standingIn(column, depth));
        std::size_t shortest = 1000;
        for (std::size_t place = 0; place < roadmap.reach.places.size(); ++place) {
            const vec3 body = roadmap.reach.places[place].position;
            const auto parts = bots::bodyParts(enemy, body);
            if (std::all_of(parts.begin(), parts.end(), [&](vec3 part) {
                    return bots::sightline(roadmap.grid, enemy, body + part) ==
                           bots::Sightline::hidden;
                }))
                shortest = std::min(shortest,
                                    quickestRoute(roadmap, here, static_cast<int>(place)).size());
        }
        EXPECT_EQ(bots::routeToCover(roadmap, here, enemies).size(), shortest);
    }
}

TEST(Cover, IsWhereOneStandsWhenThatIsHidden) {
    MapManager map = courtWithWalls();
    const bots::Roadmap roadmap = levelRoadmap(map);
    const vec3 enemies[] = {standingIn(8, 3)};
    const int here = roadmap.placeBelow(standingIn(8, 10));
    EXPECT_EQ(bots::routeToCover(roadmap, here, enemies), std::vector<int>{here});
}

TEST(Cover, IsNotFoundOnAnOpenFloor) {
    MapManager map = court(16, 10, 20, nothing);
    const bots::Roadmap roadmap = levelRoadmap(map);
    const vec3 enemies[] = {standingIn(8, 3)};
    EXPECT_TRUE(
        bots::routeToCover(roadmap, roadmap.placeBelow(standingIn(8, 15)), enemies).empty());
}

TEST(Cover, IsNotSoughtFarAway) {
    // A passage with a corner at its end.
    MapManager map = court(
        16, 10, 40, [](int i, int, int k) { return i != 12 && !(i > 4 && i < 12 && k == 25); });
    const bots::Roadmap roadmap = levelRoadmap(map);
    const vec3 enemies[] = {standingIn(12, 2)};
    const auto routeFrom = [&](int depth) {
        return bots::routeToCover(roadmap, roadmap.placeBelow(standingIn(12, depth)), enemies);
    };
    EXPECT_TRUE(routeFrom(10).empty());
    EXPECT_FALSE(routeFrom(22).empty());
}
