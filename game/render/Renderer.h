#pragma once

#include "game/ArenaMesh.h"
#include "game/Scene.h"
#include "game/render/ArenaPicture.h"
#include "game/render/SkyPicture.h"

namespace drench::game {

/// Draws scenes into the current framebuffer. Needs the current context of OpenGL 3.3.
class Renderer {
  public:
    explicit Renderer(const ArenaMesh& arena);

    /// @param width,height  of the framebuffer in pixels
    void draw(const Scene& scene, int width, int height) const;

  private:
    ArenaPicture arena_;
    SkyPicture sky_;
};

} // namespace drench::game
