#include "bots/Sightline.h"

#include "arena/Sight.h"
#include "src/Player.h"
#include "tests/support/Courts.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace drench;

using bots::Sightline;
using bots::sightline;

namespace {

constexpr vec3 eye{160.0f, standing, 160.0f};

} // namespace

TEST(Sightline, TellsWhatLiesBetweenAndBehind) {
    const MapManager map = court(20, 10, 20, [](int, int j, int k) { return k == 8 && j < 4; });
    const arena::Grid grid = arena::gridOf(map);
    EXPECT_EQ(sightline(grid, eye, {160.0f, standing, 400.0f}), Sightline::beforeCube);
    EXPECT_EQ(sightline(grid, eye, {160.0f, standing, 700.0f}), Sightline::hidden);
    EXPECT_EQ(sightline(grid, eye, {160.0f, standing, 513.0f}), Sightline::hidden);
    EXPECT_EQ(sightline(grid, eye, {160.0f, standing, 511.0f}), Sightline::beforeCube);
    EXPECT_EQ(sightline(grid, eye, {160.0f, 500.0f, 300.0f}), Sightline::beforeSky);
    // Over the wall, to the border behind.
    EXPECT_EQ(sightline(grid, eye, {160.0f, 330.0f, 700.0f}), Sightline::beforeCube);
}

TEST(Sightline, RaysAreMeasuredInTheirWay) {
    const MapManager map = court(20, 10, 20, nothing);
    const arena::Grid grid = arena::gridOf(map);
    // The border begins at z = 19 · 64.
    const auto hit = trace(grid, arena::rayAlong(eye, {0.0f, 0.0f, 2.0f}));
    ASSERT_TRUE(hit);
    EXPECT_NEAR(hit->distance, (19.0 * 64.0 - 160.0) / 2.0, 1e-6);
}

TEST(Sightline, PartsLieInTheBodyAndFaceTheEye) {
    const vec3 body(700.0f, 300.0f, 900.0f);
    const auto parts = bots::bodyParts(eye, body);
    const vec3 way = body - eye;
    for (const vec3 part : parts) {
        EXPECT_LE(std::max(std::abs(part.x), std::abs(part.z)), Player::bodySize.x / 2.0f);
        EXPECT_LE(std::abs(part.y), Player::bodySize.y / 2.0f);
        EXPECT_NEAR(part.x * way.x + part.z * way.z, 0.0f, 0.1f);
    }
    const auto count = [&](auto holds) { return std::count_if(parts.begin(), parts.end(), holds); };
    EXPECT_EQ(count([](vec3 part) { return part.y > 50.0f; }), 3);
    EXPECT_EQ(count([](vec3 part) { return part.y < -50.0f; }), 3);
    EXPECT_EQ(count([](vec3 part) { return part.x > 10.0f; }), 3);
    EXPECT_EQ(count([](vec3 part) { return part.x < -10.0f; }), 3);
}

TEST(Sightline, PartsShowNearlyAlwaysWhetherABodyIsInSight) {
    const MapManager map = court(20, 10, 20, [](int i, int j, int k) {
        return j <= 4 && (i * 7 + k * 13) % 5 == 0 && i > 3;
    });
    const arena::Grid grid = arena::gridOf(map);
    int inSight = 0;
    int same = 0;
    int bodies = 0;
    for (int i = 2; i < 18; ++i) {
        for (int k = 2; k < 18; ++k) {
            const vec3 body(64.0f * static_cast<float>(i) + 40.0f, standing,
                            64.0f * static_cast<float>(k) + 25.0f);
            const auto parts = bots::bodyParts(eye, body);
            const bool seen = std::any_of(parts.begin(), parts.end(), [&](vec3 part) {
                return sightline(grid, eye, body + part) != Sightline::hidden;
            });
            const bool exactly = arena::sees(grid, eye, Box(body, Player::bodySize));
            inSight += exactly;
            same += seen == exactly;
            ++bodies;
        }
    }
    EXPECT_GT(inSight, bodies / 8);
    EXPECT_LT(inSight, bodies * 7 / 8);
    EXPECT_GE(same, bodies * 9 / 10);
}
