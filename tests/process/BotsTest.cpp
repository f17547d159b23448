#include "arena/picture/Png.h"
#include "client/recording/RecordingReader.h"
#include "common/Files.h"
#include "tests/process/ServerProcess.h"
#include "tests/process/ToolProcess.h"
#include "tests/support/Courts.h"
#include "tests/support/Datagrams.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/UdpPeer.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace drench;

// drench-bots as hosts and testers use it, in rooms of the real server.

namespace {

using nlohmann::json;

/// Milliseconds in which bots have charted the arena and joined, under sanitizers on a busy
/// machine.
constexpr int chartTime = 60000;

/// drench-bots.
struct BotsProcess : ToolProcess {
    explicit BotsProcess(const std::string& arguments, int terminal = -1)
        : ToolProcess(DRENCH_BOTS, arguments, terminal) {}

    /// Waits until something stands on standard error.
    bool waitForErr(const std::string& text) const {
        for (int i = 0; i < chartTime / 10; ++i) {
            if (err().find(text) != std::string::npos)
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
};

/// Written when there is no terminal and no chart yet.
const std::string charting = "charting the arena, which takes some seconds\n";

/// An arena that is charted quickly, in a room and in a file, and a cache without charts.
class Bots : public testing::Test {
  protected:
    Bots() { setenv("XDG_CACHE_HOME", (folder.path + "/cache").c_str(), 1); }

    ServerProcess server = ServerProcess::listening(ring());
    TemporaryFolder folder;

    static std::string ring() { return arenaText(32, 16, 32, solidInRing); }

    static std::string room(const ServerProcess& server) {
        return "localhost:" + std::to_string(server.port());
    }

    std::string inRoom(const std::string& options) const {
        return room(server) + " --arena " + folder.write("ring", ring()) + " --seed 1 " + options;
    }
};

/// A player who just falls silent is dropped after five seconds only; one who leaves, at once.
constexpr int politely = 4000;

/// A room tells of a joining a little before the player hears of it.
void letAcceptanceArrive() {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
}

struct RecordLine {
    int tick;
    float x, y, z;
    float directionX, directionY, directionZ;
    int points, shooting, alive;
};

std::vector<RecordLine> readRecord(const std::string& csv) {
    std::istringstream lines(csv);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "tick,x,y,z,directionX,directionY,directionZ,points,shooting,alive");
    std::vector<RecordLine> record;
    while (std::getline(lines, line)) {
        RecordLine r;
        const int fields = std::sscanf(line.c_str(), "%d,%f,%f,%f,%f,%f,%f,%d,%d,%d", &r.tick, &r.x,
                                       &r.y, &r.z, &r.directionX, &r.directionY, &r.directionZ,
                                       &r.points, &r.shooting, &r.alive);
        EXPECT_EQ(fields, 10) << line;
        record.push_back(r);
    }
    return record;
}

/// How often a recorded player moved from one snapshot to the next, and how often not by exactly
/// what walking forward covers in a tick.
struct Walk {
    int moves = 0;
    int odd = 0;
};

Walk walkIn(const std::vector<RecordLine>& record) {
    Walk walk;
    for (std::size_t i = 1; i < record.size(); ++i) {
        const RecordLine& to = record[i];
        const float move = std::hypot(to.x - record[i - 1].x, to.z - record[i - 1].z);
        const float step = 6.0f * std::hypot(to.directionX, to.directionZ);
        walk.moves += move != 0.0f;
        walk.odd += move != 0.0f && std::abs(move - step) > 0.01f;
    }
    return walk;
}

} // namespace

TEST_F(Bots, PlayAndLeaveAndTellWhatCameOfIt) {
    BotsProcess bots(inRoom("--players 4 --seconds 2 --name Bot --json --size 640x480 --tracks " +
                            folder.path + "/tracks.png"));
    ASSERT_EQ(bots.status(), 0) << bots.err();
    EXPECT_EQ(bots.err(), charting);
    for (const char* name : {"Bot 1", "Bot 2", "Bot 3", "Bot 4"})
        EXPECT_TRUE(server.waitForLine(std::string(name) + " joined", chartTime)) << name;
    for (const char* name : {"Bot 1", "Bot 2", "Bot 3", "Bot 4"})
        EXPECT_TRUE(server.waitForLine(std::string(name) + " disconnected", politely)) << name;

    const json report = json::parse(bots.out());
    EXPECT_EQ(report["seed"], 1);
    EXPECT_EQ(report["playersEntered"], 4);
    EXPECT_EQ(report["roomsEntered"], 1);
    EXPECT_NEAR(double(report["seconds"]), 2.0, 1.0);
    ASSERT_EQ(report["players"].size(), 4u);
    long snapshots = 0;
    for (const json& player : report["players"]) {
        SCOPED_TRACE(player.dump());
        EXPECT_EQ(player["room"], room(server));
        EXPECT_EQ(player["joined"], 1);
        const double perSecond = double(player["snapshots"]) / double(report["seconds"]);
        EXPECT_GT(perSecond, 15.0);
        EXPECT_LT(perSecond, 75.0);
        EXPECT_GT(double(player["distanceCubes"]), 0.0);
        EXPECT_LE(player["burstsThatSoaked"], player["bursts"]);
        EXPECT_LE(player["gapMilliseconds"]["p50"], player["gapMilliseconds"]["p99"]);
        EXPECT_LE(player["gapMilliseconds"]["p99"], double(player["gapMilliseconds"]["max"]) + 0.1);
        EXPECT_GT(double(player["roundTripMilliseconds"]), 0.0);
        snapshots += long(player["snapshots"]);
    }
    EXPECT_EQ(report["total"]["snapshots"], snapshots);

    const arena::Image tracks = arena::decodePng(readFile(folder.path + "/tracks.png"));
    EXPECT_EQ(tracks.width, 640);
    EXPECT_EQ(tracks.height, 480);

    BotsProcess hardly(
        inRoom("--players 4 --seconds 0.01 --size 640x480 --tracks " + folder.path + "/none.png"));
    hardly.status();
    EXPECT_NE(tracks.pixels, arena::decodePng(readFile(folder.path + "/none.png")).pixels)
        << "whoever played has left tracks";
}

TEST_F(Bots, SaveWhatTheyAllSendAndHear) {
    const std::string path = folder.path + "/match.drench";
    BotsProcess bots(inRoom("--players 2 --seconds 2 --name Bot --save " + path));
    ASSERT_EQ(bots.status(), 0) << bots.err();
    client::RecordingReader reader = client::RecordingReader::open(path);
    EXPECT_TRUE(reader.problems().empty());
    EXPECT_EQ(reader.header().room, room(server));
    EXPECT_EQ(reader.header().program, "drench-bots " DRENCH_VERSION);
    EXPECT_TRUE(sameCells(loaded(reader.header().arena), loaded(ring())));
    EXPECT_NEAR(std::chrono::duration<double>(reader.duration()).count(), 2.0, 1.0);
    std::string first[2];
    std::string last[2];
    int states[2] = {};
    while (const std::optional<client::RecordedDatagram> datagram = reader.next()) {
        ASSERT_LT(datagram->line, 2u);
        states[datagram->line] += datagram->bytes.size() == sizeof(UpdateMessage);
        if (datagram->way == client::Way::fromRoom)
            continue;
        if (first[datagram->line].empty())
            first[datagram->line] = datagram->bytes;
        last[datagram->line] = datagram->bytes;
    }
    for (int line = 0; line < 2; ++line) {
        EXPECT_EQ(first[line], joinDatagram("Bot " + std::to_string(line + 1)));
        EXPECT_EQ(last[line].substr(0, 1), "d");
        EXPECT_GT(states[line], 30);
    }

    BotsProcess again(inRoom("--players 2 --seconds 2 --save " + path));
    EXPECT_EQ(again.status(), 2);
    EXPECT_EQ(again.err(), path + ": is there already, and is not overwritten\n");
}

TEST_F(Bots, LeavePolitelyWhenInterrupted) {
    BotsProcess bots(inRoom("--players 2 --name Bot"));
    ASSERT_TRUE(server.waitForLine("Bot 1 joined", chartTime)) << bots.err();
    ASSERT_TRUE(server.waitForLine("Bot 2 joined", chartTime)) << bots.err();
    letAcceptanceArrive();
    bots.signal(SIGINT);
    EXPECT_TRUE(server.waitForLine("Bot 1 disconnected", politely));
    EXPECT_TRUE(server.waitForLine("Bot 2 disconnected", politely));
    EXPECT_EQ(bots.status(), 0);
    EXPECT_EQ(bots.out().substr(0, 10), "2 players ");
    EXPECT_NE(bots.out().find("\ntotal "), std::string::npos) << bots.out();
}

TEST_F(Bots, LeavePolitelyWhenTerminated) {
    BotsProcess bots(inRoom("--players 1 --name Bot --quiet"));
    ASSERT_TRUE(server.waitForLine("Bot 1 joined", chartTime)) << bots.err();
    letAcceptanceArrive();
    bots.signal(SIGTERM);
    EXPECT_TRUE(server.waitForLine("Bot 1 disconnected", politely));
    EXPECT_EQ(bots.status(), 0);
    EXPECT_EQ(bots.out() + bots.err(), "");
}

TEST_F(Bots, JoinAgainWhenDropped) {
    BotsProcess bots(inRoom("--players 1 --name Bot"));
    ASSERT_TRUE(server.waitForLine("Bot 1 joined", chartTime)) << bots.err();
    UdpPeer stranger;
    for (int time = 0; time < 2; ++time) {
        stranger.send("d1", server.port());
        EXPECT_TRUE(server.waitForLine("Bot 1 disconnected", politely));
        EXPECT_TRUE(server.waitForLine("Bot 1 joined", chartTime));
        letAcceptanceArrive();
    }
    bots.signal(SIGINT);
    EXPECT_EQ(bots.status(), 0);
    const std::string told = room(server) + ": has fallen silent; trying again\n";
    EXPECT_EQ(bots.err(), charting + told + told) << "again after it got in";
}

TEST_F(Bots, FullRoomIsToldOnce) {
    BotsProcess four(inRoom("--players 4 --name Bot --quiet"));
    ASSERT_TRUE(server.waitForLine("Bot 4 joined", chartTime)) << four.err();
    BotsProcess more(inRoom("--players 2 --seconds 0.5 --skill 0 --json"));
    EXPECT_EQ(more.status(), 1);
    EXPECT_EQ(more.err(), room(server) + ": is full; trying again\n");
    const json report = json::parse(more.out());
    EXPECT_EQ(report["playersAsked"], 2);
    EXPECT_EQ(report["skill"], 0.0);
    EXPECT_EQ(report["playersEntered"], 0);
    EXPECT_EQ(report["roomsEntered"], 0);
}

TEST_F(Bots, RoomWhereNobodyListensIsTold) {
    const int port = freePort();
    BotsProcess bots("localhost:" + std::to_string(port) + " --arena " +
                     folder.write("ring", ring()) + " --players 1");
    EXPECT_TRUE(bots.waitForErr("localhost:" + std::to_string(port) +
                                ": nobody listens there; trying again\n"))
        << bots.err();
    bots.signal(SIGINT);
    EXPECT_EQ(bots.status(), 1);
    EXPECT_NE(bots.out().find("1 never got in\n"), std::string::npos) << bots.out();
    EXPECT_EQ(bots.err().find("charting"), std::string::npos) << "nobody is there to play with";
}

TEST_F(Bots, RoomThatOpensLaterIsFound) {
    const int port = freePort();
    BotsProcess bots("localhost:" + std::to_string(port) + " --arena " +
                     folder.write("ring", ring()) + " --players 1 --name Bot");
    ASSERT_TRUE(bots.waitForErr("nobody listens there")) << bots.err();
    ServerProcess late({std::to_string(port)}, ring());
    EXPECT_TRUE(late.waitForLine("Bot 1 joined", chartTime)) << bots.err();
    letAcceptanceArrive();
    bots.signal(SIGINT);
    EXPECT_EQ(bots.status(), 0);
}

TEST_F(Bots, TimeIsThatOfPlayAndNotOfCharting) {
    BotsProcess first(inRoom("--players 1 --seconds 0.01 --json"));
    first.status();
    EXPECT_EQ(first.err(), charting);
    EXPECT_LT(double(json::parse(first.out())["seconds"]), 0.5);
    BotsProcess second(inRoom("--players 1 --seconds 1 --json"));
    ASSERT_EQ(second.status(), 0);
    EXPECT_EQ(second.err(), "") << "the chart is there";
    EXPECT_NEAR(double(json::parse(second.out())["seconds"]), 1.0, 0.5);
}

TEST_F(Bots, ChartingEndsWhenInterrupted) {
    BotsProcess bots(room(server) + " --arena " DRENCH_MAPDATA " --players 1");
    ASSERT_TRUE(bots.waitForErr(charting)) << bots.err();
    bots.signal(SIGINT);
    EXPECT_EQ(bots.status(), 1);
    EXPECT_NE(bots.out().find("1 never got in\n"), std::string::npos) << bots.out();
}

TEST_F(Bots, ManyRoomsArePlayedInAtOnce) {
    ServerProcess other = ServerProcess::listening(ring());
    const int first = std::min(server.port(), other.port());
    const int last = std::max(server.port(), other.port());
    BotsProcess bots("127.0.0.1 --rooms " + std::to_string(first) + "-" + std::to_string(last) +
                     " --arena " + folder.write("ring", ring()) +
                     " --players 2 --name Bot --seconds 1 --json");
    ASSERT_EQ(bots.status(), 0) << bots.err();
    for (ServerProcess* room : {&server, &other}) {
        EXPECT_TRUE(room->waitForLine("Bot 1 joined", chartTime));
        EXPECT_TRUE(room->waitForLine("Bot 2 joined", chartTime));
        EXPECT_TRUE(room->waitForLine("Bot 1 disconnected", politely));
    }
    const json report = json::parse(bots.out());
    EXPECT_EQ(report["roomsAsked"], last - first + 1);
    EXPECT_EQ(report["roomsEntered"], 2);
    EXPECT_EQ(report["playersEntered"], 4);
    EXPECT_EQ(report["players"][0]["room"], "127.0.0.1:" + std::to_string(first));
}

TEST_F(Bots, AnotherArenaThanTheRoomsIsToldOnce) {
    const ServerProcess other = ServerProcess::listening(emptyCourt());
    BotsProcess bots(room(other) + " --arena " + folder.write("ring", ring()) +
                     " --players 2 --name Bot");
    EXPECT_TRUE(bots.waitForErr("name its file with --arena\n"));
    std::this_thread::sleep_for(std::chrono::seconds(1));
    bots.signal(SIGINT);
    EXPECT_EQ(bots.status(), 0);
    const std::string told = bots.err();
    const std::string words =
        charting + room(other) + ": plays an arena that the bots do not know: Bot ";
    EXPECT_TRUE(told.starts_with(words)) << told;
    EXPECT_TRUE(told.ends_with(" stands where nobody can; name its file with --arena\n")) << told;
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 2) << told;
}

