#pragma once

#include "bots/Steps.h"
#include "bots/View.h"
#include "src/Player.h"
#include "src/Vector.h"

namespace drench::bots {

/// Presses the keys that move nearest to a heading under a view direction, one of eight ways; no
/// keys for a zero heading. `direction` is the view at the time when the keys act.
void pressForHeading(Controls& controls, vec3 heading, vec3 direction);

/// Controls that follow steps and do nothing else: turn the view level and to the heading, and
/// meanwhile press the keys that suit the view. `direction` as for pressForHeading.
Controls legsOnly(const Steps& steps, vec3 direction);

/// Fingers on the four walking keys. They stay on keys that lead nearly along the heading, and so
/// do not flicker between two ways.
class Legs {
  public:
    /// Holds in `controls` the keys that lead along `heading`, or none for a zero heading. `view`
    /// is the view at the time when the keys act.
    void press(Controls& controls, vec3 heading, View view);

  private:
    bool going_ = false;

    /// The direction of the keys held, counts to the right of the view.
    double held_ = 0.0;
};

} // namespace drench::bots
