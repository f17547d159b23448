#include "bots/Eyes.h"

#include "arena/Rays.h"
#include "src/Player.h"
#include "tests/bots/Snapshots.h"
#include "tests/support/Courts.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace drench;

using bots::Eyes;
using bots::Sighting;
using bots::Skill;

namespace {

constexpr vec3 eye{320.0f, standing, 320.0f};

/// A court in which player 1 stands and looks along +z, with what `solid` adds.
struct Lookout {
    MapManager map;
    arena::Grid grid = arena::gridOf(map);
    Skill skill = bots::skillOf(0.7);
    Eyes eyes{skill, Chance(1)};
    PlayerUpdate self = playerAt('1', eye);

    explicit Lookout(const std::function<bool(int, int, int)>& solid = nothing)
        : map(court(30, 10, 30, solid)) {}

    void look(std::initializer_list<PlayerUpdate> others, int ticks = 1) {
        UpdateMessage snapshot;
        snapshot.add(self);
        for (const PlayerUpdate& other : others)
            snapshot.add(other);
        for (int tick = 0; tick < ticks; ++tick)
            eyes.look(grid, snapshot, self);
    }

    const Sighting* known(char id) const {
        for (const Sighting& other : eyes.known()) {
            if (other.id == id)
                return &other;
        }
        return nullptr;
    }

    bool sees(char id) const { return known(id) && known(id)->visible; }
};

/// Long enough for everybody in sight to be noticed.
constexpr int aWhile = 60;

vec3 ahead(float distance, float aside = 0.0f) {
    return eye + vec3(aside, 0.0f, distance);
}

/// A wall across the court, 5 cubes before the eye, up to a row.
std::function<bool(int, int, int)> wall(int rows) {
    return [rows](int, int j, int k) { return k == 10 && j <= rows; };
}

} // namespace

TEST(Eyes, NoticeWhoStandsInTheOpen) {
    Lookout lookout;
    lookout.look({playerAt('2', ahead(600.0f))}, aWhile);
    ASSERT_TRUE(lookout.sees('2'));
    EXPECT_EQ(lookout.known('2')->position.z, ahead(600.0f).z);
    EXPECT_EQ(lookout.known('2')->unseen, 0);
}

TEST(Eyes, TakeTheirTimeToNotice) {
    double sum = 0.0;
    for (std::uint64_t seed = 1; seed <= 100; ++seed) {
        Lookout lookout;
        lookout.eyes = Eyes(lookout.skill, Chance(seed));
        int ticks = 0;
        while (!lookout.sees('2') && ticks < 100) {
            EXPECT_EQ(lookout.known('2'), nullptr);
            lookout.look({playerAt('2', ahead(600.0f))});
            ++ticks;
        }
        EXPECT_GE(ticks, 0.8 * lookout.skill.reaction);
        EXPECT_LE(ticks, 1.4 * lookout.skill.reaction + 1.0);
        sum += ticks;
    }
    EXPECT_NEAR(sum / 100.0, 1.07 * bots::skillOf(0.7).reaction, 1.0);
}

TEST(Eyes, AreSlowerAtTheEdgeOfTheView) {
    const auto ticksToNotice = [](float aside) {
        Lookout lookout;
        int ticks = 0;
        for (; !lookout.sees('2') && ticks < 100; ++ticks)
            lookout.look({playerAt('2', ahead(600.0f, aside))});
        return ticks;
    };
    EXPECT_GE(ticksToNotice(650.0f), 1.3 * ticksToNotice(0.0f));
}

