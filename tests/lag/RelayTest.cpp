#include "lag/Relay.h"
#include "tests/support/UdpPeer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

using namespace drench;

// The relay between real sockets on loopback, at moments that the tests choose.

using lag::Relay;
using lag::Settings;
using lag::Time;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

/// What the next calls of send() fail with, and how many of them.
struct {
    int reason = 0;
    int left = 0;
} failingSends;

} // namespace

/// Stands in for the C library's: its failures on a connected socket cannot be had at will.
extern "C" ssize_t send(int descriptor, const void* bytes, std::size_t size, int flags) {
    if (failingSends.left > 0) {
        --failingSends.left;
        errno = failingSends.reason;
        return -1;
    }
    return sendto(descriptor, bytes, size, flags, nullptr, 0);
}

namespace {

sockaddr_in loopback(int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

/// A room that tells its clients apart by their ports, and can come back at the port it had.
class FakeRoom {
  public:
    explicit FakeRoom(int port = 0) : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in own = loopback(port);
        socklen_t size = sizeof own;
        if (bind(socket_, reinterpret_cast<const sockaddr*>(&own), size) != 0 ||
            getsockname(socket_, reinterpret_cast<sockaddr*>(&own), &size) != 0)
            throw std::runtime_error("no room on loopback");
        port_ = ntohs(own.sin_port);
    }
    ~FakeRoom() { close(socket_); }
    FakeRoom(const FakeRoom&) = delete;
    FakeRoom& operator=(const FakeRoom&) = delete;

    int port() const { return port_; }

    struct Heard {
        int from;
        std::string bytes;
    };

    /// All that has arrived, once there are `count` datagrams, or in five seconds.
    std::vector<Heard> hear(std::size_t count) {
        std::vector<Heard> all;
        pollfd polled = {socket_, POLLIN, 0};
        while (poll(&polled, 1, all.size() < count ? 5000 : 0) == 1) {
            std::string bytes(70000, '\0');
            sockaddr_in from = {};
            socklen_t size = sizeof from;
            const ssize_t length = recvfrom(socket_, bytes.data(), bytes.size(), 0,
                                            reinterpret_cast<sockaddr*>(&from), &size);
            if (length < 0)
                break;
            bytes.resize(static_cast<std::size_t>(length));
            all.push_back({ntohs(from.sin_port), bytes});
        }
        return all;
    }

    void answer(int to, const std::string& bytes) {
        const sockaddr_in address = loopback(to);
        ASSERT_EQ(sendto(socket_, bytes.data(), bytes.size(), 0,
                         reinterpret_cast<const sockaddr*>(&address), sizeof address),
                  static_cast<ssize_t>(bytes.size()));
    }

  private:
    int socket_;
    int port_;
};

/// A relay before a room, and one client.
struct Line {
    std::unique_ptr<FakeRoom> room = std::make_unique<FakeRoom>();
    std::vector<std::string> notes;
    Relay relay;
    UdpPeer ann;

    explicit Line(const Settings& up = {}, const Settings& down = {}, std::uint64_t seed = 1)
        : relay(0, loopback(room->port()), up, down, seed,
                [this](const std::string& note) { notes.push_back(note); }) {}

    /// Lets the relay take in what comes, at this moment, until the condition holds.
    template<class Condition>
    bool serveUntil(Time now, Condition condition) {
        const Time end = client::Clock::now() + seconds(5);
        do {
            relay.wait(milliseconds(condition() ? 0 : 10));
            relay.service(now);
        } while (!condition() && client::Clock::now() < end);
        return condition();
    }

    /// Sends a client's datagram and lets the relay take it in.
    bool send(UdpPeer& peer, const std::string& bytes, Time now) {
        const std::uint64_t before = relay.up().in;
        peer.send(bytes, relay.port());
        return serveUntil(now, [&] { return relay.up().in == before + 1; });
    }

