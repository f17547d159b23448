#include "tests/process/KeeperProcess.h"
#include "tests/process/RemotePlayer.h"
#include "tests/process/ServerProcess.h"
#include "tests/process/ToolProcess.h"
#include "tests/support/Arenas.h"
#include "tests/support/SdkStandIn.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/ioctl.h>
#include <thread>

// drench-keeper as hosts use it, before the real server.

namespace {

/// A player who stays in the room until it is told to leave or destroyed.
class StayingPlayer {
  public:
    StayingPlayer(int port, const std::string& name) : player_(port) {
        EXPECT_NE(player_.join(name), 0) << name;
        thread_ = std::thread([this] {
            while (!leaving_)
                player_.waitForState([&](const UpdateMessage&) { return leaving_.load(); }, 500);
        });
    }
    ~StayingPlayer() { fallSilent(); }
    StayingPlayer(const StayingPlayer&) = delete;
    StayingPlayer& operator=(const StayingPlayer&) = delete;

    void leave() {
        fallSilent();
        player_.send(leaveDatagram(player_.id()));
    }

  private:
    void fallSilent() {
        leaving_ = true;
        if (thread_.joinable())
            thread_.join();
    }

    RemotePlayer player_;
    std::atomic<bool> leaving_ = false;
    std::thread thread_;
};

std::set<std::string> descriptorsOf(int pid) {
    std::set<std::string> names;
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd"))
        names.insert(entry.path().filename());
    return names;
}

std::string line(int port) {
    return "Server is listening on port " + std::to_string(port) + "\n";
}

} // namespace

TEST(Keeper, CountsWhoComesAndGoesAndPassesTheConsoleOn) {
    KeeperProcess keeper("");
    ASSERT_TRUE(keeper.answers());
    {
        StayingPlayer ann(keeper.port(), "Ann");
        StayingPlayer bo(keeper.port(), "Bo");
        EXPECT_TRUE(keeper.shows("drench_room_players", 2));
        bo.leave();
        EXPECT_TRUE(keeper.shows("drench_room_players", 1));
        EXPECT_EQ(keeper.metric("drench_room_joins_total"), 2);
        EXPECT_EQ(keeper.metric("drench_room_leaves_total"), 1);
        ann.leave();
    }
    EXPECT_TRUE(keeper.shows("drench_room_players", 0));
    EXPECT_TRUE(comesTrue(
        [&] { return keeper.metric("drench_room_receipt_round_trip_seconds_count") >= 2.0; }));
    EXPECT_TRUE(comesTrue(
        [&] { return keeper.metric("drench_room_resident_memory_bytes").value_or(0.0) > 1e6; }));
    EXPECT_GT(keeper.metric("drench_room_age_seconds").value_or(0.0), 0.0);
    keeper.signal(SIGTERM);
    EXPECT_EQ(keeper.status(), 0);
    EXPECT_EQ(keeper.err(), "");
    const std::string out = keeper.out();
    for (const std::string& each :
         {std::string("sizeof(UpdateMessage) 244\n"), line(keeper.port()),
          std::string("Ann joined\n"), std::string("Bo disconnected\n"),
          std::string("drench-keeper: the room is empty and ends, as asked\n")})
        EXPECT_NE(out.find(each), std::string::npos) << each << " in " << out;
}

TEST(Keeper, CarriesARoomOfBots) {
    KeeperProcess keeper("");
    ASSERT_TRUE(keeper.answers());
    // Not this user's own: they study the arena first, which takes sanitizers half a minute.
    setenv("XDG_CACHE_HOME", (keeper.folder() + "/cache").c_str(), 1);
    ToolProcess bots(DRENCH_BOTS, "127.0.0.1:" + std::to_string(keeper.port()) +
                                      " --players 4 --seconds 10 --arena " + keeper.folder() +
                                      "/Resources/mapdata");
    EXPECT_TRUE(keeper.shows("drench_room_players", 4) || keeper.shows("drench_room_players", 4) ||
                keeper.shows("drench_room_players", 4));
    RemotePlayer fifth(keeper.port());
    EXPECT_EQ(fifth.join("Fifth"), 0);
    EXPECT_TRUE(keeper.shows("drench_room_refusals_total", 1));
    EXPECT_EQ(bots.status(), 0) << bots.err();
    EXPECT_TRUE(keeper.shows("drench_room_players", 0));
    EXPECT_EQ(keeper.metric("drench_room_joins_total"), 4);
    EXPECT_EQ(keeper.metric("drench_room_leaves_total"), 4);
    EXPECT_EQ(keeper.metric("drench_room_answering"), 1);
}

