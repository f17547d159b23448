#pragma once

#include "bots/Roadmap.h"
#include "bots/Steps.h"
#include "common/Chance.h"

namespace drench::bots {

/// Steps in a fight: aside to left and right by turns of random length, nearer or away to keep the
/// distance, a jump now and then, and never over an edge.
class Footwork {
  public:
    explicit Footwork(Chance chance);

    /// The next steps of a body at `position` that faces an enemy; once for each snapshot.
    /// @param grounded  whether the body stands on something
    Steps step(const Roadmap& roadmap, vec3 position, vec3 enemy, bool grounded);

  private:
    Chance chance_;

    /// The preferred distance of this fighter, world units.
    float range_;

    /// The side of the present turn, and its remaining ticks.
    float side_ = 1.0f;
    double ticksLeft_ = 0.0;
    bool jumps_ = false;
};

/// Whether a body can go that way for a step or two: no wall in front, and no drop deeper than one
/// cube.
bool isSafe(const Roadmap& roadmap, vec3 position, vec3 heading);

} // namespace drench::bots
