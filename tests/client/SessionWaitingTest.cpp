#include "tests/client/SessionLine.h"

#include <gtest/gtest.h>

using client::Clock;

namespace {

/// How long the session waits from the moment `now` of its own.
Clock::duration waited(const Session& session, Time now) {
    const Time before = Clock::now();
    client::wait(session, now);
    return Clock::now() - before;
}

} // namespace

TEST(SessionWaiting, LastsUntilSomethingIsDue) {
    const Line line;
    const Time due = line.session.wakeAt();
    EXPECT_GE(waited(line.session, due - milliseconds(30)), milliseconds(30));
    EXPECT_LT(waited(line.session, due), milliseconds(400));
}

TEST(SessionWaiting, EndsWhenSomethingArrives) {
    Line line;
    line.room.send(acceptanceDatagram('1'), line.port);
    EXPECT_LT(waited(line.session, line.now), milliseconds(400)) << "the join is due in 500";
}

TEST(SessionWaiting, EndsAtOnceWhileInputsAreToBeSent) {
    PlayingLine line;
    line.session.turn(1, 1);
    EXPECT_LT(waited(line.session, line.now), milliseconds(900)) << "a keep-alive is due in 1000";
}

TEST(SessionWaiting, EndsAtOnceWhenTheSessionIsOver) {
    Line line;
    line.session.leave(line.now);
    EXPECT_LT(waited(line.session, line.now), milliseconds(400));
}
