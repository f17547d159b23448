#include "keeper/AgonesSdk.h"

#include "tests/support/SdkStandIn.h"

#include <gtest/gtest.h>

using namespace drench::keeper;

namespace {

using Clock = std::chrono::steady_clock;

std::uint16_t portOf(int number) {
    return static_cast<std::uint16_t>(number);
}

} // namespace

TEST(AgonesSdk, MakesTheCallsOfARoomsLife) {
    const SdkStandIn server;
    AgonesSdk sdk(portOf(server.port()));
    sdk.update(std::nullopt, {0, 4});
    EXPECT_TRUE(comesTrue([&] { return sdk.state() == "Scheduled"; }));
    EXPECT_TRUE(server.calls().empty());
    sdk.update(Time::max(), {0, 4});
    EXPECT_TRUE(server.waitFor("POST /ready {}"));
    sdk.update(Time::max(), {1, 4});
    EXPECT_TRUE(server.waitFor("POST /allocate {}"));
    EXPECT_TRUE(server.waitFor(R"(PATCH /v1beta1/counters/players {"capacity":"4","count":"1"})"));
    EXPECT_TRUE(comesTrue([&] { return sdk.state() == "Allocated"; }));
    EXPECT_TRUE(server.waitFor("POST /health {}", 2));
    EXPECT_TRUE(sdk.shutDown(milliseconds(20'000)));
    EXPECT_EQ(server.count("POST /shutdown {}"), 1);
    EXPECT_TRUE(sdk.takeFailures().empty());
}

TEST(AgonesSdk, WithoutCountersAndListsPlayersAreALabel) {
    const SdkStandIn server(0, false);
    AgonesSdk sdk(portOf(server.port()));
    sdk.update(Time::max(), {2, 4});
    EXPECT_TRUE(server.waitFor(R"(PUT /metadata/label {"key":"players","value":"2"})"));
    EXPECT_EQ(sdk.takeFailures(), (std::map<std::string, int>{{"players", 2}}));
    EXPECT_TRUE(sdk.takeFailures().empty());
}

TEST(AgonesSdk, WaitsForAServerThatComesLate) {
    const int port = freeTcpPort();
    AgonesSdk sdk(portOf(port));
    sdk.update(Time::max(), {0, 4});
    std::map<std::string, int> failures;
    EXPECT_TRUE(comesTrue([&] {
        failures.merge(sdk.takeFailures());
        return failures.contains("ready") && failures.contains("health");
    }));
    const SdkStandIn server(port);
    EXPECT_TRUE(server.waitFor("POST /ready {}"));
    EXPECT_TRUE(server.waitFor("POST /health {}"));
}

TEST(AgonesSdk, NeitherDeadNorHangingServerHoldsItsOwnerUp) {
    const HangingServer hanging;
    for (const int port : {freeTcpPort(), hanging.port()}) {
        const Clock::time_point start = Clock::now();
        {
            AgonesSdk sdk(portOf(port));
            for (int times = 0; times < 1000; ++times) {
                sdk.update(Time::max(), {times % 4, 4});
                sdk.state();
            }
            EXPECT_LT(Clock::now() - start, std::chrono::seconds(1)) << port;
            EXPECT_FALSE(sdk.shutDown(milliseconds(300)));
        }
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(8)) << port;
    }
}