TEST(Keeper, NamesCannotFakePlayersOrTheirLeaving) {
    KeeperProcess keeper("");
    ASSERT_TRUE(keeper.answers());
    StayingPlayer joined(keeper.port(), "A joined\nB");
    EXPECT_TRUE(keeper.shows("drench_room_joins_total", 1));
    StayingPlayer empty(keeper.port(), "\n\n\n\n\n joined");
    EXPECT_TRUE(keeper.shows("drench_room_joins_total", 2));
    StayingPlayer soaked(keeper.port(), "\n soaked !\n");
    EXPECT_TRUE(keeper.shows("drench_room_joins_total", 3));
    EXPECT_EQ(keeper.metric("drench_room_players"), 3);
    EXPECT_EQ(keeper.metric("drench_room_soakings_total"), 0);
    EXPECT_TRUE(keeper.says("A joined\\x0aB joined\n"));
    joined.leave();
    EXPECT_TRUE(keeper.shows("drench_room_players", 2));
    EXPECT_EQ(keeper.metric("drench_room_leaves_total"), 1);
    empty.leave();
    soaked.leave();
    EXPECT_TRUE(keeper.shows("drench_room_players", 0));
    EXPECT_EQ(keeper.metric("drench_room_joins_total"), 3);
}

TEST(Keeper, StartsTheRoomAgainAfterItsDeath) {
    KeeperProcess keeper("");
    ASSERT_TRUE(keeper.answers());
    StayingPlayer ann(keeper.port(), "Ann");
    EXPECT_TRUE(keeper.shows("drench_room_players", 1));
    const int first = keeper.serverPid();
    ASSERT_GT(first, 0);
    kill(first, SIGKILL);
    EXPECT_TRUE(keeper.says("the room ended by itself with status 137 after "));
    EXPECT_TRUE(keeper.says("; its last line: Ann joined\n"));
    EXPECT_TRUE(keeper.shows("drench_room_restarts_total{reason=\"signal\"}", 1));
    EXPECT_TRUE(keeper.says(line(keeper.port()), 2));
    EXPECT_TRUE(keeper.answers());
    EXPECT_EQ(keeper.metric("drench_room_players"), 0);
    const int second = keeper.serverPid();
    EXPECT_NE(second, first);
    EXPECT_EQ(descriptorsOf(second), (std::set<std::string>{"0", "1", "2", "3"}))
        << "its own: a console and a socket";
    StayingPlayer again(keeper.port(), "Ann");
    EXPECT_TRUE(keeper.shows("drench_room_players", 1));
}

TEST(Keeper, ReportsTheRoomsDeathAndEndsWhereTheHostWantsThat) {
    const SdkStandIn sdk;
    KeeperProcess keeper("--when-room-ends stop", sdk.port());
    ASSERT_TRUE(keeper.answers());
    kill(keeper.serverPid(), SIGTERM);
    EXPECT_EQ(keeper.status(), 1);
    EXPECT_NE(keeper.out().find("the room ended by itself with status 143"), std::string::npos);
    EXPECT_EQ(sdk.count("POST /shutdown {}"), 1);
}

TEST(Keeper, TellsTheLastLineOfARoomThatCannotStart) {
    const ServerProcess other = ServerProcess::listening(emptyCourt());
    KeeperProcess keeper("--when-room-ends stop", 0,
                         "exec \"${0%/*}/drench-server\" " + std::to_string(other.port()) + "\n");
    EXPECT_EQ(keeper.status(), 1);
    EXPECT_NE(keeper.out().find("the room ended by itself with status 0 after 0 s; its last line: "
                                "Error binding socket\n"),
              std::string::npos)
        << keeper.out();
}

