#include "game/Labels.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace drench::game {

namespace {

/// World units above the middle of a body, whose head ends at 75.
constexpr float labelHeight = 92.0f;

/// Heights in a body that are looked at: head, chest and feet.
constexpr float seenHeights[] = {60.0f, 0.0f, -60.0f};

vec3 ofGame(glm::vec3 v) {
    return {v.x, v.y, v.z};
}

bool isFinite(glm::vec3 v) {
    return std::isfinite(v.x + v.y + v.z);
}

bool isSeen(const arena::Grid& grid, glm::vec3 eye, glm::vec3 body) {
    return std::any_of(std::begin(seenHeights), std::end(seenHeights), [&](float height) {
        const glm::vec3 way = body + glm::vec3(0.0f, height, 0.0f) - eye;
        const std::optional<arena::Hit> hit =
            trace(grid, arena::rayAlong(ofGame(eye), ofGame(way)));
        return !hit || hit->distance >= 1.0;
    });
}

/// Nothing behind the eye or beyond the picture's edge.
std::optional<glm::vec2> inPicture(const glm::mat4& clipFromWorld, glm::vec3 point) {
    const glm::vec4 clip = clipFromWorld * glm::vec4(point, 1.0f);
    const bool isShown =
        clip.w > nearPlane && std::abs(clip.x) <= clip.w && std::abs(clip.y) <= clip.w;
    if (!isShown)
        return std::nullopt;
    return glm::vec2(0.5f + 0.5f * clip.x / clip.w, 0.5f - 0.5f * clip.y / clip.w);
}

} // namespace

std::vector<Label> labelsOf(const Scene& scene, const arena::Grid& grid, float aspect) {
    std::vector<Label> labels;
    const glm::mat4 clipFromWorld =
        projectionMatrix(scene.camera, aspect) * viewMatrix(scene.camera);
    for (const FigurePose& figure : scene.figures) {
        if (figure.soaked || !isFinite(figure.position))
            continue;
        const std::optional<glm::vec2> place =
            inPicture(clipFromWorld, figure.position + glm::vec3(0.0f, labelHeight, 0.0f));
        if (place && isSeen(grid, scene.camera.eye, figure.position))
            labels.push_back(
                {*place, figure.name, figure.id, glm::distance(scene.camera.eye, figure.position)});
    }
    std::sort(labels.begin(), labels.end(),
              [](const Label& a, const Label& b) { return a.distance > b.distance; });
    return labels;
}

} // namespace drench::game
