#include "tests/client/SessionLine.h"

#include <gtest/gtest.h>

TEST(SessionMoving, TakesThePlayerAlong) {
    PlayingLine line;
    line.session.setKey(keyIndex::forward, true);
    line.hear(annAlone());
    line.heardByRoom();
    {
        Session moved(std::move(line.session));
        EXPECT_FALSE(line.session.isOpen());
        EXPECT_FALSE(line.session.isPlaying());
        EXPECT_EQ(line.events(), Strings{});
        line.session.leave(line.now);
        EXPECT_EQ(line.heardByRoom(), Strings{});

        EXPECT_EQ(moved.id(), '1');
        EXPECT_EQ(described(moved), Strings{"tick 0"});
        line.room.send(annAlone(), line.port);
        moved.service(line.now + milliseconds(250));
        EXPECT_EQ(described(moved), Strings{"tick 1"});
        EXPECT_EQ(line.heardByRoom(), Strings{keyDatagram('1', keyIndex::forward, true)});
    }
    EXPECT_EQ(line.heardByRoom(), Strings{leaveDatagram('1')});
}

TEST(SessionMoving, OntoAPlayerLetsThatOneLeave) {
    PlayingLine first;
    PlayingLine second;
    first.session = std::move(second.session);
    EXPECT_EQ(first.heardByRoom(), Strings{leaveDatagram('1')});
    EXPECT_EQ(second.heardByRoom(), Strings{});
    EXPECT_EQ(portOf(first.session), second.port);

    Session& same = first.session;
    first.session = std::move(same);
    EXPECT_TRUE(first.session.isPlaying());
    EXPECT_EQ(second.heardByRoom(), Strings{});
}
