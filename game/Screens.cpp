#include "game/Screens.h"

#include "game/RoomLink.h"

#include <algorithm>

namespace drench::game {

namespace {

constexpr double firstPause = 1.0;
constexpr double longestPause = 30.0;

using Loss = Screens::Loss;

Trouble troubleOf(Loss why, const std::string& room) {
    switch (why) {
    case Loss::full:
        return {room + " is full.", "Four play there already. Wait until somebody leaves, or "
                                    "choose another room."};
    case Loss::unanswered:
        return {room + " does not answer.",
                "Look for a slip in the address. The host's machine may be off, or its firewall "
                "may not let this UDP port through."};
    case Loss::nobodyListens:
        return {"Nobody listens at " + room + ".",
                "The machine is there, but the room is not: it has ended, or it has another "
                "port."};
    case Loss::silent:
        return {room + " has fallen silent.",
                "The room has ended or is being started anew, or the line is dead."};
    case Loss::replaced:
        return {room + " has dropped you.",
                "It heard nothing from you for five seconds, or it was started anew."};
    }
    return {};
}

} // namespace

std::optional<Loss> lossIn(const client::Event& event) {
    if (std::holds_alternative<client::Refused>(event))
        return Loss::full;
    if (const auto* unanswered = std::get_if<client::Unanswered>(&event))
        return unanswered->nobodyListens ? Loss::nobodyListens : Loss::unanswered;
    if (const auto* dropped = std::get_if<client::Dropped>(&event))
        return dropped->reason == client::Dropped::Reason::silence ? Loss::silent : Loss::replaced;
    return std::nullopt;
}

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

void Screens::lose(Loss why, Time now) {
    place_ = Place::trouble;
    panel_ = Panel::none;
    trouble_ = troubleOf(why, room_);
    tries_ = wasIn_ || why == Loss::full;
    const std::chrono::duration<double> pause(secondsBefore(attempts_));
    next_ = now + std::chrono::duration_cast<Time::duration>(pause);
}

void Screens::fail(const Trouble& trouble) {
    place_ = Place::trouble;
    panel_ = Panel::none;
    trouble_ = trouble;
    tries_ = false;
}

void Screens::watch(const std::string& title) {
    *this = Screens();
    place_ = Place::watching;
    room_ = title;
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

std::string Screens::whyNotPlaying() const {
    if (place_ == Place::joining && trouble_.what.empty())
        return room_ + " has not answered yet.";
    return trouble_.what;
}

void Screens::escape() {
    if (panel_ != Panel::none)
        closePanel();
    else if (hasPicture())
        panel_ = Panel::menu;
}

void Screens::openChat() {
    if (gameHasInput() && place_ == Place::match)
        panel_ = Panel::chat;
}

void Screens::openSettings() {
    if (place_ == Place::start || panel_ == Panel::menu)
        panel_ = Panel::settings;
}

void Screens::closePanel() {
    const bool wasInMenu = panel_ == Panel::settings && hasPicture();
    panel_ = wasInMenu ? Panel::menu : Panel::none;
}

} // namespace drench::game