    /// Answers from the room to the port that the relay uses there.
    bool answer(int to, const std::string& bytes, Time now) {
        const std::uint64_t before = relay.down().in;
        room->answer(to, bytes);
        return serveUntil(now, [&] { return relay.down().in == before + 1; });
    }

    /// Sends a datagram and returns the port from which the room hears it.
    int portInRoom(UdpPeer& peer, Time now) {
        EXPECT_TRUE(send(peer, "who am I", now));
        const std::vector<FakeRoom::Heard> heard = room->hear(1);
        EXPECT_EQ(heard.size(), 1u);
        return heard.empty() ? 0 : heard.front().from;
    }
};

Settings delayed(milliseconds delay) {
    Settings settings;
    settings.delay = delay;
    return settings;
}

const Time start(seconds(1000));

} // namespace

TEST(Relay, PassesEverySizeByteForByte) {
    Line line;
    const int ann = line.portInRoom(line.ann, start);
    for (const std::size_t size : {0u, 1u, 512u, 513u, 2000u}) {
        std::string bytes;
        for (std::size_t i = 0; i < size; ++i)
            bytes += static_cast<char>(i * 7 + size);
        SCOPED_TRACE(size);
        ASSERT_TRUE(line.send(line.ann, bytes, start));
        const std::vector<FakeRoom::Heard> heard = line.room->hear(1);
        ASSERT_EQ(heard.size(), 1u);
        EXPECT_EQ(heard.front().bytes, bytes);
        EXPECT_EQ(heard.front().from, ann);
        ASSERT_TRUE(line.answer(ann, bytes, start));
        EXPECT_EQ(line.ann.receive(5000), bytes);
    }
}

TEST(Relay, PassesTheLargestDatagram) {
    Line line;
    const std::string bytes(65507, 'x');
    ASSERT_TRUE(line.send(line.ann, bytes, start));
    const std::vector<FakeRoom::Heard> heard = line.room->hear(1);
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard.front().bytes, bytes);
}

TEST(Relay, KeepsClientsApart) {
    Line line;
    UdpPeer bo;
    const int annsPort = line.portInRoom(line.ann, start);
    const int bosPort = line.portInRoom(bo, start);
    EXPECT_NE(annsPort, bosPort);
    EXPECT_EQ(line.portInRoom(line.ann, start), annsPort);
    EXPECT_EQ(line.relay.clients(), 2u);
    ASSERT_TRUE(line.answer(annsPort, "for Ann", start));
    ASSERT_TRUE(line.answer(bosPort, "for Bo", start));
    EXPECT_EQ(line.ann.receive(5000), "for Ann");
    EXPECT_EQ(bo.receive(5000), "for Bo");
    EXPECT_EQ(line.ann.received().size() + bo.received().size(), 0u);
}

TEST(Relay, ListensToNobodyButTheRoom) {
    Line line;
    const int ann = line.portInRoom(line.ann, start);
    UdpPeer stranger;
    stranger.send("forged", ann);
    ASSERT_TRUE(line.answer(ann, "real", start));
    EXPECT_EQ(line.ann.receive(5000), "real");
    EXPECT_EQ(line.relay.down().in, 1u);
}

TEST(Relay, DelaysEachDirectionByItsOwn) {
    Line line(delayed(milliseconds(40)), delayed(milliseconds(25)));
    EXPECT_EQ(line.relay.wakeAt(), Time::max());
    ASSERT_TRUE(line.send(line.ann, "up", start));
    EXPECT_EQ(line.relay.wakeAt(), start + milliseconds(40));
    line.relay.service(start + microseconds(39999));
    EXPECT_EQ(line.relay.up().out, 0u);
    EXPECT_EQ(line.relay.waiting(), 1u);
    line.relay.service(start + milliseconds(40));
    EXPECT_EQ(line.relay.up().out, 1u);
    EXPECT_EQ(line.relay.waiting(), 0u);
    const std::vector<FakeRoom::Heard> heard = line.room->hear(1);
    ASSERT_EQ(heard.size(), 1u);

    ASSERT_TRUE(line.answer(heard.front().from, "down", start + milliseconds(50)));
    line.relay.service(start + milliseconds(74));
    EXPECT_EQ(line.relay.down().out, 0u);
    line.relay.service(start + milliseconds(76));
    EXPECT_EQ(line.ann.receive(5000), "down");
    EXPECT_EQ(line.relay.up().delays.longest(), 40.0);
    EXPECT_EQ(line.relay.down().delays.longest(), 26.0);
}

