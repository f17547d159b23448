#pragma once

#include "bots/View.h"
#include "src/Player.h"
#include "src/Vector.h"

namespace drench::bots {

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
