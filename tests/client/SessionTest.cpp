#include "client/Session.h"
#include "client/RoomAddress.h"
#include "tests/support/Datagrams.h"
#include "tests/support/UdpPeer.h"

#include <algorithm>
#include <climits>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <stdexcept>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

using namespace drench;

namespace {

using client::Event;
using client::Session;
using client::Time;
using std::chrono::milliseconds;
using Strings = std::vector<std::string>;

/// An event as one line: its kind and what it holds.
struct Described {
    std::string operator()(const client::Joined& event) const {
        return std::string("joined ") + event.id;
    }
    std::string operator()(const client::Refused&) const { return "refused"; }
    std::string operator()(const client::Unanswered& event) const {
        return event.nobodyListens ? "nobody listens" : "unanswered";
    }
    std::string operator()(const client::Dropped& event) const {
        return event.reason == client::Dropped::Reason::silence ? "silence" : "replaced";
    }
    std::string operator()(const client::Snapshot& event) const {
        return "tick " + std::to_string(event.tick);
    }
    std::string operator()(const client::Chat& event) const {
        return std::string("chat ") + event.speaker + " " + event.text;
    }
    std::string operator()(const client::PlayerJoined& event) const {
        return "joining [" + event.name + "]";
    }
    std::string operator()(const client::PlayerLeft& event) const {
        return "leaving [" + event.name + "]";
    }
    std::string operator()(const client::Soaking& event) const {
        return "soaking [" + event.shooter + "] [" + event.victim + "]";
    }
    std::string operator()(const client::Notice& event) const {
        return "notice [" + event.text + "]";
    }
};

Strings described(Session& session) {
    Strings all;
    while (const std::optional<Event> event = session.nextEvent())
        all.push_back(std::visit(Described(), *event));
    return all;
}

sockaddr_in loopback(int port) {
    std::string problem;
    return client::resolve("127.0.0.1:" + std::to_string(port), problem).value().address;
}

int portOf(const UdpPeer& peer) {
    return ntohs(peer.address().addr.sin_port);
}

int portOf(const Session& session) {
    sockaddr_in address = {};
    socklen_t length = sizeof address;
    getsockname(session.descriptor(), reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.sin_port);
}

Session joining(const UdpPeer& room, const std::string& name, Time now) {
    std::string problem;
    return Session::join(loopback(portOf(room)), name, now, problem).value();
}

/// A socket on 127.0.0.1 at this port.
int boundSocket(int port) {
    const int bound = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    if (bind(bound, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("the port has been taken");
    return bound;
}

/// A session, the room's end of its line, and the time at both.
struct Line {
    UdpPeer room;
    Time now;
    Session session;
    int port;

    explicit Line(const std::string& name = "Ann")
        : session(joining(room, name, now)), port(portOf(session)) {}

    /// Lets the session hear a datagram.
    void hear(const std::string& datagram) {
        room.send(datagram, port);
        session.service(now);
    }

    /// Lets time pass, then serves the session.
    void pass(milliseconds time) {
        now += time;
        session.service(now);
    }

    /// All that the room heard since it was last asked.
    Strings told() { return room.received(); }

    Strings events() { return described(session); }
};

struct Occupant {
    char id;
    std::string name;
};

std::string stateDatagram(const std::vector<Occupant>& players) {
    UpdateMessage state;
    for (const Occupant& player : players) {
        PlayerUpdate update;
        update.id = player.id;
        player.name.copy(update.name, sizeof update.name);
        state.add(update);
    }
    return {reinterpret_cast<const char*>(&state), sizeof state};
}

std::string annAlone() {
    return stateDatagram({{'1', "Ann"}});
}

std::string receiptDatagram() {
    GenericMessage receipt;
    receipt.data[0] = messageCode::join;
    return {reinterpret_cast<const char*>(&receipt), sizeof receipt};
}

/// A line whose session plays as player 1 and has been heard and told of that.
struct PlayingLine : Line {
    PlayingLine() {
        hear("s1");
        events();
        told();
    }

    /// Lets time pass in steps of 50 ms, with a snapshot at the end of each.
    void play(milliseconds time) {
        for (; time > milliseconds(0); time -= milliseconds(50)) {
            now += milliseconds(50);
            hear(annAlone());
        }
    }
};

Strings allButKeepAlives(Strings datagrams) {
    std::erase_if(datagrams, [](const std::string& datagram) {
        return datagram[0] == messageCode::keepAlive;
    });
    return datagrams;
}

} // namespace

TEST(SessionJoining, AsksAtOnceAndEndsTheNameWithAZero) {
    Line line;
    EXPECT_EQ(line.told(), Strings{std::string("jAnn\0", 5)});
    EXPECT_TRUE(line.session.isOpen());
    EXPECT_FALSE(line.session.isPlaying());
    EXPECT_EQ(line.session.id(), '\0');
}

TEST(SessionJoining, NamesAreCutToElevenCharactersAndAtTheirFirstZero) {
    Line long_("Bartholomew the Great");
    EXPECT_EQ(long_.told(), Strings{std::string("jBartholomew\0", 13)});
    Line zero(std::string("Ann\0ie", 6));
    EXPECT_EQ(zero.told(), Strings{std::string("jAnn\0", 5)});
}

TEST(SessionJoining, AnAcceptanceGivesTheIdentifier) {
    Line line;
    line.hear("s3");
    EXPECT_EQ(line.events(), Strings{"joined 3"});
    EXPECT_TRUE(line.session.isPlaying());
    EXPECT_EQ(line.session.id(), '3');
}

TEST(SessionJoining, AsksAgainEveryHalfSecondWhileNothingIsHeard) {
    Line line;
    line.pass(milliseconds(499));
    EXPECT_EQ(line.told().size(), 1u);
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(1));
    for (int i = 1; i <= 5; ++i) {
        line.pass(milliseconds(i == 1 ? 1 : 500));
        EXPECT_EQ(line.told(), Strings{joinDatagram("Ann")}) << i;
    }
    line.pass(milliseconds(500));
    EXPECT_EQ(line.told(), Strings{});
    EXPECT_EQ(line.events(), Strings{"unanswered"});
    EXPECT_FALSE(line.session.isOpen());
}

TEST(SessionJoining, AsksNoMoreOnceAReceiptCame) {
    Line line;
    line.hear(receiptDatagram());
    line.told();
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(3000));
    line.pass(milliseconds(2999));
    EXPECT_EQ(line.told(), Strings{});
    EXPECT_TRUE(line.session.isOpen());
    line.pass(milliseconds(1));
    EXPECT_EQ(line.events(), Strings{"unanswered"});
}

