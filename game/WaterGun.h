#pragma once

#include "game/Solids.h"

namespace drench::game {

/// Adds a water gun that points along local z, its grip around the origin.
void addGun(Solids& solids, const glm::mat4& place, arena::Colour colour);

/// Where the water leaves it, in its local space.
constexpr glm::vec3 gunTip{0.0f, 2.0f, 36.0f};

} // namespace drench::game
