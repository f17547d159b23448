#include "tests/client/SessionLine.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <optional>
#include <variant>

TEST(SessionSnapshots, ComeWithTheirTickAndArrival) {
    PlayingLine line;
    line.hear(annAlone());
    line.now += milliseconds(16);
    line.hear(stateDatagram({{'2', "Bo"}, {'1', "Ann"}}));
    line.session.nextEvent();
    const std::optional<Event> event = line.session.nextEvent();
    ASSERT_TRUE(event && std::holds_alternative<client::Snapshot>(*event));
    const auto& snapshot = std::get<client::Snapshot>(*event);
    EXPECT_EQ(snapshot.tick, 1);
    EXPECT_EQ(snapshot.arrival, line.now);
    EXPECT_EQ(snapshot.state.updates[0].id, '2');
    EXPECT_EQ(line.session.self(snapshot.state), &snapshot.state.updates[1]);
    EXPECT_EQ(line.session.statistics().snapshots, 2u);
}

TEST(SessionSnapshots, HoldWhatRecordsAreReadAs) {
    PlayingLine line;
    std::string datagram = stateDatagram({{'1', "Ann"}, {'2', "Bo"}});
    datagram[offsetof(PlayerUpdate, shooting) + sizeof(UpdateMessage) - 4 * sizeof(PlayerUpdate)] =
        7;
    line.hear(datagram);
    const std::optional<Event> event = line.session.nextEvent();
    ASSERT_TRUE(event && std::holds_alternative<client::Snapshot>(*event));
    const UpdateMessage& state = std::get<client::Snapshot>(*event).state;
    EXPECT_EQ(bytesOf(state.updates[0].shooting), std::string(1, '\1'));
}

TEST(SessionSnapshots, NobodyIsOursBeforePlayingAndAfter) {
    Line line;
    UpdateMessage empty;
    EXPECT_EQ(line.session.self(empty), nullptr);
    line.hear(acceptanceDatagram('1'));
    EXPECT_EQ(line.session.self(empty), nullptr);
    UpdateMessage state;
    ASSERT_TRUE(readState(annAlone(), state));
    EXPECT_EQ(line.session.self(state), &state.updates[0]);
    line.session.leave(line.now);
    EXPECT_EQ(line.session.self(state), nullptr);
}

TEST(SessionSnapshots, MissedOnesAreCountedAsTheTickClockTells) {
    PlayingLine line;
    for (int tick = 0; tick < 200; ++tick) {
        line.now += milliseconds(16);
        if (tick < 150 || tick >= 153)
            line.hear(annAlone());
    }
    EXPECT_EQ(line.session.statistics().snapshots, 197u);
    EXPECT_EQ(line.session.statistics().snapshotsMissed, 3u);
    EXPECT_EQ(line.session.tickClock().missed(), 3u);
    EXPECT_EQ(line.events().back(), "tick 199");
}
