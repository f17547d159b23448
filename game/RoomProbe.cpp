#include "game/RoomProbe.h"

#include "client/Records.h"
#include "common/Decimals.h"

#include <algorithm>
#include <variant>

namespace drench::game {

namespace {

using std::chrono::milliseconds;

/// A datagram without an answer for so long is lost.
constexpr milliseconds patience{1000};

/// From an answer to the next question.
constexpr milliseconds pause{2000};

/// Lost one after the other, until the room counts as silent; it goes on being asked.
constexpr int mostUnanswered = 3;

} // namespace

void RoomProbe::service(Time now) {
    if (!socket_.isOpen())
        start();
    if (!socket_.isOpen())
        return;
    hear(now);
    if (asked_ && now - *asked_ > patience) {
        asked_.reset();
        if (++unanswered_ >= mostUnanswered && finding_ != Finding::nobodyListens)
            finding_ = Finding::silent;
    }
    if (!asked_ && now >= next_)
        ask(now);
}

void RoomProbe::start() {
    if (finding_ == Finding::noSuchHost)
        return;
    const std::optional<Resolving::Answer> answer = resolving_.answer();
    if (!answer)
        return;
    std::string problem;
    if (!answer->room || !socket_.open(answer->room->address, problem))
        finding_ = Finding::noSuchHost;
}

void RoomProbe::hear(Time now) {
    using Result = client::Socket::Result;
    char buffer[sizeof(GenericMessage) + 1];
    std::size_t length = 0;
    Result result;
    while ((result = socket_.receive(buffer, sizeof buffer, length)) == Result::done) {
        const client::RoomRecord record = client::readRecord({buffer, length});
        if (!std::holds_alternative<client::Receipt>(record) || !asked_)
            continue;
        const double trip = std::chrono::duration<double, std::milli>(now - *asked_).count();
        roundTrip_ = std::min(trip, roundTrip_.value_or(trip));
        finding_ = Finding::answers;
        unanswered_ = 0;
        asked_.reset();
    }
    if (result == Result::nobodyListens) {
        finding_ = Finding::nobodyListens;
        asked_.reset();
    }
}

void RoomProbe::ask(Time now) {
    constexpr KeepAliveMessage ofNobody{};
    if (socket_.send(&ofNobody, sizeof ofNobody) == client::Socket::Result::done)
        asked_ = now;
    next_ = now + pause;
}

std::string findingWords(const RoomProbe& probe) {
    using Finding = RoomProbe::Finding;
    switch (probe.finding()) {
    case Finding::asking:
        return "asking ...";
    case Finding::answers:
        return decimals(probe.roundTrip(), *probe.roundTrip() < 10.0 ? 1 : 0) + " ms";
    case Finding::silent:
        return "does not answer";
    case Finding::nobodyListens:
        return "nobody listens";
    case Finding::noSuchHost:
        return "no such host";
    }
    return "";
}

} // namespace drench::game
