#include "game/Autopilot.h"

#include "bots/Play.h"

namespace drench::game {

namespace {

/// What the bot does follows from it.
constexpr std::uint64_t botSeed = 1;

} // namespace

void Autopilot::letBotPlay(const bots::Roadmap& roadmap, double skill) {
    roadmap_ = &roadmap;
    skill_ = skill;
}

void Autopilot::enterRoom() {
    if (roadmap_)
        bot_.emplace(*roadmap_, skill_, botSeed);
}

void Autopilot::act(const client::Snapshot& snapshot, client::Session& session,
                    client::Bodies& bodies, client::Time now, bool ahead) {
    for (; acted_ < script_.size() && script_[acted_].tick <= snapshot.tick; ++acted_)
        act(script_[acted_], session);
    const PlayerUpdate* const self = session.self(snapshot.state);
    if (bot_ && self)
        bots::send(session, bot_->decide(bodies.shown(*self, now, ahead), self->id));
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
