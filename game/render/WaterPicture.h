#pragma once

#include "game/Scene.h"
#include "game/WaterShapes.h"
#include "game/render/Buffers.h"
#include "game/render/Program.h"

namespace drench::game {

/// Jets, drops, wet spots and shadows, over the picture of all that is solid. Returns are
/// draw calls.
class WaterPicture {
  public:
    WaterPicture();

    /// All water of the arena, in one call.
    int drawWater(const Scene& scene, float aspect);

    /// The water that runs down the screen, in one call.
    int drawSoaking(const Scene& scene, float aspect);

  private:
    int draw(const glm::mat4& toClip);

    Program program_;
    VertexArray array_;
    Buffer buffer_;
    WaterShapes shapes_;
};

} // namespace drench::game
