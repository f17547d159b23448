#include "replay/Editing.h"

#include "client/recording/RecordingBytes.h"
#include "common/Files.h"

#include <gtest/gtest.h>
#include <optional>

using namespace drench;

using client::RecordedDatagram;
using client::RecordedTime;
using client::RecordingReader;
using client::Way;

namespace {

/// A recording of one datagram each second, from a moment on, in microseconds.
RecordingReader recorded(std::int64_t start, int seconds, const std::string& words,
                         const std::string& arena = "arena", std::uint32_t line = 0) {
    client::RecordingHeader header;
    header.arena = arena;
    header.startedAt = start;
    client::RecordingBytes recording(header);
    for (int i = 0; i < seconds; ++i)
        recording.add({std::chrono::seconds(i), Way::toRoom, line, words + std::to_string(i)});
    recording.end();
    return {recording.takeReady(), words};
}

/// "TIME:LINE:WORDS" of each datagram, the time in seconds.
std::string told(const std::string& bytes) {
    RecordingReader reader(bytes, "told");
    std::string all;
    while (const std::optional<RecordedDatagram> datagram = reader.next())
        all += std::to_string(datagram->time.count() / 1000000) + ':' +
               std::to_string(datagram->line) + ':' + datagram->bytes + ' ';
    EXPECT_TRUE(reader.problems().empty());
    return all;
}

std::string joined(RecordingReader first, RecordingReader second) {
    std::vector<RecordingReader> readers;
    readers.push_back(std::move(first));
    readers.push_back(std::move(second));
    return replay::join(readers);
}

} // namespace

TEST(Editing, CutBeginsAtItsStartAndEndsBeforeItsEnd) {
    RecordingReader reader = recorded(5, 10, "a");
    const std::string part = replay::cut(reader, std::chrono::seconds(3), std::chrono::seconds(6));
    EXPECT_EQ(told(part), "0:0:a3 1:0:a4 2:0:a5 ");
    const RecordingReader again(part, "part");
    EXPECT_EQ(again.header().startedAt, 3000005);
    EXPECT_EQ(again.header().arena, "arena");
}

TEST(Editing, CutOfNothingIsRefused) {
    RecordingReader reader = recorded(0, 3, "a");
    EXPECT_THROW(replay::cut(reader, std::chrono::seconds(5), std::chrono::seconds(9)), InputError);
    EXPECT_THROW(replay::cut(reader, std::chrono::seconds(2), std::chrono::seconds(1)), InputError);
}

TEST(Editing, PartsJoinToWhatTheyWereCutFrom) {
    RecordingReader reader = recorded(7, 6, "a");
    const std::string first = replay::cut(reader, std::chrono::seconds(0), std::chrono::seconds(2));
    const std::string second =
        replay::cut(reader, std::chrono::seconds(2), std::chrono::seconds(9));
    const std::string whole = joined({second, "second"}, {first, "first"});
    EXPECT_EQ(told(whole), "0:0:a0 1:0:a1 2:0:a2 3:0:a3 4:0:a4 5:0:a5 ");
    EXPECT_EQ(RecordingReader(whole, "whole").header().startedAt, 7);
}

TEST(Editing, RecordingsOfTheSameTimeGetLinesOfTheirOwn) {
    EXPECT_EQ(told(joined(recorded(0, 3, "a"), recorded(1000000, 3, "b"))),
              "0:0:a0 1:0:a1 1:1:b0 2:0:a2 2:1:b1 3:1:b2 ");
}

TEST(Editing, JoinTakesTheArenaThatIsKnownAndRefusesTwo) {
    const std::string whole = joined(recorded(0, 1, "a", ""), recorded(2000000, 1, "b", "arena"));
    EXPECT_EQ(RecordingReader(whole, "whole").header().arena, "arena");
    EXPECT_THROW(joined(recorded(0, 1, "a", "one"), recorded(0, 1, "b", "another")), InputError);
}

TEST(Editing, JoinRefusesWhatLiesTooFarApart) {
    EXPECT_THROW(joined(recorded(0, 1, "a"), recorded(std::int64_t{1} << 50, 1, "b")), InputError);
    RecordingReader earliest = recorded(-client::recordingLimits::startedAt, 1, "a");
    RecordingReader latest = recorded(client::recordingLimits::startedAt, 1, "b");
    EXPECT_THROW(joined(std::move(earliest), std::move(latest)), InputError);
}

TEST(Editing, JoinRefusesMoreLinesThanARecordingHas) {
    constexpr std::uint32_t last = client::recordingLimits::lines - 1;
    EXPECT_EQ(told(joined(recorded(0, 1, "a"), recorded(0, 1, "b", "arena", last - 1))),
              "0:0:a0 0:" + std::to_string(last) + ":b0 ");
    EXPECT_THROW(joined(recorded(0, 1, "a"), recorded(0, 1, "b", "arena", last)), InputError);
}
