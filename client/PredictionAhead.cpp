#include "client/PredictionAhead.h"

#include <algorithm>
#include <cmath>

namespace drench::client {

namespace {

/// Ticks that are predicted ahead at most; longer lines are shown late.
constexpr int mostTicksAhead = 64;

int tickOf(double ticks) {
    return static_cast<int>(std::clamp(std::ceil(ticks), 1.0, double{mostTicksAhead}));
}

/// The first record, from `next` on, that acts after tick `tick`.
std::uint64_t firstAfter(std::uint64_t next, const SentRecords& records, const ArrivalLine& line,
                         int tick) {
    while (next < records.end() && line.actsAfter(records[next].sentAt) <= tick)
        ++next;
    return next;
}

} // namespace

/// Plays tick `tick`; records that act later than the last one that is predicted act in that.
void PredictionAhead::State::play(const SentRecords& records, const ArrivalLine& line, int tick,
                                  bool isLast) {
    const std::uint64_t end = isLast ? records.end() : firstAfter(next, records, line, tick);
    for (; next < end; ++next)
        records[next].actOn(player);
    player.update(0.0f);
}

void PredictionAhead::follow(const Hypothesis& explained, const SentRecords& records,
                             const ArrivalLine& line, Milliseconds now) {
    keepWhatIsRight(explained, records, line);
    if (states_.empty())
        states_.push_back({explained.player, explained.next});
    const int acting = tickOf(line.actsAfter(now));
    for (int tick = static_cast<int>(states_.size()); tick < acting; ++tick) {
        State state = states_.back();
        state.play(records, line, tick, false);
        states_.push_back(state);
    }
}

/// Forgets the states before the explained one, and all from the first on that is not what would be
/// played now: something else was explained, or other records act.
void PredictionAhead::keepWhatIsRight(const Hypothesis& explained, const SentRecords& records,
                                      const ArrivalLine& line) {
    const auto isExplained = [&](const State& state) {
        return state.next == explained.next && sameFuture(state.player, explained.player);
    };
    states_.erase(states_.begin(), std::find_if(states_.begin(), states_.end(), isExplained));
    for (std::size_t tick = 1; tick < states_.size(); ++tick) {
        if (firstAfter(states_[tick - 1].next, records, line, static_cast<int>(tick)) !=
            states_[tick].next)
            states_.resize(tick, states_.front());
    }
}

PredictionAhead::Moment PredictionAhead::at(const SentRecords& records, const ArrivalLine& line,
                                            Milliseconds now) const {
    const int acting = tickOf(line.actsAfter(now));
    const double drawn = line.ticksSince(now + line.delay());
    const int shown = tickOf(drawn);
    const int played = static_cast<int>(states_.size()) - 1;
    State state = states_.front();
    Moment moment = {state.player, acting, state.player.position, drawn};
    for (int tick = 1; tick <= std::max(acting, shown); ++tick) {
        const vec3 before = state.player.position;
        if (tick < acting && tick <= played)
            state = states_[static_cast<std::size_t>(tick)];
        else
            state.play(records, line, tick, tick >= acting);
        if (tick == acting)
            moment.player = state.player;
        if (tick == shown) {
            // Below 0 where a record sent now may still act in a tick that a snapshot shows
            // already: the room's ticks are late by a little.
            const double share = std::clamp(drawn - (shown - 1), -1.0, 1.0);
            moment.eye = before + (state.player.position - before) * static_cast<float>(share);
            moment.drawnTick = shown - 1 + share;
        }
    }
    return moment;
}

} // namespace drench::client
