#pragma once

#include "bots/Roadmap.h"

#include <functional>
#include <limits>
#include <vector>

namespace drench::bots {

constexpr double anyTime = std::numeric_limits<double>::infinity();

/// For each place the ticks of the quickest way to it from `start`; anyTime if there is no way, or
/// none within `longest` ticks.
std::vector<double> ticksFrom(const Roadmap& roadmap, int start, double longest);

/// The quickest route by Road::ticks, plus `toll` for each place on it: the places in walking
/// order, from `from` to `to`; empty if there is no way. Tolls below 0 count as 0.
std::vector<int> quickestRoute(const Roadmap& roadmap, int from, int to,
                               const std::function<double(int place)>& toll = {});

} // namespace drench::bots
