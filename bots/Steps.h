#pragma once

#include "src/Vector.h"

namespace drench::bots {

/// A heading and a jump that a Walker or Footwork asks of the legs. The nearest of the eight
/// directions that keys give is enough, under any view up to 40 degrees of steepness.
struct Steps {
    /// Horizontal unit vector, or zero to stand still.
    vec3 heading;
    bool jump = false;
};

} // namespace drench::bots
