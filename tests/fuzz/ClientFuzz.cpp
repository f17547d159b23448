// A session with a room that sends anything at any time. An input is the player's name and then
// what happens, one byte each and what it needs: three bits say what, five bits how much or who.
// Both ends are sockets on 127.0.0.1, where what is sent has arrived.

#include "client/Session.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/Require.h"
#include "tests/fuzz/RoomSocket.h"
#include "tests/support/Datagrams.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

using namespace drench;

namespace {

using std::chrono::milliseconds;

/// So that no socket's buffer overflows.
constexpr int mostWaiting = 64;

class Watch {
  public:
    Watch(RoomSocket& room, const std::string& name) : room_(room), name_(name) {
        std::string problem;
        session_ = client::Session::join(room.address(), name, now_, problem);
        require(session_.has_value(), "a session begins");
        name_ = client::untilZero(name_).substr(0, client::longestName);
        takeSent(0);
    }

    client::Session& session() { return *session_; }
    const std::string& name() const { return name_; }

    void deliver(const std::string& datagram) {
        if (!session_->isOpen())
            return;
        room_.send(datagram);
        ++delivered_;
        if (++waiting_ == mostWaiting)
            service(milliseconds(0));
    }

    void service(milliseconds later) {
        now_ += later;
        const char id = session_->id();
        const bool wasOpen = session_->isOpen();
        session_->service(now_);
        waiting_ = 0;
        takeSent(id);
        takeEvents(wasOpen);
        check();
    }

    void leave() {
        const char id = session_->id();
        session_->leave(now_);
        takeSent(id);
    }

  private:
    /// Looks at what the session has sent, whose identifier was `id` before.
    void takeSent(char id) {
        while (const std::optional<std::string> datagram = room_.receive()) {
            ++sent_;
            checkSent(*datagram, id);
        }
    }

    void checkSent(const std::string& datagram, char id) {
        const char code = datagram.empty() ? '\0' : datagram[0];
        const auto is = [&](const auto& record) {
            return code == record.type && datagram.size() == sizeof record;
        };
        if (code == messageCode::join) {
            require(id == 0 && datagram == joinDatagram(name_),
                    "a session joins by its name while it is not in");
            return;
        }
        require(is(LeaveMessage()) || is(KeepAliveMessage()) || is(KeyMessage()) ||
                    is(ViewMessage()) || is(TalkMessage()),
                "what a session sends is a record");
        // Every one of them has its identifier there.
        const char sender = datagram[offsetof(LeaveMessage, id)];
        require(client::isPlayerId(sender), "a record is some player's");
        if (code == messageCode::leave)
            return;
        const bool isOurs = sender == id || sender == session_->id();
        require(isOurs, "a session speaks for nobody else");
        if (code == messageCode::key) {
            KeyMessage record;
            std::memcpy(&record, datagram.data(), sizeof record);
            require(record.key >= 0 && record.key < keyIndex::count && (record.down & ~1) == 0,
                    "keys are those of the protocol");
        }
    }

    void takeEvents(bool wasOpen) {
        while (const std::optional<client::Event> event = session_->nextEvent()) {
            require(wasOpen && !hasEnded_, "nothing happens after the end");
            std::visit([this](const auto& what) { take(what); }, *event);
        }
        require(hasEnded_ || session_->isOpen() || !wasOpen, "an end is told");
    }

    void take(const client::Joined& joined) {
        require(!hasJoined_ && client::isPlayerId(joined.id), "a session joins once, as a player");
        hasJoined_ = true;
        id_ = joined.id;
    }
    void take(const client::Refused& /*end*/) {
        require(!hasJoined_, "no player is refused");
        end_();
    }
    void take(const client::Unanswered& /*end*/) {
        require(!hasJoined_, "a player was answered");
        end_();
    }
    void take(const client::Dropped& /*end*/) {
        require(hasJoined_, "only a player can be dropped");
        end_();
    }
    void take(const client::Snapshot& snapshot) {
        require(hasJoined_ && snapshot.tick > lastTick_, "snapshots count up");
        lastTick_ = snapshot.tick;
        require(snapshot.arrival == now_, "a snapshot arrives when it is read");
        for (const PlayerUpdate& player : snapshot.state.updates)
            checkSlot(player);
        const PlayerUpdate* const self = client::playerWith(snapshot.state, id_);
        require(self && self->name == name_, "the player is in its snapshots");
    }
    void take(const client::Chat& chat) {
        require(client::isPlayerId(chat.speaker), "the server's words are notices");
        checkText(chat.text, sizeof TalkMessage::text);
    }
    void take(const client::PlayerJoined& notice) { checkText(notice.name, client::longestName); }
    void take(const client::PlayerLeft& notice) { checkText(notice.name, client::longestName); }
    void take(const client::Soaking& notice) {
        checkText(notice.shooter, client::longestName);
        checkText(notice.victim, client::longestName);
    }
    void take(const client::Notice& notice) { checkText(notice.text, sizeof TalkMessage::text); }

