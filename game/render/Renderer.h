#pragma once

#include "game/ArenaMesh.h"
#include "game/Scene.h"
#include "game/render/ArenaPicture.h"
#include "game/render/FigurePicture.h"
#include "game/render/SkyPicture.h"
#include "game/render/WaterPicture.h"

#include <optional>

namespace drench::game {

/// Draws scenes into the current framebuffer. Needs the current context of OpenGL 3.3.
class Renderer {
  public:
    explicit Renderer(const ArenaMesh& arena);

    /// Draws this arena from now on.
    void setArena(const ArenaMesh& arena) { arena_.emplace(arena); }

    /// @param width,height  of the framebuffer in pixels
    void draw(const Scene& scene, int width, int height);

  private:
    std::optional<ArenaPicture> arena_;
    SkyPicture sky_;
    FigurePicture figures_;
    WaterPicture water_;
};

} // namespace drench::game
