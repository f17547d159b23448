#include "tests/client/SessionLine.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <sys/socket.h>

TEST(SessionRecords, OfOddSizesOrUnknownCodesAreCountedAndDropped) {
    PlayingLine line;
    std::uint64_t unknown = 0;
    for (const std::string& record :
         {annAlone(), receiptDatagram(), chatDatagram('2', "hello"),
          std::string(acceptanceDatagram('2')), std::string(refusalDatagram())}) {
        for (const std::string& odd : {record.substr(0, record.size() - 1), record + '\0',
                                       record + std::string(2000, 'z')}) {
            line.hear(odd);
            EXPECT_EQ(line.session.statistics().unknown, ++unknown)
                << record[0] << " of " << odd.size() << " bytes";
        }
    }
    line.hear(keyDatagram('1', keyIndex::jump, true));
    EXPECT_EQ(line.session.statistics().unknown, unknown + 1);
    EXPECT_EQ(line.session.statistics().received, unknown + 2) << "and the acceptance";
    EXPECT_EQ(line.events(), Strings{});
    EXPECT_EQ(line.heardByRoom(), Strings{});
}

TEST(SessionRecords, MeasureTheRoundTripByReceipts) {
    PlayingLine line;
    line.session.turn(1, 0);
    line.pass(milliseconds(2000));
    line.now += milliseconds(25);
    line.hear(receiptDatagram());
    EXPECT_EQ(line.session.roundTrip().latest(), 25.0);
    EXPECT_EQ(line.session.roundTrip().datagrams(), line.session.statistics().sent);
    EXPECT_EQ(line.session.roundTrip().receipts(), 1u);
}

TEST(SessionRecords, FromElsewhereNeverReachUs) {
    Line line;
    UdpPeer stranger;
    stranger.send(acceptanceDatagram('2'), line.port);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.events(), Strings{});
    EXPECT_EQ(line.session.statistics().received, 0u);
}

TEST(SessionRecords, OfAFloodDoNotHoldUpTheCaller) {
    PlayingLine line;
    const int buffer = 200000;
    setsockopt(line.session.descriptor(), SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer);
    for (int i = 0; i < 300; ++i)
        line.room.send("z", line.port);
    const std::uint64_t before = line.session.statistics().received;
    line.session.service(line.now);
    EXPECT_EQ(line.session.statistics().received - before, 256u);
    line.session.service(line.now);
    EXPECT_EQ(line.session.statistics().received - before, 300u);
}

TEST(SessionRecords, DoNotPileUpWhenNobodyTakesTheEvents) {
    PlayingLine line;
    for (int i = 0; i < 1100; ++i)
        line.hear(annAlone());
    line.hear(stateDatagram({}));
    const Strings events = line.events();
    EXPECT_EQ(events.size(), 1025u);
    EXPECT_EQ(events[1023], "tick 1023");
    EXPECT_EQ(events.back(), "replaced") << "that one is never lost";
}

TEST(SessionRecords, BecomeEventsInOrderWhenTakenSingly) {
    PlayingLine line;
    int next = 0;
    for (int i = 0; i < 100; ++i) {
        line.hear(annAlone());
        line.hear(annAlone());
        const std::optional<Event> event = line.session.nextEvent();
        ASSERT_TRUE(event);
        EXPECT_EQ(described(*event), "tick " + std::to_string(next++));
    }
    for (const std::string& event : line.events())
        EXPECT_EQ(event, "tick " + std::to_string(next++));
    EXPECT_EQ(next, 200);
}

TEST(SessionRecords, OfTalkBecomeChatOrNotices) {
    PlayingLine line;
    line.hear(chatDatagram('2', "Ann joined"));
    line.hear(noticeDatagram("Ann joined"));
    EXPECT_EQ(line.events(), (Strings{"chat 2 Ann joined", "joining [Ann]"}));
}
