#include "game/render/Renderer.h"

namespace drench::game {

namespace {

/// The share of the depths that is the gun's own.
constexpr double gunDepth = 0.05;

} // namespace

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
    // The gun is nearer than all else. What is near comes first, so that what it hides need not be
    // coloured.
    glDepthRange(0.0, gunDepth);
    figures_.drawGun(scene, aspect);
    glDepthRange(gunDepth, 1.0);
    figures_.drawFigures(scene, aspect);
    arena_->draw(scene.camera, aspect);
    sky_.draw(scene.camera, aspect, scene.time);
    water_.drawWater(scene, aspect);
    water_.drawSoaking(scene, aspect);
}

} // namespace drench::game
