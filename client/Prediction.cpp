#include "client/Prediction.h"

#include "client/Records.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>
#include <variant>

namespace drench::client {

namespace {

/// Hypotheses carried on; more were never of use.
constexpr std::size_t mostHypotheses = 24;

/// Turns and movements tried for one snapshot: about a millisecond.
constexpr int searchBudget = 6000;

/// Missed ticks that a search spans; beyond, the prediction starts anew.
constexpr int mostTicks = 24;

/// The number of ticks since the last snapshot is uncertain by this many, since snapshots jitter.
constexpr int tickUncertainty = 2;

/// Snapshots in a row without an explanation, after which the delay is no longer believed.
constexpr int patience = 8;

/// Milliseconds. Records this old are forgotten even if unexplained.
constexpr Milliseconds longestMemory = 2000.0;

/// Ticks that are predicted ahead at most; longer lines are shown late.
constexpr int mostTicksAhead = 64;

/// Records under way and losses not yet taken, kept at most: far more than a player makes.
constexpr std::size_t mostRecords = 2048;
constexpr std::size_t mostLost = 1024;

/// No room sends places further out, in world units, or longer views.
constexpr float farthestPlace = 1e7f;
constexpr float longestView = 2.0f;

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

/// A round trip for the first snapshot when nothing is known, in milliseconds.
constexpr Milliseconds usualRoundTrip = 30.0;

/// World units. How far a body may be from a spawn pose's column to have started there, a tick.
constexpr float wanderPerTick = 10.0f;

/// Milliseconds on the clock of times.
Milliseconds milliseconds(Time at) {
    return std::chrono::duration<double, std::milli>(at.time_since_epoch()).count();
}

bool isWithin(const vec3& v, float most) {
    return std::abs(v.x) <= most && std::abs(v.y) <= most && std::abs(v.z) <= most;
}

/// Whether a room can have meant this: hostile ones send numbers of any size.
bool isPossible(const PlayerUpdate& seen) {
    const quat& rotation = seen.rotation;
    return isWithin(seen.position, farthestPlace) && isWithin(seen.direction, longestView) &&
           isWithin({rotation.x, rotation.y, rotation.z}, longestView) &&
           std::abs(rotation.w) <= longestView;
}

/// World units. The keys of a walk are believed to have changed if that explains a step better by
/// this for each.
constexpr float priceOfOtherKey = 0.02f;

int playersIn(const UpdateMessage& state) {
    return static_cast<int>(std::count_if(std::begin(state.updates), std::end(state.updates),
                                          [](const PlayerUpdate& slot) { return slot.id != 0; }));
}

/// Searches from the likeliest to the boldest; the first that finds something ends the rest.
std::vector<SearchLimits> searches(Milliseconds spread, bool isTolerant) {
    const Milliseconds tight = spread + 1.0;
    const Milliseconds narrow = 3.0 * spread + 2.0;
    // Among views with equal sums, a tolerant search finds whatever it is allowed to lose.
    if (isTolerant)
        return {{0, narrow, narrow, true}, {1, narrow, narrow, true}, {2, narrow, narrow, true}};
    return {{0, tight, narrow, false},          {0, narrow, narrow, false},
            {1, tight, narrow, false},          {1, narrow, narrow, false},
            {2, narrow, narrow, false},         {4, narrow, narrow, false},
            {0, wideMisfit, wideMisfit, false}, {1, wideMisfit, wideMisfit, false},
            {4, wideMisfit, wideMisfit, false}};
}

/// The cost of a snapshot `late` milliseconds after it was due, or before if negative.
double costOfArrival(Milliseconds late, Milliseconds spread) {
    const double deviations = late / spread;
    const double cost = deviations * deviations / 2.0;
    return late < 0.0 ? cost : std::min(cost, priceOfStall);
}

/// Holds the keys that best lead from a place to `player`'s in one tick, walls included. Of
/// several, those stay that are held already.
void guessWalk(Player& player, const vec3& before) {
    constexpr int walkKeys[] = {keyIndex::right, keyIndex::left, keyIndex::backward,
                                keyIndex::forward};
    const Player held = player;
    float least = std::numeric_limits<float>::max();
    for (int keys = 0; keys < 1 << std::size(walkKeys); ++keys) {
        Player walking = held;
        float changes = 0.0f;
        for (std::size_t i = 0; i < std::size(walkKeys); ++i) {
            bool& key = walking.keys[walkKeys[i]];
            changes += key != ((keys >> i & 1) != 0) ? priceOfOtherKey : 0.0f;
            key = (keys >> i & 1) != 0;
        }
        const vec3 direction = walking.direction;
        walking.placeAt(before, before + direction);
        walking.verticalSpeed = held.position.y - before.y + static_cast<float>(Player::gravity);
        walking.inAir = true;
        walking.update(0.0f);
        const vec3 apart = walking.position - held.position;
        const float distance = std::abs(apart.x) + std::abs(apart.z) + changes;
        if (distance < least) {
            least = distance;
            std::copy(std::begin(walking.keys), std::end(walking.keys), std::begin(player.keys));
        }
    }
}

InputRecord inputOf(const SentRecord& record) {
    if (record.isView) {
        ViewMessage view;
        view.dx = record.dx;
        view.dy = record.dy;
        return view;
    }
    KeyMessage key;
    key.key = static_cast<signed char>(record.key);
    key.down = static_cast<char>(record.isDown);
    return key;
}

} // namespace

double Prediction::Statistics::explainedShare() const {
    const std::uint64_t all = exact + close + unexplained;
    return all == 0 ? 1.0 : static_cast<double>(exact + close) / static_cast<double>(all);
}

void Prediction::sent(const std::vector<InputRecord>& records, Time now) {
    for (const InputRecord& input : records) {
        SentRecord record;
        record.sentAt = milliseconds(now);
        if (const auto* view = std::get_if<ViewMessage>(&input)) {
            record.isView = true;
            record.dx = view->dx;
            record.dy = view->dy;
        } else if (const auto* key = std::get_if<KeyMessage>(&input);
                   key && key->key >= 0 && key->key < keyIndex::count) {
            record.key = int{key->key};
            record.isDown = key->down != 0;
        } else {
            continue;
        }
        records_.add(record);
    }
    if (records_.end() - records_.begin() > mostRecords)
        forgetBefore(records_.end() - mostRecords);
}

Prediction::Match Prediction::take(const Snapshot& snapshot, char id,
                                   std::optional<double> roundTrip, double period) {
    const PlayerUpdate* const seen = playerWith(snapshot.state, id);
    if (!seen)
        return Match::none;
    if (!isPossible(*seen)) {
        count(Match::none);
        return Match::none;
    }
    if (!line_.hasArrivals())
        line_.guessDelay(roundTrip.value_or(usualRoundTrip));
    const Milliseconds arrival = milliseconds(snapshot.arrival);
    const int players = playersIn(snapshot.state);
    const std::optional<Body> drawn = body(snapshot.arrival);

    Match match = isExact_ ? Match::exact : Match::close;
    if (isSoaked(*seen)) {
        beSoaked(arrival, period);
        match = Match::exact;
    } else if (!hypotheses_.empty()) {
        if (!continueFrom(*seen, arrival, period, players < lastPlayers_)) {
            startAnew(*seen, arrival, period);
            match = Match::none;
        } else if (!isExact_) {
            match = Match::close;
        }
    } else if (findSpawn(*seen, arrival, period)) {
        isExact_ = true;
        match = Match::exact;
        error_.clear();
    } else {
        startAnew(*seen, arrival, period);
        match = Match::none;
    }

    if (const std::optional<Body> corrected = body(snapshot.arrival); drawn && corrected)
        error_.add(drawn->eye - corrected->eye, snapshot.arrival);
    // Under a wrong delay records look lost that are still to act.
    if (match != Match::none)
        settleLosses();
    unexplainedInARow_ = match == Match::none ? unexplainedInARow_ + 1 : 0;
    if (unexplainedInARow_ == patience) {
        line_.guessDelay(roundTrip.value_or(line_.delay()));
        unexplainedInARow_ = 0;
    }
    lastSeen_ = *seen;
    lastPlayers_ = players;
    count(match);
    return match;
}

std::vector<InputRecord> Prediction::takeLost() {
    return std::exchange(lost_, {});
}

std::optional<Prediction::Body> Prediction::body(Time now) const {
    if (hypotheses_.empty())
        return std::nullopt;
    const Hypothesis& likeliest = hypotheses_.front();
    const double ahead = line_.ticksSince(milliseconds(now) + line_.delay());
    const int ticks = static_cast<int>(std::clamp(std::ceil(ahead), 1.0, double{mostTicksAhead}));
    Body body = {likeliest.player, tick_ + ticks, vec3()};
    vec3 before = body.player.position;
    std::uint64_t next = likeliest.next;
    for (int tick = 1; tick <= ticks; ++tick) {
        for (; next < records_.end(); ++next) {
            const double acts = line_.ticksSince(records_[next].sentAt + line_.delay());
            if (tick < ticks && acts > tick)
                break;
            records_[next].actOn(body.player);
        }
        before = body.player.position;
        body.player.update(0.0f);
    }
    // Below 0 where a record sent now may still act in a tick that a snapshot shows already: the
    // room's ticks are late by a little.
    const auto share = static_cast<float>(std::clamp(ahead - (ticks - 1), -1.0, 1.0));
    body.eye = before + (body.player.position - before) * share + error_.at(now);
    return body;
}

double Prediction::tickAt(Time now) const {
    return static_cast<double>(tick_) + line_.ticksSince(milliseconds(now));
}

const Player* Prediction::explained() const {
    return hypotheses_.empty() ? nullptr : &hypotheses_.front().player;
}

/// The times of the `ticks` since the newest snapshot; of as many as the arrival tells if that is
/// less than one.
TickTimes Prediction::timesOf(int ticks, Milliseconds arrival, Milliseconds period) const {
    TickTimes times;
    const double since =
        line_.hasArrivals() ? (arrival - line_.lateness() - line_.due()) / period : 1.0;
    times.count = ticks >= 1 ? ticks : static_cast<int>(std::clamp(since + 0.5, 1.0, 1e6));
    times.due =
        line_.hasArrivals() ? std::min(arrival, line_.due() + times.count * period) : arrival;
    times.arrival = arrival;
    times.period = period;
    times.delay = line_.delay();
    times.spread = line_.spread();
    times.cost = costOfArrival((since - times.count) * period, line_.latenessSpread()) +
                 (times.count > 1 ? priceOfGap + priceOfMissedTick * (times.count - 1) : 0.0);
    return times;
}

bool Prediction::continueFrom(const PlayerUpdate& seen, Milliseconds arrival, Milliseconds period,
                              bool mayHaveSatOut) {
    const int likely = timesOf(0, arrival, period).count;
    if (likely > mostTicks)
        return false;
    std::vector<TickTimes> ways;
    for (int ticks = std::max(1, likely - tickUncertainty); ticks <= likely + tickUncertainty;
         ++ticks)
        ways.push_back(timesOf(ticks, arrival, period));
    if (mayHaveSatOut) {
        ways.push_back(timesOf(likely, arrival, period));
        ways.back().lastTickMoves = false;
    }
    if (search(seen, ways, !isExact_))
        return true;
    // Perhaps the room or the line was held up.
    std::vector<TickTimes> fewer;
    for (int ticks = likely - tickUncertainty - 1; ticks >= 1; --ticks)
        fewer.push_back(timesOf(ticks, arrival, period));
    if (isExact_ && !fewer.empty() && search(seen, fewer, false))
        return true;
    // Perhaps only the last bits differ: another machine's sines would.
    if (!isExact_ || !search(seen, ways, true))
        return false;
    isExact_ = false;
    ++statistics_.breaks;
    return true;
}

/// Tries all ways, under limits from the likeliest to the boldest; the first limits that find
/// something end the search.
bool Prediction::search(const PlayerUpdate& seen, const std::vector<TickTimes>& ways,
                        bool isTolerant) {
    int left = searchBudget;
    double leastCost = ways.front().cost;
    for (const TickTimes& times : ways)
        leastCost = std::min(leastCost, times.cost);
    for (const SearchLimits& limits : searches(line_.spread(), isTolerant)) {
        std::vector<Hypothesis> found;
        int budget = left / 2;
        left -= budget;
        for (const TickTimes& times : ways) {
            if (limits.misfit < wideMisfit && times.cost > leastCost + mostTickCost)
                continue;
            for (const Hypothesis& hypothesis : hypotheses_) {
                for (Hypothesis& next : explain(hypothesis, records_, seen, times, limits, budget))
                    merge(found, std::move(next));
            }
        }
        left += std::max(budget, 0);
        if (!found.empty()) {
            accept(std::move(found), ways.front().arrival, ways.front().period);
            return true;
        }
    }
    return false;
}

/// Soaked players keep nothing, and records do not act on them.
void Prediction::beSoaked(Milliseconds arrival, Milliseconds period) {
    const int ticks = line_.hasArrivals() ? timesOf(0, arrival, period).count : 0;
    tick_ += ticks;
    line_.arrival(tick_, tick_ - ticks, arrival, period);
    hypotheses_.clear();
    isExact_ = true;
    // Some of the newest records act after the return.
    std::uint64_t old = records_.begin();
    while (old < records_.end() && records_[old].sentAt + longestMemory < arrival)
        ++old;
    forgetBefore(old);
}

/// A spawn's state is known whole: finds the pose, and the ticks since then.
bool Prediction::findSpawn(const PlayerUpdate& seen, Milliseconds arrival, Milliseconds period) {
    const TickTimes now = timesOf(0, arrival, period);
    const int most =
        line_.hasArrivals() ? std::min(now.count + tickUncertainty, mostTicks) : mostTicks;
    for (int pose = 0; pose < Player::spawnPoseCount; ++pose) {
        Hypothesis start;
        start.player = Player(seen.id, nullptr, 0.0f, pose);
        start.player.setMapMan(map_);
        const vec3 apart = seen.position - start.player.position;
        const float reach = wanderPerTick * static_cast<float>(most);
        if (std::abs(apart.x) > reach || std::abs(apart.z) > reach)
            continue;
        if (isSeen(start.player, seen)) {
            start.tick = tick_ + now.count;
            start.ticks = now.count;
            accept(startsFrom(start, false, now.due, arrival), arrival, period);
            return true;
        }
        for (int ticks = 1; ticks <= most; ++ticks) {
            TickTimes times = timesOf(std::max(ticks, now.count), arrival, period);
            times.count = ticks;
            start.tick = tick_ + std::max(0, now.count - ticks);
            const Milliseconds spawned = times.due - ticks * period;
            hypotheses_ = startsFrom(start, false, spawned, spawned);
            if (search(seen, {times}, false))
                return true;
            hypotheses_.clear();
        }
    }
    return false;
}

/// Guesses what the snapshot does not tell, in several ways; the next one chooses.
void Prediction::startAnew(const PlayerUpdate& seen, Milliseconds arrival, Milliseconds period) {
    if (isExact_)
        ++statistics_.breaks;
    isExact_ = false;
    const TickTimes times = timesOf(0, arrival, period);
    Hypothesis start;
    start.tick = tick_ + times.count;
    start.ticks = times.count;
    start.next = records_.begin();
    start.player = bodyAt(*map_, seen.position, seen.position + seen.direction);
    start.player.direction = seen.direction;
    start.player.rotation = seen.rotation;
    if (!hypotheses_.empty()) {
        const Hypothesis& likeliest = hypotheses_.front();
        std::copy(std::begin(likeliest.player.keys), std::end(likeliest.player.keys),
                  start.player.keys);
        // Under a wrong delay, earlier records may be still to act.
        if (line_.knowsDelay())
            start.next = likeliest.next;
    }
    if (lastSeen_ && times.count == 1)
        guessWalk(start.player, lastSeen_->position);
    std::vector<Hypothesis> starts = startsFrom(start, true, times.due, arrival);
    const std::size_t grounded = starts.size();
    for (std::size_t i = 0; i < grounded && lastSeen_; ++i) {
        // In free fall the mean speed since the last snapshot was that of the time's middle.
        const double mean =
            static_cast<double>(seen.position.y - lastSeen_->position.y) / times.count;
        const double speed = mean - Player::gravity * (times.count - 1) / 2.0;
        Hypothesis inAir = starts[i];
        inAir.player.inAir = true;
        inAir.player.verticalSpeed =
            static_cast<float>(std::round(speed / Player::gravity) * Player::gravity);
        starts.push_back(std::move(inAir));
    }
    for (Hypothesis& hypothesis : starts)
        hypothesis.player.keys[keyIndex::shoot] = seen.shooting;
    accept(std::move(starts), arrival, period);
}

/// One hypothesis for each record that may be the first to act after a tick, from `start.next` on.
/// The keys before it have acted on a player who lived by then.
std::vector<Hypothesis> Prediction::startsFrom(Hypothesis start, bool hasLived, Milliseconds due,
                                               Milliseconds arrival) const {
    std::vector<Hypothesis> starts;
    const Milliseconds slack = 3.0 * line_.spread() + 2.0;
    // How much too early the record before acted.
    Milliseconds early = 0.0;
    const auto costOf = [&](Milliseconds late) {
        return (late * late + early * early) / (2.0 * line_.spread() * line_.spread());
    };
    for (start.next = std::max(start.next, records_.begin()); start.next < records_.end();
         ++start.next) {
        const SentRecord& record = records_[start.next];
        const Milliseconds expected = record.sentAt + line_.delay();
        if (expected > due - slack) {
            start.cost = costOf(std::max(0.0, due - expected));
            starts.push_back(start);
        }
        if (expected > arrival + slack)
            return starts;
        early = std::max(0.0, expected - arrival);
        if (hasLived && !record.isView && record.key != keyIndex::jump)
            record.actOn(start.player);
    }
    start.cost = costOf(0.0);
    starts.push_back(start);
    return starts;
}

void Prediction::accept(std::vector<Hypothesis>&& hypotheses, Milliseconds arrival,
                        Milliseconds period) {
    const std::uint64_t from = hypotheses_.empty() ? records_.end() : hypotheses_.front().next;
    std::stable_sort(hypotheses.begin(), hypotheses.end(),
                     [](const Hypothesis& a, const Hypothesis& b) { return a.cost < b.cost; });
    if (hypotheses.size() > mostHypotheses)
        hypotheses.resize(mostHypotheses);
    for (std::size_t i = hypotheses.size(); i-- > 0;)
        hypotheses[i].cost -= hypotheses.front().cost;
    hypotheses_ = std::move(hypotheses);
    const Hypothesis& likeliest = hypotheses_.front();
    tick_ = likeliest.tick;
    line_.arrival(tick_, tick_ - likeliest.ticks, arrival, period);
    if (likeliest.ticks == 1 && hypotheses_.size() == 1)
        learnDelay(from);
}

/// Records from `from` on that acted in the newest tick tell how long records take.
void Prediction::learnDelay(std::uint64_t from) {
    const Hypothesis& likeliest = hypotheses_.front();
    for (std::uint64_t number = std::max(from, records_.begin()); number < likeliest.next;
         ++number) {
        if (records_[number].isView &&
            !std::binary_search(likeliest.lost.begin(), likeliest.lost.end(), number))
            line_.acted(records_[number].sentAt);
    }
}

/// Tells of records that are lost in all hypotheses, and forgets those that are decided.
void Prediction::settleLosses() {
    if (hypotheses_.empty())
        return;
    const Milliseconds overdue = line_.period() + 6.0 * line_.spread() + 20.0;
    std::uint64_t undecided = records_.end();
    for (Hypothesis& hypothesis : hypotheses_) {
        while (hypothesis.next < records_.end() &&
               records_[hypothesis.next].sentAt + line_.delay() + overdue < line_.due())
            hypothesis.lost.push_back(hypothesis.next++);
        undecided = std::min(undecided, hypothesis.next);
    }
    const std::vector<std::uint64_t> lost = hypotheses_.front().lost;
    for (const std::uint64_t number : lost) {
        const bool isAgreed =
            std::all_of(hypotheses_.begin(), hypotheses_.end(), [&](const Hypothesis& hypothesis) {
                return std::binary_search(hypothesis.lost.begin(), hypothesis.lost.end(), number);
            });
        if (!isAgreed)
            continue;
        ++(records_[number].isView ? statistics_.lostViews : statistics_.lostKeys);
        if (lost_.size() < mostLost)
            lost_.push_back(inputOf(records_[number]));
        for (Hypothesis& hypothesis : hypotheses_)
            std::erase(hypothesis.lost, number);
    }
    for (const Hypothesis& hypothesis : hypotheses_) {
        if (!hypothesis.lost.empty())
            undecided = std::min(undecided, hypothesis.lost.front());
    }
    records_.forgetBefore(undecided);
}

/// Whatever a hypothesis makes of older records is settled with them.
void Prediction::forgetBefore(std::uint64_t number) {
    records_.forgetBefore(number);
    for (Hypothesis& hypothesis : hypotheses_) {
        hypothesis.next = std::max(hypothesis.next, number);
        std::erase_if(hypothesis.lost, [&](std::uint64_t lost) { return lost < number; });
    }
}

void Prediction::count(Match match) {
    switch (match) {
    case Match::exact:
        ++statistics_.exact;
        break;
    case Match::close:
        ++statistics_.close;
        break;
    case Match::none:
        ++statistics_.unexplained;
        break;
    }
}

} // namespace drench::client
