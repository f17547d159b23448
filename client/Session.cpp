#include "client/Session.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace drench::client {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// Joining.
constexpr milliseconds askAgainAfter(500);
constexpr seconds answerPatience(3);

/// How long a missing acceptance is waited for once snapshots come: it may have been overtaken. So
/// may be a refusal by the answer to an earlier copy of the join record.
constexpr milliseconds overtakingPatience(250);

// Playing.
constexpr milliseconds tellKeyAgainAfter(250);
constexpr int tellReleaseTimes = 3;
constexpr seconds keepAliveAfter(1);

/// Without snapshots for this long our identifier may be somebody else's.
constexpr seconds trustInIdentifier(1);

/// Longer than a line stalls now and then, shorter than the 5 s after which the room drops us.
constexpr seconds silencePatience(3);

/// So that a flood cannot hold up the caller.
constexpr int datagramsPerService = 256;
constexpr std::size_t mostEvents = 1024;
constexpr std::size_t mostWords = 16;

constexpr std::size_t longestName = sizeof(PlayerUpdate::name) - 1;
constexpr std::size_t longestText = sizeof(TalkMessage::text);

/// Enough for the longest record and to see that a datagram is longer.
constexpr std::size_t bufferSize = sizeof(GenericMessage) + 1;

std::string_view untilZero(std::string_view bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

std::string_view nameOf(const PlayerUpdate& player) {
    return untilZero({player.name, sizeof player.name}).substr(0, longestName);
}

bool isPlayerId(char id) {
    return id >= '1' && id < '1' + maxPlayers;
}

/// The identifier of the only player with this name; 0 when there is none or more than one.
char onlyPlayerNamed(const UpdateMessage& state, std::string_view name) {
    char found = 0;
    for (const PlayerUpdate& player : state.updates) {
        if (!isPlayerId(player.id) || nameOf(player) != name)
            continue;
        if (found != 0)
            return 0;
        found = player.id;
    }
    return found;
}

/// The identifier that an acceptance gives; 0 when this is none.
char acceptedId(const char* datagram, std::size_t length) {
    const bool isAcceptance =
        length == 2 && datagram[0] == messageCode::accepted && isPlayerId(datagram[1]);
    return isAcceptance ? datagram[1] : '\0';
}

std::optional<std::string> nameBefore(std::string_view text, std::string_view ending) {
    if (!text.ends_with(ending) || text.size() - ending.size() > longestName)
        return std::nullopt;
    return std::string(text.substr(0, text.size() - ending.size()));
}

std::optional<Soaking> parseSoaking(std::string_view text) {
    constexpr std::string_view verb = " soaked ";
    for (std::size_t at = text.find(verb); at <= longestName; at = text.find(verb, at + 1)) {
        std::string_view victim = text.substr(at + verb.size());
        if (victim.ends_with('!'))
            victim.remove_suffix(1);
        else if (text.size() < longestText)
            continue;
        if (victim.size() <= longestName)
            return Soaking{std::string(text.substr(0, at)), std::string(victim)};
    }
    return std::nullopt;
}

Event parseNotice(std::string_view text) {
    if (std::optional<std::string> name = nameBefore(text, " joined"))
        return PlayerJoined{std::move(*name)};
    if (std::optional<std::string> name = nameBefore(text, " disconnected"))
        return PlayerLeft{std::move(*name)};
    if (std::optional<Soaking> soaking = parseSoaking(text))
        return std::move(*soaking);
    return Notice{std::string(text)};
}

std::int32_t saturatingSum(std::int32_t a, std::int32_t b) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp(std::int64_t{a} + b, std::int64_t{Limits::min()}, std::int64_t{Limits::max()}));
}

} // namespace

std::optional<Session> Session::join(const sockaddr_in& room, std::string_view name, Time now,
                                     std::string& problem) {
    Session session;
    Parts& parts = session.parts_;
    parts.socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (parts.socket < 0) {
        problem = std::string("no socket: ") + std::strerror(errno);
        return std::nullopt;
    }
    // Connected, so that datagrams from elsewhere never reach us, and a closed port is reported.
    if (::connect(parts.socket, reinterpret_cast<const sockaddr*>(&room), sizeof room) != 0) {
        problem = std::string("no way to the room: ") + std::strerror(errno);
        return std::nullopt;
    }
    parts.name = untilZero(name).substr(0, longestName);
    parts.now = now;
    parts.servedAt = Clock::now();
    parts.firstAsked = now;
    session.ask();
    return session;
}

