#pragma once

#include "bench/Figures.h"

#include <iosfwd>
#include <string>

namespace drench::bench {

/// Milliseconds. Players hardly notice gaps whose 99th percentile is up to this.
constexpr double longestGapP99 = 20.0;

/// The least share of inputs sent by a load that keeps up.
constexpr double fewestSent = 0.98;

/// Whether the core holds a crowd: in the median of its samples, the 99th percentile of the gaps
/// keeps to the limit and the load keeps up.
bool holds(const std::vector<CrowdSample>& samples);

/// Tables of medians, ratios and their spread.
void printReport(std::ostream& out, const Figures& figures);

/// Everything, the single rounds included.
std::string jsonReport(const Figures& figures);

/// The input of bench/plot.sh, two blocks of columns with a line of names each: processor time by
/// load; gaps by number of rooms.
std::string plotColumns(const Figures& figures);

} // namespace drench::bench