TEST_F(Bots, SameSeedGivesTheSameNames) {
    std::string joined[2];
    for (std::string& names : joined) {
        BotsProcess bots(inRoom("--players 3 --quiet"));
        for (int i = 0; i < 3; ++i)
            names += server.line(chartTime).value_or("nothing") + "\n";
        bots.signal(SIGTERM);
        EXPECT_EQ(bots.status(), 0);
        // Somebody who was let in just now may not know it yet, and is dropped after five seconds.
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(server.line().value_or("nothing").ends_with(" disconnected"));
    }
    EXPECT_EQ(joined[0], joined[1]);
    EXPECT_NE(joined[0].find(" joined\n"), std::string::npos) << joined[0];
}

TEST_F(Bots, LineOnATerminalShowsHowItGoes) {
    PseudoTerminal terminal;
    BotsProcess bots(inRoom("--players 2 --seconds 2.6"), terminal.descriptor());
    const std::string shown = terminal.shownToTheEnd();
    EXPECT_EQ(bots.status(), 0);
    EXPECT_NE(shown.find("\rcharting the arena"), std::string::npos) << shown;
    EXPECT_NE(shown.find(" ticks/s   round trip "), std::string::npos) << shown;
    EXPECT_NE(shown.find("   playing 2 of 2"), std::string::npos) << shown;
    EXPECT_TRUE(shown.ends_with("\r\033[K")) << shown;
    EXPECT_EQ(bots.out().find("ticks/s"), std::string::npos) << bots.out();
    for (const double rate : numbersBefore(" ticks/s", shown)) {
        EXPECT_GT(rate, 0.0) << "of each player, however busy the room is";
        EXPECT_LT(rate, 80.0) << "of each player";
    }
}

