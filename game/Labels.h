#pragma once

#include "game/Scene.h"

#include <glm/vec2.hpp>
#include <string>
#include <vector>

namespace drench::game {

/// A player's name in the picture.
struct Label {
    /// The middle of its lower edge, as shares of the picture: x to the right, y down.
    glm::vec2 place{0.0f};
    std::string name;

    /// Index of the player's colour.
    int colour = 0;

    /// From the eye to the player, world units.
    float distance = 0.0f;
};

/// The scene's names that lie in the picture of its camera, the farthest first.
/// @param aspect  the picture's width over its height
std::vector<Label> labelsOf(const Scene& scene, float aspect);

} // namespace drench::game
