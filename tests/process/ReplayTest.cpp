#include "arena/picture/Png.h"
#include "client/recording/RecordingBytes.h"
#include "client/recording/RecordingReader.h"
#include "common/Files.h"
#include "tests/process/ToolProcess.h"
#include "tests/support/Datagrams.h"
#include "tests/support/TemporaryFolder.h"

#include <cstring>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

using namespace drench;

// drench-replay as players and hosts use it, on a recorded match.

namespace {

using nlohmann::json;

const std::string match = std::string(DRENCH_TEST_DATA) + "/match.drench";

struct ReplayProcess : ToolProcess {
    explicit ReplayProcess(const std::string& arguments) : ToolProcess(DRENCH_REPLAY, arguments) {}
};

json reportOf(const std::string& arguments) {
    ReplayProcess replay(arguments);
    EXPECT_EQ(replay.status(), 0) << replay.err();
    EXPECT_EQ(replay.err(), "");
    return json::parse(replay.out());
}

} // namespace

TEST(Replay, SaysWhatARecordingIsOf) {
    const json info = reportOf("info --json " + match);
    EXPECT_EQ(info["players"], json({"Otter", "Misty", "Brook", "Walrus"}));
    EXPECT_EQ(info["lines"], 4);
    EXPECT_EQ(info["states"], 1221);
    EXPECT_EQ(info["program"], "drench-bots 0.1.0");
    EXPECT_EQ(info["arenaKnown"], true);
    EXPECT_NEAR(double(info["seconds"]), 20.0, 0.5);

    ReplayProcess table("info " + match);
    ASSERT_EQ(table.status(), 0);
    for (const char* words : {"players    Otter, Misty, Brook, Walrus\n",
                              "arena      32 x 16 x 32 cubes\n", "states     1221\n"})
        EXPECT_NE(table.out().find(words), std::string::npos) << table.out();
}

TEST(Replay, ListsSoakings) {
    const json soakings = reportOf("soakings --json " + match)["soakings"];
    ASSERT_EQ(soakings.size(), 3u);
    EXPECT_EQ(soakings[0]["shooter"], "Brook");
    EXPECT_EQ(soakings[0]["victim"], "Walrus");
    EXPECT_NEAR(double(soakings[0]["seconds"]), 4.727, 0.001);
    EXPECT_NEAR(double(soakings[0]["distance"]), 385.0, 1.0);

    ReplayProcess table("soakings " + match);
    ASSERT_EQ(table.status(), 0);
    EXPECT_TRUE(table.out().starts_with("when      who    soaked")) << table.out();
    EXPECT_NE(table.out().find("0:04.727  Brook  Walrus  14.7, 6.2, 13.5"), std::string::npos)
        << table.out();
}

TEST(Replay, DrawsHeatAndTracks) {
    const TemporaryFolder folder;
    for (const std::string kind : {"heat", "tracks"}) {
        const std::string path = folder.path + "/" + kind + ".png";
        ReplayProcess replay(kind + " --size 640x480 " + match + " -o " + path);
        ASSERT_EQ(replay.status(), 0) << replay.err();
        const arena::Image picture = arena::decodePng(readFile(path));
        EXPECT_EQ(picture.width, 640);
        EXPECT_EQ(picture.height, 480);
    }
    EXPECT_NE(readFile(folder.path + "/heat.png"), readFile(folder.path + "/tracks.png"));
}

TEST(Replay, CutPartsJoinToTheWhole) {
    const TemporaryFolder folder;
    const std::string first = folder.path + "/first";
    const std::string second = folder.path + "/second";
    const std::string whole = folder.path + "/whole";
    EXPECT_EQ(ReplayProcess("cut " + match + " 0 0:07.5 -o " + first).status(), 0);
    EXPECT_EQ(ReplayProcess("cut " + match + " 7.5 1:00:00 -o " + second).status(), 0);
    EXPECT_NEAR(double(reportOf("info --json " + first)["seconds"]), 7.5, 0.1);
    EXPECT_EQ(ReplayProcess("join " + second + " " + first + " -o " + whole).status(), 0);
    const json before = reportOf("info --json " + match);
    const json after = reportOf("info --json " + whole);
    for (const char* value : {"seconds", "states", "lines", "datagramsFromRoom", "datagramsToRoom",
                              "startedAtMicroseconds", "room"})
        EXPECT_EQ(before[value], after[value]) << value;
    EXPECT_EQ(ReplayProcess("verify " + second).status(), 0);
}

