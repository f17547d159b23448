#include "client/RoomAddress.h"
#include "client/Session.h"
#include "client/recording/RecordingReader.h"
#include "common/Files.h"
#include "tests/process/ServerProcess.h"
#include "tests/process/ToolProcess.h"
#include "tests/support/Arenas.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace drench;

// drench-lag as players and testers use it, between the library for clients and the real server.

namespace {

using client::Clock;
using client::Session;
using nlohmann::json;
using std::chrono::milliseconds;

/// drench-lag.
struct LagProcess : ToolProcess {
    explicit LagProcess(const std::string& arguments, int terminal = -1)
        : ToolProcess(DRENCH_LAG, arguments, terminal) {}

    /// The port that it says it is listening on, or 0 if it does not say so in time.
    int port() const {
        const std::string words = "drench-lag is listening on port ";
        for (int i = 0; i < patience / 10; ++i) {
            for (const std::string& text : {out(), err()}) {
                if (text.starts_with(words) && text.find('\n') != std::string::npos)
                    return std::stoi(text.substr(words.size()));
            }
            std::this_thread::sleep_for(milliseconds(10));
        }
        return 0;
    }
};

std::string room(const ServerProcess& server) {
    return " localhost:" + std::to_string(server.port());
}

Session joining(int port, const std::string& name) {
    std::string problem;
    const sockaddr_in address =
        client::resolve("localhost:" + std::to_string(port), problem).value().address;
    return Session::join(address, name, Clock::now(), problem).value();
}

/// Plays until the condition holds; false if it does not in time.
bool playUntil(Session& session, const std::function<bool()>& condition) {
    const client::Time end = Clock::now() + milliseconds(patience);
    while (!condition() && session.isOpen() && Clock::now() < end) {
        client::wait(session, Clock::now());
        session.service(Clock::now());
        while (session.nextEvent()) {
        }
    }
    return condition();
}

} // namespace

TEST(Lag, PlayerFeelsTheDelayOfBothWays) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    LagProcess lag("0" + room(server) + " --delay 40 --json");
    ASSERT_NE(lag.port(), 0);
    {
        Session ann = joining(lag.port(), "Ann");
        ASSERT_TRUE(playUntil(ann, [&] { return ann.isPlaying(); }));
        ASSERT_TRUE(playUntil(ann, [&] {
            return ann.roundTrip().receipts() >= 2 && ann.statistics().snapshots >= 60;
        }));
        EXPECT_GE(ann.roundTrip().smoothed().value(), 80.0);
        EXPECT_LT(ann.roundTrip().smoothed().value(), 300.0);
        EXPECT_EQ(ann.statistics().unknown, 0u);
    }
    lag.signal(SIGTERM);
    ASSERT_EQ(lag.status(), 0);
    EXPECT_EQ(lag.err(), "drench-lag is listening on port " + std::to_string(lag.port()) + "\n");
    const json report = json::parse(lag.out());
    EXPECT_EQ(report["port"], lag.port());
    EXPECT_EQ(" " + std::string(report["room"]), room(server));
    EXPECT_EQ(report["clients"], 1);
    for (const char* direction : {"up", "down"}) {
        const json& traffic = report[direction];
        SCOPED_TRACE(traffic.dump());
        EXPECT_GE(traffic["delayMilliseconds"]["p50"], 40.0);
        EXPECT_GT(traffic["out"], 0);
        EXPECT_EQ(traffic["lost"], 0);
        EXPECT_EQ(traffic["unsent"], 0);
        EXPECT_EQ(traffic["settings"]["delayMilliseconds"], 40.0);
    }
}

TEST(Lag, SavesWhatPassesWithTheArena) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/match.drench";
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    LagProcess lag("0" + room(server) + " --save " + path + " --arena " +
                   folder.write("court", emptyCourt()));
    ASSERT_NE(lag.port(), 0);
    {
        Session ann = joining(lag.port(), "Ann");
        ASSERT_TRUE(playUntil(ann, [&] { return ann.statistics().snapshots >= 30; }));
    }
    {
        Session bo = joining(lag.port(), "Bo");
        ASSERT_TRUE(playUntil(bo, [&] { return bo.isPlaying(); }));
    }
    lag.signal(SIGTERM);
    ASSERT_EQ(lag.status(), 0);
    client::RecordingReader reader = client::RecordingReader::open(path);
    EXPECT_TRUE(reader.problems().empty());
    EXPECT_EQ(" " + reader.header().room, room(server));
    EXPECT_EQ(reader.header().program, "drench-lag " DRENCH_VERSION);
    EXPECT_EQ(loaded(reader.header().arena).columns, 32);
    int joins = 0;
    int states = 0;
    while (const std::optional<client::RecordedDatagram> datagram = reader.next()) {
        if (datagram->way == client::Way::toRoom && datagram->bytes.starts_with('j')) {
            EXPECT_EQ(datagram->bytes.substr(1, 2), datagram->line == 0 ? "An" : "Bo");
            ++joins;
        }
        states += datagram->bytes.size() == sizeof(UpdateMessage);
    }
    EXPECT_GE(joins, 2);
    EXPECT_GE(states, 30);
}

