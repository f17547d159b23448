#pragma once

#include "arena/Rays.h"
#include "game/Scene.h"

#include <span>
#include <vector>

namespace drench::game {

// What rays through the cubes tell of figures.

/// The share of the sun's light that reaches a body; rays from four heights of it tell.
/// @param position  the middle of the body
float sunOn(const arena::Grid& grid, glm::vec3 position);

/// The names of the figures that the eye sees: one is hidden if cubes hide both the head and the
/// middle of the body.
std::vector<NameLabel> namesInSight(const arena::Grid& grid, glm::vec3 eye,
                                    std::span<const FigurePose> figures);

} // namespace drench::game
