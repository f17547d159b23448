#include "game/FigureSight.h"

#include "game/ArenaLight.h"
#include "game/Camera.h"

#include <glm/geometric.hpp>
#include <optional>

namespace drench::game {

namespace {

/// World units above the middle of a body.
constexpr float headHeight = 45.0f;
constexpr float nameHeight = 87.0f;

bool isHidden(const arena::Grid& grid, glm::vec3 eye, glm::vec3 point) {
    const glm::vec3 way = point - eye;
    const std::optional<arena::Hit> hit =
        arena::trace(grid, arena::rayAlong(inGame(eye), inGame(way)));
    return hit && hit->distance < 1.0;
}

} // namespace

float sunOn(const arena::Grid& grid, glm::vec3 position) {
    constexpr float heights[] = {-60.0f, -20.0f, 20.0f, 60.0f};
    float lit = 0.0f;
    for (const float height : heights) {
        const glm::vec3 from = position + glm::vec3(0.0f, height, 0.0f);
        if (!arena::trace(grid, {arena::inCells(inGame(from)), towardsSun}))
            lit += 1.0f / static_cast<float>(std::size(heights));
    }
    return lit;
}

std::vector<NameLabel> namesInSight(const arena::Grid& grid, glm::vec3 eye,
                                    std::span<const FigurePose> figures) {
    constexpr glm::vec3 head{0.0f, headHeight, 0.0f};
    std::vector<NameLabel> labels;
    for (const FigurePose& figure : figures) {
        if (figure.soaked ||
            (isHidden(grid, eye, figure.position + head) && isHidden(grid, eye, figure.position)))
            continue;
        labels.push_back({figure.position + glm::vec3(0.0f, nameHeight, 0.0f), figure.name,
                          figure.colour, glm::distance(eye, figure.position)});
    }
    return labels;
}

} // namespace drench::game