Session::~Session() {
    leave();
}

Session::Session(Session&& other) noexcept : parts_(std::exchange(other.parts_, Parts{})) {}

Session& Session::operator=(Session&& other) noexcept {
    if (this != &other) {
        leave();
        parts_ = std::exchange(other.parts_, Parts{});
    }
    return *this;
}

Time Session::wakeAt() const {
    if (!isOpen())
        return Time::max();
    if (!isPlaying()) {
        Time wake = answerDeadline();
        if (!parts_.hasHeard)
            wake = std::min(wake, parts_.lastAsked + askAgainAfter);
        if (parts_.refused && !parts_.firstSnapshot)
            wake = std::min(wake, *parts_.refused + overtakingPatience);
        return wake;
    }
    if (parts_.wantsJump || parts_.dx != 0 || parts_.dy != 0 || !parts_.words.empty())
        return parts_.now;
    Time wake = std::min(parts_.lastSign + keepAliveAfter, silenceDeadline());
    if (mayHaveBeenReplaced())
        return wake;
    for (const Key& key : parts_.keys) {
        if (key.isDown || key.releasesLeft > 0)
            wake = std::min(wake, key.tellAt);
    }
    return wake;
}

void Session::service(Time now) {
    const bool hasStalled = now - parts_.now >= trustInIdentifier;
    parts_.now = now;
    parts_.servedAt = Clock::now();
    const bool hasCaughtUp = receive();
    parts_.snapshotsMayBeOld = hasStalled || !hasCaughtUp;
    if (isPlaying())
        continuePlaying();
    else if (isOpen())
        continueJoining();
}

std::optional<Event> Session::nextEvent() {
    if (parts_.taken == parts_.events.size())
        return std::nullopt;
    std::optional<Event> event = std::move(parts_.events[parts_.taken]);
    if (++parts_.taken == parts_.events.size()) {
        parts_.events.clear();
        parts_.taken = 0;
    }
    return event;
}

const PlayerUpdate* playerWith(const UpdateMessage& state, char id) {
    for (const PlayerUpdate& player : state.updates) {
        if (player.id == id && id != 0)
            return &player;
    }
    return nullptr;
}

const PlayerUpdate* Session::self(const UpdateMessage& state) const {
    return playerWith(state, parts_.id);
}

void Session::setKey(int key, bool down) {
    if (!isPlaying() || key < 0 || key >= keyIndex::count)
        return;
    if (key == keyIndex::jump) {
        parts_.wantsJump |= down;
        return;
    }
    Key& state = parts_.keys[static_cast<std::size_t>(key)];
    if (state.isDown == down)
        return;
    state.isDown = down;
    state.releasesLeft = down ? 0 : tellReleaseTimes;
    state.tellAt = parts_.now;
}

void Session::turn(int dx, int dy) {
    if (!isPlaying())
        return;
    parts_.dx = saturatingSum(parts_.dx, dx);
    parts_.dy = saturatingSum(parts_.dy, dy);
}

void Session::say(std::string_view text) {
    if (isPlaying() && parts_.words.size() < mostWords)
        parts_.words.emplace_back(untilZero(text).substr(0, longestText));
}

void Session::leave() {
    if (!isOpen())
        return;
    // The answer to the join, or to a second copy of it, may have come in the meantime.
    char datagram[bufferSize];
    for (int i = 0; i < datagramsPerService; ++i) {
        const ssize_t length = ::recv(parts_.socket, datagram, sizeof datagram, 0);
        if (length < 0)
            break;
        const char id = acceptedId(datagram, static_cast<std::size_t>(length));
        if (id != 0 && id != parts_.id)
            sendLeave(id);
    }
    const bool hasStalled = Clock::now() - parts_.servedAt >= trustInIdentifier;
    if (isPlaying() && !mayHaveBeenReplaced() && !hasStalled) {
        tellKeys();
        tellTurn();
        speak();
        sendLeave(parts_.id);
    }
    close();
}

