#include "replay/KnownInputs.h"

#include "client/recording/RecordingBytes.h"
#include "tests/replay/RecordedMatch.h"
#include "tests/support/Datagrams.h"

#include <gtest/gtest.h>
#include <optional>

using replay::KnownInputs;

TEST(KnownInputs, ExplainEveryPlayerOfARecordedMatch) {
    RecordedMatch match;
    const std::vector<KnownInputs> known = replay::predictKnownInputs(match.reader, match.map);
    ASSERT_EQ(known.size(), 4u);
    EXPECT_EQ(known[0].name, "Otter");
    EXPECT_EQ(known[3].name, "Walrus");
    EXPECT_EQ(known[3].line, 3u);
    for (const KnownInputs& one : known) {
        EXPECT_GT(one.statistics.exact, 1000u) << one.name;
        EXPECT_LT(one.statistics.unexplained, 10u) << one.name;
    }
}

TEST(KnownInputs, DoNotExplainWhoWalksOnWithoutThem) {
    RecordedMatch match;
    client::RecordingBytes altered(match.reader.header());
    while (const std::optional<client::RecordedDatagram> datagram = match.reader.next()) {
        // The room never heard the inputs of the first player's line, says this recording.
        const bool isView = datagram->way == client::Way::toRoom && datagram->line == 0 &&
                            datagram->bytes.size() == sizeof(ViewMessage) &&
                            datagram->time > std::chrono::seconds(5);
        if (!isView)
            altered.add(*datagram);
    }
    altered.end();
    client::RecordingReader reader(altered.takeReady(), "altered");
    const std::vector<KnownInputs> known = replay::predictKnownInputs(reader, match.map);
    ASSERT_EQ(known.size(), 4u);
    EXPECT_GT(known[0].statistics.unexplained, 100u);
    EXPECT_LT(known[1].statistics.unexplained, 10u);
}

TEST(KnownInputs, OfARecordingWithoutInputsAreNone) {
    RecordedMatch match;
    client::RecordingBytes heard(match.reader.header());
    while (const std::optional<client::RecordedDatagram> datagram = match.reader.next()) {
        if (datagram->way == client::Way::fromRoom)
            heard.add(*datagram);
    }
    heard.end();
    client::RecordingReader reader(heard.takeReady(), "heard");
    EXPECT_TRUE(replay::predictKnownInputs(reader, match.map).empty());
}
