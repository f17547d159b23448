#pragma once

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

namespace drench::game {

/// The steps of one body, from the places that it has been at.
class Walking {
  public:
    /// The body is here now, `seconds` after the last call.
    void move(glm::vec3 position, float seconds);

    /// Steps taken so far; goes on only while the body moves. Begins anew at 2000.
    float phase() const { return phase_; }

    /// Where it walks, along x and z: of length 0 while it stands, 1 at full speed, gently from one
    /// to the other.
    glm::vec2 way() const { return way_; }

    /// The length of way().
    float stride() const;

  private:
    glm::vec3 last_{0.0f};
    bool hasStarted_ = false;
    float phase_ = 0.0f;
    glm::vec2 way_{0.0f};
};

} // namespace drench::game