TEST(SessionJoining, AsksOnWhenOnlyRubbishCame) {
    Line line;
    line.told();
    line.hear("z");
    line.pass(milliseconds(500));
    EXPECT_EQ(line.told(), Strings{joinDatagram("Ann")});
}

TEST(SessionJoining, AFullRoomRefuses) {
    Line line;
    line.hear("f");
    EXPECT_EQ(line.events(), Strings{"refused"});
    EXPECT_FALSE(line.session.isOpen());
    EXPECT_EQ(line.session.descriptor(), -1);
}

TEST(SessionJoining, ARefusalOfASecondCopyWaitsForTheAnswerToTheFirst) {
    Line line;
    line.pass(milliseconds(500));
    line.hear("f");
    EXPECT_EQ(line.events(), Strings{});
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(250));
    line.pass(milliseconds(249));
    line.hear("s4");
    EXPECT_EQ(line.events(), Strings{"joined 4"});

    Line refused;
    refused.pass(milliseconds(500));
    refused.hear("f");
    refused.pass(milliseconds(250));
    EXPECT_EQ(refused.events(), Strings{"refused"});
}

TEST(SessionJoining, ARefusalMeansNothingOnceSnapshotsCame) {
    Line line;
    line.hear(annAlone());
    line.hear("f");
    line.pass(milliseconds(250));
    EXPECT_EQ(line.events(), Strings{});
    line.hear("s1");
    EXPECT_EQ(line.events(), Strings{"joined 1"});

    PlayingLine playing;
    playing.hear("f");
    EXPECT_EQ(playing.events(), Strings{});
    EXPECT_TRUE(playing.session.isPlaying());
}

TEST(SessionJoining, AMissedAcceptanceIsReadOffTheSnapshotsAfterAWhile) {
    Line line;
    const std::string state = stateDatagram({{'2', "Bo"}, {'4', "Ann"}});
    line.hear(state);
    line.pass(milliseconds(249));
    line.hear(state);
    EXPECT_EQ(line.events(), Strings{});
    line.now += milliseconds(1);
    line.hear(state);
    EXPECT_EQ(line.events(), (Strings{"joined 4", "tick 2"}));
    EXPECT_EQ(line.session.id(), '4');

    line.told();
    line.hear("s4");
    EXPECT_EQ(line.told(), Strings{}) << "its own acceptance, late";
}

TEST(SessionJoining, SnapshotsThatStartLateAreWaitedFor) {
    Line line;
    line.hear(receiptDatagram());
    line.pass(milliseconds(2900));
    line.hear(annAlone());
    line.pass(milliseconds(249));
    EXPECT_TRUE(line.session.isOpen());
    line.now += milliseconds(1);
    line.hear(annAlone());
    EXPECT_EQ(line.events(), (Strings{"joined 1", "tick 1"}));
}

TEST(SessionJoining, ALongNameIsFoundInSnapshotsAsTheRoomCutsIt) {
    Line line("Bartholomew the Great");
    line.hear(stateDatagram({{'1', "Bartholomew"}}));
    line.now += milliseconds(250);
    line.hear(stateDatagram({{'1', "Bartholomew"}}));
    EXPECT_EQ(line.events(), (Strings{"joined 1", "tick 1"}));
}

TEST(SessionJoining, AnIdentifierIsNotGuessedAmongTwoOfOneName) {
    Line line;
    const std::string twins = stateDatagram({{'1', "Ann"}, {'2', "Ann"}});
    for (int i = 0; i <= 11; ++i) {
        line.hear(twins);
        line.pass(milliseconds(250));
        EXPECT_EQ(line.session.isOpen(), i < 11) << i;
    }
    EXPECT_EQ(line.events(), Strings{"unanswered"});
}

TEST(SessionJoining, EmptySlotsAreNobodyEvenForANamelessPlayer) {
    Line line("");
    line.hear(stateDatagram({{'2', "Bo"}}));
    line.now += milliseconds(250);
    line.hear(stateDatagram({{'2', "Bo"}, {'3', ""}}));
    EXPECT_EQ(line.events(), (Strings{"joined 3", "tick 1"}));
}

TEST(SessionJoining, ASecondPlayerOfOursIsSentAway) {
    PlayingLine line;
    line.hear("s2");
    EXPECT_EQ(line.told(), Strings{leaveDatagram('2')});
    line.hear("s1");
    EXPECT_EQ(line.told(), Strings{}) << "never ourselves";
    EXPECT_EQ(line.session.id(), '1');
    EXPECT_EQ(line.events(), Strings{});
}