TEST(Eyes, SeeAHundredDegreesAndNothingBehind) {
    const auto seesAt = [](double degrees) {
        Lookout lookout;
        const double radians = degrees * std::acos(-1.0) / 180.0;
        const vec3 there = eye + vec3(static_cast<float>(250.0 * std::sin(radians)), 0.0f,
                                      static_cast<float>(250.0 * std::cos(radians)));
        lookout.look({playerAt('2', there)}, aWhile);
        return lookout.sees('2');
    };
    for (const double side : {-1.0, 1.0}) {
        EXPECT_TRUE(seesAt(side * 49.0));
        EXPECT_FALSE(seesAt(side * 51.0));
        EXPECT_FALSE(seesAt(side * 100.0));
    }
    EXPECT_FALSE(seesAt(180.0));
}

TEST(Eyes, SeeLessFarUpAndDown) {
    const auto seesAt = [](float height) {
        Lookout lookout;
        lookout.look({playerAt('2', ahead(200.0f) + vec3(0.0f, height, 0.0f))}, aWhile);
        return lookout.sees('2');
    };
    EXPECT_TRUE(seesAt(145.0f));
    EXPECT_FALSE(seesAt(155.0f));
}

TEST(Eyes, DoNotSeeThroughCubes) {
    Lookout lookout(wall(9));
    lookout.look({playerAt('2', ahead(600.0f))}, aWhile);
    EXPECT_EQ(lookout.known('2'), nullptr);
}

TEST(Eyes, SeeAHeadOverAWall) {
    // The wall's top is at y = 192, the heads are at 214, the eye is at 139: too low. From a step
    // up it sees the head and nothing else.
    Lookout lookout(wall(2));
    lookout.look({playerAt('2', ahead(600.0f))}, aWhile);
    EXPECT_EQ(lookout.known('2'), nullptr);
    lookout.self.position.y += 64.0f;
    lookout.look({playerAt('2', ahead(600.0f))}, aWhile);
    ASSERT_TRUE(lookout.sees('2'));
    EXPECT_GT(lookout.known('2')->target.y, 50.0f);
}

TEST(Eyes, WhereTheHiddenAreChangesNothing) {
    Lookout here(wall(9));
    Lookout there(wall(9));
    for (int tick = 0; tick < 200; ++tick) {
        const float way = static_cast<float>(tick);
        const PlayerUpdate seen = playerAt('3', ahead(200.0f, way - 100.0f));
        here.look({playerAt('2', ahead(600.0f, 3.0f * way)), seen});
        there.look({tick % 50 < 20 ? playerAt('2', soakedPosition)
                                   : playerAt('2', ahead(900.0f, -2.0f * way)),
                    seen});
        ASSERT_EQ(here.eyes.known().size(), there.eyes.known().size());
        for (std::size_t i = 0; i < here.eyes.known().size(); ++i) {
            const Sighting& a = here.eyes.known()[i];
            const Sighting& b = there.eyes.known()[i];
            EXPECT_EQ(a.id, '3');
            EXPECT_EQ(a.visible, b.visible);
            EXPECT_EQ(a.position.x, b.position.x);
            EXPECT_EQ(a.velocity.x, b.velocity.x);
        }
    }
    EXPECT_TRUE(here.sees('3'));
}

TEST(Eyes, TakeMovementInLate) {
    Lookout lookout;
    lookout.look({playerAt('2', ahead(600.0f))}, aWhile);
    const long late = std::lround(lookout.skill.perceptionDelay);
    for (int tick = 1; tick <= 30; ++tick) {
        lookout.look({playerAt('2', ahead(600.0f, 6.0f * static_cast<float>(tick)))});
        if (tick <= late) {
            EXPECT_EQ(lookout.known('2')->position.x, eye.x);
        }
    }
    // Steady movement is made up for.
    EXPECT_NEAR(lookout.known('2')->velocity.x, 6.0f, 0.01f);
    EXPECT_NEAR(lookout.known('2')->position.x, eye.x + 180.0f, 0.1f);
    // A turn back is not known of at once.
    lookout.look({playerAt('2', ahead(600.0f, 174.0f))});
    EXPECT_NEAR(lookout.known('2')->position.x, eye.x + 186.0f, 0.1f);
}

