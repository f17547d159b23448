#include "keeper/Metrics.h"
#include "keeper/MetricsServer.h"

#include "common/Descriptor.h"
#include "tests/support/SdkStandIn.h"

#include <atomic>
#include <gtest/gtest.h>
#include <httplib.h>
#include <memory>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace drench::keeper;
using drench::Descriptor;

namespace {

int connected(int port) {
    const int scraper = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    EXPECT_EQ(connect(scraper, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    return scraper;
}

/// How much of the same again and again a server takes from a connection before it ends it.
std::size_t taken(int scraper, const std::string& again, std::size_t longest) {
    std::size_t sent = 0;
    while (sent < longest) {
        const ssize_t length = send(scraper, again.data(), again.size(), MSG_NOSIGNAL);
        if (length <= 0)
            break;
        sent += static_cast<std::size_t>(length);
    }
    return sent;
}

/// Whether the text has this line.
testing::AssertionResult has(const std::string& text, const std::string& line) {
    if (("\n" + text).find("\n" + line + "\n") != std::string::npos)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no line " << line << " in\n" << text;
}

} // namespace

TEST(Metrics, AllAreThereFromTheStart) {
    const std::string text = Metrics("1.2.3").text();
    for (const char* line :
         {"drench_room_players 0", "drench_room_players_limit 4", "drench_room_joins_total 0",
          "drench_room_leaves_total 0", "drench_room_refusals_total 0",
          "drench_room_soakings_total 0", "drench_room_answering 0",
          "drench_room_receipt_round_trip_seconds_count 0", "drench_room_unanswered_probes_total 0",
          "drench_room_age_seconds 0", "drench_room_restarts_total{reason=\"age\"} 0",
          "drench_room_restarts_total{reason=\"error\"} 0",
          "drench_room_restarts_total{reason=\"signal\"} 0", "drench_room_cpu_seconds_total 0",
          "drench_room_resident_memory_bytes 0", "drench_keeper_headcount_corrections_total 0",
          "drench_keeper_build_info{version=\"1.2.3\"} 1"})
        EXPECT_TRUE(has(text, line));
}

TEST(Metrics, TellWhatHappened) {
    Metrics metrics("1");
    metrics.joined();
    metrics.joined();
    metrics.left();
    metrics.refused();
    metrics.soaked();
    metrics.setPlayers(3);
    metrics.setAnswering(true);
    metrics.setAge(std::chrono::seconds(90));
    metrics.restarted(Restart::aged);
    metrics.restarted(Restart::signal);
    metrics.restarted(Restart::signal);
    metrics.observeRoundTrip(std::chrono::microseconds(300));
    metrics.setCorrections(2);
    metrics.setUnansweredProbes(7);
    metrics.agonesCallFailed("ready", 3);
    const std::string text = metrics.text();
    for (const char* line :
         {"drench_room_players 3", "drench_room_joins_total 2", "drench_room_leaves_total 1",
          "drench_room_refusals_total 1", "drench_room_soakings_total 1", "drench_room_answering 1",
          "drench_room_age_seconds 90", "drench_room_restarts_total{reason=\"age\"} 1",
          "drench_room_restarts_total{reason=\"error\"} 0",
          "drench_room_restarts_total{reason=\"signal\"} 2",
          "drench_room_receipt_round_trip_seconds_bucket{le=\"0.00025\"} 0",
          "drench_room_receipt_round_trip_seconds_bucket{le=\"0.0005\"} 1",
          "drench_keeper_headcount_corrections_total 2", "drench_room_unanswered_probes_total 7",
          "drench_keeper_agones_failures_total{call=\"ready\"} 3"})
        EXPECT_TRUE(has(text, line));
}

TEST(Metrics, ProcessorTimeGoesOnOverServers) {
    Metrics metrics("1");
    metrics.setUsage({.processorSeconds = 1.5, .residentBytes = 4096.0});
    metrics.setUsage({.processorSeconds = 2.0, .residentBytes = 8192.0});
    EXPECT_TRUE(has(metrics.text(), "drench_room_cpu_seconds_total 2"));
    EXPECT_TRUE(has(metrics.text(), "drench_room_resident_memory_bytes 8192"));
    metrics.serverStarted();
    metrics.setUsage({.processorSeconds = 0.25, .residentBytes = 4096.0});
    EXPECT_TRUE(has(metrics.text(), "drench_room_cpu_seconds_total 2.25"));
}

TEST(MetricsServer, AnswersScrapesAndNothingElse) {
    const int port = freeTcpPort();
    int asked = 0;
    const MetricsServer server("127.0.0.1", static_cast<std::uint16_t>(port),
                               [&] { return "answer " + std::to_string(++asked) + "\n"; });
    httplib::Client client("127.0.0.1", port);
    for (const char* expected : {"answer 1\n", "answer 2\n"}) {
        const auto answer = client.Get("/metrics");
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 200);
        EXPECT_EQ(answer->body, expected);
        EXPECT_EQ(answer->get_header_value("Content-Type"),
                  "text/plain; version=0.0.4; charset=utf-8");
    }
    EXPECT_EQ(client.Get("/")->status, 404);
    EXPECT_EQ(client.Post("/metrics", "x", "text/plain")->status, 413) << "bodies are not taken";
}

TEST(MetricsServer, SilentScraperDoesNotHoldUpOthersForLong) {
    const int port = freeTcpPort();
    const MetricsServer server("127.0.0.1", static_cast<std::uint16_t>(port),
                               [] { return std::string("text\n"); });
    // Connects and says nothing.
    const Descriptor silent(connected(port));
    httplib::Client client("127.0.0.1", port);
    client.set_read_timeout(20);
    const auto start = std::chrono::steady_clock::now();
    const auto answer = client.Get("/metrics");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4500));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->body, "text\n");
}

