#include "tests/client/SessionLine.h"

#include <functional>
#include <gtest/gtest.h>

TEST(SessionSilence, HoldsBackAllThatCouldMoveAnother) {
    PlayingLine line;
    line.session.setKey(keyIndex::forward, true);
    line.hear(annAlone());
    line.heardByRoom();
    line.pass(milliseconds(999));
    EXPECT_EQ(line.heardByRoom(), Strings{keyDatagram('1', keyIndex::forward, true)});

    line.session.setKey(keyIndex::shoot, true);
    line.session.setKey(keyIndex::jump, true);
    line.session.turn(5, 5);
    line.session.say("Anybody there?");
    line.pass(milliseconds(1));
    EXPECT_EQ(line.heardByRoom(), Strings{});
    EXPECT_GT(line.session.wakeAt(), line.now) << "no reason to spin";

    line.hear(annAlone());
    EXPECT_EQ(line.heardByRoom(), Strings{keyDatagram('1', keyIndex::shoot, true)});
    line.pass(milliseconds(500));
    EXPECT_EQ(line.heardByRoom(), (Strings{keyDatagram('1', keyIndex::forward, true),
                                           keyDatagram('1', keyIndex::shoot, true)}));
}

TEST(SessionSilence, DoesNotEndKeepAlives) {
    PlayingLine line;
    line.hear(annAlone());
    line.pass(milliseconds(1000));
    line.pass(milliseconds(1000));
    EXPECT_EQ(line.heardByRoom(), (Strings{keepAliveDatagram('1'), keepAliveDatagram('1')}));
}

TEST(SessionKeepAlives, GoOutAfterASecondWithoutAnotherSignOfLife) {
    PlayingLine line;
    line.play(milliseconds(950));
    EXPECT_EQ(line.heardByRoom(), Strings{});
    line.play(milliseconds(50));
    EXPECT_EQ(line.heardByRoom(), Strings{keepAliveDatagram('1')});
    line.play(milliseconds(5000));
    EXPECT_EQ(line.heardByRoom().size(), 5u);
}

TEST(SessionKeepAlives, AreNotNeededBesideKeysViewsAndWords) {
    const auto afterASignEverySecond = [](const std::function<void(Session&)>& sign) {
        PlayingLine line;
        for (int i = 0; i < 5; ++i) {
            line.play(milliseconds(900));
            sign(line.session);
            line.play(milliseconds(50));
        }
        const Strings heard = line.heardByRoom();
        return heard.size() - allButKeepAlives(heard).size();
    };
    EXPECT_EQ(afterASignEverySecond([](Session&) {}), 4u);
    EXPECT_EQ(afterASignEverySecond([](Session& s) { s.turn(1, 0); }), 0u);
    EXPECT_EQ(afterASignEverySecond([](Session& s) { s.say("Hm."); }), 0u);
    EXPECT_EQ(afterASignEverySecond([](Session& s) { s.setKey(keyIndex::jump, true); }), 0u);
    EXPECT_EQ(afterASignEverySecond([](Session& s) { s.setKey(keyIndex::left, true); }), 0u);
}

TEST(SessionKeepAlives, AreDueASecondAfterTheLastSign) {
    PlayingLine line;
    line.play(milliseconds(50));
    EXPECT_EQ(line.session.wakeAt(), line.now + milliseconds(950));
}

// Datagrams that wait in a socket are older than they look: the room may have dropped us since.
TEST(SessionStalls, OldSnapshotsDoNotShowWhoHasOurIdentifier) {
    PlayingLine line;
    line.room.send(annAlone(), line.port);
    line.session.setKey(keyIndex::shoot, true);
    line.pass(milliseconds(1000));
    EXPECT_EQ(line.heardByRoom(), Strings{keepAliveDatagram('1')}) << "a sign of life hurts nobody";
    line.play(milliseconds(50));
    EXPECT_EQ(line.heardByRoom(), Strings{keyDatagram('1', keyIndex::shoot, true)});
}

TEST(SessionStalls, ASocketThatIsNotReadToItsEndDoesNotEither) {
    PlayingLine line;
    for (int i = 0; i < 256; ++i)
        line.room.send("?", line.port);
    line.session.setKey(keyIndex::shoot, true);
    line.pass(milliseconds(1));
    EXPECT_EQ(line.heardByRoom(), Strings{});
    line.pass(milliseconds(1));
    EXPECT_EQ(line.heardByRoom(), Strings{keyDatagram('1', keyIndex::shoot, true)});
}

TEST(SessionStalls, LeavingAfterOneTellsNobody) {
    PlayingLine line;
    line.session.leave(line.now + milliseconds(1000));
    EXPECT_EQ(line.heardByRoom(), Strings{});

    PlayingLine sooner;
    sooner.session.leave(sooner.now + milliseconds(999));
    EXPECT_EQ(sooner.heardByRoom(), Strings{leaveDatagram('1')});
}
