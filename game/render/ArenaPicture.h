#pragma once

#include "game/ArenaChunks.h"
#include "game/ArenaMesh.h"
#include "game/Camera.h"
#include "game/render/Buffers.h"
#include "game/render/Look.h"
#include "game/render/MaterialArray.h"
#include "game/render/Program.h"

#include <optional>

namespace drench::game {

/// The arena, with the haze of distance.
class ArenaPicture {
  public:
    explicit ArenaPicture(const ArenaMesh& mesh);

    /// Draws this mesh from now on.
    void fill(const ArenaMesh& mesh);
    void draw(const Camera& camera, float aspect, const Look& look);

  private:
    /// What textures need; made when they are first wanted.
    struct Textured {
        Program program;
        MaterialArray materials;
    };

    const Program& programFor(const Look& look);

    ArenaChunks chunks_;
    Program plain_;
    std::optional<Textured> textured_;
    VertexArray array_;
    Buffer vertices_;
    Buffer indices_;
};

} // namespace drench::game
