#include "lag/TrafficReport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

using namespace drench;

using lag::Report;
using nlohmann::json;
using std::chrono::microseconds;
using std::chrono::milliseconds;

namespace {

Report someReport() {
    Report report;
    report.port = 5001;
    report.room = "localhost:5000";
    report.seconds = 20.04;
    report.seed = 7;
    report.clients = 2;
    report.upSettings.delay = milliseconds(80);
    report.upSettings.jitter = microseconds(2500);
    report.upSettings.loss = 0.02;
    report.upSettings.meanBurst = 4.0;
    report.up.in = 1000;
    report.up.out = 985;
    report.up.lost = 20;
    report.up.duplicated = 5;
    report.up.reordered = 3;
    for (int i = 1; i <= 100; ++i)
        report.up.delays.add(milliseconds(i));
    return report;
}

std::string table(const Report& report) {
    std::ostringstream out;
    writeTable(out, report);
    return out.str();
}

} // namespace

TEST(TrafficReport, TableHasALineForEachDirection) {
    EXPECT_EQ(
        table(someReport()),
        "2 clients to localhost:5000 for 20.0 s, seed 7\n"
        "             in        out       lost duplicated  reordered  delay p50  delay p99    "
        "longest\n"
        "up         1000        985         20          5          3       50.0       99.0      "
        "100.0\n"
        "down          0          0          0          0          0          -          -         "
        " "
        "-\n");
}

TEST(TrafficReport, TableTellsTheUnusualOnlyWhenItHappened) {
    Report report = someReport();
    report.clients = 1;
    report.waiting = 6;
    report.up.overflowed = 1;
    report.down.overflowed = 2;
    report.down.unsent = 4;
    report.refusals = 5;
    const std::string text = table(report);
    EXPECT_EQ(text.substr(0, 12), "1 client to ");
    EXPECT_TRUE(text.ends_with("\n"
                               "6 still on their way\n"
                               "3 thrown away, too much was waiting\n"
                               "4 not sent by the system\n"
                               "5 refused by the room's host: nobody listened there\n"))
        << text;
}

TEST(TrafficReport, OneUnusualEventIsEnoughForALine) {
    Report report = someReport();
    report.waiting = 1;
    EXPECT_TRUE(table(report).ends_with("\n1 still on their way\n")) << table(report);
}

TEST(TrafficReport, JsonHasEverything) {
    Report report = someReport();
    report.refusals = 5;
    report.waiting = 6;
    report.down.overflowed = 2;
    report.down.unsent = 4;
    std::ostringstream out;
    writeJson(out, report);
    const json read = json::parse(out.str());
    EXPECT_EQ(read["port"], 5001);
    EXPECT_EQ(read["room"], "localhost:5000");
    EXPECT_EQ(read["seconds"], 20.04);
    EXPECT_EQ(read["seed"], 7);
    EXPECT_EQ(read["clients"], 2);
    EXPECT_EQ(read["refusals"], 5);
    EXPECT_EQ(read["waiting"], 6);
    const json& up = read["up"];
    EXPECT_EQ(up["settings"],
              json::parse(R"({"delayMilliseconds": 80.0, "jitterMilliseconds": 2.5, "loss": 0.02,
                              "meanBurst": 4.0, "duplication": 0.0, "reordering": 0.0,
                              "heldBackMilliseconds": 50.0})"));
    EXPECT_EQ(up["in"], 1000);
    EXPECT_EQ(up["out"], 985);
    EXPECT_EQ(up["lost"], 20);
    EXPECT_EQ(up["duplicated"], 5);
    EXPECT_EQ(up["reordered"], 3);
    EXPECT_EQ(up["delayMilliseconds"], json::parse(R"({"p50": 50.0, "p99": 99.0, "max": 100.0})"));
    EXPECT_EQ(read["down"]["overflowed"], 2);
    EXPECT_EQ(read["down"]["unsent"], 4);
    EXPECT_TRUE(read["down"]["settings"]["meanBurst"].is_null());
}
