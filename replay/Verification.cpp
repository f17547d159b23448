#include "replay/Verification.h"

#include "client/Records.h"
#include "common/Decimals.h"
#include "replay/Motion.h"
#include "src/Player.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <deque>
#include <map>
#include <optional>

namespace drench::replay {

namespace {

/// States that may come before one that was sent earlier, and arrivals from which losses are told.
constexpr std::size_t nearby = 12;

/// Ticks whose states may be missing in a row.
constexpr int longestGap = 125;

/// Microseconds; of a young room. Taken where the recording is too short to tell.
constexpr double usualPeriod = 16400.0;

/// The share of a period by which arrivals must have fallen behind for a state to count as lost.
/// Half of it would be sure without jitter.
constexpr double lossInPeriods = 0.3;

/// Gaps from arrival to arrival that are off by this share of a period, in the middle, make a line
/// on which losses cannot always be told.
constexpr double unsteadyInPeriods = 0.1;

/// Arrivals that follow each other in less come in a burst.
constexpr double burstInPeriods = 0.5;

/// Where losses cannot be told, the states among which so few steps may be odd, each as if states
/// were lost.
constexpr std::size_t doubtSpan = 64;
constexpr std::size_t mostDoubts = 6;
constexpr int doubtfulTicks = 4;
constexpr int mostLateInARow = 2;

/// After a soaking; less than Player::respawnDelay, for what the line may add to its state.
constexpr RecordedTime soonestRespawn = std::chrono::milliseconds(3000);

double microseconds(RecordedTime time) {
    return static_cast<double>(time.count());
}

/// The ticks from state to state, as far as arrivals tell.
class Arrivals {
  public:
    explicit Arrivals(const std::vector<Frame>& frames) : frames_(frames) {
        // Stretches with losses are longer; of those without, jitter makes some shorter.
        constexpr std::size_t stretch = 64;
        std::vector<double> periods;
        for (std::size_t i = stretch; i < frames.size(); ++i)
            periods.push_back(microseconds(frames[i].time - frames[i - stretch].time) / stretch);
        if (periods.empty())
            return;
        const auto lower = periods.begin() + static_cast<std::ptrdiff_t>(periods.size() / 5);
        std::nth_element(periods.begin(), lower, periods.end());
        period_ = std::max(*lower, usualPeriod / 2.0);

        std::vector<double> deviations;
        for (std::size_t i = 1; i < frames.size(); ++i)
            deviations.push_back(
                std::fabs(microseconds(frames[i].time - frames[i - 1].time) / period_ - 1.0));
        const auto middle = deviations.begin() + static_cast<std::ptrdiff_t>(deviations.size() / 2);
        std::nth_element(deviations.begin(), middle, deviations.end());
        isSteady_ = *middle < unsteadyInPeriods;
    }

    /// Whether arrivals tell of losses here: not on an unsteady line, nor in a burst that makes up
    /// for a pause.
    bool areSteadyAt(std::size_t i) const {
        const std::size_t end = std::min(i + nearby, frames_.size());
        for (std::size_t j = std::max<std::size_t>(i, nearby) - nearby + 1; j < end; ++j) {
            if (microseconds(frames_[j].time - frames_[j - 1].time) < burstInPeriods * period_)
                return false;
        }
        return isSteady_;
    }

    /// The most ticks that may lie between state `i` and the one before it.
    int mostTicks(std::size_t i) const {
        const double gap = microseconds(frames_[i].time - frames_[i - 1].time) / period_;
        const double behind = (earliest(i, std::min(i + nearby, frames_.size())) -
                               earliest(i - std::min(i, nearby), i)) /
                              period_;
        double ticks = 1.0;
        if (gap >= 1.5 || behind >= lossInPeriods)
            ticks = 2.0 + std::max(gap, behind);
        return static_cast<int>(std::min(ticks, static_cast<double>(longestGap)));
    }

  private:
    /// The moment of the first tick, by the earliest of these arrivals.
    double earliest(std::size_t from, std::size_t to) const {
        double least = INFINITY;
        for (std::size_t i = from; i < to; ++i)
            least =
                std::min(least, microseconds(frames_[i].time) - static_cast<double>(i) * period_);
        return least;
    }

    const std::vector<Frame>& frames_;
    double period_ = usualPeriod;
    bool isSteady_ = true;
};

int playersIn(const UpdateMessage& state) {
    return static_cast<int>(
        std::count_if(std::begin(state.updates), std::end(state.updates),
                      [](const PlayerUpdate& player) { return player.id != 0; }));
}

/// All players after a state.
struct Known {
    const Frame* frame = nullptr;
    std::map<char, Unseen> unseen;
    std::map<char, RecordedTime> soakedAt;
};

/// What comes of one player's step.
struct Outcome {
    Unseen unseen;

