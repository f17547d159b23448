#include "client/Bodies.h"

#include <algorithm>
#include <chrono>

namespace drench::client {

void Bodies::serviced(Session& session, Time now) {
    prediction_.sent(session.sentInputs(), now);
    for (const InputRecord& lost : prediction_.takeLost())
        session.sendAgain(lost);
}

void Bodies::take(const Snapshot& snapshot, const Session& session) {
    id_ = session.id();
    prediction_.take(snapshot, id_, session.roundTrip().smoothed(), session.tickClock().period());
    others_.take(snapshot.state, prediction_.tick(), snapshot.arrival);
}

std::optional<Prediction::Body> Bodies::own(Time now) const {
    return prediction_.body(now);
}

std::vector<PlayerUpdate> Bodies::others(Time now, bool ahead) {
    const ArrivalLine& line = prediction_.line();
    const double target =
        prediction_.tickAt(now) +
        (ahead ? line.delay() / line.period()
               : -interpolationDelay(line.lateness(), line.latenessSpread(), line.period()));
    if (ahead != wasAhead_)
        drawnTick_ = {};
    wasAhead_ = ahead;
    std::vector<PlayerUpdate> players =
        others_.at(drawnTick_.advance(now, target, line.period()), now);
    std::erase_if(players, [this](const PlayerUpdate& player) { return player.id == id_; });
    return players;
}

UpdateMessage Bodies::shown(const PlayerUpdate& self, const std::optional<Prediction::Body>& own,
                            Time now, bool ahead) {
    PlayerUpdate predicted = self;
    if (own) {
        predicted.position = own->player.position;
        predicted.direction = own->player.direction;
        predicted.rotation = own->player.rotation;
    }
    UpdateMessage state;
    state.add(predicted);
    for (const PlayerUpdate& other : others(now, ahead))
        state.add(other);
    return state;
}

} // namespace drench::client
