#include "bots/View.h"

#include "src/Player.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

using namespace drench;

using bots::View;

namespace {

constexpr double turn = 2.0 * std::numbers::pi * bots::countsPerRadian;

Player lookingAlong(vec3 direction) {
    Player player;
    const vec3 centre(500.0f, 500.0f, 500.0f);
    player.placeAt(centre, centre + direction);
    return player;
}

} // namespace

TEST(View, CountsAreThoseOfTheMouse) {
    Player player = lookingAlong({0.0f, 0.0f, 1.0f});
    player.rotateView(0, 0);
    player.rotateView(200, 0);
    player.rotateView(0, -150);
    const View seen = bots::viewAlong(player.getDirection());
    EXPECT_NEAR(seen.right, 200.0, 0.01);
    EXPECT_NEAR(seen.down, -150.0, 0.01);

    player.rotateView(-500, 300);
    const View next = bots::viewAlong(player.getDirection());
    EXPECT_NEAR(next.right, -300.0, 0.01);
    EXPECT_NEAR(next.down, 150.0, 0.01);
}

TEST(View, DirectionsAndViewsAreTheSameThing) {
    for (const View view : {View{0.0, 0.0}, View{700.0, 200.0}, View{-1100.0, -400.0}}) {
        const vec3 direction = bots::directionOf(view);
        EXPECT_NEAR(direction.length(), 1.0f, 1e-6f);
        const View back = bots::viewAlong(direction * 7.0f);
        EXPECT_NEAR(back.right, view.right, 1e-3);
        EXPECT_NEAR(back.down, view.down, 1e-3);
    }
}

TEST(View, TurnsAreTheShortOnes) {
    EXPECT_NEAR(bots::turnBetween({1000.0, 10.0}, {-1000.0, 30.0}).right, turn - 2000.0, 1e-9);
    EXPECT_NEAR(bots::turnBetween({1000.0, 10.0}, {-1000.0, 30.0}).down, 20.0, 1e-9);
    EXPECT_NEAR(bots::turnBetween({0.0, 0.0}, {3.0 * turn + 5.0, 0.0}).right, 5.0, 1e-9);
    EXPECT_NEAR(bots::turnBetween({100.0, 0.0}, {-100.0, 0.0}).right, -200.0, 1e-9);
}

TEST(View, WhatIsNotTooSteepIsNeverRefused) {
    for (const double down : {-2000.0, 2000.0}) {
        const View limited = bots::withoutSteepness({300.0, down});
        EXPECT_EQ(limited.right, 300.0);
        EXPECT_LT(std::fabs(limited.down), 2000.0);
        for (double right = 0.0; right < turn; right += 50.0) {
            Player player = lookingAlong(bots::directionOf({right, 0.0}));
            player.rotateView(0, static_cast<int>(limited.down));
            EXPECT_NEAR(bots::viewAlong(player.getDirection()).down, limited.down, 1.0);
        }
    }
    EXPECT_EQ(bots::withoutSteepness({10.0, -200.0}).down, -200.0);
}