TEST(Eyes, RememberForAWhileWhereSomebodyWas) {
    Lookout lookout(wall(2));
    lookout.self.position.y += 64.0f;
    lookout.look({playerAt('2', ahead(600.0f))}, aWhile);
    ASSERT_TRUE(lookout.sees('2'));
    lookout.self.position.y -= 64.0f;
    const PlayerUpdate gone = playerAt('2', ahead(600.0f, 300.0f));
    const int memory = static_cast<int>(lookout.skill.memory);
    for (int tick = 1; tick <= memory; ++tick) {
        lookout.look({gone});
        ASSERT_NE(lookout.known('2'), nullptr);
        EXPECT_FALSE(lookout.known('2')->visible);
        EXPECT_FALSE(lookout.known('2')->canBeSoaked);
        EXPECT_EQ(lookout.known('2')->unseen, tick);
        EXPECT_EQ(lookout.known('2')->position.x, eye.x);
    }
    lookout.look({gone});
    EXPECT_EQ(lookout.known('2'), nullptr);
}

TEST(Eyes, KeepInMindWhoWasOutOfSightForAMoment) {
    Lookout lookout;
    const PlayerUpdate other = playerAt('2', ahead(600.0f));
    lookout.look({other}, aWhile);
    lookout.self.direction = vec3(0.0f, 0.0f, -1.0f);
    lookout.look({other}, 5);
    EXPECT_FALSE(lookout.sees('2'));
    lookout.self.direction = vec3(0.0f, 0.0f, 1.0f);
    lookout.look({other});
    ASSERT_TRUE(lookout.sees('2'));
    EXPECT_EQ(lookout.known('2')->unseen, 0);
}

TEST(Eyes, HaveToNoticeAnewWhoWasOutOfSightForLonger) {
    Lookout lookout;
    const PlayerUpdate other = playerAt('2', ahead(600.0f));
    lookout.look({other}, aWhile);
    lookout.self.direction = vec3(0.0f, 0.0f, -1.0f);
    lookout.look({other}, 25);
    lookout.self.direction = vec3(0.0f, 0.0f, 1.0f);
    lookout.look({other});
    EXPECT_FALSE(lookout.sees('2'));
}

TEST(Eyes, SeeTheSoakedVanish) {
    Lookout lookout;
    lookout.look({playerAt('2', ahead(600.0f))}, aWhile);
    lookout.look({playerAt('2', soakedPosition)});
    EXPECT_EQ(lookout.known('2'), nullptr);
}

TEST(Eyes, DoNotLearnThatTheHiddenWereSoaked) {
    Lookout lookout;
    const PlayerUpdate other = playerAt('2', ahead(600.0f));
    lookout.look({other}, aWhile);
    lookout.self.direction = vec3(0.0f, 0.0f, -1.0f);
    lookout.look({other});
    lookout.look({playerAt('2', soakedPosition)}, 10);
    EXPECT_NE(lookout.known('2'), nullptr);
}

TEST(Eyes, KnowWhatIsOutsideTheWorld) {
    const MapManager map = court(30, 10, 30, nothing);
    const float nowhere = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(bots::isInWorld(map, eye));
    EXPECT_TRUE(bots::isInWorld(map, {300.0f, 1200.0f, 300.0f}));
    EXPECT_FALSE(bots::isInWorld(map, {300.0f, -1.0f, 300.0f}));
    EXPECT_FALSE(bots::isInWorld(map, {300.0f, 1e9f, 300.0f}));
    EXPECT_FALSE(bots::isInWorld(map, {300.0f, 100.0f, 2000.0f}));
    EXPECT_FALSE(bots::isInWorld(map, {-1.0f, 100.0f, 300.0f}));
    EXPECT_FALSE(bots::isInWorld(map, {nowhere, 100.0f, 300.0f}));
    EXPECT_FALSE(bots::isInWorld(map, {300.0f, 100.0f, nowhere}));
    EXPECT_FALSE(bots::isInWorld(map, soakedPosition));
}