TEST(SessionJoining, IdentifiersThatNoRoomGivesAreNoAcceptance) {
    Line line;
    for (const std::string& rubbish : {std::string("s0"), std::string("s5"), std::string("s\0", 2),
                                       std::string("s"), std::string("s1 ")})
        line.hear(rubbish);
    EXPECT_EQ(line.events(), Strings{});
    EXPECT_EQ(line.session.statistics().unknown, 5u);
}

TEST(SessionJoining, NobodyListensWhereTheHostSaysSo) {
    auto room = std::make_unique<UdpPeer>();
    const sockaddr_in address = loopback(portOf(*room));
    room.reset();
    Time now;
    std::string problem;
    Session session = Session::join(address, "Ann", now, problem).value();
    for (int i = 0; i < 6; ++i) {
        EXPECT_TRUE(session.isOpen()) << "the room may be about to start";
        now += milliseconds(500);
        session.service(now);
    }
    EXPECT_EQ(described(session), Strings{"nobody listens"});
}

TEST(SessionJoining, ARoomThatStartsLateIsStillJoined) {
    auto nobody = std::make_unique<UdpPeer>();
    const int port = portOf(*nobody);
    nobody.reset();
    Time now;
    std::string problem;
    Session session = Session::join(loopback(port), "Ann", now, problem).value();
    session.service(now);

    const int room = boundSocket(port);
    session.service(now += milliseconds(500));
    char datagram[16];
    EXPECT_EQ(recv(room, datagram, sizeof datagram, MSG_DONTWAIT), 5);
    const sockaddr_in player = loopback(portOf(session));
    sendto(room, "s1", 2, 0, reinterpret_cast<const sockaddr*>(&player), sizeof player);
    const std::string receipt = "j" + std::string(531, '\0');
    sendto(room, receipt.data(), receipt.size(), 0, reinterpret_cast<const sockaddr*>(&player),
           sizeof player);
    session.service(now += milliseconds(3));
    EXPECT_DOUBLE_EQ(session.roundTrip().latest().value(), 3.0)
        << "of the second join, not of the refused one";
    session.service(now += milliseconds(2000));
    EXPECT_TRUE(session.isPlaying()) << "that somebody listens is known by now";
    close(room);
}

TEST(SessionJoining, WithoutASocketThereIsAReason) {
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none = {0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    std::string problem;
    const bool joined = Session::join(loopback(1), "Ann", Time(), problem).has_value();
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_FALSE(joined);
    EXPECT_EQ(problem, "no socket: Too many open files");
}

TEST(SessionJoining, WithoutAWayToTheRoomThereIsAReason) {
    sockaddr_in everybody = loopback(5000);
    everybody.sin_addr.s_addr = INADDR_BROADCAST;
    std::string problem;
    EXPECT_FALSE(Session::join(everybody, "Ann", Time(), problem).has_value());
    EXPECT_EQ(problem, "no way to the room: Permission denied");
}

TEST(Snapshots, ComeWithTheirTickAndArrival) {
    PlayingLine line;
    line.hear(annAlone());
    line.now += milliseconds(16);
    line.hear(stateDatagram({{'2', "Bo"}, {'1', "Ann"}}));
    line.session.nextEvent();
    const std::optional<Event> event = line.session.nextEvent();
    ASSERT_TRUE(event && std::holds_alternative<client::Snapshot>(*event));
    const auto& snapshot = std::get<client::Snapshot>(*event);
    EXPECT_EQ(snapshot.tick, 1);
    EXPECT_EQ(snapshot.arrival, line.now);
    EXPECT_EQ(snapshot.state.updates[0].id, '2');
    EXPECT_EQ(line.session.self(snapshot.state), &snapshot.state.updates[1]);
    EXPECT_EQ(line.session.statistics().snapshots, 2u);
}

TEST(Snapshots, ArePassedOnAsTheyCome) {
    PlayingLine line;
    UpdateMessage state;
    PlayerUpdate ann;
    ann.id = '1';
    std::strcpy(ann.name, "Ann");
    ann.position = vec3(std::numeric_limits<float>::quiet_NaN());
    ann.points = INT_MIN;
    state.add(ann);
    state.updates[3].padding[1] = 'x';
    const std::string datagram(reinterpret_cast<const char*>(&state), sizeof state);
    line.hear(datagram);
    const std::optional<Event> event = line.session.nextEvent();
    ASSERT_TRUE(event && std::holds_alternative<client::Snapshot>(*event));
    EXPECT_EQ(
        std::memcmp(&std::get<client::Snapshot>(*event).state, datagram.data(), datagram.size()),
        0);
}

TEST(Snapshots, NobodyIsOursBeforePlayingAndAfter) {
    Line line;
    UpdateMessage empty;
    EXPECT_EQ(line.session.self(empty), nullptr);
    line.hear("s1");
    EXPECT_EQ(line.session.self(empty), nullptr);
    UpdateMessage state;
    ASSERT_TRUE(readState(annAlone(), state));
    EXPECT_EQ(line.session.self(state), &state.updates[0]);
    line.session.leave();
    EXPECT_EQ(line.session.self(state), nullptr);
}

TEST(Snapshots, MissedOnesAreCountedAsTheTickClockTells) {
    PlayingLine line;
    for (int tick = 0; tick < 200; ++tick) {
        line.now += milliseconds(16);
        if (tick < 150 || tick >= 153)
            line.hear(annAlone());
    }
    EXPECT_EQ(line.session.statistics().snapshots, 197u);
    EXPECT_EQ(line.session.statistics().snapshotsMissed, 3u);
    EXPECT_EQ(line.session.tickClock().missed(), 3u);
    EXPECT_EQ(line.events().back(), "tick 199");
}

TEST(Dropping, AfterThreeSecondsOfSilence) {
    PlayingLine line;
    line.hear(annAlone());
    line.events();
    line.pass(milliseconds(2999));
    EXPECT_TRUE(line.session.isPlaying());
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(1));
    line.told();
    line.pass(milliseconds(1));
    EXPECT_EQ(line.events(), Strings{"silence"});
    EXPECT_FALSE(line.session.isOpen());
    EXPECT_EQ(line.told(), Strings{}) << "player 1 may be somebody else by now";
}

