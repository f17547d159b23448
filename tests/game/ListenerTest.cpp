#include "game/Listener.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace drench::game;

namespace {

/// Looks along z from (100, 100, 100).
const Listener listener{{100.0f, 100.0f, 100.0f}, {0.0f, 0.0f, 1.0f}};

void expectBearing(const Bearing& bearing, float right, float ahead) {
    EXPECT_NEAR(bearing.right, right, 1e-5f);
    EXPECT_NEAR(bearing.ahead, ahead, 1e-5f);
}

} // namespace

TEST(Listener, HearsWhatTheEyesSeeOnTheSameSide) {
    expectBearing(bearingOf(listener, {100.0f, 100.0f, 300.0f}), 0.0f, 1.0f);
    expectBearing(bearingOf(listener, {100.0f, 100.0f, 0.0f}), 0.0f, -1.0f);
    expectBearing(bearingOf(listener, {0.0f, 100.0f, 100.0f}), 1.0f, 0.0f);
    expectBearing(bearingOf(listener, {300.0f, 100.0f, 100.0f}), -1.0f, 0.0f);
}

TEST(Listener, TurnsWithItsView) {
    Listener turned = listener;
    turned.direction = {-0.8f, 0.6f, 0.0f};
    expectBearing(bearingOf(turned, {100.0f, 100.0f, 300.0f}), -1.0f, 0.0f);
    expectBearing(bearingOf(turned, {0.0f, 100.0f, 100.0f}), 0.0f, 1.0f);
}

TEST(Listener, HeightsAddToTheDistanceOnly) {
    const Bearing bearing = bearingOf(listener, {100.0f, 140.0f, 130.0f});
    EXPECT_FLOAT_EQ(bearing.distance, 50.0f);
    expectBearing(bearing, 0.0f, 1.0f);
}

TEST(Listener, HasNoSidesWhereThereAreNone) {
    expectBearing(bearingOf(listener, {100.0f, 500.0f, 100.0f}), 0.0f, 0.0f);
    Listener upward = listener;
    upward.direction = {0.0f, 1.0f, 0.0f};
    expectBearing(bearingOf(upward, {500.0f, 100.0f, 100.0f}), 0.0f, 1.0f);
}
