#pragma once

#include "arena/Rays.h"
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
    char id = 0;

    /// From the eye to the player, world units.
    float distance = 0.0f;
};

/// The names above the players of the scene that its camera sees, the farthest first. The soaked
/// have none, nor has whoever stands behind cubes from head to foot.
/// @param aspect  the picture's width over its height
std::vector<Label> labelsOf(const Scene& scene, const arena::Grid& grid, float aspect);

} // namespace drench::game
