#include "src/Player.h"
#include "tests/support/Components.h"
#include "tests/support/Room.h"

#include <climits>
#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr vec3 up(0.0f, 1.0f, 0.0f);
constexpr vec3 alongX(1.0f, 0.0f, 0.0f);
constexpr vec3 alongZ(0.0f, 0.0f, 1.0f);

/// At the origin, where position + direction rounds nothing, with the identity as its rotation.
Player looking(vec3 direction) {
    direction.normalize();
    Player player;
    player.placeAt(vec3(), direction);
    player.setRotation(quat());
    return player;
}

quat turn(vec3 axis, float angle) {
    quat q;
    q.fromAxisAngle(axis, angle);
    return q;
}

void expectSameView(const Player& player, const Player& expected) {
    EXPECT_EQ(components(player.direction), components(expected.direction));
    EXPECT_EQ(components(player.look), components(expected.look));
    EXPECT_EQ(components(player.rotation), components(expected.rotation));
    EXPECT_EQ(components(player.strafeVector), components(expected.strafeVector));
    EXPECT_EQ(components(player.up), components(expected.up));
}

void expectNear(vec3 actual, vec3 expected) {
    EXPECT_NEAR(actual.x, expected.x, 1e-6f);
    EXPECT_NEAR(actual.y, expected.y, 1e-6f);
    EXPECT_NEAR(actual.z, expected.z, 1e-6f);
}

} // namespace

TEST(PlayerView, StrafeVectorIsUpCrossDirectionAtUnitLength) {
    EXPECT_EQ(components(looking(alongZ).strafeVector), components(alongX));
    EXPECT_EQ(components(looking(alongX).strafeVector), components(vec3(0, 0, -1)));
    EXPECT_EQ(components(looking(vec3(0, 30, 40)).strafeVector), components(alongX));
}

TEST(PlayerView, DirectionIsTheUnitVectorFromPositionToLookAtPoint) {
    Player player;
    player.position = {10, 20, 30};
    player.look = {10, 23, 34};
    player.updateDirAndStrafe();
    EXPECT_EQ(components(player.direction), components(vec3(0.0f, 3.0f / 5.0f, 4.0f / 5.0f)));
    EXPECT_EQ(components(player.look), components(vec3(10, 23, 34)));
}

TEST(PlayerView, LookingNowhereOrStraightUpGivesZerosNotNaN) {
    const Player nowhere = looking(vec3());
    EXPECT_EQ(components(nowhere.direction), components(vec3()));
    EXPECT_EQ(components(nowhere.strafeVector), components(vec3()));
    EXPECT_EQ(components(looking(up).strafeVector), components(vec3()));
}

TEST(PlayerView, ThreeHundredSixtyCountsPitchByExactlyOneRadian) {
    Player player = looking(alongZ);
    player.rotateView(0, 360);
    EXPECT_EQ(player.rotation.x, static_cast<float>(std::sin(0.5)));
    EXPECT_EQ(player.rotation.w, static_cast<float>(std::cos(0.5)));
    EXPECT_EQ(components(player.direction), components(turn(alongX, 1.0f) * alongZ));
    EXPECT_EQ(components(player.look), components(player.direction));
}

TEST(PlayerView, PositiveDyTurnsDownAndPositiveDxTurnsRight) {
    Player down = looking(alongZ);
    down.rotateView(0, 180);
    expectNear(down.direction, {0.0f, -std::sin(0.5f), std::cos(0.5f)});

    Player right = looking(alongZ);
    right.rotateView(180, 0);
    expectNear(right.direction, {-std::sin(0.5f), 0.0f, std::cos(0.5f)});
    EXPECT_LT(right.direction.dot(alongX), 0.0f) << "away from the strafe vector, which is left";
}

TEST(PlayerView, PitchesAboutTheStrafeVectorFirstAndYawsAboutUpThen) {
    Player player = looking(alongZ);
    player.rotateView(90, 180);
    Player expected = looking(alongZ);
    expected.rotateViewAround(0.5f, alongX, false);
    expected.rotateViewAround(-0.25f, up, false);
    expectSameView(player, expected);
    expectNear(player.direction, {-std::sin(0.25f) * std::cos(0.5f), -std::sin(0.5f),
                                  std::cos(0.25f) * std::cos(0.5f)});
}

TEST(PlayerView, CountsAreDividedInDoublePrecision) {
    constexpr int counts = 16777219; // the fewest where it makes a difference
    constexpr float angle = static_cast<float>(counts / 360.0);
    static_assert(angle != static_cast<float>(counts) / 360.0f);
    Player player = looking(alongZ);
    player.rotateView(-counts, 0);
    Player expected = looking(alongZ);
    expected.rotateViewAround(angle, up, false);
    expectSameView(player, expected);
}

TEST(PlayerView, SmallestIntOfHorizontalCountsStaysNegativeWhenNegated) {
    Player player = looking(alongZ);
    player.rotateView(INT_MIN, 0);
    Player expected = looking(alongZ);
    expected.rotateViewAround(static_cast<float>(INT_MIN / 360.0), up, false);
    expectSameView(player, expected);
    EXPECT_NE(components(player.direction), components(alongZ));
}

TEST(PlayerView, YawTurnsAboutUpAsItIsStored) {
    Player player = looking(alongX);
    player.up = alongZ;
    player.rotateView(-180, 0);
    expectNear(player.direction, {std::cos(0.5f), std::sin(0.5f), 0.0f});
}

TEST(PlayerView, StrafeVectorStaysOneReportBehindAYaw) {
    Player player = looking(alongZ);
    player.rotateView(360, 0);
    EXPECT_EQ(components(player.strafeVector), components(alongX));

    vec3 refreshed = up.cross(player.direction);
    refreshed.normalize();
    player.rotateView(0, 0);
    EXPECT_EQ(components(player.strafeVector), components(refreshed));
    expectNear(refreshed, {std::cos(1.0f), 0.0f, std::sin(1.0f)});
}

