#include "client/recording/RecentRecording.h"

#include "client/recording/RecordingReader.h"
#include "tests/client/recording/MadeMatch.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace drench::client;

namespace {

constexpr Time start{};

void takeAll(RecentRecording& recent, const std::vector<RecordedDatagram>& match) {
    for (const RecordedDatagram& datagram : match)
        recent.take(datagram.way, datagram.line, datagram.bytes, start + datagram.time);
}

} // namespace

TEST(RecentRecording, KeepsTheLastDatagrams) {
    const std::vector<RecordedDatagram> match = madeMatch(1000);
    constexpr RecordedTime span = std::chrono::seconds(5);
    RecentRecording recent(madeHeader(), start, span);
    EXPECT_EQ(recent.duration().count(), 0);
    takeAll(recent, match);
    const RecordedTime duration = recent.duration();
    RecordingReader reader(recent.recording(), "recent");
    EXPECT_EQ(recent.duration(), reader.duration());
    EXPECT_LE(reader.duration(), duration);
    EXPECT_TRUE(reader.problems().empty());
    EXPECT_GE(reader.duration(), span);
    EXPECT_LE(reader.duration(), span + std::chrono::milliseconds(1100));
    std::size_t at = match.size() - reader.datagrams();
    const RecordedTime shift = match[at].time;
    EXPECT_EQ(reader.header().startedAt, madeHeader().startedAt + shift.count());
    while (std::optional<RecordedDatagram> datagram = reader.next()) {
        datagram->time += shift;
        ASSERT_TRUE(same(*datagram, match[at++]));
    }
    EXPECT_EQ(at, match.size());
}

TEST(RecentRecording, CanBeMadeAgainAndAgain) {
    const std::vector<RecordedDatagram> match = madeMatch(100);
    RecentRecording recent(madeHeader(), start, std::chrono::seconds(60));
    EXPECT_FALSE(RecordingReader(recent.recording(), "recent").next());
    takeAll(recent, match);
    EXPECT_EQ(recent.recording(), recent.recording());
    recent.take(Way::fromRoom, 0, "later", start + std::chrono::seconds(10));
    EXPECT_EQ(RecordingReader(recent.recording(), "recent").datagrams(), match.size() + 1);
}

TEST(RecentRecording, ForgetsWhatIsOlderThanItsSpan) {
    RecentRecording recent(madeHeader(), start, std::chrono::seconds(2));
    takeAll(recent, madeMatch(100));
    const std::size_t before = recent.bytes();
    recent.take(Way::fromRoom, 0, "later", start + std::chrono::hours(1));
    EXPECT_EQ(RecordingReader(recent.recording(), "recent").datagrams(), 1u);
    EXPECT_LT(recent.bytes(), before);
}