TEST(Keeper, KeepsAHangingRoomFromBeingCalledHealthy) {
    const SdkStandIn sdk;
    KeeperProcess keeper("", sdk.port());
    ASSERT_TRUE(sdk.waitFor("POST /ready {}"));
    EXPECT_TRUE(sdk.waitFor("POST /health {}", 2));
    const int server = keeper.serverPid();
    kill(server, SIGSTOP);
    EXPECT_TRUE(keeper.shows("drench_room_answering", 0));
    const int before = sdk.count("POST /health {}");
    std::this_thread::sleep_for(std::chrono::seconds(5));
    EXPECT_LE(sdk.count("POST /health {}"), before + 1) << "one may have been under way";
    kill(server, SIGCONT);
    EXPECT_TRUE(keeper.answers());
    EXPECT_TRUE(sdk.waitFor("POST /health {}", before + 3));
    EXPECT_GE(keeper.metric("drench_room_unanswered_probes_total").value_or(0.0), 2.0);
    // A room that hangs ends as well as any.
    kill(server, SIGSTOP);
    keeper.signal(SIGTERM);
    EXPECT_EQ(keeper.status(), 0);
}

TEST(Keeper, CallsNoRoomHealthyWhileNobodyReadsItsOwnLog) {
    const SdkStandIn sdk;
    // Another room answers for this one, whose console floods.
    const ServerProcess room = ServerProcess::listening(emptyCourt());
    const TemporaryFolder folder;
    const std::string server = folder.write("script", "#!/bin/bash\nsleep 3\nexec yes\n");
    std::filesystem::permissions(server, std::filesystem::perms::owner_all);
    int log[2];
    ASSERT_EQ(pipe2(log, O_CLOEXEC), 0);
    const Descriptor reading(log[0]);
    const Descriptor writing(log[1]);
    setenv("AGONES_SDK_HTTP_PORT", std::to_string(sdk.port()).c_str(), 1);
    const ChildProcess keeper({DRENCH_KEEPER, std::to_string(room.port()), "--server", server},
                              {.output = writing.number});
    unsetenv("AGONES_SDK_HTTP_PORT");
    EXPECT_TRUE(sdk.waitFor("POST /health {}", 2));
    const auto lengthOfLog = [&] {
        int length = 0;
        ioctl(reading.number, FIONREAD, &length);
        return length;
    };
    ASSERT_TRUE(
        comesTrue([&] { return lengthOfLog() >= fcntl(reading.number, F_GETPIPE_SZ) / 2; }));
    std::this_thread::sleep_for(std::chrono::seconds(7));
    const int before = sdk.count("POST /health {}");
    std::this_thread::sleep_for(std::chrono::seconds(5));
    EXPECT_EQ(sdk.count("POST /health {}"), before);
}

TEST(Keeper, RecyclesAnOldRoomOnlyWhenItIsEmpty) {
    KeeperProcess keeper("--recycle-after 1 --recycle-when-empty-for 0.5");
    ASSERT_TRUE(keeper.answers());
    {
        StayingPlayer ann(keeper.port(), "Ann");
        const auto recycled = keeper.metric("drench_room_restarts_total{reason=\"age\"}");
        const int server = keeper.serverPid();
        std::this_thread::sleep_for(std::chrono::seconds(4));
        EXPECT_EQ(keeper.serverPid(), server);
        EXPECT_EQ(keeper.metric("drench_room_restarts_total{reason=\"age\"}"), recycled);
        EXPECT_GT(keeper.metric("drench_room_age_seconds").value_or(0.0), 3.0);
        ann.leave();
        EXPECT_TRUE(comesTrue([&] {
            return keeper.metric("drench_room_restarts_total{reason=\"age\"}") > recycled;
        }));
    }
    EXPECT_TRUE(keeper.says("drench-keeper: the room is old and empty, and ends\n"));
    EXPECT_EQ(keeper.out().find("by itself"), std::string::npos);
    EXPECT_TRUE(keeper.answers());
}

TEST(Keeper, StopWaitsUntilThePlayersHaveGone) {
    KeeperProcess keeper("");
    ASSERT_TRUE(keeper.answers());
    StayingPlayer ann(keeper.port(), "Ann");
    EXPECT_TRUE(keeper.shows("drench_room_players", 1));
    keeper.signal(SIGTERM);
    EXPECT_TRUE(keeper.says("asked to stop; 1 player may go on for up to 300 s\n"));
    std::this_thread::sleep_for(std::chrono::seconds(3));
    EXPECT_EQ(keeper.metric("drench_room_players"), 1);
    EXPECT_EQ(keeper.metric("drench_room_answering"), 1);
    ann.leave();
    EXPECT_EQ(keeper.status(), 0);
}

