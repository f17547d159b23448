#include "bots/Report.h"
#include "src/Player.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

using namespace drench;

using bots::PlayerReport;
using bots::Report;
using std::chrono::milliseconds;

namespace {

/// A player who fired twice, soaked one, was soaked itself, walked a cube, and then missed a
/// snapshot, 16 ms apart but for the last.
bots::Tally busyTally() {
    bots::Scorer scorer;
    scorer.join();
    PlayerUpdate self;
    self.position = vec3(0.0f, 0.0f, 0.0f);
    scorer.see(self, 0, client::Time(milliseconds(0)));
    self.position.x = 64.0f;
    self.shooting = true;
    scorer.see(self, 0, client::Time(milliseconds(16)));
    self.shooting = false;
    self.points = 1;
    scorer.see(self, 0, client::Time(milliseconds(32)));
    self.shooting = true;
    scorer.see(self, 0, client::Time(milliseconds(48)));
    Player soaked;
    soaked.die(0.0f);
    self.position = soaked.getPosition();
    self.points = 0;
    self.shooting = false;
    scorer.see(self, 1, client::Time(milliseconds(80)));
    scorer.measureRoundTrip(0.25);
    return scorer.tally();
}

/// A player whose two snapshots came so far apart.
bots::Tally quietTally(milliseconds gap) {
    bots::Scorer scorer;
    scorer.join();
    scorer.see(PlayerUpdate(), 0, client::Time(milliseconds(0)));
    scorer.see(PlayerUpdate(), 0, client::Time(gap));
    return scorer.tally();
}

Report oneRoom() {
    Report report;
    report.bots = {"arenas/default.plan", 4711, 0.5};
    report.seconds = 12.34;
    report.rooms = {"localhost:5000"};
    report.players = {{"localhost:5000", "Otter", busyTally()},
                      {"localhost:5000", "Heron", quietTally(milliseconds(17))},
                      {"localhost:5000", "Newt", {}}};
    return report;
}

Report threeRooms() {
    Report report;
    report.bots = {"mapdata", 1, 1.0};
    report.seconds = 60.0;
    report.rooms = {"host:1", "host:2", "host:3"};
    report.players = {{"host:1", "A", quietTally(milliseconds(20))},
                      {"host:1", "B", quietTally(milliseconds(16))},
                      {"host:2", "A", quietTally(milliseconds(10))},
                      {"host:2", "B", quietTally(milliseconds(31))},
                      {"host:3", "A", {}},
                      {"host:3", "B", {}}};
    return report;
}

std::string tableOf(const Report& report) {
    std::ostringstream out;
    writeTable(out, report);
    return out.str();
}

nlohmann::json jsonOf(const Report& report) {
    std::ostringstream out;
    writeJson(out, report);
    return nlohmann::json::parse(out.str());
}

} // namespace

TEST(Report, TableOfOneRoomHasALineForEachPlayerWhoGotIn) {
    EXPECT_EQ(
        tableOf(oneRoom()),
        "2 players in localhost:5000 for 12.3 s, skill 0.5, seed 4711\n"
        "1 never got in\n"
        "       soaks  deaths  accuracy  cubes walked  snapshots  and missed  gap p50  gap p99"
        "  longest  round trip ms\n"
        "Otter      1       1      50 %             1          5           1     16.0     32.0"
        "     32.0           0.25\n"
        "Heron      0       0         -             0          2           0     17.0     17.0"
        "     17.0              -\n"
        "total      1       1      50 %             1          7           1     16.0     32.0"
        "     32.0           0.25\n");
}

TEST(Report, TableOfManyRoomsNamesTheWorstOnly) {
    EXPECT_EQ(tableOf(threeRooms()),
              "4 players in 2 rooms for 60.0 s, skill 1, seed 1\n"
              "2 never got in\n"
              "               soaks  deaths  accuracy  cubes walked  snapshots  and missed  gap p50"
              "  gap p99  longest  round trip ms\n"
              "worst: host:2      0       0         -             0          4           0     10.0"
              "     31.0     31.0              -\n"
              "total              0       0         -             0          8           0     16.0"
              "     31.0     31.0              -\n");
}

