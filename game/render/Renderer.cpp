#include "game/render/Renderer.h"

namespace drench::game {

Renderer::Renderer(const ArenaMesh& arena) : arena_(arena) {}

void Renderer::draw(const Scene& scene, int width, int height) {
    glViewport(0, 0, width, height);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
    // The sky covers all that the arena leaves open.
    glClear(GL_DEPTH_BUFFER_BIT);
    const float aspect = static_cast<float>(width) / static_cast<float>(height);
    arena_.draw(scene.camera, aspect);
    figures_.drawFigures(scene, aspect);
    sky_.draw(scene.camera, aspect, scene.time);
    water_.drawWater(scene, aspect);
    figures_.drawGun(scene, aspect);
    water_.drawSoaking(scene, aspect);
}

} // namespace drench::game
