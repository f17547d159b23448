#include "bots/Goals.h"

#include "tests/bots/LevelRoadmap.h"

#include <cmath>
#include <gtest/gtest.h>
#include <set>

using namespace drench;

using bots::Goals;

namespace {

/// A court with a block two cubes high in a corner.
MapManager courtWithBlock() {
    return court(20, 10, 20, [](int i, int j, int k) { return j <= 2 && i >= 14 && k >= 14; });
}

vec3 goalPosition(const bots::Roadmap& roadmap, int goal) {
    return roadmap.reach.places[static_cast<std::size_t>(goal)].position;
}

} // namespace

TEST(Goals, AreVaried) {
    MapManager map = courtWithBlock();
    const bots::Roadmap roadmap = levelRoadmap(map);
    Goals goals(roadmap, Chance(1));
    std::set<int> seen;
    for (int i = 0; i < 100; ++i) {
        const int goal = goals.next(roadmap);
        ASSERT_GE(goal, 0);
        ASSERT_LT(goal, static_cast<int>(roadmap.reach.places.size()));
        seen.insert(goal);
    }
    EXPECT_GT(seen.size(), 40u);
}

TEST(Goals, AreOftenHighOrInTheMiddle) {
    MapManager map = courtWithBlock();
    const bots::Roadmap roadmap = levelRoadmap(map);
    double highPlaces = 0.0;
    double middlePlaces = 0.0;
    const auto isHigh = [](vec3 position) { return position.y > 200.0f; };
    const auto isMiddle = [](vec3 position) {
        return std::hypot(position.x - 640.0f, position.z - 640.0f) < 200.0f;
    };
    for (const arena::StandingPlace& place : roadmap.reach.places) {
        highPlaces += isHigh(place.position);
        middlePlaces += isMiddle(place.position);
    }
    const double count = static_cast<double>(roadmap.reach.places.size());
    double high = 0.0;
    double middle = 0.0;
    constexpr int draws = 2000;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Goals goals(roadmap, Chance(seed));
        for (int i = 0; i < draws / 20; ++i) {
            const vec3 position = goalPosition(roadmap, goals.next(roadmap));
            high += isHigh(position);
            middle += isMiddle(position);
        }
    }
    EXPECT_GT(high / draws, 1.3 * highPlaces / count);
    EXPECT_GT(middle / draws, 1.5 * middlePlaces / count);
}

TEST(Goals, AreNearWhereSomebodyWasForAWhile) {
    MapManager map = courtWithBlock();
    const bots::Roadmap roadmap = levelRoadmap(map);
    const vec3 company = standingIn(2, 17);
    const auto meanDistance = [&](bool noted, int skipped) {
        double sum = 0.0;
        for (std::uint64_t seed = 1; seed <= 200; ++seed) {
            Goals goals(roadmap, Chance(seed));
            if (noted)
                goals.noteCompany(company);
            for (int i = 0; i < skipped; ++i)
                goals.next(roadmap);
            const vec3 goal = goalPosition(roadmap, goals.next(roadmap));
            sum += std::hypot(static_cast<double>(goal.x - company.x),
                              static_cast<double>(goal.z - company.z));
        }
        return sum / 200.0;
    };
    EXPECT_LT(meanDistance(true, 0), 0.85 * meanDistance(false, 0));
    EXPECT_GT(meanDistance(true, 4), 0.93 * meanDistance(false, 4));
}

TEST(Goals, DifferByTheSeedAlone) {
    MapManager map = courtWithBlock();
    const bots::Roadmap roadmap = levelRoadmap(map);
    const auto first = [&](std::uint64_t seed) {
        Goals goals(roadmap, Chance(seed));
        std::vector<int> drawn;
        for (int i = 0; i < 5; ++i)
            drawn.push_back(goals.next(roadmap));
        return drawn;
    };
    EXPECT_EQ(first(1), first(1));
    EXPECT_NE(first(1), first(2));
}

TEST(Goals, OfAMapWithoutPlacesAreNone) {
    MapManager map = court(5, 5, 5, [](int, int, int) { return true; });
    const bots::Roadmap roadmap = levelRoadmap(map);
    Goals goals(roadmap, Chance(1));
    EXPECT_EQ(goals.next(roadmap), -1);
}
