#include "replay/Soakings.h"

#include "client/Notices.h"
#include "client/Records.h"
#include "common/Files.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <variant>

namespace drench::replay {

namespace {

/// Between a notice and the state that shows its soaking, at most.
constexpr RecordedTime patience = std::chrono::milliseconds(500);

/// Nobody is soaked twice within this time, since Player::respawnDelay is longer. What looks so is
/// a state or a notice that came late, or twice.
constexpr RecordedTime soonestAgain = std::chrono::milliseconds(3000);

/// Notices of a hostile room that wait.
constexpr std::size_t mostWaiting = 64;

/// The living player with this name; null if there is none or more than one.
const PlayerUpdate* livingPlayer(const UpdateMessage& state, const std::string& name) {
    const PlayerUpdate* found = nullptr;
    for (const PlayerUpdate& player : state.updates) {
        if (player.id == 0 || player.name != name || client::isSoaked(player))
            continue;
        if (found)
            return nullptr;
        found = &player;
    }
    return found;
}

/// The only player whose points went up; null if there is none or more than one.
const PlayerUpdate* onlyScorer(const UpdateMessage& before, const UpdateMessage& after) {
    const PlayerUpdate* found = nullptr;
    for (const PlayerUpdate& player : before.updates) {
        const PlayerUpdate* later = client::playerWith(after, player.id);
        if (player.id == 0 || !later || later->points <= player.points)
            continue;
        if (found)
            return nullptr;
        found = &player;
    }
    return found;
}

struct Notice {
    client::Soaking soaking;
    RecordedTime time{};
    UpdateMessage state;
};

class Watcher {
  public:
    void hear(RecordedTime time, const TalkMessage& talk) {
        if (talk.id != serverSpeaker)
            return;
        const client::Event event =
            client::parseNotice(client::untilZero({talk.text, sizeof talk.text}));
        if (const auto* soaking = std::get_if<client::Soaking>(&event);
            soaking && waiting_.size() < mostWaiting)
            waiting_.push_back({*soaking, time, last_});
    }

    void see(RecordedTime time, const UpdateMessage& state) {
        for (const PlayerUpdate& player : state.updates) {
            const PlayerUpdate* before = client::playerWith(last_, player.id);
            if (player.id != 0 && before && client::isSoaked(player) && !client::isSoaked(*before))
                showSoaked(time, *before, state);
        }
        last_ = state;
        giveUp(time);
    }

    std::size_t count() const { return soakings_.size(); }

    std::vector<Soaking> finish() {
        giveUp(RecordedTime::max());
        std::stable_sort(soakings_.begin(), soakings_.end(),
                         [](const Soaking& a, const Soaking& b) { return a.time < b.time; });
        return std::move(soakings_);
    }

  private:
    void showSoaked(RecordedTime time, const PlayerUpdate& victim, const UpdateMessage& after) {
        const auto notice =
            std::find_if(waiting_.begin(), waiting_.end(), [&](const Notice& waiting) {
                return waiting.soaking.victim == victim.name;
            });
        Soaking soaking{.time = time, .victim = victim.name};
        const PlayerUpdate* shooter = nullptr;
        if (notice != waiting_.end()) {
            soaking.time = notice->time;
            soaking.shooter = notice->soaking.shooter;
            shooter = livingPlayer(last_, soaking.shooter);
            waiting_.erase(notice);
        } else {
            // A late state shows somebody soaked who is back already, with points as they were.
            const PlayerUpdate* later = client::playerWith(after, victim.id);
            if (later->points >= victim.points)
                return;
            shooter = onlyScorer(last_, after);
            soaking.shooter = shooter ? shooter->name : "";
        }
        place(soaking, &victim, shooter);
        add(std::move(soaking));
    }

    /// Takes notices whose states do not come as they are.
    void giveUp(RecordedTime now) {
        while (!waiting_.empty() && waiting_.front().time < now - patience) {
            const Notice& notice = waiting_.front();
            Soaking soaking{.time = notice.time,
                            .victim = notice.soaking.victim,
                            .shooter = notice.soaking.shooter};
            place(soaking, livingPlayer(notice.state, soaking.victim),
                  livingPlayer(notice.state, soaking.shooter));
            add(std::move(soaking));
            waiting_.pop_front();
        }
    }

    void add(Soaking&& soaking) {
        const auto [last, isFirst] = lastTimes_.try_emplace(soaking.victim, soaking.time);
        if (!isFirst && soaking.time - last->second < soonestAgain)
            return;
        last->second = soaking.time;
        soakings_.push_back(std::move(soaking));
    }

    static void place(Soaking& soaking, const PlayerUpdate* victim, const PlayerUpdate* shooter) {
        if (victim)
            soaking.at = victim->position;
        if (shooter)
            soaking.from = shooter->position;
        if (victim && shooter)
            soaking.distance = static_cast<double>((victim->position - shooter->position).length());
    }

    UpdateMessage last_;
    std::deque<Notice> waiting_;
    std::vector<Soaking> soakings_;

    /// Of each victim's latest soaking.
    std::map<std::string, RecordedTime> lastTimes_;
};

} // namespace

std::vector<Soaking> soakingsOf(client::RecordingReader& reader, std::size_t most) {
    Watcher watcher;
    OneLine line;
    while (const std::optional<RecordedDatagram> datagram = reader.next()) {
        if (!line.takes(*datagram))
            continue;
        const client::RoomRecord record = client::readRecord(datagram->bytes);
        if (const auto* talk = std::get_if<TalkMessage>(&record))
            watcher.hear(datagram->time, *talk);
        else if (const auto* state = std::get_if<UpdateMessage>(&record))
            watcher.see(datagram->time, *state);
        if (watcher.count() > most)
            throw InputError(reader.name() + ": has more soakings than any match; cut it");
    }
    return watcher.finish();
}

} // namespace drench::replay
