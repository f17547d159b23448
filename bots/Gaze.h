#pragma once

#include "arena/Rays.h"
#include "bots/View.h"
#include "common/Chance.h"
#include "src/Vector.h"

namespace drench::bots {

/// The view direction while nobody is in sight: ahead, with a glance to a side now and then.
class Gaze {
  public:
    explicit Gaze(Chance chance);

    /// The view from `eye` on a way that goes on along `ahead`; once for each snapshot.
    View next(const arena::Grid& grid, vec3 eye, View ahead);

  private:
    View openView(const arena::Grid& grid, vec3 eye, View ahead);

    Chance chance_;
    double untilGlance_ = 0.0;
    double glanceLeft_ = 0.0;
    View glance_;
};

} // namespace drench::bots