TEST(Dropping, AStallOfLessIsSurvived) {
    PlayingLine line;
    for (int i = 0; i < 4; ++i) {
        line.pass(milliseconds(2500));
        line.hear(annAlone());
    }
    EXPECT_TRUE(line.session.isPlaying());
    EXPECT_EQ(line.events().size(), 4u);
}

TEST(Dropping, SoonerWhereTheHostSaysThatNobodyListens) {
    auto line = std::make_unique<PlayingLine>();
    line->hear(annAlone());
    Session session = std::move(line->session);
    Time now = line->now;
    line.reset();
    session.setKey(keyIndex::forward, true);
    session.turn(1, 1);
    const std::uint64_t sent = session.statistics().sent;
    session.service(now += milliseconds(1));
    EXPECT_EQ(session.statistics().sent - sent, 2u) << "what the host says stops no other datagram";
    EXPECT_EQ(session.statistics().unsent, 0u);
    described(session);
    session.service(now += milliseconds(998));
    EXPECT_TRUE(session.isPlaying());
    EXPECT_EQ(session.wakeAt(), now + milliseconds(1));
    session.service(now += milliseconds(1));
    EXPECT_EQ(described(session), Strings{"silence"});
}

TEST(Dropping, WhenASnapshotIsWithoutUs) {
    PlayingLine line;
    line.hear(stateDatagram({{'2', "Bo"}}));
    EXPECT_EQ(line.events(), Strings{"replaced"});
    EXPECT_FALSE(line.session.isOpen());
    EXPECT_EQ(line.told(), Strings{});
}

TEST(Dropping, WhenOurIdentifierHasAnotherName) {
    PlayingLine line;
    line.hear(annAlone());
    line.hear(stateDatagram({{'1', "Anna"}, {'2', "Ann"}}));
    EXPECT_EQ(line.events(), (Strings{"tick 0", "replaced"}));
    EXPECT_EQ(line.told(), Strings{});
}

TEST(Dropping, NothingHappensAfterwards) {
    PlayingLine line;
    line.hear(stateDatagram({}));
    line.events();
    line.session.setKey(keyIndex::forward, true);
    line.session.turn(1, 1);
    line.session.say("Hello?");
    line.session.leave();
    line.pass(milliseconds(5000));
    EXPECT_EQ(line.session.wakeAt(), Time::max());
    EXPECT_EQ(line.events(), Strings{});
    EXPECT_EQ(line.told(), Strings{});
}

TEST(Silence, HoldsBackAllThatCouldMoveAnother) {
    PlayingLine line;
    line.session.setKey(keyIndex::forward, true);
    line.hear(annAlone());
    line.told();
    line.pass(milliseconds(999));
    EXPECT_EQ(line.told(), Strings{keyDatagram('1', keyIndex::forward, true)});

    line.session.setKey(keyIndex::shoot, true);
    line.session.setKey(keyIndex::jump, true);
    line.session.turn(5, 5);
    line.session.say("Anybody there?");
    line.pass(milliseconds(1));
    EXPECT_EQ(line.told(), Strings{});
    EXPECT_GT(line.session.wakeAt(), line.now) << "no reason to spin";

    line.hear(annAlone());
    EXPECT_EQ(line.told(), Strings{keyDatagram('1', keyIndex::shoot, true)});
    line.pass(milliseconds(500));
    EXPECT_EQ(line.told(), (Strings{keyDatagram('1', keyIndex::forward, true),
                                    keyDatagram('1', keyIndex::shoot, true)}));
}

TEST(Silence, DoesNotEndKeepAlives) {
    PlayingLine line;
    line.hear(annAlone());
    line.pass(milliseconds(1000));
    line.pass(milliseconds(1000));
    EXPECT_EQ(line.told(), (Strings{keepAliveDatagram('1'), keepAliveDatagram('1')}));
}

TEST(KeepAlives, GoOutAfterASecondWithoutAnotherSignOfLife) {
    PlayingLine line;
    line.play(milliseconds(950));
    EXPECT_EQ(line.told(), Strings{});
    line.play(milliseconds(50));
    EXPECT_EQ(line.told(), Strings{keepAliveDatagram('1')});
    line.play(milliseconds(5000));
    EXPECT_EQ(line.told().size(), 5u);
}

TEST(KeepAlives, AreNotNeededBesideKeysViewsAndWords) {
    const auto afterASignEverySecond = [](const std::function<void(Session&)>& sign) {
        PlayingLine line;
        for (int i = 0; i < 5; ++i) {
            line.play(milliseconds(900));
            sign(line.session);
            line.play(milliseconds(50));
        }
        Strings told = line.told();
        const size_t count = told.size();
        return count - allButKeepAlives(told).size();
    };
    EXPECT_EQ(afterASignEverySecond([](Session&) {}), 4u);
    EXPECT_EQ(afterASignEverySecond([](Session& s) { s.turn(1, 0); }), 0u);
    EXPECT_EQ(afterASignEverySecond([](Session& s) { s.say("Hm."); }), 0u);
    EXPECT_EQ(afterASignEverySecond([](Session& s) { s.setKey(keyIndex::jump, true); }), 0u);
    EXPECT_EQ(afterASignEverySecond([](Session& s) { s.setKey(keyIndex::left, true); }), 0u);
}

