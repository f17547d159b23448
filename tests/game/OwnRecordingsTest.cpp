#include "game/OwnRecordings.h"

#include "client/recording/RecordingBytes.h"
#include "common/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

std::string recordingOf(const std::string& room, std::int64_t startedAt, client::RecordedTime end) {
    client::RecordingHeader header;
    header.room = room;
    header.startedAt = startedAt;
    client::RecordingBytes bytes(header);
    bytes.add({end, client::Way::fromRoom, 0, "j"});
    bytes.end();
    return bytes.takeReady();
}

constexpr std::int64_t day = 86'400'000'000;

} // namespace

TEST(OwnRecordings, AreListedFromTheLatest) {
    const TemporaryFolder folder;
    folder.write("a.drench", recordingOf("first:5000", 100 * day, std::chrono::seconds(61)));
    folder.write("b.drench", recordingOf("last\x1B:5000", 300 * day, std::chrono::seconds(2)));
    folder.write("c.drench", recordingOf("", 200 * day, std::chrono::seconds(3)));
    folder.write("notes.txt", "Ann won.");
    folder.write("empty.drench", "");
    const std::vector<OwnRecording> found = recordingsIn(folder.path);
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[0].room, "last\xEF\xBF\xBD:5000");
    EXPECT_EQ(found[1].room, "");
    EXPECT_EQ(found[2].room, "first:5000");
    EXPECT_EQ(lengthWords(found[2].length), "1:01");
    EXPECT_NE(found[2].date.find("April 1970"), std::string::npos) << found[2].date;
}

TEST(OwnRecordings, OfNoFolderAreNone) {
    EXPECT_TRUE(recordingsIn("/no/such/folder").empty());
    EXPECT_TRUE(recordingsIn("").empty());
}

TEST(OwnRecordings, ThatAreCutAreListedToo) {
    const TemporaryFolder folder;
    const std::string whole = recordingOf("room:1", day, std::chrono::seconds(5));
    folder.write("cut.drench", whole.substr(0, 9));
    EXPECT_EQ(recordingsIn(folder.path).size(), 1u);
}

TEST(OwnRecordings, GetNamesThatNoFileHas) {
    const TemporaryFolder folder;
    const std::string inner = folder.path + "/drench/recordings";
    const std::string first = newRecordingFile(inner);
    EXPECT_TRUE(std::filesystem::is_directory(inner));
    const std::string second = newRecordingFile(inner);
    EXPECT_NE(first, second);
    EXPECT_EQ(readFile(first) + readFile(second), "") << "both are there, and empty";
    EXPECT_TRUE(recordingsIn(inner).empty());
    EXPECT_THROW(newRecordingFile(""), InputError);
    EXPECT_THROW(newRecordingFile(first), InputError) << "a file is there";
}

TEST(LengthWords, AreMinutesOrHours) {
    using Seconds = std::chrono::duration<double>;
    EXPECT_EQ(lengthWords(Seconds(0.0)), "0:00");
    EXPECT_EQ(lengthWords(Seconds(59.9)), "0:59");
    EXPECT_EQ(lengthWords(Seconds(754.0)), "12:34");
    EXPECT_EQ(lengthWords(Seconds(3723.0)), "1:02:03");
}
