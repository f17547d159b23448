#include "client/ExplanationTurns.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace drench::client {

namespace {

/// Mouse counts in a full turn.
constexpr double fullTurn = 2.0 * M_PI * Player::countsPerRadian;

/// The most that sums of counts may differ from those seen: room for rounding and for closeView.
constexpr double sumSlack = 1.0;

/// Counts above or below the horizon: less than where the room begins to refuse turns.
constexpr double steepCounts = 1.4 * Player::countsPerRadian;

double countsToTheLeft(const vec3& direction) {
    return std::atan2(static_cast<double>(direction.x), static_cast<double>(direction.z)) *
           Player::countsPerRadian;
}

double countsUp(const vec3& direction) {
    const double level =
        std::hypot(static_cast<double>(direction.x), static_cast<double>(direction.z));
    return std::atan2(static_cast<double>(direction.y), level) * Player::countsPerRadian;
}

/// A way through the views of a search.
struct Path {
    /// The next record, and one beyond the last view that acted.
    std::uint64_t number = 0;
    std::uint64_t end = 0;

    /// Not counting overdue ones.
    int lostViews = 0;
    std::vector<std::uint64_t> lost;

    /// The sums of counts.
    std::int64_t right = 0;
    std::int64_t down = 0;
};

class TurnSearch {
  public:
    TurnSearch(const Hypothesis& start, const SentRecords& records, const PlayerUpdate& seen,
               const TickTimes& times, const SearchLimits& limits, int& budget)
        : start_(start), records_(records), seen_(seen), times_(times), limits_(limits),
          budget_(budget),
          right_(countsToTheLeft(start.player.direction) - countsToTheLeft(seen.direction)),
          down_(countsUp(start.player.direction) - countsUp(seen.direction)),
          sumsTell_(!mayBeRefused()) {}

    /// Follows the views from the start's next record on, each acting or lost, depth first, and
    /// notes where the player sees what was seen.
    std::vector<Turns> run() {
        std::vector<Turns> found;
        std::vector<Path> paths = {{start_.next, start_.next, 0, {}, 0, 0}};
        while (!paths.empty()) {
            Path path = std::move(paths.back());
            paths.pop_back();
            // No end behind a lost view, since it may still be on its way; but a key behind it may
            // act only if it is lost.
            const bool isEnd = path.number == path.end || isKey(path.number);
            if (isEnd && canHaveTurned(path) && hasTurned(path))
                found.push_back({path.number, path.lost});
            while (isKey(path.number))
                ++path.number;
            if (!isInTime(path.number) || --budget_ < 0)
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
                path.right += view.dx;
                path.down += view.dy;
                path.end = path.number;
                paths.push_back(std::move(path));
            }
        }
        return found;
    }

  private:
    bool isKey(std::uint64_t number) const {
        return number < records_.end() && !records_[number].isView;
    }

    /// Whether there is such a record, and it does not come too late for the last tick.
    bool isInTime(std::uint64_t number) const {
        return number < records_.end() &&
               -times_.misfit(records_[number], times_.count) <= limits_.early;
    }

    /// Whether some of the turns may be refused. Then their sums do not tell where they lead.
    bool mayBeRefused() const {
        double most = std::abs(countsUp(start_.player.direction));
        for (std::uint64_t number = start_.next; isInTime(number); ++number)
            most +=
                records_[number].isView ? std::abs(static_cast<double>(records_[number].dy)) : 0.0;
        return most > steepCounts;
    }

    /// By the sums of counts alone, which costs next to nothing.
    bool canHaveTurned(const Path& path) const {
        return !sumsTell_ || (std::abs(std::remainder(static_cast<double>(path.right) - right_,
                                                      fullTurn)) <= sumSlack &&
                              std::abs(static_cast<double>(path.down) - down_) <= sumSlack);
    }

    bool hasTurned(const Path& path) {
        Player player = start_.player;
        for (std::uint64_t number = start_.next; number < path.number; ++number) {
            if (isKey(number) || std::binary_search(path.lost.begin(), path.lost.end(), number))
                continue;
            if ((budget_ -= turnEffort) < 0)
                return false;
            records_[number].actOn(player);
        }
        return hasView(player, seen_, limits_.isTolerant || times_.count > 1);
    }

    const Hypothesis& start_;
    const SentRecords& records_;
    const PlayerUpdate& seen_;
    const TickTimes& times_;
    const SearchLimits& limits_;
    int& budget_;

    /// The counts by which the player was turned, up to full turns.
    double right_;
    double down_;
    bool sumsTell_;
};

} // namespace

std::vector<Turns> findTurns(const Hypothesis& hypothesis, const SentRecords& records,
                             const PlayerUpdate& seen, const TickTimes& times,
                             const SearchLimits& limits, int& budget) {
    return TurnSearch(hypothesis, records, seen, times, limits, budget).run();
}

} // namespace drench::client
