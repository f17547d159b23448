#include "game/Turning.h"

#include "src/Player.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>

using namespace drench::game;

TEST(Turning, SensitivityOfOnePassesTheMouseThrough) {
    Turning turning;
    turning.moveMouse(12.0, -3.0, 1.0, {});
    EXPECT_EQ(turning.take(), (ViewCounts{12, -3}));
    EXPECT_EQ(turning.take(), (ViewCounts{0, 0}));
}

TEST(Turning, WhatIsLeftOverIsKept) {
    Turning turning;
    ViewCounts sum;
    for (int i = 0; i < 1000; ++i) {
        turning.moveMouse(1.0, -1.0, 0.3, {});
        const ViewCounts counts = turning.take();
        EXPECT_LE(std::abs(counts.dx), 1);
        sum.dx += counts.dx;
        sum.dy += counts.dy;
    }
    EXPECT_NEAR(sum.dx, 300, 1);
    EXPECT_NEAR(sum.dy, -300, 1);
}

TEST(Turning, MotionThereAndBackEndsWhereItBegan) {
    Turning turning;
    int sum = 0;
    for (int i = 0; i < 200; ++i) {
        turning.moveMouse(i % 2 == 0 ? 7.0 : -7.0, 0.0, 0.25, {});
        sum += turning.take().dx;
    }
    EXPECT_EQ(sum, 0);
}

TEST(Turning, AxesAreInvertedApart) {
    Turning turning;
    turning.moveMouse(4.0, 4.0, 1.0, {true, false});
    EXPECT_EQ(turning.take(), (ViewCounts{-4, 4}));
    turning.moveMouse(4.0, 4.0, 1.0, {false, true});
    EXPECT_EQ(turning.take(), (ViewCounts{4, -4}));
}

TEST(Turning, ForgetsOnRequest) {
    Turning turning;
    turning.moveMouse(4.7, 4.7, 1.0, {});
    turning.forget();
    turning.moveMouse(0.5, 0.5, 1.0, {});
    EXPECT_EQ(turning.take(), ViewCounts{});
}

TEST(Turning, NoMotionTurnsBeyondItsLimit) {
    Turning turning;
    turning.moveMouse(1e300, -1e300, 20.0, {});
    EXPECT_EQ(turning.take(), (ViewCounts{10000, -10000}));
    turning.moveMouse(std::numeric_limits<double>::infinity(), std::nan(""), 1.0, {});
    EXPECT_EQ(turning.take(), ViewCounts{});
}

TEST(Turning, StickAtItsEndTurnsHalfAroundInASecond) {
    Turning turning;
    int sum = 0;
    for (int frame = 0; frame < 60; ++frame) {
        turning.holdStick(1.0, 0.0, 1.0 / 60.0, 1.0, {});
        sum += turning.take().dx;
    }
    EXPECT_NEAR(sum, std::numbers::pi * Player::countsPerRadian, 2.0);
}

TEST(Turning, StickWithinItsDeadZoneRests) {
    Turning turning;
    turning.holdStick(0.13, -0.13, 1000.0, 1.0, {});
    EXPECT_EQ(turning.take(), ViewCounts{});
}

TEST(Turning, StickBeginsSoftlyAndNeverExceedsItsRim) {
    const auto cut = [](double x, double y) {
        cutDeadZone(x, y);
        return std::pair(x, y);
    };
    EXPECT_EQ(cut(0.2, 0.0), std::pair(0.0, 0.0));
    EXPECT_NEAR(cut(0.21, 0.0).first, 0.00015625, 1e-9);
    EXPECT_NEAR(cut(-0.6, 0.0).first, -0.25, 1e-12);
    EXPECT_NEAR(cut(0.0, 1.0).second, 1.0, 1e-12);
    const auto [x, y] = cut(1.0, 1.0);
    EXPECT_NEAR(std::hypot(x, y), 1.0, 1e-12) << "a corner";
    EXPECT_NEAR(x, y, 1e-12);
}

TEST(Turning, TremblingAxisIsPressedOnce) {
    AxisButton button;
    EXPECT_FALSE(button.move(0.6));
    EXPECT_TRUE(button.move(0.7));
    EXPECT_TRUE(button.isDown());
    EXPECT_FALSE(button.move(0.4));
    EXPECT_FALSE(button.move(0.9));
    EXPECT_TRUE(button.move(0.3));
    EXPECT_FALSE(button.isDown());
    EXPECT_FALSE(button.move(-1.0));
}
