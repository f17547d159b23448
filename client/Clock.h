#pragma once

#include <chrono>

namespace drench::client {

/// The caller passes in every moment, so a test or a replay can be its own clock.
using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;

} // namespace drench::client