TEST(KeepAlives, TheSessionAsksToBeServedInTime) {
    PlayingLine line;
    line.play(milliseconds(50));
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(950));
}

TEST(Keys, AreToldWithTheNextServiceAndOnlyWhenTheyChange) {
    PlayingLine line;
    line.session.setKey(keyIndex::forward, true);
    EXPECT_LE(line.session.wakeAt(), line.now);
    EXPECT_EQ(line.told(), Strings{});
    line.pass(milliseconds(0));
    EXPECT_EQ(line.told(), Strings{keyDatagram('1', keyIndex::forward, true)});
    line.session.setKey(keyIndex::forward, true);
    line.pass(milliseconds(10));
    EXPECT_EQ(line.told(), Strings{});
    line.session.setKey(keyIndex::backward, false);
    line.pass(milliseconds(10));
    EXPECT_EQ(line.told(), Strings{});
}

TEST(Keys, HeldOnesAreToldAgainEveryQuarterOfASecond) {
    PlayingLine line;
    line.session.setKey(keyIndex::shoot, true);
    line.pass(milliseconds(0));
    line.told();
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(250));
    line.play(milliseconds(200));
    EXPECT_EQ(line.told(), Strings{});
    line.play(milliseconds(50));
    EXPECT_EQ(line.told(), Strings{keyDatagram('1', keyIndex::shoot, true)});
    line.play(milliseconds(1000));
    EXPECT_EQ(line.told().size(), 4u);
}

TEST(Keys, AReleaseIsToldThreeTimes) {
    PlayingLine line;
    line.session.setKey(keyIndex::left, true);
    line.pass(milliseconds(0));
    line.session.setKey(keyIndex::left, false);
    line.told();
    const Strings release = {keyDatagram('1', keyIndex::left, false)};
    line.pass(milliseconds(1));
    EXPECT_EQ(line.told(), release);
    for (int i = 0; i < 2; ++i) {
        line.play(milliseconds(200));
        EXPECT_EQ(line.told(), Strings{});
        line.play(milliseconds(50));
        EXPECT_EQ(line.told(), release);
    }
    line.play(milliseconds(2000));
    EXPECT_EQ(allButKeepAlives(line.told()), Strings{});
}

TEST(Keys, APressEndsTheTellingOfTheRelease) {
    PlayingLine line;
    line.session.setKey(keyIndex::left, true);
    line.pass(milliseconds(0));
    line.session.setKey(keyIndex::left, false);
    line.pass(milliseconds(0));
    line.session.setKey(keyIndex::left, true);
    line.pass(milliseconds(0));
    line.told();
    line.play(milliseconds(500));
    EXPECT_EQ(line.told(), Strings(2, keyDatagram('1', keyIndex::left, true)));
}

TEST(Keys, AJumpIsToldOnceAndItsReleaseNever) {
    PlayingLine line;
    line.session.setKey(keyIndex::jump, true);
    EXPECT_LE(line.session.wakeAt(), line.now);
    line.session.setKey(keyIndex::jump, false);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.told(), Strings{keyDatagram('1', keyIndex::jump, true)});
    line.play(milliseconds(900));
    EXPECT_EQ(line.told(), Strings{});
    line.session.setKey(keyIndex::jump, true);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.told(), Strings{keyDatagram('1', keyIndex::jump, true)});
}

TEST(Keys, GoOutBeforeTheViewInTheOrderOfTheirNumbers) {
    PlayingLine line;
    line.session.turn(7, -3);
    for (int key = keyIndex::count - 1; key >= 0; --key)
        line.session.setKey(key, true);
    line.session.say("Now!");
    line.pass(milliseconds(0));
    Strings expected;
    for (int key = 0; key < keyIndex::count; ++key)
        expected.push_back(keyDatagram('1', key, true));
    expected.push_back(viewDatagram('1', 7, -3));
    expected.push_back(chatDatagram('1', "Now!"));
    EXPECT_EQ(line.told(), expected);
}

TEST(Keys, OthersThanTheSixDoNothing) {
    PlayingLine line;
    for (const int key : {-1, 6, INT_MAX, INT_MIN})
        line.session.setKey(key, true);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.told(), Strings{});
}

TEST(Keys, BeforePlayingAreForgotten) {
    Line line;
    line.told();
    line.session.setKey(keyIndex::forward, true);
    line.session.setKey(keyIndex::jump, true);
    line.session.turn(1, 1);
    line.session.say("Hello!");
    line.hear("s1");
    EXPECT_EQ(line.told(), Strings{});
}

TEST(Turning, CountsAddUpToOneRecord) {
    PlayingLine line;
    line.session.turn(3, -4);
    line.session.turn(10, 1);
    EXPECT_LE(line.session.wakeAt(), line.now);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.told(), Strings{viewDatagram('1', 13, -3)});
    line.pass(milliseconds(1));
    EXPECT_EQ(line.told(), Strings{});
}

TEST(Turning, NoCountsAreNoRecord) {
    PlayingLine line;
    line.session.turn(5, 5);
    line.session.turn(-5, -5);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.told(), Strings{});
    line.session.turn(0, 1);
    EXPECT_LE(line.session.wakeAt(), line.now);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.told(), Strings{viewDatagram('1', 0, 1)});
}