    /// Empty if it is possible.
    std::string what;
    bool isOverGap = false;
};

struct Tried {
    Known next;
    std::uint64_t steps = 0;
    std::uint64_t overGaps = 0;
    std::vector<Impossible> impossible;
};

std::string missed(double distance) {
    return "is " + decimals(distance, 3) + " units from where any keys lead";
}

class Verifier {
  public:
    Verifier(const std::vector<Frame>& frames, MapManager& map)
        : frames_(frames), map_(map), arrivals_(frames) {}

    Verification run() {
        result_.states = frames_.size();
        for (std::size_t i = 0; i < frames_.size(); ++i)
            take(i);
        return std::move(result_);
    }

  private:
    void take(std::size_t i) {
        const Frame& frame = frames_[i];
        if (known_.empty()) {
            known_.push_back({&frame, {}, {}});
            return;
        }
        Tried tried = tryStep(frame, arrivals_.mostTicks(i));
        // What several ticks would explain may as well be a late state.
        if ((!tried.impossible.empty() || tried.overGaps > 0) && isLate(frame)) {
            ++result_.late;
            return;
        }
        if (!tried.impossible.empty() && mayDoubt(i)) {
            doubts_.push_back(i);
            const int ticks = arrivals_.mostTicks(i) + doubtfulTicks;
            Tried again = tryStepPastLast(frame, 1);
            if (!again.impossible.empty())
                again = tryStep(frame, ticks);
            if (!again.impossible.empty() && mayBeLate(frame)) {
                if (++lateInARow_ <= mostLateInARow) {
                    ++result_.late;
                    return;
                }
                again = startAnew(frame);
            }
            if (!again.impossible.empty())
                again = tryStepPastLast(frame, ticks);
            if (again.impossible.empty())
                tried = std::move(again);
        }
        lateInARow_ = 0;
        result_.steps += tried.steps;
        result_.overGaps += tried.overGaps;
        result_.impossibleSteps += tried.impossible.size();
        for (Impossible& one : tried.impossible) {
            if (result_.listed.size() < Verification::mostListed)
                result_.listed.push_back(std::move(one));
        }
        known_.push_back(std::move(tried.next));
        if (known_.size() > nearby)
            known_.pop_front();
    }

    /// The same if the last state is taken for a late one that was not told as such. The last state
    /// stays if that explains nothing.
    Tried tryStepPastLast(const Frame& frame, int ticks) {
        Known last = std::move(known_.back());
        known_.pop_back();
        Tried tried;
        if (known_.empty())
            tried.impossible.emplace_back();
        else
            tried = tryStep(frame, ticks);
        if (tried.impossible.empty())
            ++result_.late;
        else
            known_.push_back(std::move(last));
        return tried;
    }

    /// Forgets all states: a late one among them was not told as such, and all after it look late.
    Tried startAnew(const Frame& frame) {
        Tried tried;
        tried.next = {&frame, {}, known_.back().soakedAt};
        tried.steps = static_cast<std::uint64_t>(playersIn(frame.state));
        tried.overGaps = tried.steps;
        known_.clear();
        return tried;
    }

    /// The steps of all players to a state, of at most so many ticks.
    Tried tryStep(const Frame& frame, int ticks) {
        const Known& last = known_.back();
        Tried tried;
        tried.next = {&frame, {}, last.soakedAt};
        for (const PlayerUpdate& seen : frame.state.updates) {
            const PlayerUpdate* before = client::playerWith(last.frame->state, seen.id);
            if (seen.id == 0 || !before || std::strcmp(before->name, seen.name) != 0)
                continue;
            ++tried.steps;
            const Outcome outcome = follow(tried.next, *before, seen, ticks);
            tried.next.unseen[seen.id] = outcome.unseen;
            tried.overGaps += outcome.isOverGap ? 1 : 0;
            if (!outcome.what.empty())
                tried.impossible.push_back({frame.time, seen.id, seen.name, outcome.what});
        }
        return tried;
    }

    /// Whether an odd step may be taken for a loss that the arrivals do not show.
    bool mayDoubt(std::size_t i) {
        while (!doubts_.empty() && i - doubts_.front() > doubtSpan)
            doubts_.pop_front();
        return !arrivals_.areSteadyAt(i) && doubts_.size() < mostDoubts;
    }

