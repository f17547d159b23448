#pragma once

#include "game/Scene.h"
#include "game/Walking.h"

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

namespace drench::game {

/// How one's own gun moves in the picture.
class GunMotion {
  public:
    /// The gun after `seconds` more: it lags behind turns, bobs with steps and kicks while it
    /// fires.
    /// @param isCalm  less motion: no bob, no lag, and a kick of a third
    OwnGun advance(float seconds, glm::vec3 direction, const Walking& walking, bool shooting,
                   bool isCalm);

  private:
    glm::vec3 direction_{0.0f};
    glm::vec2 lag_{0.0f};
    float kick_ = 0.0f;
    float fired_ = 0.0f;
};

} // namespace drench::game
