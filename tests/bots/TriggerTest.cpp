#include "bots/Trigger.h"

#include "common/Chance.h"
#include "src/Collisions.h"
#include "src/Player.h"
#include "tests/support/Courts.h"

#include <gtest/gtest.h>
#include <vector>

using namespace drench;

using bots::Sighting;
using bots::Trigger;
using bots::View;

namespace {

constexpr vec3 muzzle{320.0f, standing, 320.0f};

Sighting seenAt(vec3 position, vec3 velocity = {}) {
    Sighting sighting;
    sighting.id = '2';
    sighting.visible = true;
    sighting.position = position;
    sighting.velocity = velocity;
    sighting.canBeSoaked = true;
    return sighting;
}

/// What the server does with a shot.
bool serverSoaks(const MapManager& map, vec3 from, vec3 direction, const Box& body) {
    Player shooter('1', "Shooter");
    shooter.position = from;
    shooter.direction = direction;
    const vec3 hit = shooter.shoot(&map);
    vec3 entry;
    return hit.x >= 0.0f && Line_AABB(from, hit, body.min, body.max, entry);
}

View towards(vec3 point) {
    return bots::viewAlong(point - muzzle);
}

} // namespace

TEST(Trigger, KnowsWhatTheServerWouldDecide) {
    const MapManager map = court(20, 10, 20, [](int i, int j, int k) {
        return j < 5 && (i * 7 + k * 13) % 11 == 0 && i > 6;
    });
    Chance chance(1);
    int soaked = 0;
    int spared = 0;
    for (int i = 0; i < 1000; ++i) {
        const float x = static_cast<float>(chance.between(100.0, 1180.0));
        const float y = static_cast<float>(chance.between(100.0, 700.0));
        const float z = static_cast<float>(chance.between(100.0, 1180.0));
        const vec3 body(x, y, z);
        View view = towards(body);
        view.right += 20.0 * chance.bell();
        view.down += 20.0 * chance.bell();
        const bool expected =
            serverSoaks(map, muzzle, bots::directionOf(view), Box(body, Player::bodySize));
        EXPECT_EQ(bots::soaks(map, muzzle, view, body), expected);
        ++(expected ? soaked : spared);
    }
    EXPECT_GT(soaked, 150);
    EXPECT_GT(spared, 150);
}

TEST(Trigger, KnowsThatTheOpenSkySavesEvenWhoStandsInTheSamePlace) {
    const MapManager map = court(20, 10, 20, nothing);
    EXPECT_TRUE(bots::soaks(map, muzzle, {0.0, 0.0}, muzzle));
    EXPECT_FALSE(bots::soaks(map, muzzle, {0.0, -400.0}, muzzle));
}

TEST(Trigger, IsPulledAtWhoIsInTheLineOfFire) {
    const MapManager map = court(20, 10, 20, nothing);
    const vec3 body = muzzle + vec3(0.0f, 0.0f, 400.0f);
    Trigger trigger(bots::skillOf(0.7));
    EXPECT_TRUE(trigger.pull(map, muzzle, {}, towards(body), {}, {seenAt(body)}, 0.0));
}

TEST(Trigger, IsLetBeWithNobodyThere) {
    const MapManager map = court(20, 10, 20, nothing);
    const vec3 body = muzzle + vec3(0.0f, 0.0f, 400.0f);
    Trigger trigger(bots::skillOf(0.7));
    EXPECT_FALSE(trigger.pull(map, muzzle, {}, towards(body), {}, {}, 0.0));
    const View beside = towards(body) + View{60.0, 0.0};
    EXPECT_FALSE(trigger.pull(map, muzzle, {}, beside, {}, {seenAt(body)}, 0.0));
}

TEST(Trigger, IsLetBeForWhoIsOnlyRemembered) {
    const MapManager map = court(20, 10, 20, nothing);
    Sighting gone = seenAt(muzzle + vec3(0.0f, 0.0f, 400.0f));
    gone.visible = false;
    Trigger trigger(bots::skillOf(0.7));
    EXPECT_FALSE(trigger.pull(map, muzzle, {}, towards(gone.position), {}, {gone}, 0.0));
}

