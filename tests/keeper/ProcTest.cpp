#include "keeper/Proc.h"

#include "tests/support/UdpPeer.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

using namespace drench::keeper;

namespace {

constexpr char snmp[] = "Ip: Forwarding InReceives\nIp: 1 12\n"
                        "Udp: InDatagrams NoPorts InErrors OutDatagrams RcvbufErrors\n"
                        "Udp: 493913733 5821347 11162527 511168475 7\n"
                        "UdpLite: InDatagrams NoPorts InErrors OutDatagrams RcvbufErrors\n"
                        "UdpLite: 1 2 3 4 5\n";

std::string stat(const std::string& name) {
    return "4711 (" + name +
           ") S 1 4711 4711 0 -1 4194560 100 0 0 0 250 50 0 0 20 0 2 0 12345 "
           "9000000 1024 18446744073709551615 1 1\n";
}

} // namespace

TEST(Proc, UsageIsTimeAndResidentMemory) {
    const std::optional<Usage> usage = usageIn(stat("drench-server"));
    ASSERT_TRUE(usage);
    EXPECT_DOUBLE_EQ(usage->processorSeconds, 300.0 / static_cast<double>(sysconf(_SC_CLK_TCK)));
    EXPECT_DOUBLE_EQ(usage->residentBytes, 1024.0 * static_cast<double>(sysconf(_SC_PAGESIZE)));
}

TEST(Proc, NamesOfProgramsDoNotShiftFields) {
    EXPECT_DOUBLE_EQ(usageIn(stat("a) S 1 (b c"))->residentBytes,
                     usageIn(stat("x"))->residentBytes);
}

TEST(Proc, BrokenStatGivesNoUsage) {
    for (const std::string text : {"", "4711", "4711 (x)", "4711 (x) S 1 2 3"})
        EXPECT_FALSE(usageIn(text)) << text;
    std::string words = stat("x");
    words.replace(words.find(" 250 "), 5, " abc ");
    EXPECT_FALSE(usageIn(words));
}

TEST(Proc, OwnUsageCanBeRead) {
    const std::optional<Usage> usage = usageOf(getpid());
    ASSERT_TRUE(usage);
    EXPECT_GT(usage->residentBytes, 1e6);
    EXPECT_FALSE(usageOf(-1));
}

TEST(Proc, CountersAreFoundByTheirNames) {
    const std::optional<UdpCounters> counters = udpCountersIn(snmp);
    ASSERT_TRUE(counters);
    EXPECT_EQ(counters->in, 493913733u);
    EXPECT_EQ(counters->out, 511168475u);
    const auto moved = udpCountersIn("Udp: OutDatagrams InDatagrams\nUdp: 5 6\n");
    ASSERT_TRUE(moved);
    EXPECT_EQ(moved->in, 6u);
    EXPECT_EQ(moved->out, 5u);
    for (const char* text :
         {"", "Udp: InDatagrams OutDatagrams\n", "Tcp: a\nTcp: 1\n",
          "Udp: InDatagrams NoPorts\nUdp: 1 2\n", "Udp: InDatagrams OutDatagrams\nUdp: 1\n"})
        EXPECT_FALSE(udpCountersIn(text)) << text;
}

TEST(Proc, PortsOfSocketsAreRead) {
    const std::string heading = "   sl  local_address rem_address   st tx_queue rx_queue\n";
    EXPECT_TRUE(udpPortsIn(heading).empty());
    EXPECT_TRUE(udpPortsIn("").empty());
    const std::vector<std::uint16_t> ports =
        udpPortsIn(heading + "  123: 00000000:1388 00000000:0000 07 00000000:00000000\n" +
                   " 9: 00000000000000000000000001000000:FFFF 00:0000 07\n");
    EXPECT_EQ(ports, (std::vector<std::uint16_t>{5000, 65535}));
}

TEST(Proc, CountersOfASharedNamespaceAreNotTheRooms) {
    const UdpPeer room;
    const UdpPeer stranger;
    const std::uint16_t port = ntohs(room.address().addr.sin_port);
    EXPECT_FALSE(ownUdpCounters(getpid(), port, 0));
    EXPECT_FALSE(ownUdpCounters(-1, port, 0));
}