TEST(Keeper, TellsOfARoomThatDiesWhileItsStopWaits) {
    KeeperProcess keeper("");
    ASSERT_TRUE(keeper.answers());
    const StayingPlayer ann(keeper.port(), "Ann");
    EXPECT_TRUE(keeper.shows("drench_room_players", 1));
    keeper.signal(SIGTERM);
    EXPECT_TRUE(keeper.says("asked to stop; 1 player"));
    kill(keeper.serverPid(), SIGKILL);
    EXPECT_EQ(keeper.status(), 0) << "a stop was asked for";
    EXPECT_NE(keeper.out().find("the room ended by itself with status 137"), std::string::npos)
        << keeper.out();
}

TEST(Keeper, PlayersWhoComeWhileAgonesTakesTheEndPlayOn) {
    const HangingServer sdk;
    KeeperProcess keeper("", sdk.port());
    ASSERT_TRUE(keeper.answers());
    keeper.signal(SIGTERM);
    EXPECT_TRUE(keeper.says("the room is empty and ends, as asked\n"));
    StayingPlayer ann(keeper.port(), "Ann");
    EXPECT_TRUE(keeper.says("somebody came in the last moment, and may play on\n"));
    EXPECT_TRUE(keeper.shows("drench_room_players", 1));
    ann.leave();
    EXPECT_EQ(keeper.status(), 0);
}

TEST(Keeper, StopWaitsNoLongerThanItsLimit) {
    KeeperProcess keeper("--wait-for-players 2");
    ASSERT_TRUE(keeper.answers());
    const StayingPlayer ann(keeper.port(), "Ann");
    EXPECT_TRUE(keeper.shows("drench_room_players", 1));
    keeper.signal(SIGTERM);
    EXPECT_EQ(keeper.status(), 0);
    EXPECT_NE(keeper.out().find("the room ends with its players, who were waited for long enough"),
              std::string::npos);
}

TEST(Keeper, SecondSignalEndsItAndTheRoomAtOnce) {
    KeeperProcess keeper("");
    ASSERT_TRUE(keeper.answers());
    const StayingPlayer ann(keeper.port(), "Ann");
    EXPECT_TRUE(keeper.shows("drench_room_players", 1));
    const int server = keeper.serverPid();
    keeper.signal(SIGTERM);
    EXPECT_TRUE(keeper.says("asked to stop"));
    keeper.signal(SIGTERM);
    EXPECT_EQ(keeper.status(), 128 + SIGTERM);
    EXPECT_TRUE(comesTrue([&] { return kill(server, 0) != 0; }));
}

TEST(Keeper, LeadsAGameServerThroughItsLife) {
    const SdkStandIn sdk;
    KeeperProcess keeper("--end-when-unused-for 3", sdk.port());
    ASSERT_TRUE(sdk.waitFor("POST /ready {}"));
    const auto count = [](int players) {
        return R"(PATCH /v1beta1/counters/players {"capacity":"4","count":")" +
               std::to_string(players) + "\"}";
    };
    EXPECT_TRUE(sdk.waitFor(count(0)));
    EXPECT_EQ(sdk.count("POST /allocate {}"), 0);
    {
        StayingPlayer ann(keeper.port(), "Ann");
        EXPECT_TRUE(sdk.waitFor("POST /allocate {}"));
        EXPECT_TRUE(sdk.waitFor(count(1)));
        StayingPlayer bo(keeper.port(), "Bo");
        EXPECT_TRUE(sdk.waitFor(count(2)));
        EXPECT_EQ(sdk.count("POST /allocate {}"), 1);
        ann.leave();
        bo.leave();
    }
    EXPECT_EQ(keeper.status(), 0);
    EXPECT_EQ(sdk.count("POST /ready {}"), 1);
    EXPECT_EQ(sdk.count("POST /shutdown {}"), 1);
    EXPECT_EQ(sdk.calls().back(), "POST /shutdown {}");
    EXPECT_NE(keeper.out().find("the room was allocated and nobody came or stayed: it ends"),
              std::string::npos);
}

