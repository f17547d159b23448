#include "game/Staging.h"

#include "game/Figures.h"
#include "src/Player.h"
#include "tests/support/Arenas.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

constexpr float frame = 1.0f / 60.0f;

PlayerUpdate playerAt(char id, vec3 position, bool shooting = false) {
    PlayerUpdate player;
    player.id = id;
    player.position = position;
    player.direction = {0.0f, 0.0f, 1.0f};
    player.shooting = shooting;
    return player;
}

struct StagingInCourt : testing::Test {
    MapManager map = loaded(emptyCourt());
    Staging staging{map, 1};
    Scene scene;

    void show(const std::vector<PlayerUpdate>& others, std::optional<OwnBody> own = {}) {
        staging.show(scene, own, others, frame, false);
    }
};

constexpr vec3 place(1000.0f, standing, 1000.0f);

} // namespace

TEST_F(StagingInCourt, ShowsTheJetsOfAllWhoFire) {
    const OwnBody own{'1', {600, standing, 600}, {0, 0, 1}, true};
    for (int i = 0; i < 60; ++i)
        show({playerAt('2', place, true), playerAt('3', {800, standing, 800})}, own);
    ASSERT_EQ(scene.jets.size(), 2u);
    EXPECT_EQ(scene.figures.size(), 2u);
    EXPECT_EQ(scene.shadows.size(), 3u) << "one's own, too";
    ASSERT_TRUE(scene.gun);
    EXPECT_EQ(scene.gun->colour, 0);
}

TEST_F(StagingInCourt, LooksOnWithoutAGun) {
    show({playerAt('2', place)}, OwnBody{'1', {600, standing, 600}, {0, 0, 1}, false});
    show({playerAt('2', place)});
    EXPECT_FALSE(scene.gun);
}

TEST_F(StagingInCourt, BurstsOnceWhereAPlayerIsSoaked) {
    show({playerAt('2', place)});
    EXPECT_TRUE(scene.drops.empty());
    show({playerAt('2', Player::soakedPlace)});
    const std::size_t begun = scene.drops.size();
    ASSERT_GT(begun, 50u);
    for (const Drop& drop : scene.drops)
        EXPECT_NEAR(drop.place.x, place.x, 40.0f);
    show({playerAt('2', Player::soakedPlace)});
    EXPECT_LE(scene.drops.size(), begun);
    for (int i = 0; i < 120; ++i)
        show({playerAt('2', Player::soakedPlace)});
    EXPECT_TRUE(scene.drops.empty());
    EXPECT_TRUE(scene.shadows.empty());
}

TEST_F(StagingInCourt, AJoinerWhoIsSoakedBurstsNot) {
    show({playerAt('2', Player::soakedPlace)});
    EXPECT_TRUE(scene.drops.empty());
}

TEST_F(StagingInCourt, FiguresWalkByTheirWayAndAreInTheAirOverNothing) {
    for (int i = 0; i < 60; ++i)
        show({playerAt('2', place + vec3(6.0f * static_cast<float>(i), 0.0f, 0.0f))});
    EXPECT_GT(scene.figures[0].walkPhase, 3.0f);
    EXPECT_GT(scene.figures[0].way.x, 0.9f);
    EXPECT_NEAR(scene.figures[0].way.y, 0.0f, 0.01f);
    EXPECT_FALSE(scene.figures[0].inAir);
    show({playerAt('2', place + vec3(360.0f, 10.0f, 0.0f))});
    EXPECT_TRUE(scene.figures[0].inAir);
}

TEST_F(StagingInCourt, LeavesOutWhatCannotBeDrawn) {
    PlayerUpdate notANumber = playerAt('2', {NAN, 100.0f, 100.0f}, true);
    PlayerUpdate farAway = playerAt('3', {1e30f, 100.0f, 100.0f}, true);
    PlayerUpdate lookingNowhere = playerAt('4', place, true);
    lookingNowhere.direction = {0.0f, 0.0f, 0.0f};
    PlayerUpdate nobody = playerAt('9', place, true);
    show({notANumber, farAway, lookingNowhere, nobody});
    EXPECT_TRUE(scene.figures.empty());
    EXPECT_TRUE(scene.jets.empty());
}

TEST_F(StagingInCourt, KeepsNozzlesOnThisSideOfWalls) {
    // A body that touches the wall at the end of x.
    const vec3 atWall(31.0f * 64.0f - 25.5f, standing, 1000.0f);
    PlayerUpdate player = playerAt('2', atWall, true);
    player.direction = {1.0f, 0.0f, 0.0f};
    Camera& camera = scene.camera;
    camera.eye = {atWall.x, standing, 600.0f};
    camera.direction = {1.0f, 0.0f, 0.0f};
    for (int i = 0; i < 10; ++i)
        show({player}, OwnBody{'1', camera.eye, camera.direction, true});
    ASSERT_EQ(scene.jets.size(), 2u);
    for (const Jet& jet : scene.jets) {
        EXPECT_LT(jet.from.x, 31.0f * 64.0f);
        EXPECT_GT(jet.from.x, atWall.x);
        EXPECT_LT(jet.width, 1.0f);
    }
}

TEST_F(StagingInCourt, LetsJetsOutAtTheNozzleInTheOpen) {
    for (int i = 0; i < 10; ++i)
        show({playerAt('2', place, true)});
    ASSERT_EQ(scene.jets.size(), 1u);
    EXPECT_EQ(scene.jets[0].from, nozzleOf(scene.figures[0]));
    EXPECT_FLOAT_EQ(scene.jets[0].width, 1.0f);
}

TEST_F(StagingInCourt, LetsOneSeeTheJetAtAWallRightBeforeTheEye) {
    // The wall ends beside the eye, so that the gun itself is in the open.
    MapManager post = loaded(arenaText(16, 8, 16, [](int column, int row, int depth) {
        return row == 0 || (depth == 9 && column >= 8);
    }));
    Staging there(post, 1);
    Camera& camera = scene.camera;
    camera.eye = {516.0f, standing, 540.0f};
    camera.direction = {0.0f, 0.0f, 1.0f};
    for (int i = 0; i < 10; ++i)
        there.show(scene, OwnBody{'1', camera.eye, camera.direction, true}, {}, frame, false);
    ASSERT_EQ(scene.jets.size(), 1u);
    EXPECT_FLOAT_EQ(scene.jets[0].to.z, 576.0f);
    EXPECT_LT(scene.jets[0].from.z, 572.0f);
    EXPECT_GT(scene.jets[0].from.z, 545.0f);
}
