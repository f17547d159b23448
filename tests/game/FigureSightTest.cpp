#include "game/FigureSight.h"

#include "tests/support/Arenas.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

FigurePose standingPose() {
    FigurePose pose;
    pose.colour = 1;
    pose.position = {100.0f, 200.0f, 300.0f};
    return pose;
}

} // namespace

TEST(Sun, ShinesOnBodiesUnlessCubesHideIt) {
    const MapManager open = withoutSolids(8, 8, 8);
    EXPECT_FLOAT_EQ(sunOn(arena::gridOf(open), {256, 139, 256}), 1.0f);
    const MapManager roofed =
        loaded(arenaText(8, 8, 8, [](int, int row, int) { return row == 6; }));
    EXPECT_FLOAT_EQ(sunOn(arena::gridOf(roofed), {256, 139, 256}), 0.0f);
}

TEST(Names, AreShownAboveHeadsInSight) {
    const MapManager map = withoutSolids(16, 8, 16);
    const FigurePose figure = standingPose();
    const auto names = namesInSight(arena::gridOf(map), {600, 200, 300}, std::span(&figure, 1));
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(names[0].colour, 1);
    EXPECT_FLOAT_EQ(names[0].distance, 500.0f);
    EXPECT_GT(names[0].place.y, figure.position.y + 75.0f);
}

TEST(Names, AreHiddenBehindWallsAndShownOverThem) {
    const FigurePose figure = standingPose();
    glm::vec3 eye(600, 200, 300);
    const auto shown = [&](int lowestOpenRow) {
        const MapManager map = loaded(arenaText(16, 8, 16, [&](int column, int row, int) {
            return column == 4 && row < lowestOpenRow;
        }));
        return namesInSight(arena::gridOf(map), eye, std::span(&figure, 1)).size();
    };
    EXPECT_EQ(shown(8), 0u);
    EXPECT_EQ(shown(3), 1u) << "the body is seen over a low wall";
    EXPECT_EQ(shown(4), 0u);
    eye.y = 300.0f;
    EXPECT_EQ(shown(4), 1u) << "from up here the head is seen";
}

TEST(Names, OfSoakedPlayersAreHidden) {
    const MapManager map = withoutSolids(16, 8, 16);
    FigurePose figure = standingPose();
    figure.soaked = true;
    EXPECT_TRUE(namesInSight(arena::gridOf(map), {600, 200, 300}, std::span(&figure, 1)).empty());
}
