#include "client/recording/RecordingReader.h"

#include "client/recording/Block.h"
#include "client/recording/Columns.h"
#include "client/recording/RecordingBytes.h"
#include "common/Chance.h"
#include "common/Files.h"
#include "tests/client/recording/MadeMatch.h"
#include "tests/support/Datagrams.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>

using namespace drench;
using namespace drench::client;

namespace {

std::vector<RecordedDatagram> allOf(RecordingReader& reader) {
    std::vector<RecordedDatagram> datagrams;
    while (std::optional<RecordedDatagram> datagram = reader.next())
        datagrams.push_back(std::move(*datagram));
    return datagrams;
}

/// The number of datagrams read, all of them the first ones of `match`; -1 if one differs.
long firstOf(RecordingReader& reader, const std::vector<RecordedDatagram>& match) {
    std::size_t count = 0;
    while (const std::optional<RecordedDatagram> datagram = reader.next()) {
        if (count == match.size() || !same(*datagram, match[count]))
            return -1;
        ++count;
    }
    return static_cast<long>(count);
}

/// Whether each datagram read is one of `match`, in its order.
bool isPartOf(RecordingReader& reader, const std::vector<RecordedDatagram>& match) {
    std::size_t place = 0;
    while (const std::optional<RecordedDatagram> datagram = reader.next()) {
        while (place < match.size() && !same(*datagram, match[place]))
            ++place;
        if (place == match.size())
            return false;
    }
    return true;
}

void expectRecorded(const std::vector<RecordedDatagram>& datagrams) {
    RecordingReader reader(recordingOf(datagrams), "file");
    EXPECT_EQ(reader.datagrams(), datagrams.size());
    EXPECT_EQ(firstOf(reader, datagrams), static_cast<long>(datagrams.size()));
    EXPECT_TRUE(reader.problems().empty());
}

RecordedDatagram at(long microseconds, const std::string& bytes, Way way = Way::fromRoom) {
    return {RecordedTime(microseconds), way, 0, bytes};
}

std::string errorOf(const std::string& bytes) {
    try {
        const RecordingReader reader(bytes, "file");
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

/// Of a recording that began then, in a room and by a program without names.
std::string headerContent(std::int64_t startedAt) {
    std::string content;
    putSigned(content, startedAt);
    return content + std::string(4, '\0');
}

/// With another index, which names so many blocks, each so far behind the one before.
std::string withIndex(const std::string& blocks, const std::vector<std::uint64_t>& gaps) {
    BlockHead first;
    const std::size_t firstAt = blocks.find(std::string("BLKD"));
    std::memcpy(&first, blocks.data() + firstAt, sizeof first);
    std::string index;
    putNumber(index, gaps.size());
    for (const std::uint64_t gap : gaps) {
        putNumber(index, gap);
        putNumber(index, 0);
        putNumber(index, static_cast<std::uint64_t>(first.lastTime - first.firstTime));
        putNumber(index, first.datagrams);
    }
    IndexTrailer trailer;
    trailer.offset = blocks.size();
    return blocks + blockOf(BlockKind::index, index) +
           std::string(reinterpret_cast<const char*>(&trailer), sizeof trailer);
}

/// Without its index and what names it.
std::string withoutIndex(const std::string& recording) {
    IndexTrailer trailer;
    std::memcpy(&trailer, recording.data() + recording.size() - sizeof trailer, sizeof trailer);
    return recording.substr(0, trailer.offset);
}

} // namespace

TEST(Recording, GivesBackAMatchToTheBit) {
    const std::vector<RecordedDatagram> match = madeMatch(600);
    RecordingReader reader(recordingOf(match), "file");
    EXPECT_EQ(reader.duration(), match.back().time);
    EXPECT_EQ(reader.header().arena, madeHeader().arena);
    EXPECT_EQ(reader.header().room, madeHeader().room);
    EXPECT_EQ(reader.header().program, madeHeader().program);
    EXPECT_EQ(reader.header().startedAt, madeHeader().startedAt);
    EXPECT_EQ(firstOf(reader, match), static_cast<long>(match.size()));
    EXPECT_TRUE(reader.problems().empty());
}

TEST(Recording, GivesBackWhateverADatagramHolds) {
    std::string noise(sizeof(UpdateMessage), '\0');
    Chance chance(2);
    std::vector<RecordedDatagram> datagrams = {at(0, ""), at(0, std::string(65535, 'x')),
                                               at(5, "u"), at(5, "u", Way::toRoom)};
    for (int i = 0; i < 300; ++i) {
        for (char& byte : noise)
            byte = chance.happens(0.5) ? byte : static_cast<char>(chance.below(256));
        if (chance.happens(0.9))
            std::memcpy(noise.data(), "u\0\0\0", 4);
        datagrams.push_back(at(10 + i, noise, chance.happens(0.1) ? Way::toRoom : Way::fromRoom));
    }
    expectRecorded(datagrams);
}

TEST(Recording, GivesBackFloatsOfEveryKind) {
    using Limits = std::numeric_limits<float>;
    const float odd[] = {0.0f,
                         -0.0f,
                         1.0f,
                         1e38f,
                         -1e38f,
                         1e6f,
                         Limits::infinity(),
                         -Limits::infinity(),
                         Limits::quiet_NaN(),
                         Limits::denorm_min()};
    Chance chance(3);
    std::vector<RecordedDatagram> datagrams;
    for (int i = 0; i < 2000; ++i) {
        std::string state = bytesOf(UpdateMessage());
        for (std::size_t at = 4; at < state.size(); at += 4) {
            const float value = odd[chance.below(std::size(odd))];
            std::memcpy(&state[at], &value, sizeof value);
        }
        datagrams.push_back(at(i, state));
    }
    expectRecorded(datagrams);
}

TEST(Recording, KeepsTimesInOrder) {
    RecordingReader reader(recordingOf({at(-5, "a"), at(7, "b"), at(3, "c")}), "file");
    const std::vector<RecordedDatagram> read = allOf(reader);
    ASSERT_EQ(read.size(), 3u);
    EXPECT_EQ(read[0].time.count(), 0);
    EXPECT_EQ(read[1].time.count(), 7);
    EXPECT_EQ(read[2].time.count(), 7);
}

TEST(Recording, OfTenMinutesStaysUnderThreeMegabytes) {
    constexpr int ticks = 1875;
    constexpr std::size_t ticksInTenMinutes = 37500;
    EXPECT_LT(recordingOf(madeMatch(ticks)).size() * ticksInTenMinutes / ticks, 3000000u);
}

TEST(Recording, WithoutDatagramsOrArenaIsWhole) {
    RecordingBytes recording({});
    recording.end();
    RecordingReader reader(recording.takeReady(), "file");
    EXPECT_EQ(reader.duration().count(), 0);
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(reader.header().arena, "");
    EXPECT_TRUE(reader.problems().empty());
}

TEST(Recording, SeeksToAnyMoment) {
    const std::vector<RecordedDatagram> match = madeMatch(600);
    RecordingReader reader(recordingOf(match), "file");
    Chance chance(4);
    for (int i = 0; i < 50; ++i) {
        const RecordedTime time(chance.below(static_cast<int>(reader.duration().count())));
        reader.seek(time);
        std::size_t first = 0;
        while (match[first].time < time)
            ++first;
        const std::optional<RecordedDatagram> found = reader.next();
        ASSERT_TRUE(found);
        EXPECT_TRUE(same(*found, match[first]));
    }
    reader.seek(reader.duration() + RecordedTime(1));
    EXPECT_FALSE(reader.next());
    reader.seek(RecordedTime(0));
    EXPECT_EQ(firstOf(reader, match), static_cast<long>(match.size()));
}

TEST(Recording, IsReadWithoutItsIndexAsWithIt) {
    const std::vector<RecordedDatagram> match = madeMatch(300);
    const std::string whole = recordingOf(match);
    RecordingReader reader(withoutIndex(whole), "file");
    EXPECT_EQ(reader.duration(), match.back().time);
    EXPECT_EQ(reader.header().arena, madeHeader().arena);
    EXPECT_EQ(firstOf(reader, match), static_cast<long>(match.size()));
    ASSERT_EQ(reader.problems().size(), 1u);
    EXPECT_EQ(reader.problems()[0], "file: byte " + std::to_string(withoutIndex(whole).size()) +
                                        ": cut off here, and read up to here");
}

TEST(Recording, CutAtAnyOfItsFirstBytesOpens) {
    const std::vector<RecordedDatagram> match = madeMatch(300);
    const std::string whole = recordingOf(match);
    for (std::size_t length = 1; length <= 2000; ++length) {
        RecordingReader reader(whole.substr(0, length), "file");
        EXPECT_GE(firstOf(reader, match), 0) << length;
        EXPECT_FALSE(reader.problems().empty()) << length;
    }
}

TEST(Recording, CutAnywhereIsReadUpToALittleBefore) {
    const std::vector<RecordedDatagram> match = madeMatch(1000);
    const std::string whole = recordingOf(match);
    Chance chance(5);
    for (int i = 0; i < 1000; ++i) {
        const auto length = static_cast<std::size_t>(chance.below(static_cast<int>(whole.size())));
        if (length == 0)
            continue;
        RecordingReader reader(whole.substr(0, length), "file");
        const long count = firstOf(reader, match);
        // The index takes up little; a second of the match at most is lost.
        const double share = static_cast<double>(length) / static_cast<double>(whole.size());
        EXPECT_GE(static_cast<double>(count) / static_cast<double>(match.size()), share - 0.12);
    }
}

TEST(Recording, WithDamageIsReadAroundIt) {
    const std::vector<RecordedDatagram> match = madeMatch(400);
    const std::string whole = recordingOf(match);
    Chance chance(6);
    for (int i = 0; i < 300; ++i) {
        std::string damaged = whole;
        const auto at = static_cast<std::size_t>(chance.below(static_cast<int>(whole.size())));
        damaged[at] = static_cast<char>(damaged[at] ^ (1 + chance.below(255)));
        if (at < recordingMagic.size()) {
            EXPECT_NE(errorOf(damaged), "");
            continue;
        }
        RecordingReader reader(damaged, "file");
        EXPECT_TRUE(isPartOf(reader, match)) << at;
    }
}

TEST(Recording, WithADamagedBlockLosesThatBlockAlone) {
    const std::vector<RecordedDatagram> match = madeMatch(400);
    std::string damaged = recordingOf(match);
    damaged[damaged.size() / 2] = static_cast<char>(damaged[damaged.size() / 2] ^ 1);
    RecordingReader reader(damaged, "file");
    const std::vector<RecordedDatagram> read = allOf(reader);
    EXPECT_GT(read.size(), match.size() * 3 / 4);
    EXPECT_LT(read.size(), match.size());
    EXPECT_EQ(reader.duration(), match.back().time);
    ASSERT_EQ(reader.problems().size(), 1u);
    EXPECT_NE(reader.problems()[0].find("a block that cannot be read: its checksum is another one"),
              std::string::npos);
}

TEST(Recording, WhoseTimesGoBackIsRefusedFromThere) {
    const std::vector<RecordedDatagram> match = madeMatch(10);
    const std::string bytes = withoutIndex(recordingOf(match));
    const std::string twice = bytes + bytes.substr(recordingMagic.size());
    RecordingReader reader(twice, "file");
    EXPECT_EQ(firstOf(reader, match), static_cast<long>(match.size()));
    ASSERT_FALSE(reader.problems().empty());
    EXPECT_NE(reader.problems()[0].find("begins before the block before it ended"),
              std::string::npos);
}

TEST(Recording, WhoseIndexNamesABlockTwiceIsReadWithoutIt) {
    const std::vector<RecordedDatagram> match = {at(0, "a"), at(0, "b")};
    const std::string blocks = withoutIndex(recordingOf(match));
    const std::uint64_t firstAt = blocks.find("BLKD");
    EXPECT_TRUE(RecordingReader(withIndex(blocks, {firstAt}), "file").problems().empty());
    const RecordingReader reader(withIndex(blocks, std::vector<std::uint64_t>{firstAt, 0, 0, 0}),
                                 "file");
    EXPECT_EQ(reader.datagrams(), match.size());
    EXPECT_FALSE(reader.problems().empty());
}

TEST(Recording, WhoseBlocksReachIntoTheNextLosesThem) {
    const std::string blocks =
        withoutIndex(recordingOf({at(0, "a"), at(0, std::string(999, 'b'))}));
    const std::uint64_t firstAt = blocks.find("BLKD");
    RecordingReader reader(withIndex(blocks, {firstAt, sizeof(BlockHead)}), "file");
    EXPECT_TRUE(allOf(reader).empty());
    EXPECT_FALSE(reader.problems().empty());
}

TEST(Recording, HasTheFirstOfSeveralHeadersAndArenas) {
    std::string whole = recordingOf({});
    const std::uint64_t arenaAt = whole.find("BLKA");
    const std::string header = whole.substr(recordingMagic.size(), arenaAt - recordingMagic.size());
    const std::string broken = blockOf(BlockKind::arena, "another arena");
    const std::string other = blockOf(BlockKind::header, headerContent(5));
    const RecordingReader first(whole.insert(arenaAt, other), "file");
    EXPECT_EQ(first.header().startedAt, madeHeader().startedAt);
    EXPECT_EQ(first.header().arena, madeHeader().arena);
    const RecordingReader second(std::string(recordingMagic) + header + broken +
                                     blockOf(BlockKind::arena, madeHeader().arena),
                                 "file");
    EXPECT_EQ(second.header().arena, "");
}

TEST(Recording, WithAnImpossibleHeaderIsReadWithoutIt) {
    const auto problemsOf = [](const std::string& content) {
        const RecordingReader reader(
            std::string(recordingMagic) + blockOf(BlockKind::header, content), "file");
        EXPECT_EQ(reader.header().startedAt, 0);
        return reader.problems().empty() ? "" : reader.problems().front();
    };
    EXPECT_EQ(problemsOf(headerContent(INT64_MAX)),
              "file: byte 8: a block that cannot be read: it began at an impossible time");
    EXPECT_EQ(problemsOf(headerContent(INT64_MIN)),
              "file: byte 8: a block that cannot be read: it began at an impossible time");
    EXPECT_EQ(problemsOf(headerContent(0) + std::string(blockLimits::headerBytes, '\0')),
              "file: byte 8: a block that cannot be read: a header is too long");
}

TEST(Recording, OfAnotherKindOrVersionIsRefused) {
    EXPECT_EQ(errorOf(""), "file: is no recording");
    EXPECT_EQ(errorOf("P6 1 1"), "file: is no recording");
    std::string newer = recordingOf({});
    newer[7] = 9;
    EXPECT_EQ(errorOf(newer), "file: is a recording of version 9; this program reads version 1");
}

TEST(Recording, BecomesNoLargerThanCanBeRead) {
    constexpr std::size_t most = RecordingBytes::lastBytes + (std::size_t{1} << 20);
    RecordingBytes recording(madeHeader(), most);
    Chance chance(7);
    std::string noise(50000, '\0');
    const auto addAll = [&] {
        for (int i = 0; i < 100; ++i) {
            for (char& byte : noise)
                byte = static_cast<char>(chance.below(256));
            recording.add(at(i, noise));
        }
    };
    EXPECT_THROW(addAll(), InputError);
    recording.end();
    const RecordingReader reader(recording.takeReady(), "file");
    EXPECT_LE(reader.fileBytes(), most);
    EXPECT_GT(reader.datagrams(), 20u);
    EXPECT_TRUE(reader.problems().empty());
}

TEST(Recording, HasBlocksThatTakeNoMoreMemoryThanTheirBytes) {
    const std::string block = blockOf(BlockKind::datagrams, std::string(1000000, 'x'));
    EXPECT_LE(block.capacity(), block.size() + 64);
}

TEST(Recording, OfATooLargeHeaderIsRefused) {
    RecordingHeader header;
    header.room = std::string(recordingLimits::textBytes + 1, 'x');
    EXPECT_THROW(RecordingBytes{header}, InputError);
    header.room.clear();
    header.arena = std::string(recordingLimits::arenaBytes + 1, 'x');
    EXPECT_THROW(RecordingBytes{header}, InputError);
    header.arena.clear();
    header.startedAt = -recordingLimits::startedAt;
    EXPECT_NO_THROW(RecordingBytes{header});
    --header.startedAt;
    EXPECT_THROW(RecordingBytes{header}, InputError);
}
