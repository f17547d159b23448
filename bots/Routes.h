#pragma once

#include "bots/Roadmap.h"

#include <functional>
#include <limits>
#include <vector>

namespace drench::bots {

constexpr double anyTime = std::numeric_limits<double>::infinity();

/// For each place the ticks of the quickest way to it from `start`; anyTime where there is none,
/// and where it would take longer than `longest`.
std::vector<double> ticksFrom(const Roadmap& roadmap, int start, double longest);

/// Places in the order of walking, the first is `from`, the last `to`; empty when there is no way.
/// The quickest by Road::ticks plus what `toll` adds for a place. Tolls below 0 count as 0.
std::vector<int> quickestRoute(const Roadmap& roadmap, int from, int to,
                               const std::function<double(int place)>& toll = {});

} // namespace drench::bots