TEST(Lag, GoesOnWhenTheRecordingCannotBeWritten) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    LagProcess lag("0" + room(server) + " --save /dev/full");
    ASSERT_NE(lag.port(), 0);
    {
        Session ann = joining(lag.port(), "Ann");
        ASSERT_TRUE(playUntil(ann, [&] { return ann.statistics().snapshots >= 90; }));
    }
    lag.signal(SIGTERM);
    EXPECT_EQ(lag.status(), 2);
    EXPECT_EQ(lag.err(), "/dev/full: the recording ends early (No space left on device)\n");
    EXPECT_NE(lag.out().find("1 client"), std::string::npos);
}

TEST(Lag, OneDirectionCanDifferFromBoth) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    LagProcess lag("0" + room(server) +
                   " --delay 1 --jitter 2 --loss 3% --burst 4 --duplicate 5% --reorder 6% "
                   "--reorder-by 7 --up-delay 11 --up-jitter 12 --up-loss 0.5% --down-burst 14 "
                   "--down-duplicate 15% --down-reorder 16% --down-reorder-by 17 --seed 9 "
                   "--seconds 0.1 --json");
    ASSERT_EQ(lag.status(), 0) << lag.err();
    const json report = json::parse(lag.out());
    EXPECT_EQ(report["seed"], 9);
    EXPECT_EQ(report["up"]["settings"],
              json::parse(R"({"delayMilliseconds": 11.0, "jitterMilliseconds": 12.0, "loss": 0.005,
                              "meanBurst": 4.0, "duplication": 0.05, "reordering": 0.06,
                              "heldBackMilliseconds": 7.0})"));
    EXPECT_EQ(report["down"]["settings"],
              json::parse(R"({"delayMilliseconds": 1.0, "jitterMilliseconds": 2.0, "loss": 0.03,
                              "meanBurst": 14.0, "duplication": 0.15, "reordering": 0.16,
                              "heldBackMilliseconds": 17.0})"));
}

TEST(Lag, OutlivesTheRoomAndFindsItAgain) {
    std::optional<ServerProcess> server(ServerProcess::listening(emptyCourt()));
    const int port = server->port();
    LagProcess lag("0" + room(*server));
    ASSERT_NE(lag.port(), 0);
    Session ann = joining(lag.port(), "Ann");
    ASSERT_TRUE(playUntil(ann, [&] { return ann.isPlaying(); }));
    server.reset();
    playUntil(ann, [&] { return !ann.isOpen(); });
    EXPECT_FALSE(ann.isOpen()) << "silence";

    server.emplace(std::vector<std::string>{std::to_string(port)}, emptyCourt());
    ASSERT_TRUE(server->waitForLine("Server is listening on port " + std::to_string(port)));
    Session bo = joining(lag.port(), "Bo");
    EXPECT_TRUE(playUntil(bo, [&] { return bo.isPlaying(); }));
    lag.signal(SIGINT);
    EXPECT_EQ(lag.status(), 0);
    EXPECT_EQ(lag.err(), "");
    EXPECT_NE(lag.out().find("\n2 clients to localhost:" + std::to_string(port) + " for "),
              std::string::npos)
        << lag.out();
    EXPECT_NE(lag.out().find(" refused by the room's host"), std::string::npos) << lag.out();
}

TEST(Lag, EndsByItselfAndIsQuietWhenAsked) {
    LagProcess lag("0 --seconds 0.2 --quiet");
    EXPECT_EQ(lag.status(), 0);
    EXPECT_EQ(lag.out(), "drench-lag is listening on port " + std::to_string(lag.port()) + "\n");
    EXPECT_EQ(lag.err(), "");
}

TEST(Lag, LineOnATerminalShowsHowItGoes) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    PseudoTerminal terminal;
    LagProcess lag("0" + room(server) + " --seconds 2.6", terminal.descriptor());
    Session ann = joining(lag.port(), "Ann");
    EXPECT_TRUE(playUntil(ann, [&] { return ann.statistics().snapshots >= 10; }));
    const std::string shown = terminal.shownToTheEnd();
    EXPECT_EQ(lag.status(), 0);
    EXPECT_NE(shown.find("\r1 client   up "), std::string::npos) << shown;
    EXPECT_NE(shown.find("/s, lost 0   on their way "), std::string::npos) << shown;
    // In each line the datagrams of its second alone; a busy room sends less than sixty.
    const std::vector<double> rates = numbersBefore("/s, lost 0", shown);
    ASSERT_GE(rates.size(), 4u) << shown;
    for (std::size_t line = 1; line < rates.size() / 2; ++line) {
        EXPECT_LT(rates[2 * line], 30.0) << shown;
        EXPECT_GT(rates[2 * line + 1], 0.0) << shown;
        EXPECT_LT(rates[2 * line + 1], 100.0) << shown;
    }
    EXPECT_TRUE(shown.ends_with("\r\033[K")) << shown;
}

