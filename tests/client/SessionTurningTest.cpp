#include "tests/client/SessionLine.h"

#include <climits>
#include <gtest/gtest.h>

TEST(SessionTurning, AddsCountsUpToOneRecord) {
    PlayingLine line;
    line.session.turn(3, -4);
    line.session.turn(10, 1);
    EXPECT_LE(line.session.wakeAt(), line.now);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), Strings{viewDatagram('1', 13, -3)});
    line.pass(milliseconds(1));
    EXPECT_EQ(line.heardByRoom(), Strings{});
}

TEST(SessionTurning, SendsNothingForNoCounts) {
    PlayingLine line;
    line.session.turn(5, 5);
    line.session.turn(-5, -5);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), Strings{});
    line.session.turn(0, 1);
    EXPECT_LE(line.session.wakeAt(), line.now);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), Strings{viewDatagram('1', 0, 1)});
}

TEST(SessionTurning, StopsSumsAtTheEnds) {
    PlayingLine line;
    for (int i = 0; i < 3; ++i)
        line.session.turn(INT_MAX, INT_MIN);
    line.session.turn(-1, 1);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), Strings{viewDatagram('1', INT_MAX - 1, INT_MIN + 1)});
}

TEST(SessionTurning, SendsLostInputsAgain) {
    PlayingLine line;
    line.session.setKey(keyIndex::left, true);
    line.pass(milliseconds(0));
    line.heardByRoom();
    ViewMessage view;
    view.dx = 3;
    view.dy = 4;
    KeyMessage key;
    key.key = keyIndex::left;
    line.session.sendAgain(view);
    line.session.sendAgain(key);
    EXPECT_LE(line.session.wakeAt(), line.now);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(),
              (Strings{keyDatagram('1', keyIndex::left, true), viewDatagram('1', 3, 4)}));
}

TEST(SessionTurning, SendsNothingAgainForAPlayerWhoLeft) {
    PlayingLine line;
    line.session.leave(line.now);
    line.heardByRoom();
    ViewMessage view;
    view.dx = 3;
    line.session.sendAgain(view);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), Strings{});
}
