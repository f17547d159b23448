#include "game/Labels.h"

#include "tests/support/Courts.h"

#include <gtest/gtest.h>
#include <limits>

using namespace drench::game;

namespace {

constexpr float aspect = 16.0f / 9.0f;

/// The middle of a cell, where a body's centre stands on a floor of one cube.
glm::vec3 onFloor(int column, int depth) {
    return {64.0f * static_cast<float>(column) + 32.0f, 64.0f + 76.0f,
            64.0f * static_cast<float>(depth) + 32.0f};
}

FigurePose figure(char id, glm::vec3 position) {
    FigurePose pose;
    pose.id = id;
    pose.name = std::string("player ") + id;
    pose.position = position;
    return pose;
}

/// Looks along z from the near end of a court.
Scene sceneWith(std::initializer_list<FigurePose> figures) {
    Scene scene;
    scene.camera.eye = onFloor(8, 2);
    scene.camera.direction = {0.0f, 0.0f, 1.0f};
    scene.figures = figures;
    return scene;
}

std::vector<Label> labelsIn(MapManager map, const Scene& scene) {
    return labelsOf(scene, drench::arena::gridOf(map), aspect);
}

MapManager emptyHall() {
    return court(17, 10, 30, nothing);
}

} // namespace

TEST(Labels, StandAboveThePlayersInThePicture) {
    const std::vector<Label> labels =
        labelsIn(emptyHall(), sceneWith({figure('2', onFloor(8, 12))}));
    ASSERT_EQ(labels.size(), 1u);
    EXPECT_EQ(labels[0].name, "player 2");
    EXPECT_EQ(labels[0].id, '2');
    EXPECT_NEAR(labels[0].place.x, 0.5f, 1e-4f);
    EXPECT_LT(labels[0].place.y, 0.45f) << "above the middle, where the eyes of both are";
    EXPECT_GT(labels[0].place.y, 0.2f);
    EXPECT_NEAR(labels[0].distance, 640.0f, 0.1f);
}

TEST(Labels, LieAtTheSideOnWhichThePlayerIs) {
    // Along z, the right hand points to falling x.
    const std::vector<Label> labels =
        labelsIn(emptyHall(), sceneWith({figure('2', onFloor(5, 12))}));
    ASSERT_EQ(labels.size(), 1u);
    EXPECT_GT(labels[0].place.x, 0.6f);
}

TEST(Labels, AreNotSeenThroughWalls) {
    const auto wall = [](int height) {
        return court(17, 10, 30, [=](int, int j, int k) { return k == 7 && j <= height; });
    };
    const Scene scene = sceneWith({figure('2', onFloor(8, 12))});
    EXPECT_EQ(labelsIn(wall(9), scene).size(), 0u);
    EXPECT_EQ(labelsIn(wall(1), scene).size(), 1u) << "the head is seen above";
}

TEST(Labels, TheSoakedThoseBehindAndThoseBesideThePictureHaveNone) {
    FigurePose soaked = figure('2', onFloor(8, 12));
    soaked.soaked = true;
    EXPECT_EQ(labelsIn(emptyHall(), sceneWith({soaked})).size(), 0u);
    Scene scene = sceneWith({figure('2', onFloor(8, 1))});
    scene.camera.eye = onFloor(8, 12);
    EXPECT_EQ(labelsIn(emptyHall(), scene).size(), 0u) << "behind";
    scene = sceneWith({figure('2', onFloor(1, 3))});
    EXPECT_EQ(labelsIn(emptyHall(), scene).size(), 0u) << "beside";
}

TEST(Labels, ComeTheFarthestFirstSoThatTheNearestLieOnTop) {
    const std::vector<Label> labels =
        labelsIn(emptyHall(), sceneWith({figure('2', onFloor(8, 8)), figure('3', onFloor(7, 20)),
                                         figure('4', onFloor(9, 14))}));
    ASSERT_EQ(labels.size(), 3u);
    EXPECT_EQ(labels[0].id, '3');
    EXPECT_EQ(labels[1].id, '4');
    EXPECT_EQ(labels[2].id, '2');
}

TEST(Labels, PlacesThatAreNoNumbersHaveNone) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(labelsIn(emptyHall(), sceneWith({figure('2', {nan, 100.0f, 700.0f}),
                                               figure('3', {500.0f, infinity, 700.0f}),
                                               figure('4', {1e30f, -1e30f, 3e38f})}))
                  .size(),
              0u);
}
