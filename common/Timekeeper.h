#pragma once

#include "common/StopSignals.h"

#include <chrono>

namespace drench {

/// The duration of a run, and whether it goes on.
class Timekeeper {
  public:
    using Clock = std::chrono::steady_clock;

    /// Starts now.
    /// @param seconds  the length of the run; 0 lets it last until a stop is asked for
    explicit Timekeeper(double seconds)
        : end_(seconds > 0.0 ? start_ + std::chrono::duration_cast<Clock::duration>(
                                            std::chrono::duration<double>(seconds))
                             : Clock::time_point::max()) {}

    /// Whether time is left and no stop has been asked for.
    bool goesOn() const { return stopAsked == 0 && Clock::now() < end_; }

    Clock::time_point end() const { return end_; }

    /// Seconds since the start.
    double elapsed() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

  private:
    Clock::time_point start_ = Clock::now();
    Clock::time_point end_;
};

} // namespace drench
