#include "game/Playback.h"

#include "client/Interpolation.h"
#include "client/Records.h"
#include "common/Files.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <variant>

namespace drench::game {

namespace {

using Seconds = std::chrono::duration<double>;

/// From one checkpoint to the next, both at least: a leap takes few events, and the checkpoints of
/// a long recording of little take no more memory than its events.
constexpr Seconds checkpointGap{10.0};
constexpr std::size_t checkpointEvents = 256;

/// Seconds. Of one soaking the notice and the snapshot come within this time.
constexpr double soakingSlack = 1.0;

/// Seconds from a soaking's lead on in which the last one is the one before: otherwise nobody could
/// get past it while the match goes on.
constexpr double stayAtSoaking = 1.0;

/// Further back nobody looks for a soaked player: more than a respawn takes.
constexpr Seconds longestSoaked{6.0};

client::Time::duration durationOf(double seconds) {
    return std::chrono::round<client::Time::duration>(Seconds(seconds));
}

double momentOf(client::Time time) {
    return Seconds(time.time_since_epoch()).count();
}

} // namespace

Playback::Playback(std::vector<PlayedEvent> events) : events_(std::move(events)) {
    for (std::size_t i = 0; i < events_.size(); ++i) {
        if (std::holds_alternative<client::Snapshot>(events_[i].event))
            snapshots_.push_back(i);
        const auto* const joined = std::get_if<client::Joined>(&events_[i].event);
        if (joined && recorder_ == 0)
            recorder_ = joined->id;
    }
    if (snapshots_.empty())
        throw InputError("nothing can be watched: no state of the room was recorded");
    for (std::size_t i = 0; i < events_.size(); ++i) {
        const PlayedEvent& each = events_[i];
        if (checkpoints_.empty() ||
            (i - checkpoints_.back().event >= checkpointEvents &&
             each.moment - events_[checkpoints_.back().event].moment >= checkpointGap))
            checkpoints_.push_back({i, match_});
        match_.take(each.event, each.moment);
        findSoakings(each);
    }
    match_.watchAs(recorder_);
    seek(begin());
}

double Playback::begin() const {
    return momentOf(events_[snapshots_.front()].moment);
}

double Playback::end() const {
    return momentOf(endTime());
}

client::Time Playback::endTime() const {
    return events_[snapshots_.back()].moment;
}

double Playback::moment() const {
    return momentOf(now_);
}

void Playback::findSoakings(const PlayedEvent& event) {
    const double moment = momentOf(event.moment);
    if (std::holds_alternative<client::Soaking>(event.event)) {
        const MatchNotice& notice = match_.notices().back();
        addSoaking({moment, notice.who.id, notice.whom.id});
    } else if (std::holds_alternative<client::Snapshot>(event.event)) {
        // A notice may have got lost.
        for (const MatchPlayer& player : match_.players()) {
            if (player.soakedSince == event.moment)
                addSoaking({moment, 0, player.id});
        }
    }
}

void Playback::addSoaking(const Soaking& soaking) {
    // Soakings come in their order: all before the first that is too old are older still.
    for (auto each = soakings_.rbegin();
         each != soakings_.rend() && soaking.moment - each->moment < soakingSlack; ++each) {
        if (each->whom != soaking.whom && each->whom != 0 && soaking.whom != 0)
            continue;
        if (each->who == 0)
            each->who = soaking.who;
        if (each->whom == 0)
            each->whom = soaking.whom;
        return;
    }
    soakings_.push_back(soaking);
}

void Playback::takeUntil(client::Time moment) {
    const char own = match_.ownId();
    for (; taken_ < events_.size() && events_[taken_].moment <= moment; ++taken_)
        match_.take(events_[taken_].event, events_[taken_].moment);
    // A joining in the recording made the match its recorder's.
    match_.watchAs(own);
    now_ = moment;
}

void Playback::pass(double seconds) {
    takenBefore_ = taken_;
    if (isPaused_)
        return;
    takeUntil(std::min(now_ + durationOf(seconds * speed()), endTime()));
    isPaused_ = isAtEnd();
}

std::span<const PlayedEvent> Playback::passed() const {
    return std::span(events_).subspan(takenBefore_, taken_ - takenBefore_);
}

void Playback::seek(double moment) {
    // Clamped first: a moment may be of any size.
    const client::Time target =
        std::clamp(client::Time(durationOf(std::clamp(moment, begin(), end()))),
                   events_[snapshots_.front()].moment, endTime());
    const auto after = std::upper_bound(checkpoints_.begin(), checkpoints_.end(), target,
                                        [&](client::Time time, const Checkpoint& each) {
                                            return time < events_[each.event].moment;
                                        });
    const Checkpoint& from = after == checkpoints_.begin() ? *after : *(after - 1);
    const char own = match_.ownId();
    match_ = from.match;
    match_.watchAs(own);
    taken_ = from.event;
    takeUntil(target);
    takenBefore_ = taken_;
    ++leaps_;
}

bool Playback::seekNextSoaking() {
    const double shown = moment() + leadToSoaking;
    const auto next = std::find_if(soakings_.begin(), soakings_.end(),
                                   [&](const Soaking& each) { return each.moment > shown + 0.01; });
    if (next == soakings_.end())
        return false;
    seek(next->moment - leadToSoaking);
    return true;
}

bool Playback::seekLastSoaking() {
    const double shown = moment() + leadToSoaking - stayAtSoaking;
    const auto last = std::find_if(soakings_.rbegin(), soakings_.rend(),
                                   [&](const Soaking& each) { return each.moment < shown; });
    if (last == soakings_.rend())
        return false;
    seek(last->moment - leadToSoaking);
    return true;
}

void Playback::setPaused(bool paused) {
    if (!paused && isAtEnd())
        seek(begin());
    isPaused_ = paused;
}

void Playback::faster() {
    speed_ = std::min(speed_ + 1, speeds.size() - 1);
}

void Playback::slower() {
    speed_ -= std::min<std::size_t>(speed_, 1);
}

const client::Snapshot& Playback::snapshot(std::size_t index) const {
    return std::get<client::Snapshot>(events_[snapshots_[index]].event);
}

std::vector<PlayerUpdate> Playback::players(MapManager& map) const {
    // The first snapshot that is yet to come; the one before is there from the first moment on.
    const auto later = static_cast<std::size_t>(
        std::lower_bound(snapshots_.begin(), snapshots_.end(), taken_) - snapshots_.begin());
    const std::size_t newest = later - 1;
    client::Interpolation between(map);
    for (std::size_t i = newest - std::min<std::size_t>(newest, 1); i <= newest; ++i)
        between.take(snapshot(i).state, snapshot(i).tick, now_);
    const auto tick = static_cast<double>(snapshot(newest).tick);
    if (later == snapshots_.size())
        return between.at(tick, now_);
    const client::Time from = events_[snapshots_[newest]].moment;
    const client::Time to = events_[snapshots_[later]].moment;
    const double ticks = static_cast<double>(snapshot(later).tick) - tick;
    const double share = to > from ? Seconds(now_ - from) / Seconds(to - from) : 0.0;
    if (ticks <= client::Interpolation::longestCarry)
        between.take(snapshot(later).state, snapshot(later).tick, now_);
    return between.at(tick + share * ticks, now_);
}

std::optional<PlayerUpdate> Playback::lastAlive(char id) const {
    auto place = std::lower_bound(snapshots_.begin(), snapshots_.end(), taken_);
    while (place != snapshots_.begin()) {
        --place;
        if (now_ - events_[*place].moment > longestSoaked)
            break;
        const auto& state = std::get<client::Snapshot>(events_[*place].event).state;
        const PlayerUpdate* const player = client::playerWith(state, id);
        if (player && !client::isSoaked(*player))
            return *player;
    }
    return std::nullopt;
}

} // namespace drench::game
