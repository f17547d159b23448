#include "game/PlayedEvents.h"

#include "tests/game/RecordedLine.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

const PlayerUpdate ann = playerAt('1', {500.0f, 139.0f, 500.0f}, "Ann");

double milliseconds(client::Time time) {
    return std::chrono::duration<double, std::milli>(time.time_since_epoch()).count();
}

std::vector<const PlayedEvent*> snapshotsOf(const std::vector<PlayedEvent>& events) {
    std::vector<const PlayedEvent*> snapshots;
    for (const PlayedEvent& each : events) {
        if (std::holds_alternative<client::Snapshot>(each.event))
            snapshots.push_back(&each);
    }
    return snapshots;
}

std::int64_t tickOf(const PlayedEvent& snapshot) {
    return std::get<client::Snapshot>(snapshot.event).tick;
}

} // namespace

TEST(PlayedEvents, AreWhatTheRoomSaidInItsOrder) {
    RecordedLine line;
    line.hear(acceptanceDatagram('1'));
    line.hear(noticeDatagram("Ann joined"));
    line.tick({ann});
    line.now += 1.0;
    line.hear(chatDatagram('2', "hello"));
    line.hear("rubbish");
    line.now += 1.0;
    line.hear(noticeDatagram("Bob soaked Ann!"));
    const std::vector<PlayedEvent> events = line.events();
    ASSERT_EQ(events.size(), 5u);
    EXPECT_EQ(std::get<client::Joined>(events[0].event).id, '1');
    EXPECT_EQ(std::get<client::PlayerJoined>(events[1].event).name, "Ann");
    EXPECT_EQ(std::get<client::Snapshot>(events[2].event).state.updates[0].id, '1');
    EXPECT_EQ(std::get<client::Chat>(events[3].event).text, "hello");
    EXPECT_NEAR(milliseconds(events[3].moment), 1.0, 1e-6);
    EXPECT_EQ(std::get<client::Soaking>(events[4].event).victim, "Ann");
}

TEST(PlayedEvents, OfAnEmptyRecordingAreNone) {
    EXPECT_TRUE(RecordedLine().events().empty());
}

TEST(PlayedEvents, TheSecondAnswerToAJoinIsNoSession) {
    RecordedLine line;
    line.hear(acceptanceDatagram('1'));
    line.ticks(10, {ann});
    line.hear(acceptanceDatagram('2'));
    line.ticks(10, {ann});
    EXPECT_EQ(line.events().size(), 21u);
}

TEST(PlayedEvents, WhoRecordsIsKnownByWhatItSends) {
    LineDecoder decoder;
    decoder.take({}, bytesOf(snapshotOf({ann})));
    decoder.takeSent({}, joinDatagram("Ann"));
    decoder.takeSent({}, "k?");
    decoder.takeSent({}, keepAliveDatagram('3'));
    decoder.takeSent({}, keyDatagram('2', 0, true));
    const std::vector<PlayedEvent> events = decoder.finish();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(std::get<client::Joined>(events[1].event).id, '3');
}

TEST(PlayedEvents, OfAJitteringLineComeEvenly) {
    RecordedLine line;
    for (int i = 0; i < 300; ++i)
        line.tick({ann}, i % 3 == 1 ? 13.0 : 0.0);
    const std::vector<PlayedEvent> events = line.events();
    ASSERT_EQ(events.size(), 300u);
    for (std::size_t i = 1; i < events.size(); ++i)
        EXPECT_NEAR(milliseconds(events[i].moment) - milliseconds(events[i - 1].moment),
                    RecordedLine::period, 1.0)
            << i;
    EXPECT_NEAR(milliseconds(events.back().moment), line.now, 3.0);
}

TEST(PlayedEvents, ALossLeavesItsTicksOut) {
    RecordedLine line;
    line.ticks(200, {ann});
    line.now += 5.0 * RecordedLine::period;
    line.ticks(200, {ann});
    const std::vector<PlayedEvent> events = line.events();
    const double span = milliseconds(events.back().moment) - milliseconds(events.front().moment);
    EXPECT_NEAR(static_cast<double>(tickOf(events.back()) - tickOf(events.front())), 404.0, 1.0);
    EXPECT_NEAR(span, 404.0 * RecordedLine::period, 3.0);
    EXPECT_EQ(tickOf(events[200]) - tickOf(events[199]), 6) << "where it was";
    EXPECT_NEAR(milliseconds(events[200].moment) - milliseconds(events[199].moment),
                6.0 * RecordedLine::period, 3.0);
}

TEST(PlayedEvents, ARoomThatStoodStillDoesSoAgain) {
    RecordedLine line;
    line.ticks(200, {ann});
    const double until = line.now;
    line.now += 1507.0;
    line.ticks(200, {ann});
    const std::vector<PlayedEvent> events = line.events();
    EXPECT_NEAR(milliseconds(events[199].moment), until, 3.0);
    EXPECT_NEAR(milliseconds(events[200].moment), until + 1507.0 + RecordedLine::period, 3.0);
}

TEST(PlayedEvents, ARoomThatIsJoinedAgainCountsOn) {
    RecordedLine line;
    line.hear(acceptanceDatagram('1'));
    line.ticks(100, {ann});
    line.now += 10'000.0;
    line.hear(acceptanceDatagram('3'));
    line.ticks(100, {ann});
    const std::vector<PlayedEvent> events = line.events();
    const std::vector<const PlayedEvent*> snapshots = snapshotsOf(events);
    ASSERT_EQ(snapshots.size(), 200u);
    for (std::size_t i = 1; i < snapshots.size(); ++i) {
        EXPECT_GT(tickOf(*snapshots[i]), tickOf(*snapshots[i - 1])) << i;
        EXPECT_GE(snapshots[i]->moment, snapshots[i - 1]->moment) << i;
    }
    const double gap = milliseconds(snapshots[100]->moment) - milliseconds(snapshots[99]->moment);
    EXPECT_NEAR(gap, 10'000.0, 100.0);
    EXPECT_NEAR(gap / static_cast<double>(tickOf(*snapshots[100]) - tickOf(*snapshots[99])),
                RecordedLine::period, 1.0);
}
