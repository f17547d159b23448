#include "tests/client/SessionLine.h"

#include <gtest/gtest.h>

TEST(SessionWords, AreSentByTheNextServiceOneRecordEach) {
    PlayingLine line;
    line.session.say("Hello!");
    line.session.say("");
    EXPECT_LE(line.session.wakeAt(), line.now);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), (Strings{chatDatagram('1', "Hello!"), chatDatagram('1', "")}));
    line.pass(milliseconds(1));
    EXPECT_EQ(line.heardByRoom(), Strings{});
}

TEST(SessionWords, AreCutToThirtyBytesAndAtTheirFirstZero) {
    PlayingLine line;
    line.session.say("Nobody stays dry for ever, Bo! And neither do you.");
    line.session.say(std::string("a\0b", 3));
    line.pass(milliseconds(0));
    EXPECT_EQ(line.heardByRoom(), (Strings{chatDatagram('1', "Nobody stays dry for ever, Bo!"),
                                           chatDatagram('1', "a")}));
}

TEST(SessionWords, OfOthersAreHeard) {
    PlayingLine line;
    line.hear(chatDatagram('2', "hello"));
    line.hear(chatDatagram('1', "Nobody stays dry for ever, Bo!"));
    line.hear(chatDatagram('3', "Ann joined"));
    EXPECT_EQ(line.events(), (Strings{"chat 2 hello", "chat 1 Nobody stays dry for ever, Bo!",
                                      "chat 3 Ann joined"}));
}
