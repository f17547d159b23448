#include "client/Session.h"

#include "client/Notices.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <poll.h>
#include <utility>
#include <variant>

namespace drench::client {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// A fifth of the room's patience, so that some may get lost.
constexpr seconds keepAliveAfter(1);

/// After this long without snapshots our identifier may be another player's.
constexpr seconds trustInIdentifier(1);

/// Longer than a line stalls now and then, shorter than the 5 s after which the room drops us.
constexpr seconds silencePatience(3);

/// A limit, so that a flood cannot hold up the caller.
constexpr int datagramsAtOnce = 256;

/// Enough for the longest record and to see that a datagram is longer.
constexpr std::size_t bufferSize = sizeof(GenericMessage) + 1;

/// The identifier of the only player with this name; 0 when there is none or more than one.
char onlyPlayerNamed(const UpdateMessage& state, std::string_view name) {
    char found = 0;
    for (const PlayerUpdate& player : state.updates) {
        if (player.id == 0 || player.name != name)
            continue;
        if (found != 0)
            return 0;
        found = player.id;
    }
    return found;
}

} // namespace

std::optional<Session> Session::join(const sockaddr_in& room, std::string_view name, Time now,
                                     std::string& problem, Tap tap) {
    Session session;
    Parts& parts = session.parts_;
    if (!parts.socket.open(room, problem))
        return std::nullopt;
    parts.name = untilZero(name).substr(0, longestName);
    parts.now = now;
    parts.tap = std::move(tap);
    session.sendJoin();
    return session;
}

Session::~Session() {
    leave(parts_.now);
}

Session::Session(Session&& other) noexcept : parts_(std::exchange(other.parts_, Parts{})) {}

Session& Session::operator=(Session&& other) noexcept {
    if (this != &other) {
        leave(parts_.now);
        parts_ = std::exchange(other.parts_, Parts{});
    }
    return *this;
}

Time Session::wakeAt() const {
    if (!isOpen())
        return Time::max();
    if (!isPlaying())
        return parts_.joining.wakeAt();
    if (!parts_.inputs.isEmpty())
        return parts_.now;
    const Time wake = std::min(parts_.lastSign + keepAliveAfter, silenceDeadline());
    return mayHaveBeenReplaced() ? wake : std::min(wake, parts_.inputs.keysDueAt());
}

void Session::service(Time now) {
    const bool hasStalled = now - parts_.now >= trustInIdentifier;
    parts_.now = now;
    parts_.sentInputs.clear();
    const bool hasCaughtUp = receive([this](std::string_view datagram) { take(datagram); });
    parts_.snapshotsMayBeOld = hasStalled || !hasCaughtUp;
    if (isPlaying())
        continuePlaying();
    else if (isOpen())
        continueJoining();
}

std::optional<Event> Session::nextEvent() {
    return parts_.events.take();
}

const PlayerUpdate* Session::self(const UpdateMessage& state) const {
    return playerWith(state, parts_.id);
}

void Session::setKey(int key, bool down) {
    if (isPlaying())
        parts_.inputs.setKey(key, down, parts_.now);
}

void Session::turn(int dx, int dy) {
    if (isPlaying())
        parts_.inputs.turn(dx, dy);
}

void Session::say(std::string_view text) {
    if (isPlaying())
        parts_.inputs.say(text);
}

void Session::sendAgain(const InputRecord& lost) {
    if (isPlaying())
        parts_.inputs.sendAgain(lost, parts_.now);
}

void Session::leave(Time now) {
    if (!isOpen())
        return;
    const bool hasStalled = now - parts_.now >= trustInIdentifier;
    parts_.now = now;
    parts_.sentInputs.clear();
    receive([this](std::string_view datagram) { takeWhileLeaving(datagram); });
    if (isPlaying() && !mayHaveBeenReplaced() && !hasStalled) {
        sendInputs();
        sendLeave(parts_.id);
    }
    close();
}

/// Passes on the datagrams that wait in the socket, up to a limit. Returns whether none is left.
template<class Take>
bool Session::receive(const Take& take) {
    for (int i = 0; i < datagramsAtOnce && isOpen(); ++i) {
        char datagram[bufferSize];
        std::size_t length = 0;
        switch (parts_.socket.receive(datagram, sizeof datagram, length)) {
        case Socket::Result::done:
            ++parts_.statistics.received;
            if (parts_.tap)
                parts_.tap(Way::fromRoom, {datagram, length}, parts_.now);
            take(std::string_view(datagram, length));
            break;
        case Socket::Result::nobodyListens:
            noteNobodyListens();
            break;
        case Socket::Result::nothing:
            return true;
        case Socket::Result::failed:
            break;
        }
    }
    return false;
}

void Session::take(std::string_view datagram) {
    const RoomRecord record = readRecord(datagram);
    if (!std::holds_alternative<UnknownRecord>(record)) {
        parts_.joining.hasHeard = true;
        parts_.nobodyListens = false;
    }
    std::visit([this](const auto& known) { take(known); }, record);
}

void Session::take(const UnknownRecord& /*unknown*/) {
    ++parts_.statistics.unknown;
}

void Session::take(const Receipt& /*receipt*/) {
    parts_.roundTrip.receipt(parts_.now);
}