TEST(Keeper, FollowsWhatOthersDoWithItsGameServer) {
    SdkStandIn sdk;
    KeeperProcess keeper("--end-when-unused-for never", sdk.port());
    ASSERT_TRUE(sdk.waitFor("POST /ready {}"));
    sdk.setState("Allocated");
    std::this_thread::sleep_for(std::chrono::seconds(3));
    StayingPlayer ann(keeper.port(), "Ann");
    EXPECT_TRUE(keeper.shows("drench_room_players", 1));
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_EQ(sdk.count("POST /allocate {}"), 0);
    sdk.setState("Shutdown");
    EXPECT_TRUE(keeper.says("asked to stop; 1 player"));
    EXPECT_TRUE(sdk.waitFor(R"(PATCH /v1beta1/counters/players {"capacity":"1","count":"1"})"))
        << "nobody else is sent there";
    ann.leave();
    EXPECT_EQ(keeper.status(), 0);
}

TEST(Keeper, RoomPlaysOnWithoutAnSdkServer) {
    const HangingServer hanging;
    for (const int port : {freeTcpPort(), hanging.port()}) {
        KeeperProcess keeper("", port);
        ASSERT_TRUE(keeper.answers());
        StayingPlayer ann(keeper.port(), "Ann");
        EXPECT_TRUE(keeper.shows("drench_room_players", 1));
        EXPECT_TRUE(comesTrue([&] {
            return keeper.metric("drench_keeper_agones_failures_total{call=\"ready\"}") >= 1.0;
        }));
        EXPECT_EQ(keeper.metric("drench_room_answering"), 1);
        ann.leave();
        EXPECT_TRUE(keeper.shows("drench_room_players", 0));
        keeper.signal(SIGTERM);
        EXPECT_EQ(keeper.status(), 0);
        EXPECT_NE(keeper.out().find("Agones did not take the end of this game server in 5 s"),
                  std::string::npos);
    }
}

TEST(Keeper, FindsAnSdkServerThatComesLate) {
    const int port = freeTcpPort();
    KeeperProcess keeper("--agones on", port);
    ASSERT_TRUE(keeper.answers());
    std::this_thread::sleep_for(std::chrono::seconds(2));
    const SdkStandIn sdk(port);
    EXPECT_TRUE(sdk.waitFor("POST /ready {}"));
    EXPECT_TRUE(sdk.waitFor("POST /health {}", 2));
    keeper.signal(SIGTERM);
    EXPECT_EQ(keeper.status(), 0);
    EXPECT_EQ(sdk.count("POST /shutdown {}"), 1);
}

TEST(Keeper, SpeaksToNobodyWhenToldSo) {
    const SdkStandIn sdk;
    KeeperProcess keeper("--agones off", sdk.port());
    ASSERT_TRUE(keeper.answers());
    StayingPlayer ann(keeper.port(), "Ann");
    EXPECT_TRUE(keeper.shows("drench_room_players", 1));
    ann.leave();
    keeper.signal(SIGTERM);
    EXPECT_EQ(keeper.status(), 0);
    EXPECT_TRUE(sdk.calls().empty());
}

TEST(Keeper, WrongUseIsExplainedWithStatusTwo) {
    const HangingServer taken;
    const std::string takenPort = std::to_string(taken.port());
    expectWrongUse(
        DRENCH_KEEPER,
        {
            {"", "port is required"},
            {"0", "0 is no whole number from 1 to 65535"},
            {"5000 more", "more"},
            {"5000 --metrics x", "x is neither PORT nor ADDRESS:PORT"},
            {"5000 --metrics :5000", ":5000 is neither PORT nor ADDRESS:PORT"},
            {"5000 --metrics 127.0.0.1:0", "127.0.0.1:0 is neither PORT nor ADDRESS:PORT"},
            {"5000 --metrics " + takenPort,
             "metrics at 127.0.0.1:" + takenPort + ": Address already in use"},
            {"5000 --agones maybe", "maybe"},
            {"5000 --when-room-ends cry", "cry"},
            {"5000 --wait-for-players -1", "-1 is no number from 0 to"},
            {"5000 --wait-for-players never", "never is no number from 0 to"},
            {"5000 --recycle-after soon", "soon"},
            {"5000 --recycle-when-empty-for nan", "nan is no number"},
            {"5000 --end-when-unused-for x", "x"},
            {"5000 --server /nowhere/drench-server", "/nowhere/drench-server cannot be run"},
        });
    expectHelp(DRENCH_KEEPER, "--help",
               {"  --wait-for-players S=300            After SIGTERM: how long players may go on"});
    setenv("AGONES_SDK_HTTP_PORT", "70000", 1);
    expectWrongUse(DRENCH_KEEPER, {{"5000", "70000 is no port"}});
    unsetenv("AGONES_SDK_HTTP_PORT");
}
