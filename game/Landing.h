#pragma once

#include "arena/Rays.h"
#include "src/MapManager.h"

#include <glm/vec3.hpp>
#include <optional>
#include <span>

namespace drench::game {

/// Whoever water can leave or hit.
struct WetBody {
    char id = 0;

    /// The middle of the body.
    glm::vec3 position{0.0f};
};

/// Where a shot of water ends.
struct Landing {
    glm::vec3 place{0.0f};
    bool onBody = false;

    /// The normal of the face that is met.
    int axis = 1;
    int side = 1;
};

/// Where a shot lands: where the room's march meets a cube, or at the first body before that.
/// Nothing for a shot into the open sky, which soaks nobody.
/// @param direction  the view: the room marches in steps of it
std::optional<Landing> landingOf(const MapManager& map, const WetBody& shooter, glm::vec3 direction,
                                 std::span<const WetBody> bodies);

} // namespace drench::game
