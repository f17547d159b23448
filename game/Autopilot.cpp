#include "game/Autopilot.h"

#include "bots/ChartCache.h"
#include "bots/Play.h"

#include <chrono>

namespace drench::game {

namespace {

/// What the bot does follows from it.
constexpr std::uint64_t botSeed = 1;

} // namespace

void Autopilot::enterArena(MapManager& map) {
    map_ = &map;
    bot_.reset();
}

void Autopilot::act(const client::Snapshot& snapshot, client::Session& session,
                    const std::function<UpdateMessage(const PlayerUpdate& self)>& shown) {
    for (; acted_ < script_.size() && script_[acted_].tick <= snapshot.tick; ++acted_)
        act(script_[acted_], session);
    if (skill_ && !bot_)
        prepareBot();
    const PlayerUpdate* const self = session.self(snapshot.state);
    if (bot_ && self)
        bots::send(session, bot_->decide(shown(*self), self->id));
}

void Autopilot::prepareBot() {
    if (charting_.valid()) {
        // A chart that is not wanted any more ends soon, but not at once.
        goesOn_ = charted_ == map_;
        if (charting_.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            return;
        roadmap_ = charting_.get();
    }
    if (charted_ != map_ || !roadmap_)
        chart();
    else
        bot_.emplace(*roadmap_, *skill_, botSeed);
}

void Autopilot::chart() {
    charted_ = map_;
    goesOn_ = true;
    charting_ = std::async(std::launch::async, [this, &map = *map_] {
        return bots::keptChart(
            map, bots::chartFolder(), bots::programChecksum(), [this] { return goesOn_.load(); },
            [](const std::string&) {});
    });
}

void Autopilot::act(const bots::Action& action, client::Session& session) {
    using Kind = bots::Action::Kind;
    switch (action.kind) {
    case Kind::hold:
    case Kind::release:
        session.setKey(action.key, action.kind == Kind::hold);
        break;
    case Kind::jump:
        session.setKey(keyIndex::jump, true);
        break;
    case Kind::turn:
        session.turn(action.dx, action.dy);
        break;
    case Kind::say:
        session.say(action.text);
        break;
    case Kind::leave:
        hasLeft_ = true;
        break;
    }
}

} // namespace drench::game
