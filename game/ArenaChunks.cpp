#include "game/ArenaChunks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <glm/matrix.hpp>
#include <map>

namespace drench::game {

namespace {

/// Whether a box lies wholly outside of one side of the picture.
bool isOutside(const glm::mat4& toClip, glm::vec3 low, glm::vec3 high) {
    const glm::mat4 rows = glm::transpose(toClip);
    for (int axis = 0; axis < 3; ++axis) {
        for (const float side : {-1.0f, 1.0f}) {
            // The points for which side · x <= w; the corner that lies deepest within decides.
            const glm::vec4 plane = rows[3] - side * rows[axis];
            const glm::vec3 deepest(plane.x > 0.0f ? high.x : low.x,
                                    plane.y > 0.0f ? high.y : low.y,
                                    plane.z > 0.0f ? high.z : low.z);
            if (glm::dot(glm::vec3(plane), deepest) + plane.w < 0.0f)
                return true;
        }
    }
    return false;
}

} // namespace

ArenaChunks::ArenaChunks(const ArenaMesh& mesh) {
    std::map<std::array<int, 3>, std::vector<std::size_t>> triangles;
    const auto corner = [&](std::size_t index) {
        return mesh.vertices[mesh.indices[index]].position;
    };
    for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
        const glm::vec3 place =
            glm::floor((corner(i) + corner(i + 1) + corner(i + 2)) / (3.0f * edge));
        triangles[{static_cast<int>(place.x), static_cast<int>(place.y), static_cast<int>(place.z)}]
            .push_back(i);
    }
    for (const auto& [place, firsts] : triangles) {
        Chunk chunk = {glm::vec3(INFINITY),
                       glm::vec3(-INFINITY),
                       {static_cast<std::uint32_t>(indices_.size()),
                        static_cast<std::uint32_t>(3 * firsts.size())}};
        for (const std::size_t first : firsts) {
            for (std::size_t index = first; index < first + 3; ++index) {
                chunk.low = glm::min(chunk.low, corner(index));
                chunk.high = glm::max(chunk.high, corner(index));
                indices_.push_back(mesh.indices[index]);
            }
        }
        chunks_.push_back(chunk);
    }
}

void ArenaChunks::visible(const glm::mat4& toClip, glm::vec3 eye, std::vector<Run>& runs) const {
    std::vector<std::pair<float, Run>> near;
    for (const Chunk& chunk : chunks_) {
        if (isOutside(toClip, chunk.low, chunk.high))
            continue;
        const glm::vec3 nearest = glm::clamp(eye, chunk.low, chunk.high);
        near.emplace_back(glm::distance(eye, nearest), chunk.run);
    }
    std::sort(near.begin(), near.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    runs.clear();
    for (const auto& [distance, run] : near)
        runs.push_back(run);
}

} // namespace drench::game
