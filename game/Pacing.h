#pragma once

#include "client/Clock.h"

namespace drench::game {

/// When frames begin: at even distances by the clock, since a screen's own pace may be missing or
/// broken.
class Pacing {
  public:
    using Time = client::Time;

    /// Frames a second of a window that nobody looks at.
    static constexpr double restingRate = 5.0;

    /// @param framesPerSecond  above 0
    explicit Pacing(double framesPerSecond) : framesPerSecond_(framesPerSecond) {}

    /// Whether nobody looks: hidden or minimised.
    void rest(bool resting) { resting_ = resting; }

    /// The moment at which the next frame begins; long ago before the first.
    Time due() const { return due_; }

    /// A frame begins now. After one that is late by a whole frame the next is due at once, and no
    /// further ones are made up for.
    void begin(Time now);

  private:
    double framesPerSecond_;
    bool resting_ = false;
    Time due_{};
};

/// Sleeps until `until`, a datagram waits in the socket, or a signal comes; not at all if that is
/// past. A negative descriptor is no socket.
void sleepOnSocket(int descriptor, client::Time now, client::Time until);

} // namespace drench::game