void Session::take(const AcceptanceMessage& acceptance) {
    if (!isPlaying())
        startPlaying(acceptance.id);
    else if (acceptance.id != parts_.id)
        sendLeave(acceptance.id);
}

void Session::take(const RefusalMessage& /*refusal*/) {
    parts_.joining.takeRefusal(parts_.now);
}

void Session::take(const UpdateMessage& state) {
    const Snapshot snapshot = {state, parts_.tickClock.arrival(parts_.now), parts_.now};
    ++parts_.statistics.snapshots;
    parts_.statistics.snapshotsMissed = parts_.tickClock.missed();

    if (!isPlaying()) {
        Joining& joining = parts_.joining;
        if (!joining.firstSnapshot)
            joining.firstSnapshot = parts_.now;
        const char id = onlyPlayerNamed(state, parts_.name);
        if (id == 0 || !joining.hasMissedAcceptance(parts_.now))
            return;
        startPlaying(id);
    }
    const PlayerUpdate* const player = self(state);
    if (!player || player->name != parts_.name) {
        end(Dropped{Dropped::Reason::replaced});
        return;
    }
    parts_.lastSnapshot = parts_.now;
    parts_.events.push(snapshot);
}

void Session::take(const TalkMessage& talk) {
    if (isPlaying())
        parts_.events.push(wordsOf(talk));
}

/// The answer to the join, or to a second copy of it, may have come in the meantime.
void Session::takeWhileLeaving(std::string_view datagram) {
    const RoomRecord record = readRecord(datagram);
    const auto* const acceptance = std::get_if<AcceptanceMessage>(&record);
    if (acceptance && acceptance->id != parts_.id)
        sendLeave(acceptance->id);
}

void Session::continueJoining() {
    if (parts_.joining.isRefused(parts_.now))
        end(Refused{});
    else if (parts_.joining.isUnanswered(parts_.now))
        end(Unanswered{parts_.nobodyListens});
    else if (parts_.joining.isSendDue(parts_.now))
        sendJoin();
}

void Session::continuePlaying() {
    if (parts_.now >= silenceDeadline()) {
        end(Dropped{Dropped::Reason::silence});
        return;
    }
    if (mayHaveBeenReplaced())
        parts_.inputs.clear();
    else
        sendInputs();
    // Even if we may have been replaced: the room must not drop us because of a stall.
    if (parts_.now >= parts_.lastSign + keepAliveAfter)
        sendKeepAlive();
}

void Session::startPlaying(char id) {
    parts_.id = id;
    parts_.lastSnapshot = parts_.now;
    parts_.lastSign = parts_.now;
    parts_.events.push(Joined{id});
}

void Session::end(const Event& reason) {
    close();
    parts_.events.pushAlways(reason);
}

void Session::close() {
    parts_.socket.close();
    parts_.id = 0;
}

/// Returns whether the datagram went out.
bool Session::send(const void* datagram, std::size_t length) {
    Socket::Result result = parts_.socket.send(datagram, length);
    // The error answers an earlier datagram; this one has not been sent yet.
    if (result == Socket::Result::nobodyListens) {
        noteNobodyListens();
        result = parts_.socket.send(datagram, length);
    }
    if (result != Socket::Result::done) {
        ++parts_.statistics.unsent;
        return false;
    }
    ++parts_.statistics.sent;
    if (parts_.tap)
        parts_.tap(Way::toRoom, {static_cast<const char*>(datagram), length}, parts_.now);
    parts_.roundTrip.sent(parts_.now);
    return true;
}

void Session::sendJoin() {
    JoinMessage record;
    parts_.name.copy(record.name, longestName);
    send(&record, offsetof(JoinMessage, name) + parts_.name.size() + 1);
    parts_.joining.sent(parts_.now);
}

void Session::sendInputs() {
    for (const InputRecord& input : parts_.inputs.takeDue(parts_.id, parts_.now)) {
        const bool isSent =
            std::visit([this](const auto& record) { return send(&record, sizeof record); }, input);
        if (isSent)
            parts_.sentInputs.push_back(input);
        parts_.lastSign = parts_.now;
    }
}

void Session::sendKeepAlive() {
    KeepAliveMessage record;
    record.id = parts_.id;
    send(&record, sizeof record);
    parts_.lastSign = parts_.now;
}

void Session::sendLeave(char id) {
    LeaveMessage record;
    record.id = id;
    send(&record, sizeof record);
}

void Session::noteNobodyListens() {
    parts_.nobodyListens = true;
    parts_.roundTrip.refused();
}

Time Session::silenceDeadline() const {
    return parts_.lastSnapshot + (parts_.nobodyListens ? trustInIdentifier : silencePatience);
}

bool Session::mayHaveBeenReplaced() const {
    return parts_.snapshotsMayBeOld || parts_.now >= parts_.lastSnapshot + trustInIdentifier;
}

void wait(const Session& session, Time now) {
    const Time wake = session.wakeAt();
    if (!session.isOpen() || wake <= now)
        return;
    pollfd readable = {session.descriptor(), POLLIN, 0};
    ::poll(&readable, 1, static_cast<int>(std::chrono::ceil<milliseconds>(wake - now).count()));
}

} // namespace drench::client
