#include "game/ArenaChunks.h"

#include "game/Camera.h"
#include "tests/support/Arenas.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <set>

using namespace drench;
using namespace drench::game;

namespace {

using Corners = std::array<std::uint32_t, 3>;

std::multiset<Corners> trianglesIn(const std::vector<std::uint32_t>& indices, std::size_t first,
                                   std::size_t count) {
    std::multiset<Corners> triangles;
    for (std::size_t i = first; i < first + count; i += 3)
        triangles.insert({indices[i], indices[i + 1], indices[i + 2]});
    return triangles;
}

ArenaMesh pillars() {
    return meshOf(loaded(arenaText(20, 8, 20, [](int i, int j, int k) {
        return j == 0 || (i % 5 == 2 && k % 5 == 2 && j < 6);
    })));
}

} // namespace

TEST(ArenaChunks, HoldEveryTriangleOnce) {
    const ArenaMesh mesh = pillars();
    const ArenaChunks chunks(mesh);
    EXPECT_EQ(trianglesIn(chunks.indices(), 0, chunks.indices().size()),
              trianglesIn(mesh.indices, 0, mesh.indices.size()));
}

TEST(ArenaChunks, InThePictureAreAllThatItShows) {
    const ArenaMesh mesh = pillars();
    const ArenaChunks chunks(mesh);
    std::size_t leftOut = 0;
    for (const glm::vec3 direction : {glm::vec3(1.0f, 0.0f, 0.2f), glm::vec3(-0.3f, 0.4f, -1.0f),
                                      glm::vec3(0.1f, -1.0f, 0.0f)}) {
        Camera camera;
        camera.eye = {640.0f, 200.0f, 640.0f};
        camera.direction = direction;
        const glm::mat4 toClip = projectionMatrix(camera, 1.6f) * viewMatrix(camera);
        std::vector<ArenaChunks::Run> runs;
        chunks.visible(toClip, camera.eye, runs);
        std::multiset<Corners> drawn;
        for (const ArenaChunks::Run& run : runs)
            drawn.merge(trianglesIn(chunks.indices(), run.first, run.count));
        for (const Corners& triangle : trianglesIn(mesh.indices, 0, mesh.indices.size())) {
            const bool shown = std::any_of(triangle.begin(), triangle.end(), [&](auto corner) {
                const glm::vec4 clip = toClip * glm::vec4(mesh.vertices[corner].position, 1.0f);
                return std::abs(clip.x) <= clip.w && std::abs(clip.y) <= clip.w &&
                       std::abs(clip.z) <= clip.w;
            });
            EXPECT_TRUE(!shown || drawn.count(triangle) == 1);
        }
        leftOut += mesh.indices.size() / 3 - drawn.size();
    }
    EXPECT_GT(leftOut, mesh.indices.size() / 6) << "and not all that there is";
}

TEST(ArenaChunks, AreDrawnFromNearToFar) {
    const ArenaMesh mesh = pillars();
    const ArenaChunks chunks(mesh);
    Camera camera;
    camera.eye = {10.0f, 200.0f, 640.0f};
    camera.direction = {1.0f, 0.0f, 0.0f};
    std::vector<ArenaChunks::Run> runs;
    chunks.visible(projectionMatrix(camera, 1.6f) * viewMatrix(camera), camera.eye, runs);
    ASSERT_GT(runs.size(), 4u);
    const auto leastX = [&](const ArenaChunks::Run& run) {
        float least = 1e9f;
        for (std::uint32_t i = run.first; i < run.first + run.count; ++i)
            least = std::min(least, mesh.vertices[chunks.indices()[i]].position.x);
        return least;
    };
    EXPECT_LT(leastX(runs.front()), leastX(runs.back()) - 500.0f);
}
