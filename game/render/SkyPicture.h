#pragma once

#include "game/Camera.h"
#include "game/render/Buffers.h"
#include "game/render/Program.h"

namespace drench::game {

/// The sky, behind everything that was drawn before.
class SkyPicture {
  public:
    SkyPicture();

    /// @param time  seconds, by which clouds drift
    void draw(const Camera& camera, float aspect, double time) const;

  private:
    Program program_;

    /// Empty: the vertices follow from their numbers.
    VertexArray array_;
};

} // namespace drench::game
