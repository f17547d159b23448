#include "bots/Presence.h"
#include "common/Descriptor.h"
#include "src/Messages.h"
#include "tests/support/UdpPeer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <vector>

using namespace drench;

using bots::askRooms;
using bots::awaitRoom;
using bots::Presence;
using client::Clock;
using client::RoomAddress;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

RoomAddress at(const std::string& name, in_addr_t host, in_port_t port) {
    RoomAddress room;
    room.name = name;
    room.address.sin_family = AF_INET;
    room.address.sin_addr.s_addr = htonl(host);
    room.address.sin_port = port;
    return room;
}

RoomAddress roomOf(const UdpPeer& peer) {
    return at("peer", INADDR_LOOPBACK, peer.address().addr.sin_port);
}

/// A port of loopback that nobody listens on.
RoomAddress nowhere() {
    const UdpPeer gone;
    return at("nowhere", INADDR_LOOPBACK, gone.address().addr.sin_port);
}

} // namespace

TEST(Presence, IsAnyAnswerThatComes) {
    const int listener = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const Descriptor closed(listener);
    sockaddr_in own = at("", INADDR_LOOPBACK, 0).address;
    socklen_t size = sizeof own;
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&own), size), 0);
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&own), &size), 0);

    // It answers the second question only: the first is taken for lost.
    std::vector<std::string> questions;
    std::thread room([&] {
        for (int i = 0; i < 2; ++i) {
            char bytes[64];
            sockaddr_in from = {};
            socklen_t length = sizeof from;
            const ssize_t count = recvfrom(listener, bytes, sizeof bytes, 0,
                                           reinterpret_cast<sockaddr*>(&from), &length);
            questions.emplace_back(bytes, static_cast<std::size_t>(std::max(count, ssize_t{0})));
            if (i == 1)
                sendto(listener, "j", 1, 0, reinterpret_cast<const sockaddr*>(&from), length);
        }
    });
    const client::Time start = Clock::now();
    const std::vector<Presence> presences =
        askRooms({at("room", INADDR_LOOPBACK, own.sin_port)}, start + seconds(20));
    room.join();
    EXPECT_EQ(presences, std::vector{Presence::answers});
    EXPECT_GE(Clock::now() - start, milliseconds(400));
    const std::string keepAliveOfNobody = {messageCode::keepAlive, '\0'};
    EXPECT_EQ(questions, (std::vector{keepAliveOfNobody, keepAliveOfNobody}));
}

TEST(Presence, RefusalIsKnownAtOnceAndSilenceAtTheEnd) {
    const UdpPeer silent;
    const client::Time start = Clock::now();
    EXPECT_EQ(askRooms({nowhere(), nowhere()}, start + seconds(30)),
              (std::vector{Presence::nobodyListens, Presence::nobodyListens}));
    EXPECT_LT(Clock::now() - start, seconds(10));
    EXPECT_EQ(askRooms({roomOf(silent), nowhere()}, Clock::now() + milliseconds(100)),
              (std::vector{Presence::silent, Presence::nobodyListens}));
}

TEST(Presence, RoomThatCannotBeAskedIsSilent) {
    EXPECT_EQ(
        askRooms({at("broadcast", INADDR_BROADCAST, htons(5000))}, Clock::now() + milliseconds(50)),
        std::vector{Presence::silent});
}

TEST(AwaitingARoom, TellsOfEachRoomOnceWhyItDoesNotAnswer) {
    const UdpPeer silent;
    std::vector<std::string> notes;
    const auto note = [&](const std::string& line) { notes.push_back(line); };
    EXPECT_FALSE(awaitRoom({nowhere(), nowhere()}, Timekeeper(1.3), note));
    const std::string words = "nowhere: nobody listens there; trying again";
    EXPECT_EQ(notes, (std::vector{words, words}));
    notes.clear();
    EXPECT_FALSE(awaitRoom({roomOf(silent)}, Timekeeper(0.2), note));
    EXPECT_EQ(notes, std::vector<std::string>{"peer: does not answer; trying again"});
}

TEST(AwaitingARoom, EndsWhenSomebodyAsksToStop) {
    stopAsked = 1;
    const auto note = [](const std::string& line) { ADD_FAILURE() << line; };
    EXPECT_FALSE(awaitRoom({nowhere()}, Timekeeper(0.0), note));
    stopAsked = 0;
}
