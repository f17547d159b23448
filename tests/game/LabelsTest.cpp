#include "game/Labels.h"

#include <gtest/gtest.h>
#include <limits>

using namespace drench::game;

namespace {

constexpr float aspect = 16.0f / 9.0f;

/// Looks along z.
Scene sceneWith(std::initializer_list<NameLabel> names) {
    Scene scene;
    scene.camera.eye = {500.0f, 140.0f, 100.0f};
    scene.camera.direction = {0.0f, 0.0f, 1.0f};
    scene.names = names;
    return scene;
}

NameLabel nameAt(glm::vec3 place, int colour = 0, float distance = 0.0f) {
    return {place, "Bob", colour, distance};
}

} // namespace

TEST(Labels, StandWhereTheirPlacesAreInThePicture) {
    const std::vector<Label> labels =
        labelsOf(sceneWith({nameAt({500.0f, 240.0f, 740.0f}, 2, 640.0f)}), aspect);
    ASSERT_EQ(labels.size(), 1u);
    EXPECT_EQ(labels[0].name, "Bob");
    EXPECT_EQ(labels[0].colour, 2);
    EXPECT_EQ(labels[0].distance, 640.0f);
    EXPECT_NEAR(labels[0].place.x, 0.5f, 1e-4f);
    EXPECT_LT(labels[0].place.y, 0.45f) << "above the middle";
    EXPECT_GT(labels[0].place.y, 0.2f);
}

TEST(Labels, LieAtTheSideOnWhichThePlayerIs) {
    // Along z, the right hand points to falling x.
    const std::vector<Label> labels =
        labelsOf(sceneWith({nameAt({300.0f, 140.0f, 740.0f})}), aspect);
    ASSERT_EQ(labels.size(), 1u);
    EXPECT_GT(labels[0].place.x, 0.6f);
    EXPECT_NEAR(labels[0].place.y, 0.5f, 1e-4f);
}

TEST(Labels, BehindTheEyeAndBesideThePictureThereAreNone) {
    EXPECT_TRUE(labelsOf(sceneWith({nameAt({500.0f, 140.0f, 50.0f})}), aspect).empty());
    EXPECT_TRUE(labelsOf(sceneWith({nameAt({-900.0f, 140.0f, 300.0f})}), aspect).empty());
    EXPECT_TRUE(labelsOf(sceneWith({nameAt({500.0f, 900.0f, 300.0f})}), aspect).empty());
}

TEST(Labels, ComeTheFarthestFirstSoThatTheNearestLieOnTop) {
    const glm::vec3 ahead = {500.0f, 140.0f, 740.0f};
    const std::vector<Label> labels = labelsOf(
        sceneWith({nameAt(ahead, 1, 300.0f), nameAt(ahead, 2, 900.0f), nameAt(ahead, 3, 600.0f)}),
        aspect);
    ASSERT_EQ(labels.size(), 3u);
    EXPECT_EQ(labels[0].colour, 2);
    EXPECT_EQ(labels[1].colour, 3);
    EXPECT_EQ(labels[2].colour, 1);
}

TEST(Labels, PlacesThatAreNoNumbersHaveNone) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    EXPECT_TRUE(
        labelsOf(sceneWith({nameAt({nan, 100.0f, 700.0f}), nameAt({500.0f, infinity, 700.0f}),
                            nameAt({500.0f, 100.0f, infinity})}),
                 aspect)
            .empty());
}
