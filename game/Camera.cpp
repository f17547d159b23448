#include "game/Camera.h"

#include <cmath>
#include <glm/gtc/matrix_transform.hpp>

namespace drench::game {

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