    static void checkSlot(const PlayerUpdate& player) {
        require(player.id == 0 || client::isPlayerId(player.id), "a slot is a player's or empty");
        unsigned char shooting = 0;
        std::memcpy(&shooting, &player.shooting, sizeof shooting);
        require(shooting <= 1, "a boolean is 0 or 1");
        require(std::memchr(player.name, '\0', sizeof player.name) != nullptr, "a name ends");
        const quat& rotation = player.rotation;
        for (const float number : {player.position.x, player.position.y, player.position.z,
                                   player.direction.x, player.direction.y, player.direction.z,
                                   rotation.x, rotation.y, rotation.z, rotation.w})
            require(std::isfinite(number), "players are somewhere");
    }

    void checkText(const std::string& text, std::size_t longest) {
        require(hasJoined_, "words reach players only");
        require(text.size() <= longest && text.find('\0') == std::string::npos,
                "texts keep to their fields");
    }

    void end_() {
        require(!session_->isOpen(), "after the end a session is closed");
        hasEnded_ = true;
    }

    void check() const {
        const client::Session& session = *session_;
        require(!session.isPlaying() || (session.isOpen() && session.id() == id_),
                "a player is in, under the identifier that was told");
        require(!session.isOpen() || session.wakeAt() > now_, "nothing due is left undone");

        const client::Statistics& statistics = session.statistics();
        require(statistics.unsent == 0 && statistics.sent == sent_, "what is sent is counted");
        require(!session.isOpen() || statistics.received == delivered_,
                "what is received is counted");
        require(statistics.unknown + statistics.snapshots <= statistics.received,
                "no datagram counts twice");

        const client::RoundTrip& roundTrip = session.roundTrip();
        require(roundTrip.lossShare() >= 0.0 && roundTrip.lossShare() <= 1.0, "losses are a share");
        require(roundTrip.lost() <= roundTrip.datagrams(), "no more are lost than were sent");
        require(roundTrip.smoothed().value_or(0.0) >= 0.0 && roundTrip.deviation() >= 0.0,
                "round trips take time");
        const client::TickClock& clock = session.tickClock();
        require(std::isfinite(clock.period()) && clock.period() > 0.0, "ticks take time");
        require(std::isfinite(clock.jitter()) && clock.jitter() >= 0.0, "nothing comes too early");
        require(std::isfinite(clock.tickAt(now_)), "it is some tick");
    }

    RoomSocket& room_;
    std::string name_;
    std::optional<client::Session> session_;
    client::Time now_{std::chrono::hours(1)};
    std::uint64_t delivered_ = 0;
    std::uint64_t sent_ = 0;
    int waiting_ = 0;
    bool hasJoined_ = false;
    bool hasEnded_ = false;
    char id_ = 0;
    std::int64_t lastTick_ = -1;
};

/// What one byte of an input says.
enum Step { soon, later, receipt, accepted, state, talk, input, any };

/// Players of whom the first may be us, with some bytes changed.
std::string stateRecord(Bytes& bytes, int argument, const std::string& name) {
    UpdateMessage message;
    for (int i = 0; i < argument % 5; ++i) {
        PlayerUpdate player;
        player.id = static_cast<char>('1' + (i + argument / 5) % 4);
        const std::string& shown = i == 0 ? name : "Bo";
        shown.copy(player.name, sizeof player.name - 1);
        message.add(player);
    }
    std::string record = bytesOf(message);
    for (int changes = bytes.next<unsigned char>() % 8; changes > 0; --changes) {
        const std::size_t at = 1 + bytes.next<unsigned char>() % (record.size() - 1);
        record[at] = bytes.next<char>();
    }
    return record;
}

std::string talkRecord(Bytes& bytes, int argument) {
    const std::size_t length = bytes.next<unsigned char>() % 31;
    const char speaker = argument < 16 ? serverSpeaker : static_cast<char>('1' + argument % 4);
    return chatDatagram(speaker, bytes.text(length));
}

void act(Bytes& bytes, int argument, Watch& watch) {
    client::Session& session = watch.session();
    switch (argument % 4) {
    case 0:
        session.setKey(argument / 4 - 1, bytes.next<unsigned char>() % 2 != 0);
        break;
    case 1: {
        const auto dx = bytes.next<std::int32_t>();
        session.turn(dx, bytes.next<std::int32_t>());
        break;
    }
    case 2:
        session.say(bytes.text(bytes.next<unsigned char>() % 40));
        break;
    default:
        if (argument == 31)
            watch.leave();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    RoomSocket room;
    Watch watch(room, bytes.text(bytes.next<unsigned char>() % 16));
    while (!bytes.isEmpty()) {
        const int step = bytes.next<unsigned char>();
        const int argument = step >> 3;
        switch (static_cast<Step>(step & 7)) {
        case soon:
            watch.service(milliseconds(argument));
            break;
        case later:
            watch.service(milliseconds(125 * argument));
            break;
        case receipt: {
            GenericMessage record;
            record.data[0] = messageCode::join;
            watch.deliver(bytesOf(record));
            break;
        }
        case accepted:
            watch.deliver(acceptanceDatagram(static_cast<char>('1' + argument % 8)));
            break;
        case state:
            watch.deliver(stateRecord(bytes, argument, watch.name()));
            break;
        case talk:
            watch.deliver(talkRecord(bytes, argument));
            break;
        case input:
            act(bytes, argument, watch);
            break;
        case any:
            watch.deliver(bytes.text(static_cast<std::size_t>(argument)));
            break;
        }
    }
    watch.service(milliseconds(0));
    watch.leave();
    return 0;
}
