#include "tools/CheckReport.h"
#include "tests/support/Courts.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

using arena::CheckResult;
using arena::Severity;
using arena::Subject;

namespace {

std::string reportOf(const CheckResult& result, const MapManager& map = MapManager()) {
    std::ostringstream out;
    writeReport(out, "mine", map, result);
    return out.str();
}

nlohmann::json jsonOf(const CheckResult& result, const MapManager& map = MapManager()) {
    std::ostringstream out;
    writeJson(out, "mine", map, result);
    return nlohmann::json::parse(out.str());
}

CheckResult withReach(std::size_t walkable, std::size_t reached) {
    CheckResult result;
    result.reach.emplace();
    result.walkable.resize(walkable);
    result.walkableReached = reached;
    return result;
}

/// As the report shows this share of 1000 cells.
std::string percentageOf(std::size_t reached) {
    const std::string report = reportOf(withReach(1000, reached));
    const std::size_t begin = report.find('(') + 1;
    return report.substr(begin, report.find(')') - begin);
}

} // namespace

TEST(CheckReport, OnlyNothingIsNoPercentAndOnlyAllIsAHundred) {
    EXPECT_EQ(percentageOf(0), "0 %");
    EXPECT_EQ(percentageOf(1), "1 %");
    EXPECT_EQ(percentageOf(9), "1 %");
    EXPECT_EQ(percentageOf(10), "1 %");
    EXPECT_EQ(percentageOf(16), "2 %");
    EXPECT_EQ(percentageOf(504), "50 %");
    EXPECT_EQ(percentageOf(990), "99 %");
    EXPECT_EQ(percentageOf(999), "99 %");
    EXPECT_EQ(percentageOf(1000), "100 %");
    EXPECT_NE(reportOf(withReach(0, 0)).find("0 of 0 walkable cells (0 %)"), std::string::npos);
}

TEST(CheckReport, FindingsHaveTheirPlaceAndCellWhereThereIsOne) {
    CheckResult result;
    result.findings = {{Severity::warning, Subject::sight, "nowhere", {}, {}},
                       {Severity::error, Subject::text, "in the file", {}, arena::TextPlace{3, 7}},
                       {Severity::error, Subject::reach, "in a cell", arena::CellIndex{1, 2, 3},
                        arena::TextPlace{4, 5}}};
    EXPECT_EQ(reportOf(result), "mine: warning: nowhere\n"
                                "mine:3:7: error: in the file\n"
                                "mine:4:5: error: in a cell (cell 1, 2, 3)\n"
                                "mine: cannot be played\n");
    result.findings.resize(1);
    EXPECT_EQ(reportOf(result), "mine: warning: nowhere\nmine: can be played\n");
}

TEST(CheckReport, SubjectsHaveTheirNamesInJson) {
    CheckResult result;
    for (const Subject subject :
         {Subject::file, Subject::text, Subject::spawns, Subject::reach, Subject::sight})
        result.findings.push_back({Severity::warning, subject, "w", {}, {}});
    const nlohmann::json json = jsonOf(result);
    const char* const names[] = {"file", "text", "spawns", "reach", "sight"};
    for (std::size_t i = 0; i < std::size(names); ++i) {
        EXPECT_EQ(json["findings"][i]["subject"], names[i]);
        EXPECT_EQ(json["findings"][i]["severity"], "warning");
        EXPECT_FALSE(json["findings"][i].contains("cell"));
        EXPECT_FALSE(json["findings"][i].contains("line"));
    }
    EXPECT_EQ(json["playable"], true);
    EXPECT_FALSE(json.contains("reach"));
    EXPECT_FALSE(json.contains("sight"));
}

