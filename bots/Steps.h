#pragma once

#include "src/Vector.h"

namespace drench::bots {

/// Which way to go and whether to jump: what a Walker or Footwork wants of the legs. The nearest of
/// the eight directions that keys give will do, whatever the view, unless that is steeper than 40
/// degrees.
struct Steps {
    /// Horizontal unit vector, or zero to stand still.
    vec3 heading;
    bool jump = false;
};

} // namespace drench::bots
