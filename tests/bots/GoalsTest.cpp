#include "bots/Goals.h"

#include "tests/bots/LevelRoadmap.h"

#include <algorithm>
#include <array>
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
    Goals goals(roadmap, 0.5, Chance(1));
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
    double middlePlaces = 0.0;
    const auto isHigh = [](vec3 position) { return position.y > 200.0f; };
    // The opposite corner is as far from the middle, and low.
    const auto isLowCorner = [](vec3 position) {
        return position.x < 384.0f && position.z < 384.0f;
    };
    const auto isMiddle = [](vec3 position) {
        return std::hypot(position.x - 640.0f, position.z - 640.0f) < 200.0f;
    };
    for (const arena::StandingPlace& place : roadmap.reach.places) {
        middlePlaces += isMiddle(place.position);
    }
    const double count = static_cast<double>(roadmap.reach.places.size());
    double high = 0.0;
    double lowCorner = 0.0;
    double middle = 0.0;
    constexpr int draws = 2000;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Goals goals(roadmap, 0.5, Chance(seed));
        for (int i = 0; i < draws / 20; ++i) {
            const vec3 position = goalPosition(roadmap, goals.next(roadmap));
            high += isHigh(position);
            lowCorner += isLowCorner(position);
            middle += isMiddle(position);
        }
    }
    EXPECT_GT(high, 2.0 * lowCorner);
    EXPECT_GT(middle / draws, 1.5 * middlePlaces / count);
}

TEST(Goals, ToTheTasteOfManyLieWhereTheyMeet) {
    // Bots soak each other only where they meet, so that the pace of a match hangs on this.
    MapManager map = court(20, 10, 20, nothing);
    const bots::Roadmap roadmap = levelRoadmap(map);
    constexpr int players = 40;
    std::vector<vec3> goals;
    for (std::uint64_t seed = 1; seed <= players; ++seed) {
        Goals own(roadmap, 0.0, Chance(seed));
        goals.push_back(goalPosition(roadmap, own.next(roadmap)));
    }
    double sum = 0.0;
    for (const vec3 a : goals) {
        for (const vec3 b : goals)
            sum += static_cast<double>((a - b).length());
    }
    // Random goals would be 600 apart.
    EXPECT_LT(sum / (players * (players - 1)), 200.0);
}

TEST(Goals, AreNearWhereSomebodyWasForAWhile) {
    MapManager map = courtWithBlock();
    const bots::Roadmap roadmap = levelRoadmap(map);
    const vec3 company = standingIn(2, 17);
    const auto meanDistance = [&](bool noted, int skipped) {
        double sum = 0.0;
        for (std::uint64_t seed = 1; seed <= 200; ++seed) {
            Goals goals(roadmap, 0.5, Chance(seed));
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

TEST(Goals, AreInEveryNinthOfTheArena) {
    MapManager map = courtWithBlock();
    const bots::Roadmap roadmap = levelRoadmap(map);
    std::array<int, 9> drawn{};
    const auto third = [](float along) { return std::min(static_cast<int>(along / 427.0f), 2); };
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Goals goals(roadmap, 0.5, Chance(seed));
        for (int i = 0; i < 90; ++i) {
            const vec3 goal = goalPosition(roadmap, goals.next(roadmap));
            ++drawn[static_cast<std::size_t>(3 * third(goal.z) + third(goal.x))];
        }
    }
    // A fair share would be two hundred each.
    for (const int count : drawn)
        EXPECT_GT(count, 70);
}

namespace {

/// How many of five hundred goals lie in the half of the court that is behind z = 640.
int goalsBeyond(const bots::Roadmap& roadmap, Goals& goals) {
    int beyond = 0;
    for (int i = 0; i < 500; ++i)
        beyond += goalPosition(roadmap, goals.next(roadmap)).z > 640.0f;
    return beyond;
}

/// Looks along +z and back from a row of points with this depth, long enough for every place to
/// have its turn.
void lookAlong(const bots::Roadmap& roadmap, Goals& goals, std::initializer_list<int> depths,
               vec3 direction) {
    for (const int depth : depths) {
        for (int column = 1; column < 19; column += 2) {
            for (int tick = 0; tick < 20; ++tick)
                goals.look(roadmap, standingIn(column, depth), direction);
        }
    }
}

} // namespace

TEST(Goals, AreMoreOftenWhereNothingWasSeenForLong) {
    MapManager map = court(20, 10, 20, nothing);
    const bots::Roadmap roadmap = levelRoadmap(map);
    constexpr vec3 south{0.0f, 0.0f, 1.0f};
    Goals unseeing(roadmap, 0.5, Chance(1));
    const int before = goalsBeyond(roadmap, unseeing);
    Goals sawTheSouth(roadmap, 0.5, Chance(1));
    lookAlong(roadmap, sawTheSouth, {9, 12, 15}, south);
    EXPECT_LT(goalsBeyond(roadmap, sawTheSouth), before - 80);
    Goals lookedAway(roadmap, 0.5, Chance(1));
    lookAlong(roadmap, lookedAway, {9, 6}, south * -1.0f);
    EXPECT_GT(goalsBeyond(roadmap, lookedAway), before + 80);
    Goals sawItFromAfar(roadmap, 0.5, Chance(1));
    lookAlong(roadmap, sawItFromAfar, {2}, south);
    EXPECT_GT(goalsBeyond(roadmap, sawItFromAfar), before + 20) << "the near half was seen instead";
}

TEST(Goals, CountNoPlaceAsSeenThatCubesHide) {
    MapManager map = court(20, 10, 20, [](int, int, int k) { return k == 10; });
    const bots::Roadmap roadmap = levelRoadmap(map);
    Goals unseeing(roadmap, 0.5, Chance(1));
    Goals behindAWall(roadmap, 0.5, Chance(1));
    lookAlong(roadmap, behindAWall, {9}, {0.0f, 0.0f, 1.0f});
    // It saw the places that it stood at, and none beyond.
    EXPECT_NEAR(goalsBeyond(roadmap, behindAWall), goalsBeyond(roadmap, unseeing), 15);
}

TEST(Goals, DifferByTheSeedAlone) {
    MapManager map = courtWithBlock();
    const bots::Roadmap roadmap = levelRoadmap(map);
    const auto first = [&](std::uint64_t seed) {
        Goals goals(roadmap, 0.5, Chance(seed));
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
    Goals goals(roadmap, 0.5, Chance(1));
    EXPECT_EQ(goals.next(roadmap), -1);
}