TEST(CheckReport, SpawnsSayWhereTheyLandOrWhyNot) {
    MapManager map = court(6, 6, 6, nothing);
    CheckResult result;
    for (int pose = 0; pose < 4; ++pose)
        result.arrivals.push_back(arrivalIn(map, 1 + pose, 2, 2, pose));
    result.arrivals[1].insideWorld = false;
    result.arrivals[2].clear = false;
    result.arrivals[3].lands = false;
    EXPECT_EQ(reportOf(result, map), "size    6 columns, 6 rows, 6 depth\n"
                                     "spawns  (cells are column, row, depth)\n"
                                     "  1     falls 1.1 cubes onto ground at 1, 0, 2\n"
                                     "  2     lies outside\n"
                                     "  3     not clear\n"
                                     "  4     never lands\n"
                                     "mine: can be played\n");
    const nlohmann::json spawns = jsonOf(result, map)["spawns"];
    EXPECT_EQ(spawns[0]["spawn"], 1);
    EXPECT_EQ(spawns[0]["clear"], true);
    EXPECT_EQ(spawns[0]["lands"], true);
    EXPECT_NEAR(spawns[0]["fallWorldUnits"].get<double>(), 68.5, 1.0);
    EXPECT_EQ(spawns[0]["floor"], (nlohmann::json{{"column", 1}, {"row", 0}, {"depth", 2}}));
    EXPECT_EQ(spawns[0]["material"], "ground");
    EXPECT_EQ(spawns[1]["clear"], false);
    EXPECT_EQ(spawns[2]["clear"], false);
    EXPECT_EQ(spawns[3]["lands"], false);
    for (const int other : {1, 2, 3})
        EXPECT_FALSE(spawns[static_cast<std::size_t>(other)].contains("floor")) << other;
}

TEST(CheckReport, BodyBesideTheCubeItStandsOnStandsOnAnEdge) {
    MapManager map = court(6, 6, 6, nothing);
    CheckResult result;
    result.arrivals.push_back(arrivalIn(map, 2, 2, 2));
    arena::cell(map, 2, 0, 2).solid = 0;
    EXPECT_NE(reportOf(result, map).find("onto an edge at 2, 0, 2"), std::string::npos);
    EXPECT_EQ(jsonOf(result, map)["spawns"][0]["material"], "an edge");
}

TEST(CheckReport, ReachAndSightAreToldInFigures) {
    CheckResult result = withReach(10, 4);
    result.reach->places.resize(5);
    result.reach->ticks = 77;
    result.unreached = arena::Area{6, {1, 2, 3}};
    result.sight.emplace();
    result.sight->whenSpawned = {{0, 1}};
    result.sight->whenLanded = {{0, 1}, {2, 0}};
    result.sight->sniperPlaces = {3};
    result.sight->openSky = 0.25;
    MapManager map = court(6, 6, 6, nothing);
    for (int pose = 0; pose < 3; ++pose)
        result.arrivals.push_back(arrivalIn(map, 1, 1, 1, pose));
    const std::string report = reportOf(result, map);
    const std::string figures =
        "reach   5 standing places; 4 of 10 walkable cells (40 %)\n"
        "        largest area that nobody reaches: 6 cells, beginning at 1, 2, 3\n"
        "sight   1 of 6 views from spawn to spawn are free on appearing, 2 after landing\n"
        "        25 % of all shots are lost in the open sky\n";
    EXPECT_NE(report.find(figures), std::string::npos) << report;
    const nlohmann::json json = jsonOf(result, map);
    EXPECT_EQ(json["reach"]["standingPlaces"], 5);
    EXPECT_EQ(json["reach"]["walkableCells"], 10);
    EXPECT_EQ(json["reach"]["walkableReached"], 4);
    EXPECT_EQ(json["reach"]["ticks"], 77);
    EXPECT_EQ(json["reach"]["largestUnreachedArea"]["cells"], 6);
    EXPECT_EQ(json["reach"]["largestUnreachedArea"]["cell"]["depth"], 3);
    EXPECT_EQ(json["sight"]["seenOnAppearing"], nlohmann::json::parse("[[1, 2]]"));
    EXPECT_EQ(json["sight"]["seenAfterLanding"], nlohmann::json::parse("[[1, 2], [3, 1]]"));
    EXPECT_EQ(json["sight"]["sniperPlaces"], 1);
    EXPECT_EQ(json["sight"]["openSky"], 0.25);
    EXPECT_EQ(json["size"], (nlohmann::json{{"columns", 6}, {"rows", 6}, {"depth", 6}}));
}

TEST(CheckReport, FileNamesThatAreNoUtf8DoNotSpoilTheJson) {
    std::ostringstream out;
    writeJson(out, "\xff.plan", MapManager(), CheckResult());
    EXPECT_EQ(nlohmann::json::parse(out.str())["file"], "\xEF\xBF\xBD.plan");
}