TEST(PlayerView, PitchAfterAYawTurnsAboutTheRefreshedStrafeVector) {
    Player player = looking(alongZ);
    player.rotateView(360, 0);
    player.rotateView(0, 180);
    expectNear(player.direction, {-std::sin(1.0f) * std::cos(0.5f), -std::sin(0.5f),
                                  std::cos(1.0f) * std::cos(0.5f)});
}

TEST(PlayerView, ReportWithoutMotionOnlyRecomputesDirectionAndStrafeVector) {
    Player player = looking(alongZ);
    player.setRotation(quat(0.1f, 0.2f, 0.3f, 0.9f));
    const Player expected = player;
    player.direction = {0.6f, 0.0f, 0.8f};
    player.strafeVector = {0.8f, 0.0f, -0.6f};
    player.rotateView(0, 0);
    expectSameView(player, expected);
}

TEST(PlayerView, LookAtPointIsPositionPlusDirectionAfterATurn) {
    Player player;
    player.placeAt({1010.68f, 658.201f, 133.03f}, {1010.67f, 658.15f, 134.028f});
    player.rotateView(17, -23);
    EXPECT_EQ(components(player.look), components(player.position + player.direction));
}

TEST(PlayerView, TurnAboutAnAxisLeavesTheStrafeVectorAlone) {
    Player player = looking(alongZ);
    player.rotateViewAround(1.0f, up, false);
    EXPECT_NE(components(player.direction), components(alongZ));
    EXPECT_EQ(components(player.strafeVector), components(alongX));
}

TEST(PlayerView, TurnGoesOnTheLeftOfTheRotationUnlessTheRightIsAskedFor) {
    const quat before = turn(alongX, 0.7f);
    const quat q = turn(up, 0.5f);
    ASSERT_NE(components(q * before), components(before * q));
    Player player = looking(alongZ);
    player.setRotation(before);
    player.rotateViewAround(0.5f, up, false);
    EXPECT_EQ(components(player.rotation), components(q * before));

    player.setRotation(before);
    player.rotateViewAround(0.5f, up, true);
    EXPECT_EQ(components(player.rotation), components(before * q));
}

TEST(PlayerView, FarFromTheOriginTheViewVanishesInRoundingWithoutNaN) {
    Player player;
    player.placeAt({1000.0f, -1e9f, 1000.0f}, vec3(1000.0f, -1e9f, 1000.0f) + vec3(0, 0.6f, 0));
    player.rotateView(10, 10);
    EXPECT_EQ(components(player.direction), components(vec3()));
    EXPECT_EQ(components(player.strafeVector), components(vec3()));
}

TEST(PlayerViewGuard, DropsAPitchOfASteepViewFurtherUpWhole) {
    Player player = looking({0.05f, 0.99f, 0.05f});
    const Player before = player;
    player.rotateView(0, -10);
    expectSameView(player, before);
}

TEST(PlayerViewGuard, DropsAYawOfASteepViewToo) {
    Player player = looking({0.05f, 0.99f, 0.05f});
    const Player before = player;
    player.rotateView(90, 0);
    expectSameView(player, before);
}

TEST(PlayerViewGuard, JudgesLookingDownLikeLookingUp) {
    Player player = looking({-0.05f, -0.99f, -0.05f});
    const Player before = player;
    player.rotateView(90, 10);
    expectSameView(player, before);
}

TEST(PlayerViewGuard, JudgesThePitchAndTheYawOfOneReportApart) {
    Player player = looking({0.0f, 0.99f, 0.12f});
    Player expected = player;
    player.rotateView(36, -30);
    expected.rotateViewAround(-0.1f, up, false);
    expectSameView(player, expected);
    EXPECT_LT(player.direction.x, -0.01f);
}

TEST(PlayerViewGuard, IsASquareSoThatAYawToItsDiagonalIsDropped) {
    Player player = looking({0.0f, 0.99f, 0.12f});
    const Player before = player;
    player.rotateViewAround(0.7854f, up, false);
    expectSameView(player, before);
}

TEST(PlayerViewGuard, LetsAViewPassOverTheVerticalInOneTurn) {
    Player player = looking({0.0f, 0.99f, 0.12f});
    player.rotateView(0, -360);
    EXPECT_LT(player.direction.z, -0.5f) << "past straight up, now looking back";
    EXPECT_GT(player.direction.y, 0.5f);
}

TEST(PlayerViewGuard, TakesATurnThatClearsOneOfTheTwoAxes) {
    for (vec3 direction : {vec3(0.5f, 0.8f, 0.05f), vec3(0.05f, 0.8f, -0.5f)}) {
        Player player = looking(direction);
        const vec3 before = player.direction;
        player.rotateViewAround(-0.01f, up, false);
        EXPECT_NE(components(player.direction), components(before));
    }
}

TEST(PlayerViewGuard, BeginsBelowOneTenthExactly) {
    const float below = std::nextafter(0.1f, 0.0f);
    const float height = std::sqrt(0.99f);
    for (float sign : {1.0f, -1.0f}) {
        for (vec3 axis : {alongX, alongZ}) {
            Player player;
            player.look = vec3();
            player.direction = axis * (sign * 0.1f) + up * height;
            player.rotateViewAround(0.0f, up, false);
            EXPECT_NE(components(player.look), components(vec3())) << "0.1f lies above 0.1";

            player.look = vec3();
            player.direction = axis * (sign * below) + up * height;
            player.rotateViewAround(0.0f, up, false);
            EXPECT_EQ(components(player.look), components(vec3())) << "dropped";
        }
    }
}
