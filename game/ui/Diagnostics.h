#pragma once

#include "game/FrameTimes.h"
#include "game/ui/Theme.h"

#include <cstdint>
#include <optional>

namespace drench::game {

/// What the window knows of itself and of the line. Times are milliseconds, shares 0 to 1; nothing
/// where it is unknown.
struct DiagnosticsView {
    const FrameTimes* frames = nullptr;

    /// The time that a frame may take at the wanted rate.
    double frameBudget = 1000.0 / 60.0;

    std::optional<std::int64_t> tick;
    std::optional<double> period;
    std::optional<double> jitter;
    std::optional<double> roundTrip;
    std::optional<double> lossShare;
    std::optional<double> missedShare;
    std::optional<double> explainedShare;
    std::optional<std::uint64_t> breaks;
    std::optional<std::uint64_t> hypotheses;
};

void drawDiagnostics(const Theme& theme, const DiagnosticsView& view);

} // namespace drench::game
