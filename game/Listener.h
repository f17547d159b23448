#pragma once

#include "src/Vector.h"

namespace drench::game {

/// The ears: where they are, and where the eyes between them look. World units, y up.
struct Listener {
    vec3 place;
    vec3 direction{0.0f, 0.0f, 1.0f};
};

/// Where something lies for a listener, seen from above.
struct Bearing {
    /// World units, as the bird flies, heights included.
    float distance = 0.0f;

    /// Components of the level unit vector that leads there; both 0 right above or below.
    float right = 0.0f;
    float ahead = 0.0f;
};

/// A listener that looks straight up or down has everything ahead.
Bearing bearingOf(const Listener& listener, vec3 place);

} // namespace drench::game
