#include "game/Match.h"

#include "client/Records.h"
#include "game/Text.h"
#include "src/Player.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace drench::game {

namespace {

/// A notice and the snapshot of the same soaking lie no further apart: a line that is worse loses
/// them.
constexpr std::chrono::milliseconds soakingSlack{1000};

constexpr std::size_t mostToldSoakings = 16;

/// Makes room for one more.
template<class Line>
void push(std::deque<Line>& lines, Line line, std::size_t most) {
    if (lines.size() == most)
        lines.pop_front();
    lines.push_back(std::move(line));
}

bool areNear(client::Time a, client::Time b) {
    return std::max(a, b) - std::min(a, b) <= soakingSlack;
}

} // namespace

void Match::take(const client::Event& event, client::Time now) {
    now_ = now;
    std::visit([&](const auto& each) { note(each); }, event);
}

const MatchPlayer* Match::player(char id) const {
    const auto found = std::find_if(players_.begin(), players_.end(),
                                    [&](const MatchPlayer& each) { return each.id == id; });
    return found == players_.end() ? nullptr : &*found;
}

void Match::note(const client::Joined& joined) {
    // What was said before a lost room was joined again stays.
    players_.clear();
    soakings_.clear();
    ownId_ = joined.id;
}

void Match::note(const client::Snapshot& snapshot) {
    std::vector<MatchPlayer> seen;
    for (const PlayerUpdate& update : snapshot.state.updates) {
        const bool isFirst = std::none_of(seen.begin(), seen.end(), [&](const MatchPlayer& each) {
            return each.id == update.id;
        });
        if (update.id != 0 && isFirst)
            see(update, player(update.id), seen.emplace_back());
    }
    std::sort(seen.begin(), seen.end(),
              [](const MatchPlayer& a, const MatchPlayer& b) { return a.id < b.id; });
    players_ = std::move(seen);
}

void Match::see(const PlayerUpdate& update, const MatchPlayer* before, MatchPlayer& player) const {
    const std::string rawName(client::untilZero({update.name, sizeof update.name}));
    // Another player may have got the identifier.
    if (before && before->rawName == rawName) {
        player = *before;
    } else {
        player.id = update.id;
        player.name = drawableName(rawName);
        player.rawName = rawName;
    }
    player.points = update.points;
    if (!client::isSoaked(update)) {
        player.soakedSince.reset();
        player.soakedBy.clear();
        return;
    }
    if (player.soakedSince)
        return;
    player.soakedSince = now_;
    const auto told =
        std::find_if(soakings_.rbegin(), soakings_.rend(), [&](const ToldSoaking& each) {
            return each.rawVictim == rawName && areNear(each.moment, now_);
        });
    if (told != soakings_.rend())
        player.soakedBy = told->shooter;
}

void Match::note(const client::Chat& chat) {
    const MatchPlayer* const speaker = player(chat.speaker);
    const std::string name = speaker ? speaker->name : std::string("player ") + chat.speaker;
    push(said_, {now_, {name, chat.speaker}, drawable(chat.text)}, mostSaid);
}

void Match::note(const client::PlayerJoined& joined) {
    MatchNotice& notice = tell(MatchNotice::Kind::joined);
    notice.who = named(joined.name);
    notice.words = notice.who.name + " joined";
}

void Match::note(const client::PlayerLeft& left) {
    MatchNotice& notice = tell(MatchNotice::Kind::left);
    notice.who = named(left.name);
    notice.words = notice.who.name + " left";
}

void Match::note(const client::Soaking& soaking) {
    const Named shooter = named(soaking.shooter);
    const Named victim = named(soaking.victim);
    push(soakings_, {now_, shooter.name, soaking.victim}, mostToldSoakings);
    for (MatchPlayer& each : players_) {
        if (each.rawName == soaking.victim && each.soakedSince && each.soakedBy.empty() &&
            areNear(*each.soakedSince, now_))
            each.soakedBy = shooter.name;
    }
    MatchNotice& notice = tell(MatchNotice::Kind::soaking);
    notice.who = shooter;
    notice.whom = victim;
    notice.words = shooter.name + " soaked " + victim.name;
}

void Match::note(const client::Notice& notice) {
    tell(MatchNotice::Kind::other).words = drawable(notice.text);
}

Named Match::named(const std::string& rawName) const {
    Named found{drawableName(rawName), 0};
    for (const MatchPlayer& each : players_) {
        if (each.rawName != rawName)
            continue;
        if (found.id != 0)
            return {found.name, 0};
        found.id = each.id;
    }
    return found;
}

MatchNotice& Match::tell(MatchNotice::Kind kind) {
    push(notices_, MatchNotice(), mostNotices);
    notices_.back().kind = kind;
    notices_.back().moment = now_;
    return notices_.back();
}

double secondsUntilReturn(const MatchPlayer& player, client::Time now) {
    if (!player.soakedSince)
        return 0.0;
    const std::chrono::duration<double> waited = now - *player.soakedSince;
    return std::max(0.0, static_cast<double>(Player::respawnDelay) / 1000.0 - waited.count());
}

} // namespace drench::game