TEST_F(Bots, ScriptIsPlayedTickByTick) {
    ServerProcess flat = ServerProcess::listening(emptyCourt());
    const std::string script = folder.write("walk.script", "# falls, walks, and leaves\n"
                                                           "at 70 hold forward\n"
                                                           "at 110 release forward\n"
                                                           "at 150 say done\n"
                                                           "at 170 leave\n");
    BotsProcess bots(room(flat) + " --name Walker --json --script " + script + " --record " +
                     folder.path + "/walk.csv");
    ASSERT_EQ(bots.status(), 0) << bots.err();
    EXPECT_TRUE(flat.waitForLine("Walker joined", chartTime));
    EXPECT_TRUE(flat.waitForLine("Walker disconnected", politely));

    const std::vector<RecordLine> record = readRecord(readFile(folder.path + "/walk.csv"));
    ASSERT_GT(record.size(), 100u);
    EXPECT_EQ(record.front().tick, 0);
    EXPECT_GE(record.back().tick, 170);
    EXPECT_EQ(record.back().alive, 1);
    EXPECT_NEAR(record.back().y, standing, 0.5f);
    const Walk walk = walkIn(record);
    EXPECT_NEAR(walk.moves, 40, 20);
    EXPECT_EQ(walk.odd, 0);

    const json report = json::parse(bots.out());
    EXPECT_EQ(report["players"][0]["name"], "Walker");
    EXPECT_EQ(report["players"][0]["snapshots"], record.size());
    EXPECT_FALSE(report.contains("seed"));
}

