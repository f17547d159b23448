#include "game/render/Renderer.h"

namespace drench::game {

namespace {

/// The share of the depths that is the gun's own.
constexpr double gunDepth = 0.05;

} // namespace

Renderer::Renderer(const ArenaMesh& arena) : arena_(arena) {}

int Renderer::draw(const Scene& scene, int width, int height, const Look& look) {
    const float aspect = static_cast<float>(width) / static_cast<float>(height);
    if (Canvas::serves(look)) {
        canvas_.begin(width, height, look);
        const int calls = drawScene(scene, aspect, look);
        canvas_.end();
        return calls + 1;
    }
    canvas_.drop();
    glViewport(0, 0, width, height);
    return drawScene(scene, aspect, look);
}

int Renderer::drawScene(const Scene& scene, float aspect, const Look& look) {
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
    // The sky covers all that the arena leaves open.
    glClear(GL_DEPTH_BUFFER_BIT);
    // The gun is nearer than all else. What is near comes first, so that what it hides need not be
    // coloured.
    glDepthRange(0.0, gunDepth);
    int calls = figures_.drawGun(scene, aspect);
    glDepthRange(gunDepth, 1.0);
    calls += figures_.drawFigures(scene, aspect);
    arena_.draw(scene.camera, aspect, look);
    ++calls;
    sky_.draw(scene.camera, aspect, scene.time);
    ++calls;
    calls += water_.drawWater(scene, aspect);
    calls += water_.drawSoaking(scene, aspect);
    return calls;
}

} // namespace drench::game
