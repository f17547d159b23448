#include "game/Labels.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace drench::game {

namespace {

/// Nothing behind the eye or beyond the picture's edge, nor for what is no number.
std::optional<glm::vec2> inPicture(const glm::mat4& clipFromWorld, glm::vec3 point) {
    const glm::vec4 clip = clipFromWorld * glm::vec4(point, 1.0f);
    const bool isShown = clip.w > nearPlane && clip.w <= farPlane && std::abs(clip.x) <= clip.w &&
                         std::abs(clip.y) <= clip.w;
    if (!isShown)
        return std::nullopt;
    return glm::vec2(0.5f + 0.5f * clip.x / clip.w, 0.5f - 0.5f * clip.y / clip.w);
}

} // namespace

std::vector<Label> labelsOf(const Scene& scene, float aspect) {
    std::vector<Label> labels;
    const glm::mat4 clipFromWorld =
        projectionMatrix(scene.camera, aspect) * viewMatrix(scene.camera);
    for (const NameLabel& name : scene.names) {
        if (const std::optional<glm::vec2> place = inPicture(clipFromWorld, name.place))
            labels.push_back({*place, name.name, name.colour, name.distance});
    }
    std::sort(labels.begin(), labels.end(),
              [](const Label& a, const Label& b) { return a.distance > b.distance; });
    return labels;
}

} // namespace drench::game