TEST(Trigger, OfTheGentleSparesTheNewlyReturned) {
    const MapManager map = court(20, 10, 20, nothing);
    Sighting returned = seenAt(muzzle + vec3(0.0f, 0.0f, 400.0f));
    const auto pulls = [&](double skill, int sinceReturn) {
        returned.sinceReturn = sinceReturn;
        Trigger trigger(bots::skillOf(skill));
        return trigger.pull(map, muzzle, {}, towards(returned.position), {}, {returned}, 0.0);
    };
    EXPECT_FALSE(pulls(0.0, 249));
    EXPECT_TRUE(pulls(0.0, 250));
    EXPECT_FALSE(pulls(0.575, 124));
    EXPECT_TRUE(pulls(0.575, 126));
    EXPECT_TRUE(pulls(0.7, 1));
}

TEST(Trigger, IsLetBeBeforeAWallAndTheOpenSky) {
    const MapManager walled = court(20, 10, 20, [](int, int, int k) { return k == 8; });
    const vec3 body = muzzle + vec3(0.0f, 0.0f, 400.0f);
    Trigger first(bots::skillOf(0.7));
    EXPECT_FALSE(first.pull(walled, muzzle, {}, towards(body), {}, {seenAt(body)}, 0.0));

    const MapManager open = court(20, 10, 20, nothing);
    const vec3 high = muzzle + vec3(0.0f, 400.0f, 300.0f);
    Trigger second(bots::skillOf(0.7));
    EXPECT_FALSE(second.pull(open, muzzle, {}, towards(high), {}, {seenAt(high)}, 0.0));
}

TEST(Trigger, IsHeldForSomeTicksSoThatItIsNotMissed) {
    const MapManager map = court(20, 10, 20, nothing);
    const vec3 body = muzzle + vec3(0.0f, 0.0f, 400.0f);
    Trigger trigger(bots::skillOf(0.7));
    ASSERT_TRUE(trigger.pull(map, muzzle, {}, towards(body), {}, {seenAt(body)}, 0.0));
    int held = 1;
    while (trigger.pull(map, muzzle, {}, towards(body), {}, {}, 0.0) && held < 100)
        ++held;
    EXPECT_EQ(held, 4);
}

TEST(Trigger, IsLetGoAtOnceWhenReleased) {
    const MapManager map = court(20, 10, 20, nothing);
    const vec3 body = muzzle + vec3(0.0f, 0.0f, 400.0f);
    Trigger trigger(bots::skillOf(0.7));
    ASSERT_TRUE(trigger.pull(map, muzzle, {}, towards(body), {}, {seenAt(body)}, 0.0));
    trigger.release();
    EXPECT_FALSE(trigger.pull(map, muzzle, {}, towards(body), {}, {}, 0.0));
}

TEST(Trigger, IsPulledALittleBeforeTheLinesCross) {
    const MapManager map = court(20, 10, 20, nothing);
    const vec3 body = muzzle + vec3(0.0f, 0.0f, 400.0f);
    const auto pulls = [&](double skill, View view, View speed, vec3 velocity) {
        Trigger trigger(bots::skillOf(skill));
        return trigger.pull(map, muzzle, {}, view, speed, {seenAt(body, velocity)}, 0.0);
    };
    // The body is 45 counts wide there.
    const View beside = towards(body) + View{-40.0, 0.0};
    EXPECT_FALSE(pulls(1.0, beside, {}, {}));
    EXPECT_TRUE(pulls(1.0, beside, {6.0, 0.0}, {}));
    EXPECT_FALSE(pulls(1.0, beside, {-6.0, 0.0}, {}));
    const View farBeside = towards(body) + View{-60.0, 0.0};
    EXPECT_FALSE(pulls(1.0, farBeside, {6.0, 0.0}, {})) << "that takes six ticks";
    EXPECT_FALSE(pulls(0.0, beside, {6.0, 0.0}, {}));
    // To the left is towards +x here.
    EXPECT_TRUE(pulls(1.0, beside, {}, {8.0f, 0.0f, 0.0f}));
    EXPECT_FALSE(pulls(1.0, beside, {}, {-8.0f, 0.0f, 0.0f}));
}

TEST(Trigger, AllowsForTheAgeOfWhatIsSeen) {
    const MapManager map = court(20, 10, 20, nothing);
    const vec3 body = muzzle + vec3(0.0f, 0.0f, 400.0f);
    const Sighting running = seenAt(body, {10.0f, 0.0f, 0.0f});
    const View where = towards(body + vec3(60.0f, 0.0f, 0.0f));
    Trigger trigger(bots::skillOf(0.0));
    EXPECT_FALSE(trigger.pull(map, muzzle, {}, where, {}, {running}, 0.0));
    EXPECT_TRUE(trigger.pull(map, muzzle, {}, where, {}, {running}, 6.0));
}
