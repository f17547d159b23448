#pragma once

#include "common/StopSignals.h"

#include <chrono>

namespace drench {

/// How long a run has gone on, and whether it still does.
class Timekeeper {
  public:
    using Clock = std::chrono::steady_clock;

    /// Starts now. @param seconds  how long the run is; 0 is until somebody asks to stop
    explicit Timekeeper(double seconds)
        : end_(seconds > 0.0 ? start_ + std::chrono::duration_cast<Clock::duration>(
                                            std::chrono::duration<double>(seconds))
                             : Clock::time_point::max()) {}

    /// Whether the time is not over and nobody has asked to stop.
    bool goesOn() const { return stopAsked == 0 && Clock::now() < end_; }

    Clock::time_point end() const { return end_; }

    /// Seconds since the start.
    double elapsed() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

  private:
    Clock::time_point start_ = Clock::now();
    Clock::time_point end_;
};

} // namespace drench
