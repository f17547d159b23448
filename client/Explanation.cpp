#include "client/Explanation.h"

#include "client/ExplanationTurns.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace drench::client {

namespace {

/// The price of taking a record for lost, in the units of Hypothesis::cost: about as improbable as
/// three standard deviations.
constexpr double priceOfLoss = 4.5;

/// Hypotheses kept between the ticks of one search.
constexpr std::size_t mostBetweenTicks = 256;

class Search {
  public:
    Search(const SentRecords& records, const PlayerUpdate& seen, const TickTimes& times,
           const SearchLimits& limits, int& budget)
        : records_(records), seen_(seen), times_(times), limits_(limits), budget_(budget) {}

    std::vector<Hypothesis> run(const Hypothesis& start) {
        // First find the views that turn the player as seen.
        foundTurns_ = findTurns(start, records_, seen_, times_, limits_, budget_);

        // Then split those views, and the keys between them, over the ticks.
        for (turns_ = foundTurns_.begin(); turns_ != foundTurns_.end(); ++turns_) {
            std::vector<Hypothesis> states = {start};
            for (tick_ = 1; tick_ <= times_.count && !states.empty(); ++tick_) {
                std::vector<Hypothesis> after;
                for (Hypothesis& state : states)
                    playTick(std::move(state), after);
                states = std::move(after);
            }
            for (Hypothesis& state : states) {
                state.tick += times_.count;
                state.ticks = times_.count;
                state.cost += times_.cost;
                merge(explained_, std::move(state));
            }
        }
        return std::move(explained_);
    }

  private:
    bool isSpent(int effort) { return (budget_ -= effort) < 0; }

    /// Plays tick `tick_`: lets records act, in order, then moves. Each number of records that can
    /// have acted gives one state.
    void playTick(Hypothesis&& first, std::vector<Hypothesis>& after) {
        std::vector<Hypothesis> withoutKeys;
        playRecords(std::move(first), &withoutKeys, after);
        for (Hypothesis& without : withoutKeys)
            playRecords(std::move(without), nullptr, after);
    }

    /// The same without losses of keys; where one can be lost, `withoutKeys` gets the state behind
    /// it.
    void playRecords(Hypothesis&& state, std::vector<Hypothesis>* withoutKeys,
                     std::vector<Hypothesis>& after) {
        for (;;) {
            while (state.next < records_.end() && records_[state.next].changesNothing(state.player))
                ++state.next;
            if (state.next == records_.end())
                break;
            const SentRecord& record = records_[state.next];
            if (record.isView) {
                if (state.next >= turns_->end)
                    break;
                if (std::binary_search(turns_->lost.begin(), turns_->lost.end(), state.next)) {
                    lose(state);
                    continue;
                }
            }
            const Milliseconds misfit = times_.misfit(record, tick_);
            if (-misfit > limits_.early)
                break;
            if (misfit > limits_.overdue && tick_ == 1) {
                lose(state);
                continue;
            }
            if (canWait(record))
                endTick(state, after);
            if (!record.isView && withoutKeys) {
                withoutKeys->push_back(state);
                lose(withoutKeys->back());
            }
            if (isSpent(turnEffort))
                return;
            record.actOn(state.player);
            state.cost += price(misfit);
            ++state.next;
        }
        endTick(state, after);
    }

    /// Whether a record may also act in a later tick than this.
    bool canWait(const SentRecord& record) const {
        return tick_ == times_.count || times_.misfit(record, tick_ + 1) <= limits_.late;
    }

    static void lose(Hypothesis& state) {
        state.lost.push_back(state.next);
        state.cost += priceOfLoss;
        ++state.next;
    }

    /// A record that is very late was held up on its way, which is about as improbable as a loss.
    double price(Milliseconds misfit) const {
        const double deviations = misfit / times_.spread;
        const double price = deviations * deviations / 2.0;
        return misfit > 0.0 ? std::min(price, priceOfLoss) : price;
    }

    void endTick(const Hypothesis& state, std::vector<Hypothesis>& after) {
        const bool isLast = tick_ == times_.count;
        if (isLast && (state.next < turns_->end || state.player.isShooting() != seen_.shooting ||
                       !hasView(state.player, seen_, limits_.isTolerant)))
            return;
        if (after.size() >= mostBetweenTicks || isSpent(movementEffort))
            return;
        Hypothesis moved = state;
        if (!isLast || times_.lastTickMoves)
            moved.player.update(0.0f);
        if (isLast) {
            if (!hasPosition(moved.player, seen_, limits_.isTolerant))
                return;
            if (limits_.isTolerant)
                takeOver(moved.player, seen_);
        }
        merge(after, std::move(moved));
    }

    const SentRecords& records_;
    const PlayerUpdate& seen_;
    const TickTimes& times_;
    const SearchLimits& limits_;
    int& budget_;

    std::vector<Turns> foundTurns_;
    std::vector<Turns>::const_iterator turns_;
    int tick_ = 0;
    std::vector<Hypothesis> explained_;
};

} // namespace

std::vector<Hypothesis> explain(const Hypothesis& hypothesis, const SentRecords& records,
                                const PlayerUpdate& seen, const TickTimes& times,
                                const SearchLimits& limits, int& budget) {
    return Search(records, seen, times, limits, budget).run(hypothesis);
}

} // namespace drench::client
