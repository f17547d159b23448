#pragma once

#include "client/Hypothesis.h"

#include <vector>

// Which of our records had acted when the room made a snapshot? Snapshots do not say, but movement
// and turning are deterministic to the bit: only the right records in the right ticks lead to the
// bits seen.

namespace drench::client {

/// All the ways, within the limits, that lead from `hypothesis` to the state seen `times.count`
/// ticks later, equal ones merged. In a tolerant search the players then take over what was seen.
/// Each step takes its effort from `budget`; at 0 the search ends with what it has.
std::vector<Hypothesis> explain(const Hypothesis& hypothesis, const SentRecords& records,
                                const PlayerUpdate& seen, const TickTimes& times,
                                const SearchLimits& limits, int& budget);

} // namespace drench::client
