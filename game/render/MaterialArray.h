#pragma once

#include "game/render/Buffers.h"

namespace drench::game {

/// The textures of all materials, as the layers of one array.
class MaterialArray {
  public:
    /// @param isSmooth  whether to filter between texels and between sizes
    explicit MaterialArray(bool isSmooth);

    void bind() const { texture_.bind(GL_TEXTURE_2D_ARRAY); }

  private:
    Texture texture_;
};

} // namespace drench::game