TEST_F(Bots, ScriptWithoutLeavingPlaysUntilItsTimeIsOver) {
    const std::string script = folder.write("jump.script", "at 5 jump\n");
    BotsProcess bots(room(server) + " --seconds 0.5 --script " + script);
    EXPECT_EQ(bots.status(), 0) << bots.err();
    EXPECT_TRUE(server.waitForLine("Script joined", chartTime));
    EXPECT_TRUE(server.waitForLine("Script disconnected", politely));
    EXPECT_EQ(bots.out().substr(0, 9), "1 player ");
}

TEST_F(Bots, ScriptThatDoesNotGetInFails) {
    const std::string script = folder.write("jump.script", "at 5 jump\n");
    const std::string nowhere = "localhost:" + std::to_string(freePort());
    BotsProcess bots(nowhere + " --seconds 20 --script " + script);
    EXPECT_EQ(bots.status(), 1);
    EXPECT_EQ(bots.err(), nowhere + ": nobody listens there\n");
}

TEST_F(Bots, ScriptWithAnErrorIsNotPlayed) {
    const std::string script = folder.write("bad.script", "at 5 jump\nat 6 dance\n");
    BotsProcess bots(room(server) + " --script " + script + " --record " + folder.path + "/record");
    EXPECT_EQ(bots.status(), 2);
    EXPECT_EQ(bots.err().substr(0, script.size() + 11), script + ":2: \"dance\"");
    EXPECT_EQ(access((folder.path + "/record").c_str(), F_OK), -1);
}

