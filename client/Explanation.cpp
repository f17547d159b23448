#include "client/Explanation.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <utility>

namespace drench::client {

namespace {

/// The price of taking a record for lost, in the units of Hypothesis::cost: about as improbable as
/// three standard deviations.
constexpr double priceOfLoss = 4.5;

/// Hypotheses kept between the ticks of one search.
constexpr std::size_t mostBetweenTicks = 256;

template<typename T>
bool sameBits(const T& a, const T& b) {
    using Bytes = std::array<std::byte, sizeof(T)>;
    return std::bit_cast<Bytes>(a) == std::bit_cast<Bytes>(b);
}

/// Whether two players of one hypothesis have the same future.
bool sameFuture(const Player& a, const Player& b) {
    return sameBits(a.position, b.position) && sameBits(a.look, b.look) &&
           sameBits(a.direction, b.direction) && sameBits(a.strafeVector, b.strafeVector) &&
           sameBits(a.rotation, b.rotation) && sameBits(a.verticalSpeed, b.verticalSpeed) &&
           sameBits(a.box.min, b.box.min) && sameBits(a.box.max, b.box.max) &&
           sameBits(a.keys, b.keys) && a.inAir == b.inAir && a.dead == b.dead;
}

bool isClose(const vec3& a, const vec3& b, float distance) {
    const vec3 apart = a - b;
    return std::abs(apart.x) <= distance && std::abs(apart.y) <= distance &&
           std::abs(apart.z) <= distance;
}

bool isClose(const quat& a, const quat& b) {
    return isClose(vec3(a.x, a.y, a.z), vec3(b.x, b.y, b.z), closeView) &&
           std::abs(a.w - b.w) <= closeView;
}

bool hasView(const Player& player, const PlayerUpdate& seen, bool isTolerant) {
    if (!isTolerant)
        return sameBits(player.direction, seen.direction) &&
               sameBits(player.rotation, seen.rotation);
    return isClose(player.direction, seen.direction, closeView) &&
           isClose(player.rotation, seen.rotation);
}

bool hasPosition(const Player& player, const PlayerUpdate& seen, bool isTolerant) {
    return isTolerant ? isClose(player.position, seen.position, closePosition)
                      : sameBits(player.position, seen.position);
}

/// Gives a player that is close to what was seen exactly that, so that errors do not add up.
void takeOver(Player& player, const PlayerUpdate& seen) {
    if (!sameBits(player.position, seen.position)) {
        player.look += seen.position - player.position;
        player.position = seen.position;
        player.box = Box(seen.position, Player::bodySize);
    }
    if (!sameBits(player.direction, seen.direction)) {
        player.direction = seen.direction;
        player.look = player.position + player.direction;
    }
    player.rotation = seen.rotation;
}

/// The views of a search that turn the player as seen.
struct Turns {
    /// One beyond the last view that acts; the hypothesis' `next` if none does.
    std::uint64_t end;

    /// Views before `end` that are lost.
    std::vector<std::uint64_t> lost;
};

/// A way through the views of a search.
struct Path {
    Player player;

    /// The next record.
    std::uint64_t number;

    /// One beyond the last view that acted.
    std::uint64_t end;
    int lostViews;
    std::vector<std::uint64_t> lost;
};

class Search {
  public:
    Search(const SentRecords& records, const PlayerUpdate& seen, const TickTimes& times,
           const SearchLimits& limits, int& budget)
        : records_(records), seen_(seen), times_(times), limits_(limits), budget_(budget) {}