TEST(Turning, SumsStopAtTheEnds) {
    PlayingLine line;
    for (int i = 0; i < 3; ++i)
        line.session.turn(INT_MAX, INT_MIN);
    line.session.turn(-1, 1);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.told(), Strings{viewDatagram('1', INT_MAX - 1, INT_MIN + 1)});
}

TEST(Words, GoOutWithTheNextServiceOneRecordEach) {
    PlayingLine line;
    line.session.say("Hello!");
    line.session.say("");
    EXPECT_LE(line.session.wakeAt(), line.now);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.told(), (Strings{chatDatagram('1', "Hello!"), chatDatagram('1', "")}));
    line.pass(milliseconds(1));
    EXPECT_EQ(line.told(), Strings{});
}

TEST(Words, AreCutToThirtyBytesAndAtTheirFirstZero) {
    PlayingLine line;
    line.session.say("Nobody stays dry for ever, Bo! And neither do you.");
    line.session.say(std::string("a\0b", 3));
    line.pass(milliseconds(0));
    EXPECT_EQ(line.told(), (Strings{chatDatagram('1', "Nobody stays dry for ever, Bo!"),
                                    chatDatagram('1', "a")}));
}

TEST(Words, OfOthersAreHeard) {
    PlayingLine line;
    line.hear(chatDatagram('2', "hello"));
    line.hear(chatDatagram('1', "Nobody stays dry for ever, Bo!"));
    line.hear(chatDatagram('3', "Ann joined"));
    EXPECT_EQ(line.events(), (Strings{"chat 2 hello", "chat 1 Nobody stays dry for ever, Bo!",
                                      "chat 3 Ann joined"}));
}

/// What a notice with this text is taken for.
std::string noticed(const std::string& text) {
    PlayingLine line;
    line.hear(noticeDatagram(text));
    const Strings events = line.events();
    return events.size() == 1 ? events[0] : "not one event";
}

TEST(Notices, TellWhoComesAndGoes) {
    EXPECT_EQ(noticed("Ann joined"), "joining [Ann]");
    EXPECT_EQ(noticed("Ann disconnected"), "leaving [Ann]");
    EXPECT_EQ(noticed("Bartholomew disconnected"), "leaving [Bartholomew]");
    EXPECT_EQ(noticed(" joined"), "joining []");
}

TEST(Notices, TellWhoSoakedWhom) {
    EXPECT_EQ(noticed("Ann soaked Bo!"), "soaking [Ann] [Bo]");
    EXPECT_EQ(noticed(" soaked !"), "soaking [] []");
    EXPECT_EQ(noticed("Ann! soaked Bo!!"), "soaking [Ann!] [Bo!]");
}

TEST(Notices, TheLongestSoakingLosesItsLastCharacterOnly) {
    EXPECT_EQ(noticed("Bartholomew soaked Maximiliana"), "soaking [Bartholomew] [Maximiliana]");
    EXPECT_EQ(noticed("Bartholomew soaked Maximilian!"), "soaking [Bartholomew] [Maximilian]");
    EXPECT_EQ(noticed("Bartholomew soaked Ann"), "notice [Bartholomew soaked Ann]");
}

TEST(Notices, NamesMayReadLikeNotices) {
    EXPECT_EQ(noticed("A joined joined"), "joining [A joined]");
    EXPECT_EQ(noticed("A soaked B joined"), "joining [A soaked B]");
    EXPECT_EQ(noticed("Ann joined soaked Bo!"), "soaking [Ann joined] [Bo]");
    EXPECT_EQ(noticed("Bartholomew soaked Max joined"), "notice [Bartholomew soaked Max joined]");
    EXPECT_EQ(noticed("A soaked soaked Bo!"), "soaking [A] [soaked Bo]");
    EXPECT_EQ(noticed("A soaked  soaked Maximilian!"), "soaking [A soaked ] [Maximilian]");
}

TEST(Notices, OthersArePassedOn) {
    EXPECT_EQ(noticed("The water is off."), "notice [The water is off.]");
    EXPECT_EQ(noticed(""), "notice []");
    EXPECT_EQ(noticed("Bartholomew I joined"), "notice [Bartholomew I joined]");
    EXPECT_EQ(noticed("Maximilianus soaked Bo!"), "notice [Maximilianus soaked Bo!]");
}

TEST(Records, OfOddSizesOrUnknownCodesAreCountedAndDropped) {
    PlayingLine line;
    std::uint64_t unknown = 0;
    for (const std::string& record : {annAlone(), receiptDatagram(), chatDatagram('2', "hello"),
                                      std::string("s2"), std::string("f")}) {
        for (const std::string& odd : {record.substr(0, record.size() - 1), record + '\0',
                                       record + std::string(2000, 'z')}) {
            line.hear(odd);
            EXPECT_EQ(line.session.statistics().unknown, ++unknown)
                << record[0] << " of " << odd.size() << " bytes";
        }
    }
    line.hear("k1..");
    EXPECT_EQ(line.session.statistics().unknown, unknown + 1);
    EXPECT_EQ(line.session.statistics().received, unknown + 2) << "and the acceptance";
    EXPECT_EQ(line.events(), Strings{});
    EXPECT_EQ(line.told(), Strings{});
}