bool Session::receive() {
    for (int i = 0; i < datagramsPerService && isOpen(); ++i) {
        char datagram[bufferSize];
        const ssize_t length = ::recv(parts_.socket, datagram, sizeof datagram, 0);
        if (length >= 0) {
            ++parts_.statistics.received;
            take(datagram, static_cast<std::size_t>(length));
        } else if (errno == ECONNREFUSED) {
            noteNobodyListens();
        } else if (errno == EAGAIN) {
            return true;
        }
    }
    return false;
}

void Session::take(const char* datagram, std::size_t length) {
    const char code = length == 0 ? '\0' : datagram[0];
    const auto is = [&](char wanted, std::size_t size) { return code == wanted && length == size; };
    if (is(messageCode::join, sizeof(GenericMessage))) {
        parts_.roundTrip.receipt(parts_.now);
    } else if (const char id = acceptedId(datagram, length); id != 0) {
        takeAccepted(id);
    } else if (is(messageCode::full, 1)) {
        takeRefused();
    } else if (is(messageCode::worldState, sizeof(UpdateMessage))) {
        takeSnapshot(datagram);
    } else if (is(messageCode::chat, sizeof(TalkMessage))) {
        takeTalk(datagram);
    } else {
        ++parts_.statistics.unknown;
        return;
    }
    parts_.hasHeard = true;
    parts_.nobodyListens = false;
}

void Session::takeAccepted(char id) {
    if (!isPlaying())
        startPlaying(id);
    else if (id != parts_.id)
        sendLeave(id);
}

void Session::takeRefused() {
    // Snapshots reach nobody but players.
    if (isPlaying() || parts_.firstSnapshot)
        return;
    if (parts_.timesAsked == 1)
        end(Refused{});
    else if (!parts_.refused)
        parts_.refused = parts_.now;
}

void Session::takeSnapshot(const char* datagram) {
    Snapshot snapshot;
    std::memcpy(static_cast<void*>(&snapshot.state), datagram, sizeof snapshot.state);
    snapshot.tick = parts_.tickClock.arrival(parts_.now);
    snapshot.arrival = parts_.now;
    ++parts_.statistics.snapshots;
    parts_.statistics.snapshotsMissed = parts_.tickClock.missed();

    if (!isPlaying()) {
        if (!parts_.firstSnapshot)
            parts_.firstSnapshot = parts_.now;
        const char id = onlyPlayerNamed(snapshot.state, parts_.name);
        if (id == 0 || parts_.now - *parts_.firstSnapshot < overtakingPatience)
            return;
        startPlaying(id);
    }
    const PlayerUpdate* const player = self(snapshot.state);
    if (!player || nameOf(*player) != parts_.name) {
        end(Dropped{Dropped::Reason::replaced});
        return;
    }
    parts_.lastSnapshot = parts_.now;
    push(snapshot);
}

void Session::takeTalk(const char* datagram) {
    if (!isPlaying())
        return;
    const char speaker = datagram[offsetof(TalkMessage, id)];
    const std::string_view text = untilZero({datagram + offsetof(TalkMessage, text), longestText});
    push(speaker == serverSpeaker ? parseNotice(text) : Event(Chat{speaker, std::string(text)}));
}

void Session::ask() {
    char record[1 + longestName + 1] = {messageCode::join};
    parts_.name.copy(record + 1, longestName);
    send(record, 1 + parts_.name.size() + 1);
    parts_.lastAsked = parts_.now;
    ++parts_.timesAsked;
}

void Session::tellKeys() {
    for (int i = 0; i < keyIndex::count; ++i) {
        Key& key = parts_.keys[static_cast<std::size_t>(i)];
        const bool jumps = i == keyIndex::jump && std::exchange(parts_.wantsJump, false);
        const bool isDue = (key.isDown || key.releasesLeft > 0) && parts_.now >= key.tellAt;
        if (!jumps && !isDue)
            continue;
        const char record[] = {messageCode::key, parts_.id, static_cast<char>(i),
                               static_cast<char>(jumps || key.isDown)};
        send(record, sizeof record);
        parts_.lastSign = parts_.now;
        key.tellAt = parts_.now + tellKeyAgainAfter;
        if (key.releasesLeft > 0)
            --key.releasesLeft;
    }
}

