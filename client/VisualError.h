#pragma once

#include "client/Clock.h"
#include "src/Vector.h"

#include <algorithm>

namespace drench::client {

/// The distance from where a thing should be drawn to where it was drawn a moment ago. It fades, so
/// that a correction shows as a glide and never as a jump.
class VisualError {
  public:
    /// Milliseconds until a correction has faded, at any frame rate.
    static constexpr double fadesIn = 100.0;

    /// Adds a correction, in world units: where the thing was drawn minus where it should be.
    void add(vec3 correction, Time now) {
        error_ = at(now) + correction;
        since_ = now;
    }

    void clear() { error_ = vec3(); }

    /// What is left at `now`, to be added to where the thing should be.
    vec3 at(Time now) const {
        const double age = std::chrono::duration<double, std::milli>(now - since_).count();
        return error_ * static_cast<float>(std::clamp(1.0 - age / fadesIn, 0.0, 1.0));
    }

  private:
    vec3 error_;
    Time since_;
};

} // namespace drench::client
