#pragma once

#include "game/ArenaChunks.h"
#include "game/ArenaMesh.h"
#include "game/Camera.h"
#include "game/render/Buffers.h"
#include "game/render/Program.h"

namespace drench::game {

/// The arena, with the haze of distance.
class ArenaPicture {
  public:
    explicit ArenaPicture(const ArenaMesh& mesh);
    void draw(const Camera& camera, float aspect) const;

  private:
    ArenaChunks chunks_;
    Program program_;
    VertexArray array_;
    Buffer vertices_;
    Buffer indices_;
};

} // namespace drench::game
