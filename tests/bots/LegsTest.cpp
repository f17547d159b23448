#include "bots/Legs.h"

#include "src/Player.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>

using namespace drench;

using bots::Legs;
using bots::View;

namespace {

constexpr double eighth = std::numbers::pi / 4.0 * bots::countsPerRadian;

bool sameKeys(const Controls& a, const Controls& b) {
    return std::equal(std::begin(a.held), std::end(a.held), std::begin(b.held));
}

/// The keys for a heading so many counts to the right of the view.
Controls keysFor(Legs& legs, double right, View view = {300.0, 50.0}) {
    Controls controls;
    legs.press(controls, bots::directionOf({view.right + right, 0.0}), view);
    return controls;
}

} // namespace

TEST(Legs, PressNothingForAViewThatIsNone) {
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    for (const vec3 direction : {vec3(nothing, 0.0f, 1.0f), vec3(nothing)}) {
        Controls controls = bots::legsOnly({{1.0f, 0.0f, 0.0f}, false}, direction);
        EXPECT_TRUE(sameKeys(controls, Controls{}));
        EXPECT_LE(std::abs(controls.dx), 40);
        EXPECT_LE(std::abs(controls.dy), 40);
    }
}

TEST(Legs, GoTheNearestOfEightWays) {
    const struct {
        double right;
        bool forward;
        bool backward;
        bool left;
        bool rightKey;
    } ways[] = {{0.0, true, false, false, false},          {eighth, true, false, false, true},
                {2.0 * eighth, false, false, false, true}, {3.0 * eighth, false, true, false, true},
                {4.0 * eighth, false, true, false, false}, {-eighth, true, false, true, false},
                {-2.0 * eighth, false, false, true, false}};
    for (const auto& way : ways) {
        for (const double off : {-0.45, 0.0, 0.45}) {
            Legs legs;
            const Controls controls = keysFor(legs, way.right + off * eighth);
            EXPECT_EQ(controls.held[keyIndex::forward], way.forward) << way.right;
            EXPECT_EQ(controls.held[keyIndex::backward], way.backward) << way.right;
            EXPECT_EQ(controls.held[keyIndex::left], way.left) << way.right;
            EXPECT_EQ(controls.held[keyIndex::right], way.rightKey) << way.right;
        }
    }
}

TEST(Legs, MoveABodyWhereTheyShould) {
    for (double right = 0.0; right < 8.0 * eighth; right += 37.0) {
        MapManager nowhere;
        const vec3 centre(500.0f, 500.0f, 500.0f);
        Player player = bodyAt(nowhere, centre, centre + bots::directionOf({300.0, 50.0}));
        Legs legs;
        const Controls controls = keysFor(legs, right);
        player.apply(controls);
        const vec3 before = player.position;
        player.update(0.0f);
        vec3 way = player.position - before;
        way.y = 0.0f;
        const View moved = bots::viewAlong(way);
        EXPECT_LT(std::fabs(bots::turnBetween({300.0 + right, 0.0}, moved).right), 0.53 * eighth);
    }
}

TEST(Legs, StandStillForNoHeading) {
    Legs legs;
    keysFor(legs, 0.0);
    Controls controls;
    controls.held[keyIndex::forward] = true;
    legs.press(controls, {}, {300.0, 50.0});
    EXPECT_TRUE(sameKeys(controls, Controls{}));
}

TEST(Legs, KeepTheirKeysWhileTheseNearlyDo) {
    Legs legs;
    const Controls ahead = keysFor(legs, 0.0);
    EXPECT_TRUE(sameKeys(keysFor(legs, 0.7 * eighth), ahead));
    EXPECT_TRUE(sameKeys(keysFor(legs, -0.7 * eighth), ahead));
    const Controls aslant = keysFor(legs, 0.8 * eighth);
    EXPECT_FALSE(sameKeys(aslant, ahead));
    EXPECT_TRUE(sameKeys(keysFor(legs, 0.3 * eighth), aslant));
    EXPECT_TRUE(sameKeys(keysFor(legs, 0.2 * eighth), ahead));
}

TEST(Legs, KeepNothingAcrossAStop) {
    Legs legs;
    const Controls ahead = keysFor(legs, 0.0);
    Controls controls;
    legs.press(controls, {}, {300.0, 50.0});
    EXPECT_FALSE(sameKeys(keysFor(legs, 0.7 * eighth), ahead));
}
