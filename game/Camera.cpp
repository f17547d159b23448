#include "game/Camera.h"

#include <algorithm>
#include <cmath>
#include <glm/gtc/matrix_transform.hpp>

namespace drench::game {

namespace {

/// The least part to the side of a direction of length 1.
constexpr float leastSlant = 1e-3f;

} // namespace

void turnTo(Camera& camera, glm::vec3 direction) {
    // Squares of very large or small numbers are none.
    direction /= std::max({std::abs(direction.x), std::abs(direction.y), std::abs(direction.z)});
    direction = glm::normalize(direction);
    if (std::hypot(direction.x, direction.z) > leastSlant)
        camera.direction = direction;
}

Camera overviewOf(const MapManager& map) {
    Camera camera;
    const glm::vec3 middle = glm::vec3(map.width, 0.4f * map.height, map.length) * 0.5f;
    camera.eye = middle + glm::vec3(0.55f * map.width, 1.3f * map.height, 0.7f * map.length);
    camera.direction = middle - camera.eye;
    return camera;
}

glm::mat4 viewMatrix(const Camera& camera) {
    return glm::lookAt(camera.eye, camera.eye + glm::normalize(camera.direction), camera.up);
}

glm::mat4 projectionMatrix(const Camera& camera, float aspect) {
    return glm::perspective(camera.fieldOfView, aspect, nearPlane, farPlane);
}

float fieldOfViewFrom(float degrees) {
    constexpr float heightOverWidth = 9.0f / 16.0f;
    return 2.0f * std::atan(std::tan(glm::radians(degrees) / 2.0f) * heightOverWidth);
}

} // namespace drench::game
