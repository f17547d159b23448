#include "client/Prediction.h"

#include "client/PredictionStart.h"
#include "client/Records.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace drench::client {

namespace {

/// Hypotheses carried on; more were never of use.
constexpr std::size_t mostHypotheses = 24;

/// Snapshots in a row without an explanation, after which the delay is no longer believed.
constexpr int patience = 8;

/// Milliseconds. Records this old are forgotten even if unexplained.
constexpr Milliseconds longestMemory = 2000.0;

/// Records under way and losses not yet taken, kept at most: far more than a player makes.
constexpr std::size_t mostRecords = 2048;
constexpr std::size_t mostLost = 1024;

/// No room sends places further out, in world units, or longer views.
constexpr float farthestPlace = 1e7f;
constexpr float longestView = 2.0f;

/// A round trip for the first snapshot when nothing is known, in milliseconds.
constexpr Milliseconds usualRoundTrip = 30.0;

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

int playersIn(const UpdateMessage& state) {
    return static_cast<int>(std::count_if(std::begin(state.updates), std::end(state.updates),
                                          [](const PlayerUpdate& slot) { return slot.id != 0; }));
}

} // namespace

double Prediction::Statistics::explainedShare() const {
    const std::uint64_t all = exact + close + unexplained;
    return all == 0 ? 1.0 : static_cast<double>(exact + close) / static_cast<double>(all);
}

void Prediction::sent(const std::vector<InputRecord>& records, Time now) {
    for (const InputRecord& input : records) {
        if (const std::optional<SentRecord> record = SentRecord::of(input, milliseconds(now)))
            records_.add(*record);
    }
    if (records_.end() - records_.begin() > mostRecords)
        forgetBefore(records_.end() - mostRecords);
    playAhead(now);
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
    const Evidence evidence = {*seen, records_, line_, milliseconds(snapshot.arrival), period};
    const int players = playersIn(snapshot.state);
    const std::optional<Body> drawn = body(snapshot.arrival);
    const Match match = explainSnapshot(evidence, players < lastPlayers_);

    // Under a wrong delay records look lost that are still to act.
    if (match != Match::none)
        settleLosses();
    playAhead(snapshot.arrival);
    if (const std::optional<Body> corrected = body(snapshot.arrival); drawn && corrected)
        error_.add(drawn->eye - corrected->eye, snapshot.arrival);
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

Prediction::Match Prediction::explainSnapshot(const Evidence& evidence, bool mayHaveSatOut) {
    if (isSoaked(evidence.seen)) {
        beSoaked(evidence);
        return Match::exact;
    }
    if (hypotheses_.empty()) {
        std::vector<Hypothesis> starts = startsAtSpawn(*map_, evidence, tick_);
        if (!starts.empty()) {
            accept(std::move(starts), evidence);
            isExact_ = true;
            error_.clear();
            return Match::exact;
        }
    } else if (continueFrom(evidence, mayHaveSatOut)) {
        return isExact_ ? Match::exact : Match::close;
    }
    breakOff();
    accept(startsAtSight(*map_, evidence, tick_, lastSeen_,
                         hypotheses_.empty() ? nullptr : &hypotheses_.front()),
           evidence);
    return Match::none;
}

std::vector<InputRecord> Prediction::takeLost() {
    return std::exchange(lost_, {});
}

std::optional<Prediction::Body> Prediction::body(Time now) const {
    if (hypotheses_.empty())
        return std::nullopt;
    const PredictionAhead::Moment moment = ahead_.at(records_, line_, milliseconds(now));
    return Body{moment.player, tick_ + moment.tick, moment.eye + error_.at(now),
                static_cast<double>(tick_) + moment.drawnTick};
}

double Prediction::tickAt(Time now) const {
    return static_cast<double>(tick_) + line_.ticksSince(milliseconds(now));
}

const Player* Prediction::explained() const {
    return hypotheses_.empty() ? nullptr : &hypotheses_.front().player;
}

/// Whether something explains the snapshot.
bool Prediction::continueFrom(const Evidence& evidence, bool mayHaveSatOut) {
    if (isExact_) {
        std::vector<Hypothesis> found = continueExactly(hypotheses_, evidence, mayHaveSatOut);
        if (!found.empty()) {
            accept(std::move(found), evidence);
            return true;
        }
    }
    // Perhaps only the last bits differ: another machine's sines would.
    std::vector<Hypothesis> found = continueClosely(hypotheses_, evidence, mayHaveSatOut);
    if (found.empty())
        return false;
    breakOff();
    accept(std::move(found), evidence);
    return true;
}

/// From here on nothing is known to the bit.
void Prediction::breakOff() {
    if (isExact_)
        ++statistics_.breaks;
    isExact_ = false;
}

/// Soaked players keep nothing, and records do not act on them.
void Prediction::beSoaked(const Evidence& evidence) {
    const int ticks = line_.hasArrivals() ? likelyTicks(evidence) : 0;
    tick_ += ticks;
    line_.arrival(tick_, tick_ - ticks, evidence.arrival, evidence.period);
    hypotheses_.clear();
    isExact_ = true;
    // Some of the newest records act after the return.
    std::uint64_t old = records_.begin();
    while (old < records_.end() && records_[old].sentAt + longestMemory < evidence.arrival)
        ++old;
    forgetBefore(old);
}

void Prediction::accept(std::vector<Hypothesis>&& hypotheses, const Evidence& evidence) {
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
    line_.arrival(tick_, tick_ - likeliest.ticks, evidence.arrival, evidence.period);
    if (likeliest.ticks == 1 && hypotheses_.size() == 1)
        learnDelay(from);
}

void Prediction::playAhead(Time now) {
    if (hypotheses_.empty())
        ahead_.clear();
    else
        ahead_.follow(hypotheses_.front(), records_, line_, milliseconds(now));
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
            lost_.push_back(records_[number].input());
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
