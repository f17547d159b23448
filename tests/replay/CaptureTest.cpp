#include "replay/Capture.h"

#include "client/recording/RecordingReader.h"
#include "common/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <optional>

using namespace drench;

namespace {

std::string big16(unsigned value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}

std::string little32(std::uint32_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

/// An IPv4 packet with a UDP datagram between hosts 10.0.0.N.
std::string udp(int from, unsigned fromPort, int to, unsigned toPort, const std::string& words,
                unsigned fragment = 0x4000) {
    const auto length = static_cast<unsigned>(words.size());
    std::string ip("\x45\0", 2);
    ip += big16(28 + length) + big16(1) + big16(fragment) + std::string("\x40\x11\0\0", 4);
    ip += std::string("\x0a\0\0", 3) + static_cast<char>(from);
    ip += std::string("\x0a\0\0", 3) + static_cast<char>(to);
    return ip + big16(fromPort) + big16(toPort) + big16(8 + length) + big16(0) + words;
}

std::string ethernet(const std::string& ip) {
    return std::string(12, 'm') + big16(0x0800) + ip;
}

/// A capture of packets that come a millisecond after each other.
std::string capture(unsigned link, const std::vector<std::string>& packets) {
    std::string file = little32(0xa1b2c3d4) + std::string("\2\0\4\0", 4) + little32(0) +
                       little32(0) + little32(65535) + little32(link);
    std::uint32_t microseconds = 0;
    for (const std::string& packet : packets) {
        const auto length = static_cast<std::uint32_t>(packet.size());
        file += little32(1700000000) + little32(microseconds) + little32(length) +
                little32(length) + packet;
        microseconds += 1000;
    }
    return file;
}

/// A block of a pcapng capture.
std::string newerBlock(std::uint32_t type, const std::string& content) {
    const std::string length = little32(static_cast<std::uint32_t>(content.size()) + 12);
    return little32(type) + length + content + length;
}

/// A pcapng capture of raw IP, with a packet at each of these times, in seconds since 1970.
std::string newerCapture(const std::vector<std::int64_t>& times) {
    const std::string wholeSeconds("\x09\0\x01\0\0\0\0\0\0\0\0\0", 12);
    std::string file =
        newerBlock(0x0a0d0d0a, little32(0x1a2b3c4d) + little32(1) + little32(-1u) + little32(-1u)) +
        newerBlock(1, little32(101) + little32(65535) + wholeSeconds);
    for (const std::int64_t time : times) {
        const std::string packet = udp(1, 40000, 9, 5000, "word");
        const std::string length = little32(static_cast<std::uint32_t>(packet.size()));
        file += newerBlock(6, little32(0) + little32(static_cast<std::uint32_t>(time >> 32)) +
                                  little32(static_cast<std::uint32_t>(time)) + length + length +
                                  packet);
    }
    return file;
}

struct Import {
    TemporaryFolder folder;
    replay::Imported imported;

    Import(unsigned link, const std::vector<std::string>& packets, std::uint16_t port = 5000)
        : imported(replay::importCapture(folder.write("pcap", capture(link, packets)), port, "",
                                         "test")) {}

    /// "TIME:LINE:WAY:WORDS" of each datagram, the time in milliseconds.
    std::string told() const {
        client::RecordingReader reader(imported.recording, "imported");
        std::string all;
        while (const std::optional<client::RecordedDatagram> datagram = reader.next())
            all += std::to_string(datagram->time.count() / 1000) + ':' +
                   std::to_string(datagram->line) +
                   (datagram->way == client::Way::toRoom ? ":up:" : ":down:") + datagram->bytes +
                   ' ';
        return all;
    }
};

constexpr unsigned ethernetLink = 1;

const std::vector<std::string> exchange = {
    udp(1, 40000, 9, 5000, "hello"), udp(9, 5000, 1, 40000, "there"),
    udp(2, 40000, 9, 5000, "also"), udp(9, 5000, 2, 40000, "you")};
constexpr char exchangeTold[] = "0:0:up:hello 1:0:down:there 2:1:up:also 3:1:down:you ";

std::vector<std::string> behind(const std::string& head) {
    std::vector<std::string> packets;
    for (const std::string& ip : exchange)
        packets.push_back(head + ip);
    return packets;
}

std::string errorOf(const std::string& bytes) {
    const TemporaryFolder folder;
    const std::string path = folder.write("pcap", bytes);
    try {
        replay::importCapture(path, 5000, "", "test");
    } catch (const InputError& error) {
        return std::string(error.what()).substr(path.size());
    }
    return "";
}

} // namespace

TEST(Capture, IsReadFromEveryLinkLayer) {
    const std::string ipType = big16(0x0800);
    EXPECT_EQ(Import(ethernetLink, behind(std::string(12, 'm') + ipType)).told(), exchangeTold);
    EXPECT_EQ(Import(ethernetLink, behind(std::string(12, 'm') + big16(0x8100) + big16(7) + ipType))
                  .told(),
              exchangeTold);
    EXPECT_EQ(Import(113, behind(std::string(14, '\0') + ipType)).told(), exchangeTold);
    EXPECT_EQ(Import(276, behind(ipType + std::string(18, '\0'))).told(), exchangeTold);
    EXPECT_EQ(Import(0, behind(little32(2))).told(), exchangeTold);
    EXPECT_EQ(Import(108, behind(std::string("\0\0\0\2", 4))).told(), exchangeTold);
    EXPECT_EQ(Import(101, behind("")).told(), exchangeTold);
}

TEST(Capture, CountsOnceWhatAnyCatchesTwiceOnLoopback) {
    const std::string in = big16(0) + big16(772) + std::string(10, '\0') + big16(0x0800);
    const std::string out = big16(4) + big16(772) + std::string(10, '\0') + big16(0x0800);
    EXPECT_EQ(Import(113, {out + exchange[0], in + exchange[0]}).told(), "0:0:up:hello ");
}

TEST(Capture, TellsWhenAndWhere) {
    const Import import(ethernetLink, {ethernet(exchange[1])});
    const client::RecordingReader reader(import.imported.recording, "imported");
    EXPECT_EQ(reader.header().startedAt, 1700000000000000);
    EXPECT_EQ(reader.header().room, "10.0.0.9:5000");
    EXPECT_EQ(reader.header().program, "test");
}

TEST(Capture, LeavesOutWhatIsNotOfTheRoomAndCountsIt) {
    const std::string whole = ethernet(exchange[0]);
    std::string longer = exchange[0];
    longer[25] = 127;
    const Import import(ethernetLink, {whole, ethernet(udp(1, 40000, 9, 5001, "other room")),
                                       std::string(12, 'm') + big16(0x86dd) + std::string(40, 'x'),
                                       ethernet(udp(1, 40000, 9, 5000, "piece", 0x2000)),
                                       ethernet(udp(1, 40000, 9, 5000, "later piece", 0x0010)),
                                       whole.substr(0, whole.size() - 1), whole.substr(0, 20),
                                       ethernet(longer), "short"});
    EXPECT_EQ(import.told(), "0:0:up:hello ");
    EXPECT_EQ(import.imported.datagrams, 1u);
    EXPECT_EQ(import.imported.lines, 1u);
    EXPECT_EQ(import.imported.others, 2u);
    EXPECT_EQ(import.imported.fragments, 2u);
    EXPECT_EQ(import.imported.broken, 4u);
}

TEST(Capture, CountsPacketsOfImpossibleTimesAsBroken) {
    const TemporaryFolder folder;
    const std::string bytes =
        newerCapture({1700000000, std::int64_t{1} << 62, std::int64_t{1} << 41, 1700000002});
    const replay::Imported imported =
        replay::importCapture(folder.write("pcapng", bytes), 5000, "", "test");
    const client::RecordingReader reader(imported.recording, "imported");
    EXPECT_EQ(reader.header().startedAt, 1700000000000000);
    EXPECT_EQ(reader.duration(), std::chrono::seconds(2));
    EXPECT_EQ(imported.datagrams, 2u);
    EXPECT_EQ(imported.broken, 2u);
}

TEST(Capture, OfAnotherPortIsTakenWhenAsked) {
    EXPECT_EQ(Import(101, {udp(1, 40000, 9, 5001, "hi")}, 5001).told(), "0:0:up:hi ");
}

TEST(Capture, ThatIsCutOffIsReadUpToThere) {
    const TemporaryFolder folder;
    const std::string bytes = capture(101, exchange);
    const replay::Imported imported = replay::importCapture(
        folder.write("pcap", bytes.substr(0, bytes.size() - 3)), 5000, "", "test");
    EXPECT_EQ(imported.datagrams, 3u);
    EXPECT_EQ(imported.broken, 1u);
}

TEST(Capture, ThatCannotBeUsedIsExplained) {
    EXPECT_EQ(errorOf(capture(101, {udp(1, 1, 2, 2, "x")})), ": has no datagram of port 5000");
    EXPECT_EQ(errorOf(capture(105, exchange)),
              ": has the link layer 105, which is not known; catch on Ethernet, lo or any");
    EXPECT_NE(errorOf("no capture at all"), "");
    EXPECT_NE(errorOf(""), "");
    EXPECT_THROW(replay::importCapture("/none", 5000, "", "test"), InputError);
}
