#include "tests/client/SessionLine.h"

#include <gtest/gtest.h>

TEST(SessionWaiting, EndsWhenSomethingArrivesOrIsDue) {
    UdpPeer room;
    std::string problem;
    Session session = joining(room, "Ann", client::Clock::now());
    room.send(acceptanceDatagram('1'), portOf(session));
    client::wait(session, client::Clock::now());
    session.service(client::Clock::now());
    ASSERT_TRUE(session.isPlaying());
    session.turn(1, 1);
    const Time before = client::Clock::now();
    client::wait(session, client::Clock::now());
    EXPECT_LT(client::Clock::now() - before, milliseconds(900)) << "a view is to be sent";

    session.service(client::Clock::now());
    session.setKey(keyIndex::left, true);
    session.service(client::Clock::now());
    const Time due = session.wakeAt();
    client::wait(session, client::Clock::now());
    EXPECT_GE(client::Clock::now(), due);
    session.leave(client::Clock::now());
    client::wait(session, client::Clock::now());
    EXPECT_LT(client::Clock::now() - due, milliseconds(900)) << "nothing comes any more";
}
