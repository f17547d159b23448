#include "game/Visit.h"

#include <algorithm>
#include <utility>

namespace drench::game {

namespace {

/// Until the next look at what has no descriptor to wait for: a look-up, a process.
constexpr std::chrono::milliseconds lookGap{20};

constexpr char hostedRoom[] = "The room on this machine";

} // namespace

void Visit::join(const std::string& room, const std::string& name, Time now) {
    hosted_.reset();
    begin(room, name, now);
}

void Visit::join(const client::RoomAddress& room, const std::string& name, Time now) {
    hosted_.reset();
    begin(room.name, name, now);
    resolving_.reset();
    openSession(room.address, now);
}

void Visit::begin(const std::string& room, const std::string& name, Time now) {
    if (session_)
        session_->leave(now);
    session_.reset();
    name_ = name;
    hasEntered_ = false;
    screens_.join(room);
    if (!hosted_)
        resolving_.emplace(room);
}

void Visit::host(const std::string& folder, int bots, const std::string& name, Time now) {
    hostFolder_ = folder;
    hostBots_ = bots;
    hosted_.emplace(folder, bots, now);
    resolving_.reset();
    begin(hostedRoom, name, now);
}

void Visit::joinAgain(Time now) {
    // A room of one's own that has ended is not there to be found again.
    if (hosted_ && hosted_->state() == HostedRoom::State::failed) {
        hosted_.emplace(hostFolder_, hostBots_, now);
        begin(hostedRoom, name_, now);
        return;
    }
    session_.reset();
    screens_.joinAgain();
    resolving_.emplace(hosted_ ? hosted_->address() : screens_.room());
    resolveOnce(now);
}

void Visit::leave(Time now) {
    if (session_)
        session_->leave(now);
    session_.reset();
    resolving_.reset();
    hosted_.reset();
    screens_.leave();
}

void Visit::service(Time now, const Listener& listener) {
    if (hosted_)
        hostOnce(now);
    if (resolving_)
        resolveOnce(now);
    if (screens_.isJoinDue(now))
        joinAgain(now);
    if (!session_)
        return;
    session_->service(now);
    listener.serviced(*session_);
    while (const std::optional<client::Event> event = session_->nextEvent()) {
        note(*event, now);
        listener.take(*event, *session_);
    }
    if (session_->isPlaying())
        line_.add(now, countsOf(*session_, frame_, lastSnapshot_));
    if (!session_->isOpen())
        session_.reset();
}

void Visit::hostOnce(Time now) {
    const HostedRoom::State before = hosted_->state();
    hosted_->service(now);
    if (before == HostedRoom::State::starting && hosted_->state() == HostedRoom::State::open)
        resolving_.emplace(hosted_->address());
    const bool isShown = !session_ && (screens_.place() == Screens::Place::joining ||
                                       screens_.secondsUntilJoin(now) >= 0.0);
    if (hosted_->state() == HostedRoom::State::failed && isShown)
        screens_.fail({"There is no room on this machine now.", hosted_->problem()});
}

void Visit::resolveOnce(Time now) {
    const std::optional<Resolving::Answer> answer = resolving_->answer();
    if (!answer)
        return;
    resolving_.reset();
    if (answer->room)
        openSession(answer->room->address, now);
    else
        failToJoin(answer->problem);
}

void Visit::openSession(const sockaddr_in& room, Time now) {
    std::string problem;
    session_ = client::Session::join(room, name_, now, problem,
                                     taps_ ? taps_(screens_.room(), now) : client::Tap());
    line_.forget();
    if (!session_)
        failToJoin(problem);
}

void Visit::failToJoin(const std::string& problem) {
    screens_.fail({screens_.room() + " cannot be joined.", "Because " + problem + "."});
}

void Visit::note(const client::Event& event, Time now) {
    if (std::holds_alternative<client::Joined>(event)) {
        lastSnapshot_ = now;
        hasEntered_ = true;
        screens_.enter();
    } else if (const auto* snapshot = std::get_if<client::Snapshot>(&event)) {
        lastSnapshot_ = snapshot->arrival;
    } else if (const std::optional<Screens::Loss> loss = lossIn(event)) {
        screens_.lose(*loss, now);
    }
}

std::optional<double> Visit::roundTrip() const {
    return session_ ? session_->roundTrip().smoothed() : std::nullopt;
}

Visit::Time Visit::wakeAt(Time now) const {
    if (session_)
        return session_->wakeAt();
    return resolving_ || hosted_ ? now + lookGap : Time::max();
}

void Visit::addDescriptors(std::vector<int>& descriptors) const {
    for (const int each :
         {session_ ? session_->descriptor() : -1, hosted_ ? hosted_->descriptor() : -1}) {
        if (each >= 0)
            descriptors.push_back(each);
    }
}

} // namespace drench::game