TEST(Relay, ShowsDatagramsAsTheRoomHasThem) {
    struct Shown {
        client::Way way;
        std::uint32_t line;
        std::string datagram;
        Time now;
    };
    Settings lossy = delayed(milliseconds(25));
    lossy.loss = 1.0;
    Line line(delayed(milliseconds(40)), lossy);
    std::vector<Shown> all;
    line.relay.showTo(
        [&](client::Way way, std::uint32_t number, std::string_view datagram, Time now) {
            all.push_back({way, number, std::string(datagram), now});
        });
    UdpPeer bo;
    ASSERT_TRUE(line.send(line.ann, "a", start));
    ASSERT_TRUE(line.send(bo, "b", start));
    EXPECT_TRUE(all.empty());
    line.relay.service(start + milliseconds(40));
    const std::vector<FakeRoom::Heard> heard = line.room->hear(2);
    ASSERT_EQ(heard.size(), 2u);
    ASSERT_TRUE(line.answer(heard.back().from, "lost later", start + milliseconds(50)));
    ASSERT_EQ(all.size(), 3u);
    const Shown expected[] = {{client::Way::toRoom, 0, "a", start + milliseconds(40)},
                              {client::Way::toRoom, 1, "b", start + milliseconds(40)},
                              {client::Way::fromRoom, 1, "lost later", start + milliseconds(50)}};
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i].way, expected[i].way);
        EXPECT_EQ(all[i].line, expected[i].line);
        EXPECT_EQ(all[i].datagram, expected[i].datagram);
        EXPECT_EQ(all[i].now, expected[i].now);
    }
}

TEST(Relay, KeepsTheOrderOfWhatIsDueAtOnce) {
    Line line(delayed(milliseconds(5)));
    for (int i = 0; i < 50; ++i)
        ASSERT_TRUE(line.send(line.ann, std::to_string(i), start));
    line.relay.service(start + milliseconds(5));
    const std::vector<FakeRoom::Heard> heard = line.room->hear(50);
    ASSERT_EQ(heard.size(), 50u);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(heard[static_cast<std::size_t>(i)].bytes, std::to_string(i));
}

TEST(Relay, DuplicateFollowsItsOriginal) {
    Settings twice;
    twice.duplication = 1.0;
    Line line(twice);
    ASSERT_TRUE(line.send(line.ann, "a", start));
    ASSERT_TRUE(line.send(line.ann, "b", start));
    std::string all;
    for (const FakeRoom::Heard& heard : line.room->hear(4))
        all += heard.bytes;
    EXPECT_EQ(all, "aabb");
    EXPECT_EQ(line.relay.up().out, 4u);
    EXPECT_EQ(line.relay.up().duplicated, 2u);
    EXPECT_EQ(line.relay.up().reordered, 0u);
}

