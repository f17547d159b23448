#include "tests/client/SessionLine.h"

#include <gtest/gtest.h>
#include <memory>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

TEST(SessionJoining, SendsTheNameAtOnceWithAZeroAtItsEnd) {
    Line line;
    EXPECT_EQ(line.heardByRoom(), Strings{std::string("jAnn\0", 5)});
    EXPECT_TRUE(line.session.isOpen());
    EXPECT_FALSE(line.session.isPlaying());
    EXPECT_EQ(line.session.id(), '\0');
}

TEST(SessionJoining, NamesAreCutToElevenCharactersAndAtTheirFirstZero) {
    Line lengthy("Bartholomew the Great");
    EXPECT_EQ(lengthy.heardByRoom(), Strings{std::string("jBartholomew\0", 13)});
    Line zero(std::string("Ann\0ie", 6));
    EXPECT_EQ(zero.heardByRoom(), Strings{std::string("jAnn\0", 5)});
}

TEST(SessionJoining, AnAcceptanceGivesTheIdentifier) {
    Line line;
    line.hear(acceptanceDatagram('3'));
    EXPECT_EQ(line.events(), Strings{"joined 3"});
    EXPECT_TRUE(line.session.isPlaying());
    EXPECT_EQ(line.session.id(), '3');
}

TEST(SessionJoining, SendsTheNameAgainEveryHalfSecondWhileNothingIsHeard) {
    Line line;
    line.pass(milliseconds(499));
    EXPECT_EQ(line.heardByRoom().size(), 1u);
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(1));
    for (int i = 1; i <= 5; ++i) {
        line.pass(milliseconds(i == 1 ? 1 : 500));
        EXPECT_EQ(line.heardByRoom(), Strings{joinDatagram("Ann")}) << i;
    }
    line.pass(milliseconds(500));
    EXPECT_EQ(line.heardByRoom(), Strings{});
    EXPECT_EQ(line.events(), Strings{"unanswered"});
    EXPECT_FALSE(line.session.isOpen());
}

TEST(SessionJoining, SendsTheNameNoMoreOnceAReceiptCame) {
    Line line;
    line.hear(receiptDatagram());
    line.heardByRoom();
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(3000));
    line.pass(milliseconds(2999));
    EXPECT_EQ(line.heardByRoom(), Strings{});
    EXPECT_TRUE(line.session.isOpen());
    line.pass(milliseconds(1));
    EXPECT_EQ(line.events(), Strings{"unanswered"});
}

TEST(SessionJoining, SendsTheNameAgainWhenOnlyRubbishCame) {
    Line line;
    line.heardByRoom();
    line.hear("z");
    line.pass(milliseconds(500));
    EXPECT_EQ(line.heardByRoom(), Strings{joinDatagram("Ann")});
}

TEST(SessionJoining, AFullRoomRefuses) {
    Line line;
    line.hear(refusalDatagram());
    EXPECT_EQ(line.events(), Strings{"refused"});
    EXPECT_FALSE(line.session.isOpen());
    EXPECT_EQ(line.session.descriptor(), -1);
}

TEST(SessionJoining, ARefusalOfASecondCopyWaitsForTheAnswerToTheFirst) {
    Line line;
    line.pass(milliseconds(500));
    line.hear(refusalDatagram());
    EXPECT_EQ(line.events(), Strings{});
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(250));
    line.pass(milliseconds(249));
    line.hear(acceptanceDatagram('4'));
    EXPECT_EQ(line.events(), Strings{"joined 4"});

    Line refused;
    refused.pass(milliseconds(500));
    refused.hear(refusalDatagram());
    refused.pass(milliseconds(250));
    EXPECT_EQ(refused.events(), Strings{"refused"});
}

TEST(SessionJoining, AnAcceptanceBesideARefusalCounts) {
    Line line;
    line.room.send(refusalDatagram(), line.port);
    line.hear(acceptanceDatagram('4'));
    EXPECT_EQ(line.events(), Strings{"joined 4"});
}

TEST(SessionJoining, ARefusalMeansNothingOnceSnapshotsCame) {
    Line line;
    line.hear(annAlone());
    line.hear(refusalDatagram());
    line.pass(milliseconds(250));
    EXPECT_EQ(line.events(), Strings{});
    line.hear(acceptanceDatagram('1'));
    EXPECT_EQ(line.events(), Strings{"joined 1"});

    PlayingLine playing;
    playing.hear(refusalDatagram());
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

    line.heardByRoom();
    line.hear(acceptanceDatagram('4'));
    EXPECT_EQ(line.heardByRoom(), Strings{}) << "its own acceptance, late";
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
    line.hear(acceptanceDatagram('2'));
    EXPECT_EQ(line.heardByRoom(), Strings{leaveDatagram('2')});
    line.hear(acceptanceDatagram('1'));
    EXPECT_EQ(line.heardByRoom(), Strings{}) << "never ourselves";
    EXPECT_EQ(line.session.id(), '1');
    EXPECT_EQ(line.events(), Strings{});
}

TEST(SessionJoining, IdentifiersThatNoRoomGivesAreNoAcceptance) {
    Line line;
    for (const std::string& rubbish : {std::string("s0"), std::string(acceptanceDatagram('5')),
                                       std::string("s\0", 2), std::string("s"), std::string("s1 ")})
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
    for (const std::string& answer : {acceptanceDatagram('1'), receiptDatagram()})
        sendto(room, answer.data(), answer.size(), 0, reinterpret_cast<const sockaddr*>(&player),
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
    // Even a machine without a network has a way to this broadcast address, and may not use it.
    sockaddr_in everybody = loopback(5000);
    everybody.sin_addr.s_addr = htonl(INADDR_LOOPBACK | IN_CLASSA_HOST);
    std::string problem;
    EXPECT_FALSE(Session::join(everybody, "Ann", Time(), problem).has_value());
    EXPECT_EQ(problem, "no way to the room: Permission denied");
}
