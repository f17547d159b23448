#include "game/Patches.h"

#include "tests/support/Arenas.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

// On a face whose normal is y, the first axis is z and the second one x.

TEST(Patches, EndAtTheEdgeOfALoneCube) {
    const MapManager map = onlySolid(5, 3, 5, 2, 0, 2);
    const Patch patch = patchOn(arena::gridOf(map), {138.0f, 64.0f, 160.0f}, 1, 1, 40.0f);
    EXPECT_FLOAT_EQ(patch.low.x, 32.0f);
    EXPECT_FLOAT_EQ(patch.high.x, 32.0f);
    EXPECT_FLOAT_EQ(patch.low.y, 10.0f);
    EXPECT_FLOAT_EQ(patch.high.y, 40.0f);
}

TEST(Patches, GoOnOverTheCubesOfOnePlane) {
    const MapManager map = loaded(arenaText(5, 3, 5, [](int, int row, int) { return row == 0; }));
    const Patch patch = patchOn(arena::gridOf(map), {130.0f, 64.0f, 190.0f}, 1, 1, 30.0f);
    EXPECT_EQ(patch.low, glm::vec2(30.0f));
    EXPECT_EQ(patch.high, glm::vec2(30.0f));
}

TEST(Patches, EndWhereAnotherCubeRises) {
    const MapManager map = loaded(arenaText(
        5, 3, 5, [](int column, int row, int) { return row == 0 || (row == 1 && column == 3); }));
    const Patch patch = patchOn(arena::gridOf(map), {180.0f, 64.0f, 160.0f}, 1, 1, 30.0f);
    EXPECT_FLOAT_EQ(patch.high.y, 12.0f);
    EXPECT_FLOAT_EQ(patch.low.y, 30.0f);
}

TEST(Patches, DoNotHangOverAMissingCorner) {
    const MapManager map = loaded(arenaText(5, 3, 5, [](int column, int row, int depth) {
        return row == 0 && !(column == 3 && depth == 3);
    }));
    const Patch patch = patchOn(arena::gridOf(map), {184.0f, 64.0f, 188.0f}, 1, 1, 30.0f);
    EXPECT_FLOAT_EQ(patch.high.x, 4.0f);
    EXPECT_FLOAT_EQ(patch.high.y, 30.0f);
    EXPECT_FLOAT_EQ(patch.low.x, 30.0f);
}

TEST(Patches, AreNeverLargerThanTheyMayBe) {
    const MapManager map = loaded(arenaText(5, 3, 5, [](int, int row, int) { return row == 0; }));
    EXPECT_FLOAT_EQ(patchOn(arena::gridOf(map), {160, 64, 160}, 1, 1, 500.0f).radius, largestPatch);
}

TEST(Shadows, LieOnTheGroundAndFadeWithTheHeight) {
    const MapManager map = loaded(arenaText(8, 16, 8, [](int, int row, int) { return row == 0; }));
    const arena::Grid grid = arena::gridOf(map);
    const Patch standing = shadowOf(grid, {256, 139, 256});
    EXPECT_FLOAT_EQ(standing.place.y, 64.0f);
    const Patch jumping = shadowOf(grid, {256, 259, 256});
    EXPECT_FLOAT_EQ(jumping.place.y, 64.0f);
    EXPECT_LT(jumping.strength, standing.strength);
    EXPECT_GT(jumping.strength, 0.0f);
    EXPECT_FLOAT_EQ(shadowOf(grid, {256, 900, 256}).strength, 0.0f);
}

TEST(Shadows, AreNoneOverNoGround) {
    const MapManager map = withoutSolids(8, 8, 8);
    EXPECT_FLOAT_EQ(shadowOf(arena::gridOf(map), {256, 139, 256}).strength, 0.0f);
}

TEST(WetPatches, GrowWhereWaterKeepsComingAndReplaceTheDriest) {
    const MapManager map = loaded(arenaText(64, 3, 64, [](int, int row, int) { return row == 0; }));
    const arena::Grid grid = arena::gridOf(map);
    WetPatches patches;
    patches.wet(grid, {100, 64, 100}, 1, 1);
    patches.dry(1.0f);
    const Patch first = patches.patches()[0];
    EXPECT_LT(first.strength, 1.0f);
    patches.wet(grid, {103, 64, 100}, 1, 1);
    ASSERT_EQ(patches.patches().size(), 1u);
    EXPECT_FLOAT_EQ(patches.patches()[0].strength, 1.0f);
    EXPECT_GT(patches.patches()[0].radius, first.radius);
    patches.dry(1.0f);
    for (std::size_t i = 0; i < WetPatches::most; ++i)
        patches.wet(grid, {200.0f + 40.0f * static_cast<float>(i), 64, 100}, 1, 1);
    EXPECT_EQ(patches.patches().size(), WetPatches::most);
    for (const Patch& patch : patches.patches())
        EXPECT_GT(patch.place.x, 150.0f) << "the oldest is gone";
}

} // namespace
