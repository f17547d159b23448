#pragma once

#include "client/Clock.h"

#include <algorithm>
#include <span>

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

    /// Frames a second at most where nothing moves that anybody steers: menus, the background.
    static constexpr double calmRate = 20.0;

    static constexpr std::chrono::milliseconds leastCalmWait{15};

    /// Changes the rate; above 0.
    void setRate(double framesPerSecond) { framesPerSecond_ = framesPerSecond; }

    /// Frames a second, when somebody looks.
    double rate() const { return calm_ ? std::min(framesPerSecond_, calmRate) : framesPerSecond_; }

    /// Whether nothing moves that anybody steers.
    void calm(bool calm) { calm_ = calm; }

    /// Whether nobody looks: hidden or minimised.
    void rest(bool resting) { resting_ = resting; }

    /// The moment at which the next frame begins; long ago before the first.
    Time due() const { return due_; }

    /// When to stop waiting for it. However slow calm frames are, some time is left to others.
    Time waitEnd(Time now) const { return calm_ ? std::max(due_, now + leastCalmWait) : due_; }

    /// A frame begins now. After one that is late by a whole frame the next is due at once, and no
    /// further ones are made up for.
    void begin(Time now);

  private:
    double framesPerSecond_;
    bool calm_ = false;
    bool resting_ = false;
    Time due_{};
};

/// Sleeps until `until`, a datagram waits in one of the sockets, or a signal comes; not at all if
/// that is past.
void sleepOnSockets(std::span<const int> descriptors, client::Time now, client::Time until);

} // namespace drench::game
