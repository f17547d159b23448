#include "game/WaterGun.h"

#include "game/Liveries.h"

namespace drench::game {

void addGun(Solids& solids, const glm::mat4& place, arena::Colour colour) {
    const arena::Colour shade = darker(colour, shadeShare);
    // Grip, body with a keel, tank, pump, barrel and nozzle.
    addBlock(solids, place, {-1.8f, -9.0f, -2.5f}, {1.8f, 0.0f, 3.0f}, shade);
    addBlock(solids, place, {-3.0f, -1.5f, -7.0f}, {3.0f, 5.0f, 15.0f}, colour);
    addBlock(solids, place, {-3.3f, 0.6f, -5.0f}, {3.3f, 2.4f, 13.0f}, whiteColour);
    addTube(solids, place, {0.0f, 8.6f, -6.0f}, 15.0f, 4.6f, 4.6f, tankColour);
    addTube(solids, place, {0.0f, 8.6f, 9.0f}, 3.0f, 4.6f, 2.6f, whiteColour);
    addTube(solids, place, {0.0f, 8.6f, -8.0f}, 2.1f, 3.4f, 4.6f, whiteColour);
    addTube(solids, place, {0.0f, 8.6f, -9.5f}, 1.6f, 1.7f, 2.0f, colour);
    addTube(solids, place, {0.0f, -2.2f, 14.0f}, 12.0f, 2.9f, 2.9f, yellowColour);
    addTube(solids, place, {0.0f, 2.0f, 15.0f}, 16.0f, 2.3f, 2.1f, whiteColour);
    addTube(solids, place, {0.0f, 2.0f, 30.0f}, gunTip.z - 30.0f, 3.4f, 1.7f, colour);
}

} // namespace drench::game
