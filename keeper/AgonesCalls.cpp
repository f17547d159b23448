#include "keeper/AgonesCalls.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string_view>

namespace drench::keeper {

namespace {

using nlohmann::json;
using Kind = AgonesCall::Kind;

/// The game server's counter, list and label.
constexpr char playersName[] = "players";

/// What an allocation would change nothing of, or would take back: the end, which others have asked
/// for.
constexpr std::array<std::string_view, 3> statesToKeep = {"Allocated", "Shutdown", "Unhealthy"};

/// After an allocation the state takes a moment to say so.
constexpr milliseconds allocationShows{10'000};

bool succeeded(int status) {
    return status >= 200 && status < 300;
}

/// Whether the answer says that there is no such counter or list. An SDK server that knows them but
/// has them switched off says so in its words alone.
bool isUnknownWay(int status, const std::string& body) {
    return status == 404 || status == 405 || status == 501 ||
           (status >= 400 && body.find("not enabled") != std::string::npos);
}

} // namespace

const char* nameOf(Kind kind) {
    switch (kind) {
    case Kind::health:
        return "health";
    case Kind::ready:
        return "ready";
    case Kind::allocate:
        return "allocate";
    case Kind::players:
        return "players";
    case Kind::shutdown:
        return "shutdown";
    case Kind::state:
        return "state";
    }
    return "";
}

void AgonesCalls::Trial::failed(Time now) {
    at = now + pause;
    pause = std::min(2 * pause, longestPause);
}

void AgonesCalls::Trial::succeeded(Time next) {
    at = next;
    pause = shortestPause;
}

void AgonesCalls::setAnswering(std::optional<Time> until) {
    answersUntil_ = until;
    ready_.isWished = ready_.isWished || until;
}

Time AgonesCalls::healthAt(Time now) const {
    const Time at = std::max(now, nextHealthAt_);
    return answersUntil_ && at < *answersUntil_ ? at : Time::max();
}

Time AgonesCalls::allocateAt() const {
    // Ready would take an allocation back, and so comes first.
    const bool helps =
        std::find(statesToKeep.begin(), statesToKeep.end(), state_) == statesToKeep.end();
    return places_.players > 0 && ready_.isDone && helps ? allocate_.at : Time::max();
}

Time AgonesCalls::playersAt() const {
    return ready_.isDone && toldPlaces_ != places_ ? tellPlayers_.at : Time::max();
}

std::optional<AgonesCall> AgonesCalls::due(Time now) const {
    if (shutdown_.isWished) {
        if (now >= shutdown_.dueAt())
            return AgonesCall{Kind::shutdown, "POST", "/shutdown", "{}"};
        return std::nullopt;
    }
    if (now >= healthAt(now))
        return AgonesCall{Kind::health, "POST", "/health", "{}"};
    if (now >= ready_.dueAt())
        return AgonesCall{Kind::ready, "POST", "/ready", "{}"};
    if (now >= allocateAt())
        return AgonesCall{Kind::allocate, "POST", "/allocate", "{}"};
    if (now >= playersAt())
        return playersCall();
    if (now >= stateAt_)
        return AgonesCall{Kind::state, "GET", "/gameserver", ""};
    return std::nullopt;
}

Time AgonesCalls::nextAt(Time now) const {
    if (shutdown_.isWished)
        return shutdown_.dueAt();
    return std::min({healthAt(now), ready_.dueAt(), allocateAt(), playersAt(), stateAt_});
}

AgonesCall AgonesCalls::playersCall() const {
    AgonesCall call{Kind::players, "PATCH", "", "", places_};
    // Their REST has 64-bit numbers as text.
    switch (way_) {
    case Way::counter:
        call.path = std::string("/v1beta1/counters/") + playersName;
        call.body = json{{"count", std::to_string(places_.players)},
                         {"capacity", std::to_string(places_.capacity)}}
                        .dump();
        break;
    case Way::list: {
        // Names are no names for this: two may be alike, and none need be UTF-8.
        json values = json::array();
        for (int place = 1; place <= places_.players; ++place)
            values.push_back(std::to_string(place));
        call.path = std::string("/v1beta1/lists/") + playersName;
        call.body = json{{"values", values}, {"capacity", std::to_string(places_.capacity)}}.dump();
        break;
    }
    case Way::label:
        call.method = "PUT";
        call.path = "/metadata/label";
        call.body = json{{"key", playersName}, {"value", std::to_string(places_.players)}}.dump();
        break;
    }
    return call;
}

void AgonesCalls::answered(const AgonesCall& call, int status, const std::string& body, Time now) {
    const auto settle = [&](Wish& wish) {
        if (succeeded(status))
            wish.isDone = true;
        else
            wish.failed(now);
    };
    switch (call.kind) {
    case Kind::health:
        nextHealthAt_ = now + period;
        break;
    case Kind::ready:
        settle(ready_);
        break;
    case Kind::shutdown:
        settle(shutdown_);
        break;
    case Kind::allocate:
        if (succeeded(status)) {
            allocate_.succeeded(now + allocationShows);
            stateAt_ = now;
        } else {
            allocate_.failed(now);
        }
        break;
    case Kind::players:
        takePlayersAnswer(call, status, body, now);
        break;
    case Kind::state:
        stateAt_ = now + period;
        if (succeeded(status))
            takeState(body);
        break;
    }
}

void AgonesCalls::takePlayersAnswer(const AgonesCall& call, int status, const std::string& body,
                                    Time now) {
    if (succeeded(status)) {
        toldPlaces_ = call.places;
        tellPlayers_.succeeded(now);
    } else if (way_ != Way::label && isUnknownWay(status, body)) {
        way_ = way_ == Way::counter ? Way::list : Way::label;
    } else {
        tellPlayers_.failed(now);
    }
}

void AgonesCalls::takeState(const std::string& body) {
    const json gameServer = json::parse(body, nullptr, false);
    const json::json_pointer place("/status/state");
    if (gameServer.is_object() && gameServer.contains(place) && gameServer[place].is_string())
        state_ = gameServer[place];
}

} // namespace drench::keeper
