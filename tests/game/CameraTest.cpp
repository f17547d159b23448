#include "game/Camera.h"

#include <cmath>
#include <glm/trigonometric.hpp>
#include <gtest/gtest.h>
#include <limits>

using namespace drench::game;

namespace {

/// Where a point of the world lies in the picture: x and y from -1 to 1, right and up.
glm::vec3 inPicture(const Camera& camera, float aspect, glm::vec3 point) {
    const glm::vec4 clip =
        projectionMatrix(camera, aspect) * viewMatrix(camera) * glm::vec4(point, 1.0f);
    return glm::vec3(clip) / clip.w;
}

} // namespace

TEST(Camera, LooksAlongItsDirectionWithTheRightToTheRight) {
    Camera camera;
    camera.eye = {100.0f, 50.0f, 100.0f};
    camera.direction = {0.0f, 0.0f, -3.0f};
    const glm::vec3 middle = inPicture(camera, 1.0f, {100.0f, 50.0f, 0.0f});
    EXPECT_NEAR(middle.x, 0.0f, 1e-5f);
    EXPECT_NEAR(middle.y, 0.0f, 1e-5f);
    EXPECT_GT(inPicture(camera, 1.0f, {110.0f, 50.0f, 0.0f}).x, 0.05f);
    EXPECT_GT(inPicture(camera, 1.0f, {100.0f, 60.0f, 0.0f}).y, 0.05f);
}

TEST(Camera, ShowsItsFieldOfViewFromEdgeToEdge) {
    Camera camera;
    camera.fieldOfView = fieldOfViewFrom(90.0f);
    EXPECT_NEAR(inPicture(camera, 16.0f / 9.0f, {-100.0f, 0.0f, 100.0f}).x, 1.0f, 1e-4f);
    EXPECT_NEAR(inPicture(camera, 16.0f / 9.0f, {0.0f, 56.25f, 100.0f}).y, 1.0f, 1e-4f);
    EXPECT_NEAR(inPicture(camera, 1.0f, {0.0f, 56.25f, 100.0f}).y, 1.0f, 1e-4f)
        << "a picture of another shape shows as much above and below";
}

TEST(Camera, KeepsDepthsApartFromHalfABodyToTheEndOfTheLargestArena) {
    const Camera camera;
    EXPECT_GT(inPicture(camera, 1.0f, {0.0f, 0.0f, 8.0f}).z, -1.0f);
    EXPECT_LT(inPicture(camera, 1.0f, {0.0f, 0.0f, 16384.0f * 1.41f}).z, 1.0f);
}

TEST(Camera, TurnsToDirectionsOfAnyLength) {
    for (const float length : {1e-40f, 1e-20f, 1.0f, 3e38f}) {
        Camera camera;
        turnTo(camera, {length, length, 0.0f});
        EXPECT_NEAR(camera.direction.x, std::sqrt(0.5f), 1e-4f) << length;
        EXPECT_NEAR(camera.direction.y, std::sqrt(0.5f), 1e-4f) << length;
        EXPECT_EQ(camera.direction.z, 0.0f) << length;
    }
}

TEST(Camera, KeepsItsDirectionWhereNoneIsGivenThatAPictureCanHave) {
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    constexpr float endless = std::numeric_limits<float>::infinity();
    for (const glm::vec3 direction :
         {glm::vec3(0.0f), glm::vec3(0.0f, 1.0f, 0.0f), glm::vec3(1e-4f, -1.0f, 0.0f),
          glm::vec3(none, 0.0f, 1.0f), glm::vec3(1.0f, none, 1.0f),
          glm::vec3(endless, 0.0f, 1.0f)}) {
        Camera camera;
        camera.direction = {1.0f, 0.0f, 0.0f};
        turnTo(camera, direction);
        EXPECT_EQ(camera.direction, glm::vec3(1.0f, 0.0f, 0.0f));
    }
}