TEST(Records, ReceiptsMeasureTheRoundTrip) {
    PlayingLine line;
    line.session.turn(1, 0);
    line.pass(milliseconds(2000));
    line.now += milliseconds(25);
    line.hear(receiptDatagram());
    EXPECT_EQ(line.session.roundTrip().latest(), 25.0);
    EXPECT_EQ(line.session.roundTrip().datagrams(), line.session.statistics().sent);
    EXPECT_EQ(line.session.roundTrip().receipts(), 1u);
}

TEST(Records, FromElsewhereNeverReachUs) {
    Line line;
    UdpPeer stranger;
    stranger.send("s2", line.port);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.events(), Strings{});
    EXPECT_EQ(line.session.statistics().received, 0u);
}

TEST(Records, AFloodDoesNotHoldUpTheCaller) {
    PlayingLine line;
    const int buffer = 200000;
    setsockopt(line.session.descriptor(), SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer);
    for (int i = 0; i < 300; ++i)
        line.room.send("z", line.port);
    const std::uint64_t before = line.session.statistics().received;
    line.session.service(line.now);
    EXPECT_EQ(line.session.statistics().received - before, 256u);
    line.session.service(line.now);
    EXPECT_EQ(line.session.statistics().received - before, 300u);
}

TEST(Records, EventsThatNobodyTakesDoNotPileUp) {
    PlayingLine line;
    for (int i = 0; i < 1100; ++i)
        line.hear(annAlone());
    line.hear(stateDatagram({}));
    const Strings events = line.events();
    EXPECT_EQ(events.size(), 1025u);
    EXPECT_EQ(events[1023], "tick 1023");
    EXPECT_EQ(events.back(), "replaced") << "that one is never lost";
}

TEST(Records, EventsComeInOrderWhenTakenSingly) {
    PlayingLine line;
    int next = 0;
    for (int i = 0; i < 100; ++i) {
        line.hear(annAlone());
        line.hear(annAlone());
        const std::optional<Event> event = line.session.nextEvent();
        ASSERT_TRUE(event);
        EXPECT_EQ(std::visit(Described(), *event), "tick " + std::to_string(next++));
    }
    for (const std::string& event : line.events())
        EXPECT_EQ(event, "tick " + std::to_string(next++));
    EXPECT_EQ(next, 200);
}

TEST(SessionLeaving, TellsTheRoomOnce) {
    PlayingLine line;
    line.hear(annAlone());
    line.session.leave();
    EXPECT_EQ(line.told(), Strings{leaveDatagram('1')});
    EXPECT_FALSE(line.session.isOpen());
    EXPECT_FALSE(line.session.isPlaying());
    line.session.leave();
    EXPECT_EQ(line.told(), Strings{});
    EXPECT_EQ(line.events(), Strings{"tick 0"}) << "what came before stays";
}

TEST(SessionLeaving, ComesWithTheEndOfTheSession) {
    UdpPeer room;
    {
        Session session = joining(room, "Ann", Time());
        room.send("s2", portOf(session));
        session.service(Time());
        room.received();
    }
    EXPECT_EQ(room.received(), Strings{leaveDatagram('2')});
}

TEST(SessionLeaving, WhileJoiningHeedsAnAnswerThatHasCome) {
    UdpPeer room;
    {
        const Session session = joining(room, "Ann", Time());
        room.received();
        room.send(receiptDatagram(), portOf(session));
        room.send("s2", portOf(session));
    }
    EXPECT_EQ(room.received(), Strings{leaveDatagram('2')});
    {
        const Session session = joining(room, "Ann", Time());
        room.received();
    }
    EXPECT_EQ(room.received(), Strings{});
}

TEST(SessionLeaving, SendsASecondPlayerAwayToo) {
    PlayingLine line;
    line.room.send("s3", line.port);
    line.room.send("s1", line.port);
    line.session.leave();
    EXPECT_EQ(line.told(), (Strings{leaveDatagram('3'), leaveDatagram('1')}));
}

TEST(SessionLeaving, AfterASecondOfSilenceTellsNobody) {
    PlayingLine line;
    line.pass(milliseconds(1000));
    line.told();
    line.session.leave();
    EXPECT_EQ(line.told(), Strings{});

    PlayingLine sooner;
    sooner.pass(milliseconds(999));
    sooner.told();
    sooner.session.leave();
    EXPECT_EQ(sooner.told(), Strings{leaveDatagram('1')});
}

TEST(SessionLeaving, SendsWhatWasAskedForFirst) {
    PlayingLine line;
    line.play(milliseconds(50));
    line.session.say("bye");
    line.session.leave();
    EXPECT_EQ(line.told(), (Strings{chatDatagram('1', "bye"), leaveDatagram('1')}));
}

// What waits in a socket is older than it looks: the room may have dropped us since.
TEST(SessionStalls, OldSnapshotsDoNotShowWhoHasOurIdentifier) {
    PlayingLine line;
    line.room.send(annAlone(), line.port);
    line.session.setKey(keyIndex::shoot, true);
    line.pass(milliseconds(1000));
    EXPECT_EQ(line.told(), Strings{keepAliveDatagram('1')}) << "a sign of life hurts nobody";
    line.play(milliseconds(50));
    EXPECT_EQ(line.told(), Strings{keyDatagram('1', keyIndex::shoot, true)});
}

TEST(SessionStalls, ASocketThatIsNotReadToItsEndDoesNotEither) {
    PlayingLine line;
    for (int i = 0; i < 256; ++i)
        line.room.send("?", line.port);
    line.session.setKey(keyIndex::shoot, true);
    line.pass(milliseconds(1));
    EXPECT_EQ(line.told(), Strings{});
    line.pass(milliseconds(1));
    EXPECT_EQ(line.told(), Strings{keyDatagram('1', keyIndex::shoot, true)});
}