void Session::tellTurn() {
    if (parts_.dx == 0 && parts_.dy == 0)
        return;
    char record[12] = {messageCode::view, parts_.id};
    std::memcpy(record + 4, &parts_.dx, sizeof parts_.dx);
    std::memcpy(record + 8, &parts_.dy, sizeof parts_.dy);
    send(record, sizeof record);
    parts_.lastSign = parts_.now;
    parts_.dx = 0;
    parts_.dy = 0;
}

void Session::speak() {
    for (const std::string& text : parts_.words) {
        TalkMessage record;
        record.id = parts_.id;
        text.copy(record.text, sizeof record.text);
        send(&record, sizeof record);
        parts_.lastSign = parts_.now;
    }
    parts_.words.clear();
}

void Session::send(const void* datagram, std::size_t length) {
    ssize_t sent = ::send(parts_.socket, datagram, length, 0);
    // That is the answer to an earlier datagram; this one has not been sent yet.
    if (sent < 0 && errno == ECONNREFUSED) {
        noteNobodyListens();
        sent = ::send(parts_.socket, datagram, length, 0);
    }
    if (sent < 0) {
        ++parts_.statistics.unsent;
        return;
    }
    ++parts_.statistics.sent;
    parts_.roundTrip.sent(parts_.now);
}

void Session::noteNobodyListens() {
    parts_.nobodyListens = true;
    parts_.roundTrip.refused();
}

void Session::sendLeave(char id) {
    const char record[] = {messageCode::leave, id};
    send(record, sizeof record);
}

void Session::continueJoining() {
    if (parts_.refused && parts_.now >= *parts_.refused + overtakingPatience &&
        !parts_.firstSnapshot)
        end(Refused{});
    else if (parts_.now >= answerDeadline())
        end(Unanswered{parts_.nobodyListens});
    else if (!parts_.hasHeard && parts_.now >= parts_.lastAsked + askAgainAfter)
        ask();
}

void Session::continuePlaying() {
    if (parts_.now >= silenceDeadline()) {
        end(Dropped{Dropped::Reason::silence});
        return;
    }
    if (mayHaveBeenReplaced()) {
        parts_.wantsJump = false;
        parts_.dx = 0;
        parts_.dy = 0;
        parts_.words.clear();
    } else {
        tellKeys();
        tellTurn();
        speak();
    }
    // Even then: the room must not drop us because of a stall.
    if (parts_.now >= parts_.lastSign + keepAliveAfter) {
        const char record[] = {messageCode::keepAlive, parts_.id};
        send(record, sizeof record);
        parts_.lastSign = parts_.now;
    }
}

void Session::startPlaying(char id) {
    parts_.id = id;
    parts_.lastSnapshot = parts_.now;
    parts_.lastSign = parts_.now;
    push(Joined{id});
}

void Session::end(const Event& reason) {
    close();
    parts_.events.push_back(reason);
}

void Session::close() {
    ::close(parts_.socket);
    parts_.socket = -1;
    parts_.id = 0;
}

void Session::push(Event event) {
    if (parts_.events.size() - parts_.taken >= mostEvents)
        return;
    if (parts_.taken > 0 && parts_.events.size() == parts_.events.capacity()) {
        parts_.events.erase(parts_.events.begin(),
                            parts_.events.begin() + static_cast<std::ptrdiff_t>(parts_.taken));
        parts_.taken = 0;
    }
    parts_.events.push_back(std::move(event));
}

Time Session::answerDeadline() const {
    return parts_.firstSnapshot.value_or(parts_.firstAsked) + answerPatience;
}

Time Session::silenceDeadline() const {
    return parts_.lastSnapshot + (parts_.nobodyListens ? trustInIdentifier : silencePatience);
}

bool Session::mayHaveBeenReplaced() const {
    return parts_.snapshotsMayBeOld || parts_.now >= parts_.lastSnapshot + trustInIdentifier;
}

void wait(const Session& session) {
    const Time wake = session.wakeAt();
    const Time now = Clock::now();
    if (!session.isOpen() || wake <= now)
        return;
    pollfd readable = {session.descriptor(), POLLIN, 0};
    ::poll(&readable, 1, static_cast<int>(std::chrono::ceil<milliseconds>(wake - now).count()));
}

} // namespace drench::client
