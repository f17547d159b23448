#pragma once

#include "src/MapManager.h"
#include "src/Vector.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

namespace drench::game {

/// A vector of the game, for what the screen needs.
inline glm::vec3 onScreen(vec3 v) {
    return {v.x, v.y, v.z};
}

/// A vector of the screen, for the game.
inline vec3 inGame(glm::vec3 v) {
    return {v.x, v.y, v.z};
}

/// The eye that a frame is drawn from, world units.
struct Camera {
    glm::vec3 eye{0.0f};

    /// Where it looks; need not be a unit vector, but must not be zero.
    glm::vec3 direction{0.0f, 0.0f, 1.0f};
    glm::vec3 up{0.0f, 1.0f, 0.0f};

    /// Radians, from the upper to the lower edge of the picture.
    float fieldOfView = 1.02f;
};

/// World units. A wall is never nearer to the eye than half a body, 25, nor to the corners of a
/// wide picture than a third of that; a nearer plane would cost precision far away.
constexpr float nearPlane = 6.0f;

/// World units; the largest arena is 16 384 wide.
constexpr float farPlane = 24576.0f;

/// Has the eye look along `direction`, of any length. It stays as it was for one that is zero, no
/// number, or straight up or down, where a picture has no upper edge: hostile rooms send those.
void turnTo(Camera& camera, glm::vec3 direction);

/// Above a corner of the arena, seeing all of it: for whoever is nowhere in it.
Camera overviewOf(const MapManager& map);

/// From world units to what the eye sees: x to the right, y up, -z ahead.
glm::mat4 viewMatrix(const Camera& camera);

/// From what the eye sees to OpenGL's clip space. `aspect` is the picture's width over its height.
glm::mat4 projectionMatrix(const Camera& camera, float aspect);

/// The field of view from edge to edge in radians, down, of a picture of shape 16:9 that shows
/// `degrees` from left to right: the number that players set. Other shapes show more or less at
/// the sides.
float fieldOfViewFrom(float degrees);

} // namespace drench::game
