// A relay between three clients and a room that send anything, at moments that the input chooses.
// An input is the settings of both directions and a seed, and then what happens, one byte each:
// three bits say what, five bits how much or who. All sockets are on 127.0.0.1, where what is sent
// has arrived.

#include "lag/Relay.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/Require.h"
#include "tests/fuzz/RoomSocket.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

using namespace drench;

namespace {

using lag::Duration;
using lag::Settings;
using lag::Time;
using std::chrono::milliseconds;

constexpr int clientCount = 3;

/// Of one input, so that no input takes long.
constexpr int mostSteps = 400;

/// Towards one end: all of them may come at once, twice, and must fit into its socket's buffer.
constexpr std::size_t mostDatagrams = 60;

/// So that no socket's buffer overflows.
constexpr int mostUnread = 32;

Settings settingsFrom(Bytes& bytes) {
    Settings settings;
    settings.delay = milliseconds(bytes.next<std::uint8_t>());
    settings.jitter = milliseconds(bytes.next<std::uint8_t>());
    settings.loss = bytes.next<std::uint8_t>() / 255.0;
    if (const auto burst = bytes.next<std::uint8_t>(); burst > 0) {
        settings.meanBurst = burst;
        settings.loss = std::min(settings.loss, lag::mostLoss(burst));
    }
    settings.duplication = bytes.next<std::uint8_t>() / 255.0;
    settings.reordering = bytes.next<std::uint8_t>() / 255.0;
    settings.heldBack = milliseconds(bytes.next<std::uint8_t>());
    return settings;
}

/// A datagram that somebody has sent, known by the number in its first bytes.
struct Sent {
    int client;
    std::string bytes;
    Time at;
    int arrived = 0;
};

/// One direction, as those at its ends see it.
struct Way {
    Settings settings;
    std::map<std::uint32_t, Sent> sent;
    std::array<std::uint32_t, clientCount> newest = {};
    int arrived = 0;

    std::string next(int client, std::size_t size, Time now) {
        const auto number = static_cast<std::uint32_t>(sent.size() + 1);
        std::string bytes(sizeof number + size, static_cast<char>(size));
        std::memcpy(bytes.data(), &number, sizeof number);
        sent[number] = {client, bytes, now};
        return bytes;
    }

    void take(int client, const std::string& bytes, Time now) {
        std::uint32_t number = 0;
        require(bytes.size() >= sizeof number, "nothing arrives that nobody sent");
        std::memcpy(&number, bytes.data(), sizeof number);
        const auto found = sent.find(number);
        require(found != sent.end() && found->second.bytes == bytes &&
                    found->second.client == client,
                "bytes pass as they are, to whom they are for");
        Sent& one = found->second;
        ++arrived;
        require(++one.arrived <= (settings.duplication > 0.0 ? 2 : 1), "copies are asked for");
        require(now >= one.at + settings.delay, "the delay is the least");
        auto& newestHere = newest[static_cast<std::size_t>(client)];
        require(settings.reordering > 0.0 || number >= newestHere, "jitter never reorders");
        newestHere = std::max(newestHere, number);
    }
};

class Line {
  public:
    Line(const Settings& up, const Settings& down, std::uint64_t seed)
        : relay_(0, room_.address(), up, down, seed, [](const std::string&) {}) {
        up_.settings = up;
        down_.settings = down;
        sockaddr_in relay = room_.address();
        relay.sin_port = htons(static_cast<std::uint16_t>(relay_.port()));
        for (RoomSocket& client : clients_)
            client.turnTo(relay);
    }

    void clientSends(int client, std::size_t size) {
        if (up_.sent.size() == mostDatagrams)
            return;
        clients_[static_cast<std::size_t>(client)].send(up_.next(client, size, now_));
        lastSent_[static_cast<std::size_t>(client)] = now_;
        makeRoom();
    }

