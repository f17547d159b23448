#pragma once

#include "arena/Rays.h"
#include "game/Scene.h"
#include "game/Solids.h"

#include <span>
#include <vector>

namespace drench::game {

/// How far a figure's nozzle reaches from the middle of its body, world units. All else stays
/// within half a body across, 25, and a little more at its corners.
constexpr float nozzleReach = 48.0f;

/// Adds the figure of a player: 150 high as its body, standing on its feet, 75 below its position,
/// or with its legs drawn up in the air. Nothing for a soaked one.
void addFigure(Solids& solids, const FigurePose& pose);

/// Where the water leaves the figure's gun.
glm::vec3 nozzleOf(const FigurePose& pose);

/// Adds a water gun that points along local z, its grip around the origin; 36 long.
void addGun(Solids& solids, const glm::mat4& place, arena::Colour colour);

/// The tip of that gun in its local space.
constexpr glm::vec3 gunTip{0.0f, 2.0f, 36.0f};

/// The share of the sun's light that reaches a figure; rays from its height up tell.
float sunOn(const arena::Grid& grid, glm::vec3 position);

/// The names of the figures that the eye sees: one is hidden if cubes hide both the head and the
/// middle of the body.
std::vector<NameLabel> namesInSight(const arena::Grid& grid, glm::vec3 eye,
                                    std::span<const FigurePose> figures);

} // namespace drench::game
