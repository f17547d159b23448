#include "tests/client/SessionLine.h"

#include <gtest/gtest.h>
#include <memory>

TEST(SessionDropping, ComesAfterThreeSecondsOfSilence) {
    PlayingLine line;
    line.hear(annAlone());
    line.events();
    line.pass(milliseconds(2999));
    EXPECT_TRUE(line.session.isPlaying());
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(1));
    line.heardByRoom();
    line.pass(milliseconds(1));
    EXPECT_EQ(line.events(), Strings{"silence"});
    EXPECT_FALSE(line.session.isOpen());
    EXPECT_EQ(line.heardByRoom(), Strings{}) << "player 1 may be somebody else by now";
}

TEST(SessionDropping, DoesNotComeAfterAShorterStall) {
    PlayingLine line;
    for (int i = 0; i < 4; ++i) {
        line.pass(milliseconds(2500));
        line.hear(annAlone());
    }
    EXPECT_TRUE(line.session.isPlaying());
    EXPECT_EQ(line.events().size(), 4u);
}

TEST(SessionDropping, ComesSoonerWhereTheHostSaysThatNobodyListens) {
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

TEST(SessionDropping, ComesWithASnapshotThatIsWithoutUs) {
    PlayingLine line;
    line.hear(stateDatagram({{'2', "Bo"}}));
    EXPECT_EQ(line.events(), Strings{"replaced"});
    EXPECT_FALSE(line.session.isOpen());
    EXPECT_EQ(line.heardByRoom(), Strings{});
}

TEST(SessionDropping, ComesWithAnotherNameUnderOurIdentifier) {
    PlayingLine line;
    line.hear(annAlone());
    line.hear(stateDatagram({{'1', "Anna"}, {'2', "Ann"}}));
    EXPECT_EQ(line.events(), (Strings{"tick 0", "replaced"}));
    EXPECT_EQ(line.heardByRoom(), Strings{});
}

TEST(SessionDropping, IsTheEnd) {
    PlayingLine line;
    line.hear(stateDatagram({}));
    line.events();
    line.session.setKey(keyIndex::forward, true);
    line.session.turn(1, 1);
    line.session.say("Hello?");
    line.session.leave(line.now);
    line.pass(milliseconds(5000));
    EXPECT_EQ(line.session.wakeAt(), Time::max());
    EXPECT_EQ(line.events(), Strings{});
    EXPECT_EQ(line.heardByRoom(), Strings{});
}
