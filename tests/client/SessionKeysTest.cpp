#include "tests/client/SessionLine.h"

#include <climits>
#include <gtest/gtest.h>

TEST(SessionKeys, AreSentByTheNextServiceAndOnlyWhenTheyChange) {
    PlayingLine line;
    line.session.setKey(keyIndex::forward, true);
    EXPECT_LE(line.session.wakeAt(), line.now);
    EXPECT_EQ(line.heardByRoom(), Strings{});
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), Strings{keyDatagram('1', keyIndex::forward, true)});
    line.session.setKey(keyIndex::forward, true);
    line.pass(milliseconds(10));
    EXPECT_EQ(line.heardByRoom(), Strings{});
    line.session.setKey(keyIndex::backward, false);
    line.pass(milliseconds(10));
    EXPECT_EQ(line.heardByRoom(), Strings{});
}

TEST(SessionKeys, AreSentAgainEveryQuarterOfASecondWhileHeld) {
    PlayingLine line;
    line.session.setKey(keyIndex::shoot, true);
    line.pass(milliseconds(0));
    line.heardByRoom();
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(250));
    line.play(milliseconds(200));
    EXPECT_EQ(line.heardByRoom(), Strings{});
    line.play(milliseconds(50));
    EXPECT_EQ(line.heardByRoom(), Strings{keyDatagram('1', keyIndex::shoot, true)});
    line.play(milliseconds(1000));
    EXPECT_EQ(line.heardByRoom().size(), 4u);
}

TEST(SessionKeys, AreReleasedByThreeRecords) {
    PlayingLine line;
    line.session.setKey(keyIndex::left, true);
    line.pass(milliseconds(0));
    line.session.setKey(keyIndex::left, false);
    line.heardByRoom();
    const Strings release = {keyDatagram('1', keyIndex::left, false)};
    line.pass(milliseconds(1));
    EXPECT_EQ(line.heardByRoom(), release);
    for (int i = 0; i < 2; ++i) {
        line.play(milliseconds(200));
        EXPECT_EQ(line.heardByRoom(), Strings{});
        line.play(milliseconds(50));
        EXPECT_EQ(line.heardByRoom(), release);
    }
    line.play(milliseconds(2000));
    EXPECT_EQ(allButKeepAlives(line.heardByRoom()), Strings{});
}

TEST(SessionKeys, ArePressedAgainWithoutMoreReleases) {
    PlayingLine line;
    line.session.setKey(keyIndex::left, true);
    line.pass(milliseconds(0));
    line.session.setKey(keyIndex::left, false);
    line.pass(milliseconds(0));
    line.session.setKey(keyIndex::left, true);
    line.pass(milliseconds(0));
    line.heardByRoom();
    line.play(milliseconds(500));
    EXPECT_EQ(line.heardByRoom(), Strings(2, keyDatagram('1', keyIndex::left, true)));
}

TEST(SessionKeys, OfJumpsAreSentOnceAndReleasedNever) {
    PlayingLine line;
    line.session.setKey(keyIndex::jump, true);
    EXPECT_LE(line.session.wakeAt(), line.now);
    line.session.setKey(keyIndex::jump, false);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), Strings{keyDatagram('1', keyIndex::jump, true)});
    line.play(milliseconds(900));
    EXPECT_EQ(line.heardByRoom(), Strings{});
    line.session.setKey(keyIndex::jump, true);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), Strings{keyDatagram('1', keyIndex::jump, true)});
}

TEST(SessionKeys, AreSentBeforeTheViewInTheOrderOfTheirNumbers) {
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
    EXPECT_EQ(line.heardByRoom(), expected);
}

TEST(SessionKeys, BeyondTheSixDoNothing) {
    PlayingLine line;
    for (const int key : {-1, 6, INT_MAX, INT_MIN})
        line.session.setKey(key, true);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), Strings{});
}

TEST(SessionKeys, AreForgottenBeforePlaying) {
    Line line;
    line.heardByRoom();
    line.session.setKey(keyIndex::forward, true);
    line.session.setKey(keyIndex::jump, true);
    line.session.turn(1, 1);
    line.session.say("Hello!");
    line.hear(acceptanceDatagram('1'));
    EXPECT_EQ(line.heardByRoom(), Strings{});
}
