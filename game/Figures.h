#pragma once

#include "game/Scene.h"
#include "game/Solids.h"

namespace drench::game {

/// How far a figure's nozzle reaches from the middle of its body, world units. All else stays
/// within half a body across, 25, and a little more at its corners.
constexpr float nozzleReach = 48.0f;

/// Adds the figure of a player: 150 high as its body, standing on its feet, 75 below its position,
/// or with its legs drawn up in the air. Nothing for a soaked one.
void addFigure(Solids& solids, const FigurePose& pose);

/// Where the water leaves the figure's gun.
glm::vec3 nozzleOf(const FigurePose& pose);

} // namespace drench::game
