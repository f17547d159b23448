#pragma once

#include "game/ArenaMesh.h"
#include "game/Scene.h"
#include "game/render/ArenaPicture.h"
#include "game/render/Canvas.h"
#include "game/render/FigurePicture.h"
#include "game/render/SkyPicture.h"
#include "game/render/WaterPicture.h"

namespace drench::game {

/// Draws scenes. Needs the current context of OpenGL 3.3.
class Renderer {
  public:
    explicit Renderer(const ArenaMesh& arena);

    /// Draws this arena from now on.
    void setArena(const ArenaMesh& arena) { arena_.fill(arena); }

    /// Draws into the window's framebuffer.
    /// @param width,height  of that framebuffer in pixels
    /// @return the number of draw calls
    int draw(const Scene& scene, int width, int height, const Look& look);

  private:
    int drawScene(const Scene& scene, float aspect, const Look& look);

    Canvas canvas_;
    ArenaPicture arena_;
    SkyPicture sky_;
    FigurePicture figures_;
    WaterPicture water_;
};

} // namespace drench::game