TEST(SessionStalls, LeavingAfterOneTellsNobody) {
    PlayingLine line;
    std::this_thread::sleep_for(milliseconds(1100));
    line.session.leave();
    EXPECT_EQ(line.told(), Strings{});
}

TEST(SessionMoving, TakesThePlayerAlong) {
    PlayingLine line;
    line.session.setKey(keyIndex::forward, true);
    line.hear(annAlone());
    line.told();
    {
        Session moved(std::move(line.session));
        EXPECT_FALSE(line.session.isOpen());
        EXPECT_FALSE(line.session.isPlaying());
        EXPECT_EQ(line.events(), Strings{});
        line.session.leave();
        EXPECT_EQ(line.told(), Strings{});

        EXPECT_EQ(moved.id(), '1');
        EXPECT_EQ(described(moved), Strings{"tick 0"});
        line.room.send(annAlone(), line.port);
        moved.service(line.now + milliseconds(250));
        EXPECT_EQ(described(moved), Strings{"tick 1"});
        EXPECT_EQ(line.told(), Strings{keyDatagram('1', keyIndex::forward, true)});
    }
    EXPECT_EQ(line.told(), Strings{leaveDatagram('1')});
}

TEST(SessionMoving, OntoAPlayerLetsThatOneLeave) {
    PlayingLine first;
    PlayingLine second;
    first.session = std::move(second.session);
    EXPECT_EQ(first.told(), Strings{leaveDatagram('1')});
    EXPECT_EQ(second.told(), Strings{});
    EXPECT_EQ(portOf(first.session), second.port);

    Session& same = first.session;
    first.session = std::move(same);
    EXPECT_TRUE(first.session.isPlaying());
    EXPECT_EQ(second.told(), Strings{});
}

TEST(SessionWaiting, EndsWhenSomethingArrivesOrIsDue) {
    UdpPeer room;
    std::string problem;
    Session session = joining(room, "Ann", client::Clock::now());
    room.send("s1", portOf(session));
    client::wait(session);
    session.service(client::Clock::now());
    ASSERT_TRUE(session.isPlaying());
    session.turn(1, 1);
    const Time before = client::Clock::now();
    client::wait(session);
    EXPECT_LT(client::Clock::now() - before, milliseconds(900)) << "a view is to be sent";

    session.service(client::Clock::now());
    session.setKey(keyIndex::left, true);
    session.service(client::Clock::now());
    const Time due = session.wakeAt();
    client::wait(session);
    EXPECT_GE(client::Clock::now(), due);
    session.leave();
    client::wait(session);
    EXPECT_LT(client::Clock::now() - due, milliseconds(900)) << "nothing comes any more";
}

TEST(Crowd, OfTwoThousandPlaysInOneProcess) {
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit more = {std::min<rlim_t>(std::max<rlim_t>(limit.rlim_cur, 2100), limit.rlim_max),
                         limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &more);
    const size_t count = std::min<size_t>(2000, more.rlim_cur - 100);
    ASSERT_GE(count, 500u);
    {
        UdpPeer room;
        Time now;
        std::vector<Session> sessions;
        for (size_t i = 0; i < count; ++i) {
            sessions.push_back(joining(room, "Ann", now));
            EXPECT_EQ(room.received().size(), 1u);
            room.send("s1", portOf(sessions[i]));
        }
        for (int tick = 0; tick < 3; ++tick) {
            now += milliseconds(16);
            for (Session& session : sessions) {
                room.send(annAlone(), portOf(session));
                session.turn(1, tick);
                session.service(now);
                ASSERT_TRUE(session.isPlaying());
                EXPECT_EQ(room.received().size(), tick == 0 ? 0u : 1u);
            }
        }
        for (Session& session : sessions) {
            EXPECT_EQ(described(session), (Strings{"joined 1", "tick 0", "tick 1", "tick 2"}));
            session.leave();
            EXPECT_EQ(room.received(), Strings{leaveDatagram('1')});
        }
    }
    setrlimit(RLIMIT_NOFILE, &limit);
}

/// The address that the text is resolved to, or why there is none.
std::string resolved(const std::string& text) {
    std::string problem;
    const std::optional<client::RoomAddress> room = client::resolve(text, problem);
    if (!room)
        return problem;
    const std::uint32_t host = ntohl(room->address.sin_addr.s_addr);
    std::string dotted;
    for (int shift = 24; shift >= 0; shift -= 8)
        dotted += std::to_string(host >> shift & 255) + (shift > 0 ? "." : ":");
    return dotted + std::to_string(ntohs(room->address.sin_port));
}

TEST(Addresses, AreAHostAndAPort) {
    EXPECT_EQ(resolved("127.0.0.1:5063"), "127.0.0.1:5063");
    EXPECT_EQ(resolved("192.0.2.7"), "192.0.2.7:5000");
    EXPECT_EQ(resolved(":65535"), "127.0.0.1:65535");
    EXPECT_EQ(resolved(""), "127.0.0.1:5000");
    EXPECT_EQ(resolved("localhost:1"), "127.0.0.1:1");
}

TEST(Addresses, BadOnesAreExplained) {
    EXPECT_EQ(resolved("localhost:0"), "\"0\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("localhost:65536"), "\"65536\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("localhost:99999999999"), "\"99999999999\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("localhost:"), "\"\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("localhost:-5"), "\"-5\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("localhost:5000x"), "\"5000x\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("no host:5000").rfind("cannot find the host \"no host\": ", 0), 0u);
}