    /// Only to clients that the room has heard of.
    void roomSends(int client, std::size_t size) {
        const auto known = atRoom_.find(client);
        if (known == atRoom_.end() || down_.sent.size() == mostDatagrams)
            return;
        room_.turnTo(known->second);
        room_.send(down_.next(client, size, now_));
        makeRoom();
    }

    void pass(Duration time) {
        now_ += time;
        relay_.wait(Duration(0));
        relay_.service(now_);
        unread_ = 0;
        listen();
        check();
        // The system may give the port of a client that the relay has forgotten to another one.
        std::erase_if(atRoom_, [this](const auto& known) {
            const Time sent = lastSent_[static_cast<std::size_t>(known.first)];
            return now_ - sent >= lag::Relay::longestSilence;
        });
    }

    /// Everything that waits is sent.
    void finish() {
        // Time for all that is in the sockets to come in, and then for the longest way through.
        for (int i = 0; i < 4; ++i)
            pass(milliseconds(0));
        pass(milliseconds(3 * 255));
        require(relay_.waiting() == 0 && relay_.wakeAt() == Time::max(), "nothing waits for ever");
    }

  private:
    void makeRoom() {
        if (++unread_ == mostUnread)
            pass(milliseconds(0));
    }

    void listen() {
        while (const std::optional<std::string> bytes = room_.receive()) {
            std::uint32_t number = 0;
            std::memcpy(&number, bytes->data(), std::min(bytes->size(), sizeof number));
            const auto found = up_.sent.find(number);
            require(found != up_.sent.end(), "the room hears what clients have sent");
            up_.take(found->second.client, *bytes, now_);
            atRoom_[found->second.client] = room_.peer();
        }
        for (int i = 0; i < clientCount; ++i) {
            RoomSocket& client = clients_[static_cast<std::size_t>(i)];
            const sockaddr_in relay = client.peer();
            while (const std::optional<std::string> bytes = client.receive())
                down_.take(i, *bytes, now_);
            require(client.peer().sin_port == relay.sin_port, "clients hear the relay alone");
        }
    }

    void check() const {
        for (const auto& [way, traffic] :
             {std::pair{&up_, &relay_.up()}, std::pair{&down_, &relay_.down()}}) {
            require(traffic->in <= way->sent.size(), "nothing comes in that nobody sent");
            require(traffic->out == static_cast<std::uint64_t>(way->arrived),
                    "what goes on arrives");
            require(traffic->lost + traffic->out - traffic->duplicated <= traffic->in,
                    "a datagram is lost or goes on, once");
            require(traffic->lost == 0 || way->settings.loss > 0.0, "losses are asked for");
            require(traffic->delays.count() == traffic->out, "each delay is measured");
        }
        require(relay_.clients() <= clientCount && relay_.clients() <= relay_.clientsSeen(),
                "clients are those that sent");
    }

    RoomSocket room_;
    std::array<RoomSocket, clientCount> clients_;
    Way up_;
    Way down_;
    Time now_{std::chrono::hours(1)};
    std::array<Time, clientCount> lastSent_ = {};
    int unread_ = 0;
    lag::Relay relay_;

    /// Where the room has heard each client.
    std::map<int, sockaddr_in> atRoom_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const Settings up = settingsFrom(bytes);
    const Settings down = settingsFrom(bytes);
    Line line(up, down, bytes.next<std::uint8_t>());
    for (int steps = 0; !bytes.isEmpty() && steps < mostSteps; ++steps) {
        const auto step = bytes.next<std::uint8_t>();
        const int much = step & 31;
        switch (step >> 5) {
        case 0:
        case 1:
            line.clientSends(much % clientCount, static_cast<std::size_t>(much) * 8);
            break;
        case 2:
        case 3:
            line.roomSends(much % clientCount, static_cast<std::size_t>(much) * 16);
            break;
        case 4:
        case 5:
            line.pass(milliseconds(much));
            break;
        case 6:
            line.pass(milliseconds(much * 16));
            break;
        default:
            // Beyond a minute the silent are forgotten.
            line.pass(std::chrono::seconds(much * 3));
        }
    }
    line.finish();
    return 0;
}
