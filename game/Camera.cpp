#include "game/Camera.h"

#include <cmath>
#include <glm/gtc/matrix_transform.hpp>

namespace drench::game {

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
