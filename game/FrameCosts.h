#pragma once

#include "common/GapHistogram.h"

#include <chrono>
#include <optional>

namespace drench::game {

/// What frames have cost since the window opened.
struct FrameCosts {
    /// From the first event of a frame to its last pixel.
    GapHistogram times;

    /// Processor time of the frame's own thread up to the last draw call: all but what the driver
    /// does with its own threads, and bringing the picture to the screen.
    GapHistogram processor;

    /// In one frame.
    int mostDrawCalls = 0;

    /// When the first frame had been shown.
    std::optional<std::chrono::steady_clock::time_point> first;
};

/// Processor time of the calling thread so far.
std::chrono::nanoseconds threadProcessorTime();

} // namespace drench::game
