#pragma once

#include "arena/Rays.h"
#include "game/Scene.h"
#include "game/Walking.h"
#include "src/MapManager.h"
#include "src/Messages.h"

#include <array>
#include <span>
#include <vector>

namespace drench::game {

/// Whether a body stands: a cube is right below its feet.
bool standsOnCube(const MapManager& map, glm::vec3 position);

/// Whether a state can be drawn: a room may send any numbers.
bool isDrawable(const PlayerUpdate& player);

/// From the states of the other players to their figures.
class FigurePoses {
  public:
    /// @param grid  the cubes of the same map
    /// @param players  at most one of each identifier; those who cannot be drawn are left out
    /// @param seconds  since the last call
    void show(const MapManager& map, const arena::Grid& grid, std::span<const PlayerUpdate> players,
              float seconds);

    /// Without names.
    const std::vector<FigurePose>& figures() const { return figures_; }

    /// Where players have been soaked since the last call of show().
    const std::vector<glm::vec3>& soakings() const { return soakings_; }

  private:
    /// What is remembered of a player, by identifier from '1' on.
    struct Known {
        Walking walking;
        glm::vec3 position{0.0f};
        bool isAlive = false;
    };

    std::array<Known, maxPlayers> known_;
    std::vector<FigurePose> figures_;
    std::vector<glm::vec3> soakings_;
};

} // namespace drench::game
