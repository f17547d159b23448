#pragma once

#include "game/Camera.h"
#include "game/Scene.h"
#include "game/Solids.h"

#include <glm/mat4x4.hpp>

namespace drench::game {

/// Radians, from the upper to the lower edge: one's own gun is always drawn by this field of view,
/// so that a wide view does not stretch it.
constexpr float gunFieldOfView = 0.96f;

/// Adds one's own gun and the arms that hold it, in world units around the eye.
void addGunInHands(Solids& solids, const OwnGun& gun, const Camera& camera);

/// Where the water leaves the gun, as a point of the world that the camera shows at that place.
glm::vec3 ownNozzle(const OwnGun& gun, const Camera& camera);

} // namespace drench::game
