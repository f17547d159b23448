#pragma once

#include "game/Scene.h"
#include "game/Solids.h"
#include "game/render/Buffers.h"
#include "game/render/Program.h"

namespace drench::game {

/// Players and what they hold, in the arena's sun and haze. Returns are draw calls.
class FigurePicture {
  public:
    FigurePicture();

    /// All figures, in one call.
    int drawFigures(const Scene& scene, float aspect);

    /// One's own gun, by a field of view of its own, in one call.
    int drawGun(const Scene& scene, float aspect);

  private:
    int draw(const Camera& camera, float aspect);

    Program program_;
    VertexArray array_;
    Buffer buffer_;
    Solids solids_;
};

} // namespace drench::game
