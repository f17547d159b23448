#include "tests/client/SessionLine.h"

#include <gtest/gtest.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

TEST(SessionLeaving, SendsOneRecord) {
    PlayingLine line;
    line.hear(annAlone());
    line.session.leave(line.now);
    EXPECT_EQ(line.heardByRoom(), Strings{leaveDatagram('1')});
    EXPECT_FALSE(line.session.isOpen());
    EXPECT_FALSE(line.session.isPlaying());
    line.session.leave(line.now);
    EXPECT_EQ(line.heardByRoom(), Strings{});
    EXPECT_EQ(line.events(), Strings{"tick 0"}) << "what came before stays";
}

TEST(SessionLeaving, IsDoneByTheDestructor) {
    UdpPeer room;
    {
        Session session = joining(room, "Ann", Time());
        room.send(acceptanceDatagram('2'), portOf(session));
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
        room.send(acceptanceDatagram('2'), portOf(session));
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
    line.room.send(acceptanceDatagram('3'), line.port);
    line.room.send(acceptanceDatagram('1'), line.port);
    line.session.leave(line.now);
    EXPECT_EQ(line.heardByRoom(), (Strings{leaveDatagram('3'), leaveDatagram('1')}));
}

TEST(SessionLeaving, AfterASecondOfSilenceTellsNobody) {
    PlayingLine line;
    line.pass(milliseconds(1000));
    line.heardByRoom();
    line.session.leave(line.now);
    EXPECT_EQ(line.heardByRoom(), Strings{});

    PlayingLine sooner;
    sooner.pass(milliseconds(999));
    sooner.heardByRoom();
    sooner.session.leave(sooner.now);
    EXPECT_EQ(sooner.heardByRoom(), Strings{leaveDatagram('1')});
}

TEST(SessionLeaving, SendsInputsFirst) {
    PlayingLine line;
    line.play(milliseconds(50));
    line.session.say("bye");
    line.session.leave(line.now);
    EXPECT_EQ(line.heardByRoom(), (Strings{chatDatagram('1', "bye"), leaveDatagram('1')}));
}

TEST(SessionLeaving, HeedsAnAnswerBehindAnErrorOfTheSocket) {
    auto nobody = std::make_unique<UdpPeer>();
    const int port = portOf(*nobody);
    nobody.reset();
    std::string problem;
    Session session = Session::join(loopback(port), "Ann", Time(), problem).value();

    // The host has said that nobody listens; then the room starts, and answers a copy.
    const int room = boundSocket(port);
    const sockaddr_in player = loopback(portOf(session));
    const std::string answer = acceptanceDatagram('2');
    sendto(room, answer.data(), answer.size(), 0, reinterpret_cast<const sockaddr*>(&player),
           sizeof player);
    session.leave(Time());
    char datagram[16] = {};
    const ssize_t length = recv(room, datagram, sizeof datagram, MSG_DONTWAIT);
    close(room);
    ASSERT_EQ(length, 2) << "otherwise a player without a client stays";
    EXPECT_EQ(std::string(datagram, 2), leaveDatagram('2'));
}

TEST(SessionLeaving, ReadsTwoHundredAndFiftySixDatagrams) {
    for (const int before : {255, 256}) {
        Line line;
        line.heardByRoom();
        for (int i = 0; i < before; ++i)
            line.room.send("?", line.port);
        line.room.send(acceptanceDatagram('2'), line.port);
        line.session.leave(line.now);
        EXPECT_EQ(line.heardByRoom(), before == 255 ? Strings{leaveDatagram('2')} : Strings{});
    }
}
