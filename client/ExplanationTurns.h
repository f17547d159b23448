#pragma once

#include "client/Hypothesis.h"

#include <cstdint>
#include <vector>

namespace drench::client {

/// Views of a search that turn the player as seen.
struct Turns {
    /// One beyond the last view that acts; the hypothesis' `next` if none does.
    std::uint64_t end = 0;

    /// Views before `end` that are lost.
    std::vector<std::uint64_t> lost;
};

/// All the choices of views, within the limits, that turn the player as seen if it does not move
/// meanwhile. Movement changes turns only in their last bits, so this is to the bit when no tick
/// was missed, and else within closeView. Takes from `budget` as explain() does.
std::vector<Turns> findTurns(const Hypothesis& hypothesis, const SentRecords& records,
                             const PlayerUpdate& seen, const TickTimes& times,
                             const SearchLimits& limits, int& budget);

} // namespace drench::client
