#pragma once

#include "client/ArrivalLine.h"
#include "client/Hypothesis.h"
#include "src/Messages.h"

#include <span>
#include <vector>

// How a snapshot follows from the one before: the numbers of ticks between the two, tried from the
// likeliest to the boldest.

namespace drench::client {

/// One's own player in a snapshot, and what is known when it comes.
struct Evidence {
    const PlayerUpdate& seen;
    const SentRecords& records;
    const ArrivalLine& line;
    Milliseconds arrival = 0.0;

    /// Milliseconds from tick to tick.
    Milliseconds period = 0.0;
};

/// Missed ticks that a search spans; beyond, the prediction starts anew.
constexpr int mostTicks = 24;

/// The number of ticks since the last snapshot is uncertain by this many, since snapshots jitter.
constexpr int tickUncertainty = 2;

/// The times of the snapshot that comes `ticks` after the newest.
TickTimes timesAfter(const Evidence& evidence, int ticks);

/// The number of ticks since the newest snapshot, at least 1, as the arrival tells.
int likelyTicks(const Evidence& evidence);

/// A number of ticks, and the hypotheses from which it may lead to what is seen.
struct Departure {
    TickTimes times;
    std::span<const Hypothesis> from;
};

/// All that leads to what is seen from one of the departures, under limits from the likeliest to
/// the boldest; the first limits that find something end the search.
/// @param budget  the effort that may be made, lessened by that which was
std::vector<Hypothesis> search(const Evidence& evidence, const std::vector<Departure>& departures,
                               bool isTolerant, int& budget);

/// The same to the bit, within a budget, in about as many ticks as likely; else in fewer, as after
/// a stall.
/// @param mayHaveSatOut  whether the player may have sat out the last tick
std::vector<Hypothesis> continueExactly(const std::vector<Hypothesis>& hypotheses,
                                        const Evidence& evidence, bool mayHaveSatOut);

/// The same within closePosition and closeView, and within a budget.
std::vector<Hypothesis> continueClosely(const std::vector<Hypothesis>& hypotheses,
                                        const Evidence& evidence, bool mayHaveSatOut);

} // namespace drench::client