TEST(Relay, CountsAsReorderedWhatArrivesAfterALaterOne) {
    Settings settings;
    settings.reordering = 0.2;
    settings.heldBack = milliseconds(25);
    settings.duplication = 0.1;
    settings.loss = 0.1;
    Line line(settings);
    constexpr int sent = 200;
    for (int i = 0; i < sent; ++i)
        ASSERT_TRUE(line.send(line.ann, std::to_string(i), start + milliseconds(10 * i)));
    line.relay.service(start + milliseconds(10 * sent + 25));
    const lag::Traffic& up = line.relay.up();
    EXPECT_EQ(up.out + up.lost, sent + up.duplicated);

    const std::vector<FakeRoom::Heard> heard = line.room->hear(up.out);
    ASSERT_EQ(heard.size(), up.out);
    std::vector<bool> seen(sent);
    int newest = -1;
    std::uint64_t duplicated = 0;
    std::uint64_t reordered = 0;
    for (const FakeRoom::Heard& datagram : heard) {
        const int number = std::stoi(datagram.bytes);
        const bool isCopy = seen[static_cast<std::size_t>(number)];
        seen[static_cast<std::size_t>(number)] = true;
        duplicated += isCopy;
        reordered += !isCopy && number < newest;
        newest = std::max(newest, number);
    }
    EXPECT_EQ(up.duplicated, duplicated);
    EXPECT_EQ(up.reordered, reordered);
    EXPECT_EQ(up.lost, static_cast<std::uint64_t>(std::count(seen.begin(), seen.end(), false)));
    EXPECT_GT(reordered, 15u);
    EXPECT_GT(duplicated, 5u);
    EXPECT_GT(up.lost, 5u);
}

TEST(Relay, LosesBySeedApartForEachClientAndDirection) {
    Settings half;
    half.loss = 0.5;
    struct Patterns {
        std::string up;
        std::string down;
    };
    // Which of 64 datagrams get lost, those of the room being answers to what it has heard.
    const auto lost = [](Line& line, UdpPeer& peer, bool answers) {
        Patterns patterns;
        int port = 0;
        for (int i = 0; i < 64; ++i) {
            const std::uint64_t before = line.relay.up().lost;
            EXPECT_TRUE(line.send(peer, "x", start));
            const bool isLost = line.relay.up().lost > before;
            patterns.up += isLost ? '-' : 'x';
            if (!isLost)
                port = line.room->hear(1).at(0).from;
            if (!answers || port == 0)
                continue;
            const std::uint64_t downBefore = line.relay.down().lost;
            EXPECT_TRUE(line.answer(port, "y", start));
            patterns.down += line.relay.down().lost > downBefore ? '-' : 'x';
        }
        return patterns;
    };
    Line line(half, half, 1);
    UdpPeer bo;
    const Patterns anns = lost(line, line.ann, true);
    const Patterns bos = lost(line, bo, true);
    EXPECT_NE(anns.up.substr(anns.up.size() - anns.down.size()), anns.down);
    EXPECT_NE(anns.up, bos.up);
    EXPECT_NE(anns.down.substr(0, 32), bos.down.substr(0, 32));

    Line again(half, half, 1);
    EXPECT_EQ(lost(again, again.ann, false).up, anns.up);
    Line other(half, half, 2);
    EXPECT_NE(lost(other, other.ann, false).up, anns.up);
}

TEST(Relay, OutlivesARoomThatIsDownForAWhile) {
    Line line;
    const int ann = line.portInRoom(line.ann, start);
    const int port = line.room->port();
    line.room.reset();
    ASSERT_TRUE(line.send(line.ann, "anybody there?", start));
    ASSERT_TRUE(line.serveUntil(start, [&] { return line.relay.refusals() == 1; }));
    ASSERT_TRUE(line.send(line.ann, "nobody?", start));

    line.room = std::make_unique<FakeRoom>(port);
    ASSERT_TRUE(line.send(line.ann, "back again", start));
    const std::vector<FakeRoom::Heard> heard = line.room->hear(1);
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard.front().bytes, "back again");
    EXPECT_EQ(heard.front().from, ann);
    ASSERT_TRUE(line.answer(ann, "welcome back", start));
    EXPECT_EQ(line.ann.receive(5000), "welcome back");
    EXPECT_EQ(line.notes.size(), 0u);
}