    Outcome follow(Known& next, const PlayerUpdate& before, const PlayerUpdate& seen, int ticks) {
        const RecordedTime now = next.frame->time;
        if (client::isSoaked(seen)) {
            // A recording may begin while somebody waits.
            if (!client::isSoaked(before))
                next.soakedAt[seen.id] = now;
            return {};
        }
        if (client::isSoaked(before))
            return respawn(next, seen, now, ticks);
        const Unseen& unseen = unseenOf(known_.back(), seen.id);
        Outcome outcome;
        Step found = step(map_, before, unseen, seen);
        if (found.unseen)
            outcome.unseen = std::move(*found.unseen);
        else if (ticks > 1 &&
                 (canBeThere(map_, before, unseen, seen, ticks) || canHaveRespawned(seen, ticks)))
            outcome.isOverGap = true;
        else if (isSame(before.position, seen.position) &&
                 playersIn(next.frame->state) < playersIn(known_.back().frame->state))
            // The one behind a player who left sits out that tick.
            outcome.unseen = unseen;
        else
            outcome.what = missed(found.missedBy);
        if (outcome.what.empty())
            outcome.what = wrongView(before, seen);
        return outcome;
    }

    Outcome respawn(Known& next, const PlayerUpdate& seen, RecordedTime now, int ticks) {
        const auto soaked = next.soakedAt.find(seen.id);
        const bool isEarly = soaked != next.soakedAt.end() && now - soaked->second < soonestRespawn;
        if (soaked != next.soakedAt.end())
            next.soakedAt.erase(soaked);
        Outcome outcome;
        if (isAtSpawn(seen))
            outcome.unseen.falls = {{0.0f, false}};
        else if (ticks > 1 && canHaveRespawned(seen, ticks))
            outcome.isOverGap = true;
        else
            outcome.what = "comes back where no spawn is";
        if (isEarly && outcome.what.empty())
            outcome.what = "comes back too early";
        return outcome;
    }

    /// Whether it may have come to a spawn in one of the ticks missed.
    bool canHaveRespawned(const PlayerUpdate& seen, int ticks) const {
        for (int pose = 0; pose < Player::spawnPoseCount; ++pose) {
            const PlayerUpdate spawned = Player('0', nullptr, 0.0f, pose).getPlayerUpdate();
            if (canBeThere(map_, spawned, {{{0.0f, false}}, {}}, seen, ticks))
                return true;
        }
        return false;
    }

    static const Unseen& unseenOf(const Known& known, char id) {
        static const Unseen nothing;
        const auto found = known.unseen.find(id);
        return found == known.unseen.end() ? nothing : found->second;
    }

    /// Whether a state is the next one of an earlier state than the last, as far as all falls are
    /// known there: falls backwards in time look like jumps.
    bool isLate(const Frame& frame) {
        return std::any_of(known_.begin(), known_.end() - 1,
                           [&](const Known& earlier) { return leadsTo(earlier, frame); });
    }

    /// The same as far as can be told when the states around it got lost, too.
    bool mayBeLate(const Frame& frame) {
        return std::any_of(known_.begin(), known_.end() - 1, [&](const Known& earlier) {
            for (const PlayerUpdate& seen : frame.state.updates) {
                const PlayerUpdate* before = client::playerWith(earlier.frame->state, seen.id);
                if (seen.id == 0 || !before || client::isSoaked(seen) || client::isSoaked(*before))
                    continue;
                if (!canBeThere(map_, *before, unseenOf(earlier, seen.id), seen, doubtfulTicks))
                    return false;
            }
            return true;
        });
    }

    bool leadsTo(const Known& from, const Frame& to) {
        bool hasMoved = false;
        for (const PlayerUpdate& seen : to.state.updates) {
            const PlayerUpdate* before = client::playerWith(from.frame->state, seen.id);
            if (seen.id == 0 || !before)
                continue;
            hasMoved = hasMoved || !isSame(before->position, seen.position);
            if (client::isSoaked(seen) || client::isSoaked(*before))
                continue;
            const Unseen& unseen = unseenOf(from, seen.id);
            if (unseen.falls.empty() || !step(map_, *before, unseen, seen).unseen)
                return false;
        }
        return hasMoved;
    }

    const std::vector<Frame>& frames_;
    MapManager& map_;
    Arrivals arrivals_;

    /// The latest states that followed one another, the newest last.
    std::deque<Known> known_;

    int lateInARow_ = 0;

    /// The latest states that were doubted.
    std::deque<std::size_t> doubts_;
    Verification result_;
};

} // namespace

Verification verify(const std::vector<Frame>& frames, MapManager& map) {
    return Verifier(frames, map).run();
}

} // namespace drench::replay
