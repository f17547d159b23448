#pragma once

#include "bots/Steps.h"
#include "bots/View.h"
#include "src/Player.h"
#include "src/Vector.h"

namespace drench::bots {

/// The keys that move along a heading under a view direction, the nearest of the eight; no keys for
/// a zero heading. `direction` is the view as it will be when the keys act.
void pressForHeading(Controls& controls, vec3 heading, vec3 direction);

/// Takes steps and does nothing else: turns the view to the heading and levels it, and goes by
/// whichever keys suit the view until it is there. `direction` as for pressForHeading.
Controls legsOnly(const Steps& steps, vec3 direction);

/// Fingers on the four keys that walk. They stay on keys that lead nearly where they should rather
/// than flicker between two directions.
class Legs {
  public:
    /// Holds in `controls` the keys that lead along `heading`, or none for a zero heading, in a
    /// view as it will be when they act.
    void press(Controls& controls, vec3 heading, View view);

  private:
    bool going_ = false;

    /// The direction of the keys held, counts to the right of the view.
    double held_ = 0.0;
};

} // namespace drench::bots