TEST(Eyes, KnowHowLongAgoSomebodyReturned) {
    Lookout lookout;
    lookout.look({playerAt('2', ahead(400.0f))}, aWhile);
    ASSERT_TRUE(lookout.sees('2'));
    EXPECT_EQ(lookout.known('2')->sinceReturn, Sighting::longReturned) << "was always there";
    lookout.look({playerAt('2', soakedPosition)}, 3);
    lookout.look({playerAt('2', ahead(400.0f))}, aWhile);
    ASSERT_TRUE(lookout.sees('2'));
    EXPECT_EQ(lookout.known('2')->sinceReturn, aWhile);
    PlayerUpdate firing = playerAt('2', ahead(400.0f));
    firing.shooting = true;
    lookout.look({firing});
    lookout.look({playerAt('2', ahead(400.0f))});
    EXPECT_EQ(lookout.known('2')->sinceReturn, Sighting::longReturned);
}

TEST(Eyes, ForgetWhoLeaves) {
    Lookout lookout;
    lookout.look({playerAt('2', ahead(600.0f)), playerAt('3', ahead(500.0f))}, aWhile);
    lookout.look({playerAt('3', ahead(500.0f))});
    EXPECT_EQ(lookout.known('2'), nullptr);
    EXPECT_TRUE(lookout.sees('3'));
}

TEST(Eyes, ForgetOnDemandButNotWhoIsInSight) {
    Lookout lookout;
    const PlayerUpdate other = playerAt('2', ahead(600.0f));
    lookout.look({other}, aWhile);
    lookout.eyes.forget('2');
    EXPECT_TRUE(lookout.sees('2'));
    lookout.self.direction = vec3(0.0f, 0.0f, -1.0f);
    lookout.look({other});
    lookout.eyes.forget('2');
    EXPECT_EQ(lookout.known('2'), nullptr);
}

TEST(Eyes, SeeNobodyWhileClosed) {
    Lookout lookout;
    lookout.look({playerAt('2', ahead(600.0f))}, aWhile);
    lookout.eyes.close();
    ASSERT_NE(lookout.known('2'), nullptr);
    EXPECT_FALSE(lookout.sees('2'));
    // Opened again, they have to notice anew.
    lookout.look({playerAt('2', ahead(600.0f))});
    EXPECT_FALSE(lookout.sees('2'));
}

TEST(Eyes, AimForWhatHasACubeBehind) {
    // The court's border ends at y = 640: from below, a high body stands before the open sky, but
    // for its feet.
    Lookout lookout;
    const vec3 high = ahead(300.0f) + vec3(0.0f, 150.0f, 0.0f);
    lookout.self.direction = vec3(0.0f, 0.3f, 0.95f);
    lookout.look({playerAt('2', high)}, aWhile);
    ASSERT_TRUE(lookout.sees('2'));
    const Sighting& other = *lookout.known('2');
    ASSERT_TRUE(other.canBeSoaked);
    EXPECT_LT(other.target.y, -50.0f);

    Lookout further;
    const vec3 higher = high + vec3(0.0f, 130.0f, 0.0f);
    further.self.direction = vec3(0.0f, 0.6f, 0.8f);
    further.look({playerAt('2', higher)}, aWhile);
    ASSERT_TRUE(further.sees('2'));
    EXPECT_FALSE(further.known('2')->canBeSoaked);
}

TEST(Eyes, StartAnewWithWhoWasPutElsewhere) {
    Lookout lookout;
    lookout.look({playerAt('2', ahead(600.0f))}, aWhile);
    lookout.look({playerAt('2', ahead(900.0f, 200.0f))});
    EXPECT_EQ(lookout.known('2')->position.z, ahead(900.0f).z);
    EXPECT_EQ(lookout.known('2')->velocity.z, 0.0f);
}
