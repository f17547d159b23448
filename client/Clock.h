#pragma once

#include <chrono>

namespace drench::client {

/// Every moment is given by the caller, so that a test or a replay can be its own clock.
using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;

} // namespace drench::client
