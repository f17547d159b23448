#include "game/Recorder.h"

#include "client/recording/RecordingReader.h"
#include "game/OwnRecordings.h"
#include "tests/game/Snapshots.h"
#include "tests/support/Datagrams.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

using namespace drench;
using namespace drench::game;

namespace {

using std::chrono::milliseconds;

struct RecorderInRoom : testing::Test {
    TemporaryFolder folder;
    Recorder recorder{folder.path};
    client::Time now{std::chrono::hours(1)};
    client::Tap tap = recorder.enter("localhost:5000", now);

    /// Snapshots of so many ticks.
    void play(int ticks) {
        for (int i = 0; i < ticks; ++i) {
            now += milliseconds(16);
            tap(client::Way::fromRoom, bytesOf(snapshotOf({playerAt('1', {500, 139, 500}, "Ann")})),
                now);
        }
    }

    /// The next line, which may come from the background.
    std::string news() {
        for (int i = 0; i < 1000; ++i) {
            const std::vector<std::string> lines = recorder.takeNews();
            if (!lines.empty())
                return lines.front();
            std::this_thread::sleep_for(milliseconds(10));
        }
        return "none came";
    }

    std::vector<OwnRecording> kept() const { return recordingsIn(folder.path); }
};

double secondsOf(const OwnRecording& recording) {
    return std::chrono::duration<double>(recording.length).count();
}

} // namespace

TEST_F(RecorderInRoom, RecordsFromAKeyToTheNext) {
    play(100);
    recorder.toggle("1 1 1 1 1", now);
    EXPECT_EQ(news(), "Recording.");
    EXPECT_TRUE(recorder.isRecording());
    play(125);
    EXPECT_NEAR(recorder.seconds(now), 2.0, 1e-6);
    recorder.toggle("", now);
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_EQ(news().find("Recorded 0:02 as "), 0u);
    ASSERT_EQ(kept().size(), 1u);
    EXPECT_EQ(kept()[0].room, "localhost:5000");
    EXPECT_NEAR(secondsOf(kept()[0]), 2.0, 0.02);
    const auto reader = client::RecordingReader::open(kept()[0].file);
    EXPECT_EQ(reader.header().arena, "1 1 1 1 1");
    EXPECT_EQ(reader.datagrams(), 125u);
    EXPECT_TRUE(reader.problems().empty());
}

TEST_F(RecorderInRoom, KeepsTheLastTwoMinutesAndNoMore) {
    play(63 * 200);
    recorder.keepRecent("1 1 1 1 1");
    EXPECT_EQ(news().find("Kept the last 2:0"), 0u);
    ASSERT_EQ(kept().size(), 1u);
    EXPECT_NEAR(secondsOf(kept()[0]), 120.5, 0.6);
    EXPECT_EQ(client::RecordingReader::open(kept()[0].file).header().arena, "1 1 1 1 1");
}

TEST_F(RecorderInRoom, SaysHowLittleItKeptAfterAShortTime) {
    play(63 * 10);
    recorder.keepRecent("");
    EXPECT_EQ(news().find("Kept the last 0:10 as "), 0u);
}

TEST_F(RecorderInRoom, GivesFilesThatBeginTogetherNamesOfTheirOwn) {
    play(50);
    recorder.toggle("", now);
    recorder.keepRecent("");
    play(10);
    recorder.toggle("", now);
    std::vector<std::string> lines;
    for (int i = 0; i < 1000 && lines.size() < 2; ++i) {
        for (const std::string& line : recorder.takeNews())
            lines.push_back(line);
        std::this_thread::sleep_for(milliseconds(10));
    }
    EXPECT_EQ(lines.size(), 2u);
    EXPECT_EQ(kept().size(), 2u);
}

TEST_F(RecorderInRoom, LeavesNothingBehindWhenAFileCannotBegin) {
    play(10);
    const std::string large(client::recordingLimits::arenaBytes + 1, '1');
    recorder.toggle(large, now);
    EXPECT_EQ(news(), "the arena is too large for a recording");
    EXPECT_FALSE(recorder.isRecording());
    recorder.keepRecent(large);
    EXPECT_EQ(news(), "the arena is too large for a recording");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path));
}

TEST_F(RecorderInRoom, GoesOnInTheSameRoomAndEndsInAnother) {
    recorder.toggle("", now);
    news();
    play(10);
    tap = recorder.enter("localhost:5000", now);
    play(10);
    EXPECT_TRUE(recorder.isRecording());
    tap = recorder.enter("localhost:5001", now);
    EXPECT_FALSE(recorder.isRecording());
    news();
    ASSERT_EQ(kept().size(), 1u);
    EXPECT_EQ(client::RecordingReader::open(kept()[0].file).datagrams(), 20u);
    play(5);
    recorder.keepRecent("");
    news();
    ASSERT_EQ(kept().size(), 2u);
    EXPECT_EQ(kept()[0].room + kept()[1].room, "localhost:5001localhost:5000")
        << "the latest first";
}

TEST_F(RecorderInRoom, OutsideOfARoomNothingIsRecorded) {
    play(10);
    recorder.leave(now);
    recorder.toggle("", now);
    recorder.keepRecent("");
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_TRUE(recorder.takeNews().empty());
    EXPECT_TRUE(kept().empty());
}

TEST_F(RecorderInRoom, LeavingEndsARecording) {
    recorder.toggle("", now);
    news();
    play(10);
    recorder.leave(now);
    EXPECT_EQ(news().find("Recorded"), 0u);
    EXPECT_EQ(kept().size(), 1u);
}

TEST_F(RecorderInRoom, MissesNothingWhileTheFileIsBegun) {
    recorder.toggle("", now);
    play(50);
    EXPECT_TRUE(recorder.isRecording());
    EXPECT_EQ(news(), "Recording.");
    play(50);
    recorder.toggle("", now);
    news();
    ASSERT_EQ(kept().size(), 1u);
    EXPECT_EQ(client::RecordingReader::open(kept()[0].file).datagrams(), 100u);
}

TEST(Recorder, SaysWhyItCannot) {
    Recorder homeless("");
    const client::Time now{};
    homeless.enter("localhost:5000", now);
    homeless.toggle("", now);
    homeless.leave(now);
    EXPECT_FALSE(homeless.isRecording());
    const std::vector<std::string> news = homeless.takeNews();
    ASSERT_EQ(news.size(), 1u);
    EXPECT_EQ(news[0].find("there is no folder for recordings"), 0u);
}
