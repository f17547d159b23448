#include "client/PredictionSearch.h"

#include "client/Explanation.h"

#include <algorithm>
#include <utility>

namespace drench::client {

namespace {

/// The effort for one snapshot at most, together less than a millisecond: for the likely numbers of
/// ticks, for fewer, and for what is only close.
constexpr int likelyBudget = 11'000;
constexpr int stallBudget = 4000;
constexpr int closeBudget = 3000;

/// The cost of a gap between two snapshots, and of each tick in it, in the units of
/// Hypothesis::cost.
constexpr double priceOfGap = 3.0;
constexpr double priceOfMissedTick = 0.5;

/// The cost of a snapshot later than jitter explains: the room was late.
constexpr double priceOfStall = 7.0;

/// Numbers of ticks that cost this much more than the likeliest are left to bold searches.
constexpr double mostTickCost = 12.0;

/// The misfit that bold searches allow, in milliseconds.
constexpr Milliseconds wideMisfit = 250.0;

/// A busy machine on the way holds records up for this long now and then, in milliseconds.
constexpr Milliseconds longestHold = 20.0;

/// The limits of searches, from the likeliest to the boldest. Where a loss and a record that was
/// held up explain a snapshot alike, as among views with equal counts, both are kept.
std::vector<SearchLimits> limitsFromLikeliest(Milliseconds spread, bool isTolerant) {
    const Milliseconds tight = spread + 1.0;
    const Milliseconds narrow = 3.0 * spread + 2.0;
    const Milliseconds heldUp = std::max(narrow, longestHold);
    // Among views with equal sums, a tolerant search finds whatever it is allowed to lose.
    if (isTolerant)
        return {{0, narrow, narrow, narrow, true}, {2, narrow, narrow, narrow, true}};
    const auto exact = [&](int lostViews, Milliseconds early, Milliseconds late) {
        return SearchLimits{lostViews, early, late, std::max(late, heldUp), false};
    };
    return {exact(0, tight, tight),           exact(0, narrow, narrow),
            exact(1, tight, heldUp),          exact(1, narrow, heldUp),
            exact(2, narrow, heldUp),         exact(4, narrow, heldUp),
            exact(0, wideMisfit, wideMisfit), exact(4, wideMisfit, wideMisfit)};
}

/// The cost of a snapshot `late` milliseconds after it was due, or before if negative.
double costOfArrival(Milliseconds late, Milliseconds spread) {
    const double deviations = late / spread;
    const double cost = deviations * deviations / 2.0;
    return late < 0.0 ? cost : std::min(cost, priceOfStall);
}

/// Ticks since the newest snapshot was due, as the arrival tells.
double ticksSince(const Evidence& evidence) {
    const ArrivalLine& line = evidence.line;
    return line.hasArrivals() ? (evidence.arrival - line.lateness() - line.due()) / evidence.period
                              : 1.0;
}

/// About as many ticks as likely.
std::vector<Departure> likelyDepartures(const std::vector<Hypothesis>& hypotheses,
                                        const Evidence& evidence, bool mayHaveSatOut) {
    const int likely = likelyTicks(evidence);
    std::vector<Departure> departures;
    for (int ticks = std::max(1, likely - tickUncertainty); ticks <= likely + tickUncertainty;
         ++ticks)
        departures.push_back({timesAfter(evidence, ticks), hypotheses});
    if (mayHaveSatOut) {
        departures.push_back({timesAfter(evidence, likely), hypotheses});
        departures.back().times.lastTickMoves = false;
    }
    return departures;
}

} // namespace

int likelyTicks(const Evidence& evidence) {
    return static_cast<int>(std::clamp(ticksSince(evidence) + 0.5, 1.0, 1e6));
}

TickTimes timesAfter(const Evidence& evidence, int ticks) {
    const ArrivalLine& line = evidence.line;
    TickTimes times;
    times.count = ticks;
    times.due = line.hasArrivals()
                    ? std::min(evidence.arrival, line.due() + ticks * evidence.period)
                    : evidence.arrival;
    times.arrival = evidence.arrival;
    times.period = evidence.period;
    times.delay = line.delay();
    times.spread = line.spread();
    times.cost =
        costOfArrival((ticksSince(evidence) - ticks) * evidence.period, line.latenessSpread()) +
        (ticks > 1 ? priceOfGap + priceOfMissedTick * (ticks - 1) : 0.0);
    return times;
}

std::vector<Hypothesis> search(const Evidence& evidence, const std::vector<Departure>& departures,
                               bool isTolerant, int& budget) {
    double leastCost = departures.front().times.cost;
    for (const Departure& departure : departures)
        leastCost = std::min(leastCost, departure.times.cost);
    for (const SearchLimits& limits : limitsFromLikeliest(evidence.line.spread(), isTolerant)) {
        std::vector<Hypothesis> found;
        int share = budget / 2;
        budget -= share;
        for (const Departure& departure : departures) {
            if (limits.early < wideMisfit && departure.times.cost > leastCost + mostTickCost)
                continue;
            for (const Hypothesis& hypothesis : departure.from) {
                for (Hypothesis& next : explain(hypothesis, evidence.records, evidence.seen,
                                                departure.times, limits, share))
                    merge(found, std::move(next));
            }
        }
        budget += std::max(share, 0);
        if (!found.empty())
            return found;
    }
    return {};
}

std::vector<Hypothesis> continueExactly(const std::vector<Hypothesis>& hypotheses,
                                        const Evidence& evidence, bool mayHaveSatOut) {
    const int likely = likelyTicks(evidence);
    if (likely > mostTicks)
        return {};
    int budget = likelyBudget;
    std::vector<Hypothesis> found =
        search(evidence, likelyDepartures(hypotheses, evidence, mayHaveSatOut), false, budget);
    if (!found.empty() || likely <= tickUncertainty + 1)
        return found;
    // Perhaps the room or the line was held up.
    std::vector<Departure> fewer;
    for (int ticks = likely - tickUncertainty - 1; ticks >= 1; --ticks)
        fewer.push_back({timesAfter(evidence, ticks), hypotheses});
    budget = stallBudget;
    return search(evidence, fewer, false, budget);
}

std::vector<Hypothesis> continueClosely(const std::vector<Hypothesis>& hypotheses,
                                        const Evidence& evidence, bool mayHaveSatOut) {
    if (likelyTicks(evidence) > mostTicks)
        return {};
    int budget = closeBudget;
    return search(evidence, likelyDepartures(hypotheses, evidence, mayHaveSatOut), true, budget);
}

} // namespace drench::client
