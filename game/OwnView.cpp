#include "game/OwnView.h"

#include "src/Player.h"

#include <cmath>

namespace drench::game {

void look(Camera& camera, const PlayerUpdate& self) {
    const glm::vec3 eye = onScreen(self.position);
    const glm::vec3 direction = onScreen(self.direction);
    const bool isSoaked = eye == onScreen(Player::soakedPlace);
    const float numbers = glm::dot(eye, eye) + glm::dot(direction, direction);
    const bool isLevel = direction.x != 0.0f || direction.z != 0.0f;
    if (isSoaked || !std::isfinite(numbers) || !isLevel)
        return;
    camera.eye = eye;
    camera.direction = direction;
}

} // namespace drench::game
