#pragma once

#include "game/ArenaMesh.h"

#include <cstdint>
#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <vector>

namespace drench::game {

/// A mesh in boxes of a few cells, so that a frame can leave out what it does not show and draw
/// what is near first: what lies behind is then not shaded.
class ArenaChunks {
  public:
    /// World units along each edge of a chunk: a few cubes.
    static constexpr float edge = 256.0f;

    ArenaChunks() = default;
    explicit ArenaChunks(const ArenaMesh& mesh);

    /// The indices of the mesh, those of each chunk one after the other.
    const std::vector<std::uint32_t>& indices() const { return indices_; }

    /// A run of indices.
    struct Run {
        std::uint32_t first;
        std::uint32_t count;
    };

    /// The runs of chunks that may be in the picture, the nearest first.
    /// @param toClip  from world units to clip space
    void visible(const glm::mat4& toClip, glm::vec3 eye, std::vector<Run>& runs) const;

  private:
    struct Chunk {
        glm::vec3 low;
        glm::vec3 high;
        Run run;
    };

    std::vector<Chunk> chunks_;
    std::vector<std::uint32_t> indices_;
};

} // namespace drench::game
