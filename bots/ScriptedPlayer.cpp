#include "bots/ScriptedPlayer.h"

#include "bots/Ending.h"
#include "client/Records.h"
#include "client/Session.h"

#include <charconv>
#include <utility>

namespace drench::bots {

namespace {

void append(std::string& line, float number) {
    char text[32];
    const auto end = std::to_chars(std::begin(text), std::end(text), number).ptr;
    line.append(",").append(text, end);
}

constexpr char headings[] = "tick,x,y,z,directionX,directionY,directionZ,points,shooting,alive\n";

std::string recordOf(std::int64_t tick, const PlayerUpdate& self) {
    std::string line = std::to_string(tick);
    for (const vec3& triple : {self.position, self.direction}) {
        append(line, triple.x);
        append(line, triple.y);
        append(line, triple.z);
    }
    return line + ',' + std::to_string(self.points) + ',' + (self.shooting ? '1' : '0') + ',' +
           (client::isSoaked(self) ? '0' : '1') + '\n';
}

void act(client::Session& session, const Action& action, client::Time now) {
    switch (action.kind) {
    case Action::Kind::hold:
    case Action::Kind::release:
        session.setKey(action.key, action.kind == Action::Kind::hold);
        break;
    case Action::Kind::jump:
        session.setKey(keyIndex::jump, true);
        break;
    case Action::Kind::turn:
        session.turn(action.dx, action.dy);
        break;
    case Action::Kind::say:
        session.say(action.text);
        break;
    case Action::Kind::leave:
        session.leave(now);
        break;
    }
}

} // namespace

ScriptedRun playScript(const client::RoomAddress& room, const std::string& name,
                       const std::vector<Action>& script, bool keepRecord,
                       const std::function<bool()>& goOn, client::Tap tap) {
    ScriptedRun run;
    if (keepRecord)
        run.record = headings;
    Scorer scorer;
    auto next = script.begin();
    std::optional<client::Session> session = client::Session::join(
        room.address, name, client::Clock::now(), run.trouble, std::move(tap));
    while (session && session->isOpen() && run.trouble.empty() && goOn()) {
        client::wait(*session, client::Clock::now());
        const client::Time now = client::Clock::now();
        session->service(now);
        while (const std::optional<client::Event> event = session->nextEvent()) {
            run.trouble = endingBy(*event);
            if (!run.trouble.empty())
                break;
            if (std::get_if<client::Joined>(&*event))
                scorer.join();
            const auto* snapshot = std::get_if<client::Snapshot>(&*event);
            const PlayerUpdate* self = snapshot ? session->self(snapshot->state) : nullptr;
            if (!self)
                continue;
            scorer.see(*self, session->statistics().snapshotsMissed, snapshot->arrival);
            if (const std::optional<double> roundTrip = session->roundTrip().smoothed())
                scorer.measureRoundTrip(*roundTrip);
            if (keepRecord)
                run.record += recordOf(snapshot->tick, *self);
            for (; next != script.end() && next->tick <= snapshot->tick; ++next)
                act(*session, *next, now);
        }
    }
    run.player = {room.name, name, scorer.tally()};
    return run;
}

} // namespace drench::bots