TEST(Relay, RefusalDuringASendIsOfAnEarlierDatagram) {
    Line line;
    line.portInRoom(line.ann, start);
    failingSends = {ECONNREFUSED, 1};
    ASSERT_TRUE(line.send(line.ann, "tried again", start));
    EXPECT_EQ(line.room->hear(1).at(0).bytes, "tried again");
    EXPECT_EQ(line.relay.refusals(), 1u);
    EXPECT_EQ(line.relay.up().out, 2u);
    EXPECT_EQ(line.relay.up().unsent, 0u);
}

TEST(Relay, DatagramRefusedTwiceIsGivenUp) {
    Line line;
    line.portInRoom(line.ann, start);
    failingSends = {ECONNREFUSED, 2};
    ASSERT_TRUE(line.send(line.ann, "given up", start));
    EXPECT_EQ(failingSends.left, 0);
    EXPECT_EQ(line.relay.refusals(), 2u);
    EXPECT_EQ(line.relay.up().out, 1u);
    EXPECT_EQ(line.relay.up().unsent, 1u);
    EXPECT_EQ(line.relay.up().delays.count(), 1u);
    EXPECT_EQ(line.relay.waiting(), 0u);
    ASSERT_TRUE(line.send(line.ann, "the next one", start));
    EXPECT_EQ(line.room->hear(1).at(0).bytes, "the next one");
}

TEST(Relay, DatagramThatTheSystemDoesNotSendIsCountedAndNotTriedAgain) {
    Line line;
    line.portInRoom(line.ann, start);
    failingSends = {ENETUNREACH, 1};
    ASSERT_TRUE(line.send(line.ann, "no way", start));
    EXPECT_EQ(failingSends.left, 0);
    EXPECT_EQ(line.relay.up().unsent, 1u);
    EXPECT_EQ(line.relay.up().out, 1u);
    EXPECT_EQ(line.relay.refusals(), 0u);
    EXPECT_EQ(line.relay.down().unsent, 0u);
}

TEST(Relay, ForgetsWhoIsSilentForAMinute) {
    Line line;
    const int ann = line.portInRoom(line.ann, start);
    UdpPeer bo;
    line.portInRoom(bo, start + seconds(30));
    ASSERT_TRUE(line.answer(ann, "the room's words do not count", start + seconds(59)));
    EXPECT_EQ(line.relay.clients(), 2u);
    line.relay.service(start + seconds(60));
    EXPECT_EQ(line.relay.clients(), 1u);
    EXPECT_NE(line.portInRoom(line.ann, start + seconds(61)), 0);
    EXPECT_EQ(line.relay.clients(), 2u);
    EXPECT_EQ(line.relay.clientsSeen(), 3u);

    ASSERT_TRUE(line.send(bo, "Bo lives", start + seconds(80)));
    line.relay.service(start + seconds(120));
    EXPECT_EQ(line.relay.clients(), 2u);
    line.relay.service(start + seconds(140));
    EXPECT_EQ(line.relay.clients(), 0u);
}

TEST(Relay, SendsWhatWaitsForAClientForgottenMeanwhile) {
    Line line(delayed(milliseconds(90000)));
    ASSERT_TRUE(line.send(line.ann, "late", start));
    line.relay.service(start + seconds(60));
    EXPECT_EQ(line.relay.clients(), 0u);
    line.relay.service(start + seconds(90));
    EXPECT_EQ(line.room->hear(1).size(), 1u);
}

TEST(Relay, SaysOnceThatThereAreTooManyClients) {
    Line line;
    std::list<UdpPeer> crowd(Relay::mostClients);
    for (UdpPeer& peer : crowd)
        ASSERT_TRUE(line.send(peer, "hello", start));
    EXPECT_EQ(line.notes.size(), 0u);
    UdpPeer late;
    late.send("hello", line.relay.port());
    late.send("hello?", line.relay.port());
    // Datagrams arrive in their order, so both have been looked at before this one.
    ASSERT_TRUE(line.send(crowd.front(), "still here", start));
    EXPECT_EQ(line.relay.clients(), Relay::mostClients);
    EXPECT_EQ(line.notes,
              std::vector<std::string>{"256 clients are here; more are not let through"});
}

