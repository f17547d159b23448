#include "client/recording/RecordingWriter.h"

#include "client/recording/RecordingReader.h"
#include "common/Chance.h"
#include "common/Files.h"
#include "tests/client/recording/MadeMatch.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace drench;
using namespace drench::client;

namespace {

constexpr Time start{};

void takeAll(RecordingWriter& writer, const std::vector<RecordedDatagram>& match) {
    for (const RecordedDatagram& datagram : match)
        writer.take(datagram.way, datagram.line, datagram.bytes, start + datagram.time);
}

std::uint64_t countIn(RecordingReader reader) {
    std::uint64_t count = 0;
    while (reader.next())
        ++count;
    return count;
}

} // namespace

TEST(RecordingWriter, WritesWhatItTakesFromTheFirstDatagramOn) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/match";
    const std::vector<RecordedDatagram> match = madeMatch(200);
    RecordingWriter writer(path, madeHeader(), start);
    takeAll(writer, match);
    EXPECT_EQ(writer.finish(), "");
    RecordingReader reader = RecordingReader::open(path);
    EXPECT_TRUE(reader.problems().empty());
    const RecordedTime first = match.front().time;
    EXPECT_EQ(reader.header().startedAt, madeHeader().startedAt + first.count());
    for (RecordedDatagram datagram : match) {
        datagram.time -= first;
        ASSERT_TRUE(same(reader.next().value(), datagram));
    }
    EXPECT_FALSE(reader.next());
}

TEST(RecordingWriter, HasWrittenWhatItTookBeforeItsEnd) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/match";
    const std::vector<RecordedDatagram> match = madeMatch(200);
    RecordingWriter writer(path, madeHeader(), start);
    takeAll(writer, match);
    std::uint64_t read = 0;
    for (int i = 0; i < 200 && read < match.size(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const std::string bytes = readFile(path);
        read = bytes.empty() ? 0 : countIn(RecordingReader(bytes, path));
    }
    EXPECT_EQ(read, match.size());
}

TEST(RecordingWriter, EndsWithOneLineOnAFullDisk) {
    RecordingWriter writer("/dev/full", madeHeader(), start);
    takeAll(writer, madeMatch(100));
    EXPECT_EQ(writer.finish(), "/dev/full: the recording ends early (No space left on device)");
    takeAll(writer, madeMatch(1));
    EXPECT_EQ(writer.problem(), writer.finish());
}

TEST(RecordingWriter, EndsBeforeTheFileIsTooLargeToBeRead) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/match";
    constexpr std::size_t most = RecordingBytes::lastBytes + (std::size_t{2} << 20);
    RecordingWriter writer(path, madeHeader(), start, most);
    Chance chance(1);
    std::string noise(60000, '\0');
    std::size_t taken = 0;
    for (; taken < 200; ++taken) {
        for (char& byte : noise)
            byte = static_cast<char>(chance.below(256));
        writer.take(Way::fromRoom, 0, noise, start);
    }
    EXPECT_EQ(writer.finish(),
              path + ": the recording ends early (a recording is no larger than 6 MiB)");
    const RecordingReader reader = RecordingReader::open(path);
    EXPECT_TRUE(reader.problems().empty());
    EXPECT_LE(reader.fileBytes(), most);
    EXPECT_GE(reader.fileBytes(), std::size_t{2} << 20);
    EXPECT_LT(reader.datagrams(), taken);
    EXPECT_EQ(countIn(reader), reader.datagrams());
}

TEST(RecordingWriter, LeavesNoFileWithoutDatagrams) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/match";
    EXPECT_EQ(RecordingWriter(path, madeHeader(), start).finish(), "");
    EXPECT_THROW(readFile(path), InputError);
    EXPECT_EQ(RecordingWriter("/dev/null", madeHeader(), start).finish(), "");
    EXPECT_EQ(readFile("/dev/null"), "");
}

TEST(RecordingWriter, HasItsFileForItself) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/match";
    const std::vector<RecordedDatagram> match = madeMatch(10);
    {
        RecordingWriter writer(path, madeHeader(), start);
        try {
            const RecordingWriter second(path, madeHeader(), start);
            FAIL();
        } catch (const InputError& error) {
            EXPECT_EQ(error.what(), path + ": is being written by another program");
        }
        takeAll(writer, match);
        EXPECT_EQ(writer.finish(), "");
    }
    EXPECT_EQ(countIn(RecordingReader::open(path)), match.size());
}

TEST(RecordingWriter, OverwritesNothing) {
    const TemporaryFolder folder;
    const std::string path = folder.write("match", "precious");
    try {
        const RecordingWriter writer(path, madeHeader(), start);
        FAIL();
    } catch (const InputError& error) {
        EXPECT_EQ(error.what(), path + ": is there already, and is not overwritten");
    }
    EXPECT_EQ(readFile(path), "precious");
    EXPECT_THROW(RecordingWriter(folder.path + "/no/match", madeHeader(), start), InputError);
    RecordingHeader large;
    large.room = std::string(recordingLimits::textBytes + 1, 'x');
    EXPECT_THROW(RecordingWriter(folder.path + "/large", large, start), InputError);
    EXPECT_THROW(readFile(folder.path + "/large"), InputError);
}

TEST(RecordingWriter, ThrowsAwayNothingBelowItsLimitAndEndsBeyond) {
    const TemporaryFolder folder;
    RecordingWriter writer(folder.path + "/match", madeHeader(), start);
    // At once, more than the thread takes in the meantime.
    const std::string large(60000, 'x');
    for (std::size_t taken = 0; taken <= 3 * RecordingWriter::mostBytesWaiting; taken += 60000)
        writer.take(Way::fromRoom, 0, large, start);
    const std::string problem = writer.finish();
    EXPECT_TRUE(problem.empty() ||
                problem == folder.path + "/match: the recording ends early (the disk is too slow)");
    EXPECT_GE(countIn(RecordingReader::open(folder.path + "/match")),
              RecordingWriter::mostBytesWaiting / 60000 - 20);
}