TEST_F(Bots, WrongUseIsExplainedWithStatusTwo) {
    const std::string map = folder.write("ring", ring());
    const std::string jump = folder.write("jump.script", "at 5 jump\n");
    expectWrongUse(DRENCH_BOTS,
                   {
                       {"--players 5", "--players"},
                       {"--players 0", "--players"},
                       {"--skill 1.5", "--skill"},
                       {"--skill -0.1", "--skill"},
                       {"--seconds -1", "--seconds"},
                       {"--skill nan", "--skill"},
                       {"--seconds inf", "--seconds"},
                       {"--seed many", "--seed"},
                       {"--seed -1", "--seed"},
                       {"--seed 18446744073709551616", "--seed"},
                       {"--tracks a --size 50x50", "--size"},
                       {"--tracks a.jpg", "--tracks: a.jpg: writes PNG files only"},
                       {"--players 2.5", "--players: 2.5 is no whole number from 1 to 4"},
                       {"--rooms 5000", "--rooms 5000: not two ports"},
                       {"--rooms 5003-5001", "--rooms 5003-5001: not two ports"},
                       {"--rooms 5000-70000", "--rooms 5000-70000: not two ports"},
                       {"--rooms 5000-5001x", "--rooms 5000-5001x: not two ports"},
                       {"--rooms 5000-6000", "more than 250 rooms"},
                       {"localhost:5000 --rooms 5000-5001", "must not name a port"},
                       {"localhost:99999", "99999"},
                       {"--arena " + folder.path + "/missing", "/missing: cannot be read"},
                       {"--arena " + map + " --name 1234567890", "--name"},
                       {"--script " + map + " --players 2", "--script"},
                       {"--script " + folder.path + "/missing", "/missing: cannot be read"},
                       {"--record here", "--script"},
                       {"--arena " + map + " --tracks " + folder.path + "/none/tracks.png",
                        "/none/tracks.png: cannot be written"},
                       {"--script " + jump + " --record " + folder.path,
                        ": cannot be written (it is a folder)"},
                       {"--size 640x480", "--tracks"},
                       {"--unknown", "--unknown"},
                       {"localhost:5000 localhost:5001", "localhost:5001"},
                   });
    expectHelp(DRENCH_BOTS, "--help",
               {"  room HOST[:PORT]=localhost:5000",
                "  --players N=3               Players in each room, 1 to 4",
                "  --skill X=0.5               How well they play, 0 to 1",
                "  --seconds S=0               How long they play; 0 is until Ctrl-C",
                "  --size WxH=1280x1000        Width and height of that picture",
                "  at 150 turn 90 -10       mouse counts; positive turns right and down"});
}