TEST(Relay, SaysOnceThatThereIsNoWayToTheRoom) {
    sockaddr_in everybody = loopback(5000);
    everybody.sin_addr.s_addr = htonl(INADDR_LOOPBACK | IN_CLASSA_HOST);
    std::vector<std::string> notes;
    Relay relay(0, everybody, {}, {}, 1, [&](const std::string& note) { notes.push_back(note); });
    UdpPeer ann;
    for (int i = 0; i < 3; ++i) {
        ann.send("hello", relay.port());
        relay.wait(seconds(5));
        relay.service(start);
    }
    EXPECT_EQ(notes, std::vector<std::string>{"no way to the room: Permission denied"});
    EXPECT_EQ(relay.clients(), 0u);
    EXPECT_EQ(relay.clientsSeen(), 0u);
    EXPECT_EQ(relay.up().in, 0u);
}

TEST(Relay, KeepsNoMoreWaitingThanItSays) {
    Line line(delayed(milliseconds(100)));
    const std::string bytes(60000, 'x');
    const std::size_t room = Relay::mostBytesWaiting / bytes.size();
    for (std::size_t i = 0; i < room + 10; ++i)
        ASSERT_TRUE(line.send(line.ann, bytes, start));
    EXPECT_LE(line.relay.waiting(), room);
    EXPECT_GE(line.relay.waiting(), room - 2);
    EXPECT_EQ(line.relay.waiting() + line.relay.up().overflowed, room + 10);

    line.relay.service(start + milliseconds(100));
    EXPECT_EQ(line.relay.waiting(), 0u);
    const std::uint64_t overflowed = line.relay.up().overflowed;
    ASSERT_TRUE(line.send(line.ann, bytes, start + milliseconds(100)));
    EXPECT_EQ(line.relay.waiting(), 1u);
    EXPECT_EQ(line.relay.up().overflowed, overflowed);
}

TEST(Relay, PortThatIsTakenIsNamed) {
    const FakeRoom other;
    const auto ignore = [](const std::string&) {};
    try {
        const Relay relay(static_cast<std::uint16_t>(other.port()), loopback(1), {}, {}, 1, ignore);
        FAIL() << "two sockets at one port";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(),
                  "port " + std::to_string(other.port()) + ": Address already in use");
    }
}

TEST(Relay, CannotBeItsOwnRoom) {
    const int port = FakeRoom().port();
    const auto ignore = [](const std::string&) {};
    try {
        const Relay relay(static_cast<std::uint16_t>(port), loopback(port), {}, {}, 1, ignore);
        FAIL() << "datagrams would go round in circles";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(),
                  "port " + std::to_string(port) + ": the room cannot be the relay itself");
    }
}

TEST(Relay, FloodOnOneSocketIsTakenInPieces) {
    Line line;
    const int ann = line.portInRoom(line.ann, start);
    for (int i = 0; i < 70; ++i) {
        line.ann.send("up", line.relay.port());
        line.room->answer(ann, "down");
    }
    line.relay.wait(seconds(5));
    line.relay.service(start);
    EXPECT_EQ(line.relay.up().in, 1u + 64u);
    EXPECT_EQ(line.relay.down().in, 64u);
    line.relay.wait(seconds(5));
    line.relay.service(start);
    EXPECT_EQ(line.relay.up().in, 1u + 70u);
    EXPECT_EQ(line.relay.down().in, 70u);
}

TEST(Relay, WaitsForSecondsAndPartsOfThem) {
    Line line;
    const client::Time before = client::Clock::now();
    line.relay.wait(milliseconds(1050));
    EXPECT_GE(client::Clock::now() - before, milliseconds(1050));
}