TEST(Replay, VerifiesAMatchAndFindsAnAlteredOne) {
    const json honest = reportOf("verify --json " + match);
    EXPECT_EQ(honest["impossibleSteps"], 0);
    EXPECT_GT(honest["steps"], 4000);

    client::RecordingReader reader = client::RecordingReader::open(match);
    client::RecordingBytes altered(reader.header());
    float shift = 0.0f;
    while (std::optional<client::RecordedDatagram> datagram = reader.next()) {
        UpdateMessage state;
        if (readState(datagram->bytes, state) && state.updates[0].id != 0) {
            shift += 0.2f;
            state.updates[0].position.y += shift;
            datagram->bytes = bytesOf(state);
        }
        altered.add(*datagram);
    }
    altered.end();
    const TemporaryFolder folder;
    ReplayProcess verify("verify " + folder.write("altered", altered.takeReady()));
    EXPECT_EQ(verify.status(), 1);
    EXPECT_NE(verify.out().find("1 (Otter) is "), std::string::npos) << verify.out();
}

TEST(Replay, ReadsWhatWasCutOffAndSaysSo) {
    const TemporaryFolder folder;
    const std::string bytes = readFile(match);
    const std::string path = folder.write("cut", bytes.substr(0, bytes.size() / 2));
    ReplayProcess info("info --json " + path);
    EXPECT_EQ(info.status(), 0);
    EXPECT_NEAR(double(json::parse(info.out())["seconds"]), 10.0, 3.0);
    EXPECT_TRUE(info.err().starts_with(path + ": byte ")) << info.err();
    EXPECT_NE(info.err().find(": cut off here, and read up to here\n"), std::string::npos);
}

TEST(Replay, WrongUseIsExplainedWithStatusTwo) {
    const TemporaryFolder folder;
    const std::string text = folder.write("text", "no recording");
    client::RecordingBytes bare({});
    bare.end();
    const std::string unknown = folder.write("bare", bare.takeReady());
    client::RecordingBytes torn({.arena = "2 2 2 1 1", .room = "", .program = ""});
    torn.end();
    const std::string partOfArena = folder.write("torn", torn.takeReady());
    const std::string flat = folder.write("flat", "3 0 3");
    const std::string out = folder.path + "/out";
    expectWrongUse(DRENCH_REPLAY,
                   {
                       {"", "A subcommand is required"},
                       {"info", "file is required"},
                       {"info " + text, "text: is no recording"},
                       {"info /none", "/none: cannot be read"},
                       {"verify " + unknown, "does not hold its arena; name its file with --arena"},
                       {"verify --arena " + text + " " + unknown, "text:1:1: "},
                       {"verify --arena " + flat + " " + unknown, "flat:"},
                       {"verify " + partOfArena, "torn: its arena:1:"},
                       {"heat " + match + " -o a.jpg", "a.jpg: a picture is written as PNG"},
                       {"heat " + match + " --size 10x10 -o a.png", "--size: sides are from 100"},
                       {"cut " + match + " 1 later -o " + out, "later: is no time such as"},
                       {"cut " + match + " -1 5 -o " + out, "-1"},
                       {"cut " + match + " 50 60 -o " + out, "there is nothing at these times"},
                       {"cut " + unknown + " 0 1 -o " + unknown, "bare: there is nothing"},
                       {"join " + match + " -o " + match, "match.drench: is the input"},
                       {"import " + text + " -o " + out, "text: "},
                       {"import --port 0 " + text + " -o " + out, "--port"},
                   });
}
