#include "game/Screens.h"

#include "game/RoomLink.h"

#include <algorithm>

namespace drench::game {

namespace {

constexpr double firstPause = 1.0;
constexpr double longestPause = 30.0;

Trouble troubleOf(Match::Standing why, const std::string& room) {
    using Standing = Match::Standing;
    switch (why) {
    case Standing::full:
        return {room + " is full.", "Four play there already. Wait until somebody leaves, or "
                                    "choose another room."};
    case Standing::unanswered:
        return {room + " does not answer.",
                "Look for a slip in the address. The host's machine may be off, or its firewall "
                "may not let this UDP port through."};
    case Standing::nobodyListens:
        return {"Nobody listens at " + room + ".",
                "The machine is there, but the room is not: it has ended, or it has another "
                "port."};
    case Standing::silent:
        return {room + " has fallen silent.",
                "The room has ended or is being started anew, or the line is dead."};
    case Standing::replaced:
        return {room + " has dropped you.",
                "It heard nothing from you for five seconds, or it was started anew."};
    case Standing::joining:
    case Standing::playing:
        break;
    }
    return {};
}

} // namespace

double secondsBefore(int attempt) {
    double pause = firstPause;
    for (int i = 0; i < attempt && pause < longestPause; ++i)
        pause *= 2.0;
    return std::min(pause, longestPause);
}

void Screens::join(const std::string& room) {
    room_ = roomOfLink(room);
    place_ = Place::joining;
    panel_ = Panel::none;
    trouble_ = {};
    wasIn_ = false;
    tries_ = false;
    attempts_ = 0;
}

void Screens::joinAgain() {
    place_ = Place::joining;
    tries_ = false;
    ++attempts_;
}

void Screens::enter() {
    place_ = Place::match;
    panel_ = Panel::none;
    trouble_ = {};
    wasIn_ = true;
    attempts_ = 0;
}

void Screens::lose(Match::Standing why, Time now) {
    place_ = Place::trouble;
    panel_ = Panel::none;
    trouble_ = troubleOf(why, room_);
    tries_ = wasIn_ || why == Match::Standing::full;
    const std::chrono::duration<double> pause(secondsBefore(attempts_));
    next_ = now + std::chrono::duration_cast<Time::duration>(pause);
}

void Screens::fail(const Trouble& trouble) {
    place_ = Place::trouble;
    panel_ = Panel::none;
    trouble_ = trouble;
    tries_ = false;
}

void Screens::leave() {
    *this = Screens();
}

bool Screens::isJoinDue(Time now) const {
    return place_ == Place::trouble && tries_ && now >= next_;
}

double Screens::secondsUntilJoin(Time now) const {
    if (place_ != Place::trouble || !tries_)
        return -1.0;
    return std::max(std::chrono::duration<double>(next_ - now).count(), 0.0);
}

void Screens::escape() {
    if (panel_ != Panel::none)
        closePanel();
    else if (place_ == Place::match)
        panel_ = Panel::menu;
}

void Screens::openChat() {
    if (gameHasInput())
        panel_ = Panel::chat;
}

void Screens::openSettings() {
    if (place_ == Place::start || panel_ == Panel::menu)
        panel_ = Panel::settings;
}

void Screens::closePanel() {
    const bool wasInMenu = panel_ == Panel::settings && place_ == Place::match;
    panel_ = wasInMenu ? Panel::menu : Panel::none;
}

} // namespace drench::game