TEST(Lag, WrongUseIsExplainedWithStatusTwo) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    const std::string taken = std::to_string(server.port());
    const std::string own = std::to_string(freePort());
    expectWrongUse(
        DRENCH_LAG,
        {
            {"", "port is required"},
            {"5000x", "5000x is no whole number from 0 to 65535"},
            {"65536", "65536 is no whole number from 0 to 65535"},
            {"-1", "-1"},
            {taken, "port " + taken + ": Address already in use"},
            {own + " 127.0.0.1:" + own, "port " + own + ": the room cannot be the relay itself"},
            {"0 localhost:99999", "99999"},
            {"0 --arena here", "--arena: does nothing without --save"},
            {"0 --save /dev", "/dev: cannot be written (Is a directory)"},
            {"0 --save /dev/null --arena /none", "/none: cannot be read"},
            {"0 localhost:5000 more", "more"},
            {"0 --delay -1", "--delay: -1 is no number from 0 to 10000"},
            {"0 --delay 80ms", "--delay: 80ms is no number"},
            {"0 --up-delay 10001", "--up-delay: 10001 is no number"},
            {"0 --jitter nan", "--jitter: nan is no number"},
            {"0 --loss 2", "--loss: 2 is no share: write 2%"},
            {"0 --loss 101", "--loss: 101 is no share from 0% to 100%"},
            {"0 --burst 4", "--burst: does nothing without --loss"},
            {"0 --burst 4 --up-burst 2 --up-loss 5%", "--burst: does nothing without --loss"},
            {"0 --up-burst 4 --down-loss 2%", "--up-burst: does nothing without --up-loss"},
            {"0 --reorder-by 20", "--reorder-by: does nothing without --reorder"},
            {"0 --down-reorder-by 20 --up-reorder 1%",
             "--down-reorder-by: does nothing without --down-reorder"},
            {"0 --delay 5 --up-delay 6 --down-delay 7",
             "--delay: does nothing beside --up-delay and --down-delay"},
            {"0 --down-loss 101%", "--down-loss: 101% is no share"},
            {"0 --duplicate nan%", "--duplicate: nan% is no share"},
            {"0 --reorder %", "--reorder: % is no share"},
            {"0 --reorder-by inf", "--reorder-by: inf is no number"},
            {"0 --burst 0.5", "--burst: 0.5 is no number from 1 to 1000"},
            {"0 --loss 90% --burst 4", "up: bursts of 4 datagrams lose at most 80%, not 90%"},
            {"0 --loss 1% --burst 4 --down-loss 81%", "down: bursts of 4 datagrams"},
            {"0 --seed -1", "--seed: -1 is no whole number"},
            {"0 --seconds inf", "--seconds: inf is no number"},
            {"0 --unknown", "--unknown"},
        });
    expectHelp(DRENCH_LAG, "--help",
               {"  room HOST[:PORT]=localhost:5000",
                "  --seconds S=0               How long; 0 is until Ctrl-C",
                "  --seed K=random             What chance follows from", "Both directions:",
                "  --reorder-by MS             How long they are held back; 50 unless said"});
}

TEST(Lag, OptionForBothCanServeTheDirectionThatHasANeedOfIt) {
    LagProcess lag("0 --burst 4 --up-loss 2% --seconds 0.05 --json");
    ASSERT_EQ(lag.status(), 0) << lag.err();
    const json report = json::parse(lag.out());
    EXPECT_EQ(report["up"]["settings"]["meanBurst"], 4.0);
    EXPECT_EQ(report["up"]["settings"]["loss"], 0.02);
    EXPECT_EQ(report["down"]["settings"]["loss"], 0.0);
}

TEST(Lag, DirectionAsksForMoreThanBothDo) {
    LagProcess lag("0 --loss 3% --up-burst 2 --seconds 0.05 --json");
    ASSERT_EQ(lag.status(), 0) << lag.err();
    const json report = json::parse(lag.out());
    EXPECT_EQ(report["up"]["settings"]["meanBurst"], 2.0);
    EXPECT_TRUE(report["down"]["settings"]["meanBurst"].is_null());
}

TEST(Lag, WithoutOptionsItPassesAllOnAndSaysSo) {
    LagProcess lag("0 --seconds 0.05 --json");
    ASSERT_EQ(lag.status(), 0) << lag.err();
    const json report = json::parse(lag.out());
    EXPECT_EQ(report["room"], "localhost:5000");
    EXPECT_EQ(report["clients"], 0);
    for (const char* direction : {"up", "down"}) {
        EXPECT_EQ(report[direction]["settings"],
                  json::parse(R"({"delayMilliseconds": 0.0, "jitterMilliseconds": 0.0, "loss": 0.0,
                                  "meanBurst": null, "duplication": 0.0, "reordering": 0.0,
                                  "heldBackMilliseconds": 50.0})"))
            << direction;
        EXPECT_EQ(report[direction]["delayMilliseconds"],
                  json::parse(R"({"p50": null, "p99": null, "max": null})"))
            << direction;
    }
}