TEST(MetricsServer, EndlessRequestsEndAndTakeNoMemory) {
    const int port = freeTcpPort();
    const MetricsServer server("127.0.0.1", static_cast<std::uint16_t>(port),
                               [] { return std::string("text\n"); });
    constexpr std::size_t endless = 256 * 1024 * 1024;
    const double before = usageOf(getpid()).value().residentBytes;
    const std::string line(4096, 'x');
    for (const std::string& again : {line, "x: " + line + "\r\n"}) {
        const Descriptor scraper(connected(port));
        EXPECT_EQ(taken(scraper.number, "GET /metrics HTTP/1.1\r\n", 1), 23u);
        EXPECT_LT(taken(scraper.number, again, endless), endless);
    }
    EXPECT_LT(usageOf(getpid()).value().residentBytes - before, 32.0 * 1024 * 1024);
    EXPECT_TRUE(httplib::Client("127.0.0.1", port).Get("/metrics"));
}

TEST(MetricsServer, RangesAreNotHeeded) {
    const int port = freeTcpPort();
    const MetricsServer server("127.0.0.1", static_cast<std::uint16_t>(port),
                               [] { return std::string("text\n"); });
    httplib::Client client("127.0.0.1", port);
    std::string ranges = "bytes=0-";
    while (ranges.size() < 7000)
        ranges += ",0-";
    const auto answer = client.Get("/metrics", {{"Range", ranges}});
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(answer->body, "text\n");
}

TEST(MetricsServer, TricklersHoldUpNeitherOthersNorTheEnd) {
    const int port = freeTcpPort();
    auto server = std::make_unique<MetricsServer>("127.0.0.1", static_cast<std::uint16_t>(port),
                                                  [] { return std::string("text\n"); });
    std::atomic<bool> trickles = true;
    std::thread trickler([&] {
        while (trickles) {
            const Descriptor scraper(connected(port));
            while (trickles && taken(scraper.number, "x", 1) == 1)
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    });
    httplib::Client client("127.0.0.1", port);
    client.set_read_timeout(20);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(client.Get("/metrics"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4500));
    trickles = false;
    trickler.join();
    const Descriptor last(connected(port));
    EXPECT_EQ(taken(last.number, "x", 1), 1u);
    const auto end = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - end, std::chrono::milliseconds(4500));
}

TEST(MetricsServer, TakenPortsAndOddAddressesAreRefused) {
    const HangingServer taken;
    const auto serve = [](const std::string& address, int port) {
        const MetricsServer server(address, static_cast<std::uint16_t>(port),
                                   [] { return std::string(); });
    };
    try {
        serve("127.0.0.1", taken.port());
        FAIL() << "a taken port is used";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "metrics at 127.0.0.1:" + std::to_string(taken.port()) +
                                    ": Address already in use");
    }
    EXPECT_THROW(serve("203.0.113.1", freeTcpPort()), std::runtime_error);
    EXPECT_THROW(serve("no address", freeTcpPort()), std::runtime_error);
    const int port = freeTcpPort();
    const MetricsServer first("127.0.0.1", static_cast<std::uint16_t>(port),
                              [] { return std::string(); });
    EXPECT_THROW(serve("127.0.0.1", port), std::runtime_error) << "two keepers share no port";
}