TEST(Report, TableWithoutPlayersIsNoTable) {
    Report report = oneRoom();
    report.bots.reset();
    report.players = {{"localhost:5000", "Newt", {}}};
    EXPECT_EQ(tableOf(report), "0 players in localhost:5000 for 12.3 s\n1 never got in\n");
}

TEST(Report, JsonHoldsEveryPlayer) {
    const nlohmann::json json = jsonOf(oneRoom());
    EXPECT_EQ(json["arena"], "arenas/default.plan");
    EXPECT_EQ(json["seed"], 4711);
    EXPECT_EQ(json["skill"], 0.5);
    EXPECT_EQ(json["seconds"], 12.34);
    EXPECT_EQ(json["roomsAsked"], 1);
    EXPECT_EQ(json["roomsEntered"], 1);
    EXPECT_EQ(json["playersAsked"], 3);
    EXPECT_EQ(json["playersEntered"], 2);
    EXPECT_EQ(json["worstRoom"], "localhost:5000");
    ASSERT_EQ(json["players"].size(), 3u);
    EXPECT_EQ(json["players"][0], nlohmann::json::parse(R"({
        "room": "localhost:5000", "name": "Otter", "joined": 1, "soaks": 1, "deaths": 1,
        "bursts": 2, "burstsThatSoaked": 1, "accuracy": 0.5, "distanceCubes": 1.0,
        "snapshots": 5, "snapshotsMissed": 1,
        "gapMilliseconds": {"p50": 16.0, "p99": 32.0, "max": 32.0},
        "roundTripMilliseconds": 0.25})"));
    EXPECT_EQ(json["players"][2]["joined"], 0);
    EXPECT_TRUE(json["players"][2]["accuracy"].is_null());
    EXPECT_TRUE(json["players"][2]["roundTripMilliseconds"].is_null());
    EXPECT_EQ(json["total"]["snapshots"], 7);
    EXPECT_EQ(json["total"]["gapMilliseconds"]["max"], 32.0);
    EXPECT_EQ(json["total"]["roundTripMilliseconds"], 0.25);
}

TEST(Report, JsonOfAScriptHasNoBotSettings) {
    Report report = oneRoom();
    report.bots.reset();
    const nlohmann::json json = jsonOf(report);
    EXPECT_FALSE(json.contains("seed"));
    EXPECT_FALSE(json.contains("skill"));
    EXPECT_FALSE(json.contains("arena"));
    EXPECT_EQ(json["playersEntered"], 2);
}

TEST(Report, JsonSurvivesNamesThatAreNotText) {
    Report report = oneRoom();
    report.bots->arena = "\xff.plan";
    EXPECT_EQ(jsonOf(report)["arena"], "\xef\xbf\xbd.plan");
}

TEST(Report, RoomWithoutGapsIsNeverTheWorst) {
    Report report = threeRooms();
    EXPECT_EQ(report.worstRoom(), "host:2");
    EXPECT_EQ(report.roomsEntered(), 2u);
    EXPECT_EQ(report.playersEntered(), 4u);
    report.players.clear();
    EXPECT_EQ(report.worstRoom(), "");
    EXPECT_TRUE(jsonOf(report)["worstRoom"].is_null());
}

TEST(Report, RoundTripIsTheMedianOfWhatIsKnown) {
    Report report = threeRooms();
    EXPECT_FALSE(report.medianRoundTrip().has_value());
    report.players[0].tally.roundTrip = 9.0;
    report.players[2].tally.roundTrip = 1.0;
    report.players[3].tally.roundTrip = 2.0;
    EXPECT_EQ(report.medianRoundTrip(), 2.0);
}
