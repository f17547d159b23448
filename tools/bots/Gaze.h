#pragma once

#include "Chance.h"
#include "Scene.h"
#include "Vector.h"
#include "View.h"

namespace bots {

/// Where to look while nobody is in sight: ahead, with a glance to some side now and then.
class Gaze {
  public:
    explicit Gaze(Chance chance);

    /// Where to look from `eye` when the way goes on along `ahead`; once for each snapshot.
    View next(const arena::Scene& scene, vec3 eye, View ahead);

  private:
    View openView(const arena::Scene& scene, vec3 eye, View ahead);

    Chance chance_;
    double untilGlance_ = 0.0;
    double glanceLeft_ = 0.0;
    View glance_;
};

} // namespace bots