    std::vector<Hypothesis> run(const Hypothesis& start) {
        // First find the views that turn the player as seen, without moving it. Movement changes
        // turns only in their last bits, so this is exact when no tick was missed, and else as good
        // as close.
        findTurns(start);

        // Then split those views, and the keys between them, over the ticks.
        for (turns_ = turns_found_.begin(); turns_ != turns_found_.end(); ++turns_) {
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
    bool isSpent() { return --budget_ < 0; }

    /// Movement between turns changes their last bits.
    bool hasTurned(const Player& player) const {
        return hasView(player, seen_, limits_.isTolerant || times_.count > 1);
    }

    /// Follows the views from the start's next record on, each acting or lost, depth first, and
    /// notes where the player sees what was seen.
    void findTurns(const Hypothesis& start) {
        std::vector<Path> paths = {{start.player, start.next, start.next, 0, {}}};
        while (!paths.empty()) {
            Path path = std::move(paths.back());
            paths.pop_back();
            // No end behind a lost view, since it may still be on its way; but a key behind it may
            // act only if it is lost.
            const bool isEnd = path.number == path.end || isKey(path.number);
            if (isEnd && hasTurned(path.player))
                turns_found_.push_back({path.number, path.lost});
            while (isKey(path.number))
                ++path.number;
            if (path.number == records_.end() ||
                -times_.misfit(records_[path.number], times_.count) > limits_.early || isSpent())
                continue;
            const SentRecord& view = records_[path.number++];
            const Milliseconds late = times_.misfit(view, 1);
            const bool isOverdue = late > limits_.overdue;
            if (isOverdue || path.lostViews < limits_.lostViews) {
                paths.push_back(path);
                paths.back().lost.push_back(path.number - 1);
                paths.back().lostViews += isOverdue ? 0 : 1;
            }
            if (late <= limits_.late) {
                view.actOn(path.player);
                path.end = path.number;
                paths.push_back(std::move(path));
            }
        }
    }

    bool isKey(std::uint64_t number) const {
        return number < records_.end() && !records_[number].isView;
    }

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
            if (isSpent())
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
        if (after.size() >= mostBetweenTicks || isSpent())
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

    std::vector<Turns> turns_found_;
    std::vector<Turns>::const_iterator turns_;
    int tick_ = 0;
    std::vector<Hypothesis> explained_;
};

} // namespace

bool SentRecord::changesNothing(const Player& player) const {
    return !isView && key != keyIndex::jump && player.keys[key] == isDown;
}

void SentRecord::actOn(Player& player) const {
    if (isView)
        player.rotateView(dx, dy);
    else
        player.setKey(key, isDown);
}

void SentRecords::forgetBefore(std::uint64_t number) {
    while (first_ < number && !records_.empty()) {
        records_.pop_front();
        ++first_;
    }
}

const SentRecord& SentRecords::operator[](std::uint64_t number) const {
    return records_[static_cast<std::size_t>(number - first_)];
}

Milliseconds TickTimes::misfit(const SentRecord& record, int tick) const {
    const Milliseconds expected = record.sentAt + delay;
    const Milliseconds dueThen = due - (count - tick) * period;
    // A late snapshot may show a late tick, in which more had arrived.
    const Milliseconds latest = tick == count ? std::max(due, arrival) : dueThen;
    if (expected > latest)
        return latest - expected;
    return std::max(0.0, dueThen - period - expected);
}

std::vector<Hypothesis> explain(const Hypothesis& hypothesis, const SentRecords& records,
                                const PlayerUpdate& seen, const TickTimes& times,
                                const SearchLimits& limits, int& budget) {
    return Search(records, seen, times, limits, budget).run(hypothesis);
}

void merge(std::vector<Hypothesis>& hypotheses, Hypothesis&& hypothesis) {
    for (Hypothesis& other : hypotheses) {
        if (other.next == hypothesis.next && sameFuture(other.player, hypothesis.player)) {
            if (hypothesis.cost < other.cost)
                other = std::move(hypothesis);
            return;
        }
    }
    hypotheses.push_back(std::move(hypothesis));
}

bool isSeen(const Player& player, const PlayerUpdate& seen) {
    return hasView(player, seen, false) && hasPosition(player, seen, false);
}

} // namespace drench::client
