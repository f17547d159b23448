#include "client/RoomAddress.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <optional>
#include <string>

using namespace drench;

namespace {

/// The address that the text is resolved to, or why there is none.
std::string resolved(const std::string& text) {
    std::string problem;
    const std::optional<client::RoomAddress> room = client::resolve(text, problem);
    if (!room)
        return problem;
    const std::uint32_t host = ntohl(room->address.sin_addr.s_addr);
    std::string dotted;
    for (int shift = 24; shift >= 0; shift -= 8)
        dotted += std::to_string(host >> shift & 255) + (shift > 0 ? "." : ":");
    return dotted + std::to_string(ntohs(room->address.sin_port));
}

} // namespace

TEST(RoomAddresses, AreAHostAndAPort) {
    EXPECT_EQ(resolved("127.0.0.1:5063"), "127.0.0.1:5063");
    EXPECT_EQ(resolved("192.0.2.7"), "192.0.2.7:5000");
    EXPECT_EQ(resolved(":65535"), "127.0.0.1:65535");
    EXPECT_EQ(resolved(""), "127.0.0.1:5000");
    EXPECT_EQ(resolved("localhost:1"), "127.0.0.1:1");
}

TEST(RoomAddresses, AreExplainedWhenTheyAreBad) {
    EXPECT_EQ(resolved("localhost:0"), "\"0\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("localhost:65536"), "\"65536\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("localhost:99999999999"), "\"99999999999\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("localhost:"), "\"\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("localhost:-5"), "\"-5\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("localhost:5000x"), "\"5000x\" is no port from 1 to 65535");
    EXPECT_EQ(resolved("no host:5000").rfind("cannot find the host \"no host\": ", 0), 0u);
}
