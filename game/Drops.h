#pragma once

#include "arena/Rays.h"
#include "common/Chance.h"
#include "game/Scene.h"

#include <vector>

namespace drench::game {

/// Drops of water in flight. They fall, bounce off cubes or end on them, and are gone after about a
/// second.
class Drops {
  public:
    /// Drops in flight at any time; further ones are not begun.
    static constexpr std::size_t most = 420;

    /// Begins `count` drops around a place, with velocities around one.
    /// @param spread  the deviation of each drop's velocity along each axis
    void begin(Chance& chance, int count, glm::vec3 place, glm::vec3 velocity, float spread,
               float largest);

    void advance(const arena::Grid& grid, Chance& chance, float seconds);

    const std::vector<Drop>& inFlight() const { return drops_; }

  private:
    std::vector<Drop> drops_;
};

} // namespace drench::game
