#include "Courts.h"
#include "Files.h"
#include "MapText.h"
#include "Png.h"
#include "TemporaryFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/wait.h>

// drench-map as makers use it: files in, files, words and an exit status out.

namespace {

class MapTool : public testing::Test {
  protected:
    std::string path(const std::string& name) { return folder.path + "/" + name; }

    std::string file(const std::string& name, const std::string& bytes) {
        return folder.write(name, bytes);
    }

    /// Runs `drench-map ARGUMENTS` in the shell and returns its exit status.
    int run(const std::string& arguments) {
        const std::string command = std::string(DRENCH_MAP) + " " + arguments + " >" + path("out") +
                                    " 2>" + path("err") + " </dev/null";
        const int status = std::system(command.c_str());
        out = arena::readFile(path("out"));
        err = arena::readFile(path("err"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    TemporaryFolder folder;
    std::string out;
    std::string err;
};

constexpr char smallPlan[] = "arena Small\n"
                             "size 2 1 2\n"
                             "legend\n"
                             ". 0 air\n"
                             "g 1 ground\n"
                             "\n"
                             "row 0\n"
                             "gg\n"
                             "g.\n";

constexpr char smallMap[] = "2 1 2\n 1 1 1 1\n 1 1 0 0\n";

} // namespace

TEST_F(MapTool, BuildsAPlanAndPlansWhatItBuilt) {
    EXPECT_EQ(run("build " + file("small.plan", smallPlan) + " -o " + path("mapdata")), 0) << err;
    EXPECT_EQ(arena::readFile(path("mapdata")), smallMap);
    EXPECT_EQ(run("plan " + path("mapdata") + " --name Small -o " + path("again.plan")), 0) << err;
    EXPECT_EQ(arena::readFile(path("again.plan")), smallPlan);
    EXPECT_EQ(out + err, "");
}

TEST_F(MapTool, PlanIsNamedAfterItsFileUnlessToldOtherwise) {
    EXPECT_EQ(run("plan " + file("court.mapdata", smallMap) + " -o " + path("a.plan")), 0) << err;
    EXPECT_EQ(arena::readFile(path("a.plan")).substr(0, 12), "arena court\n");
}

TEST_F(MapTool, ExportedArenaIsImportedAgain) {
    const std::string map = file("mapdata", smallMap);
    EXPECT_EQ(run("export " + map + " -o " + path("a.vox")), 0) << err;
    EXPECT_EQ(run("import " + path("a.vox") + " -o " + path("again")), 0) << err;
    EXPECT_EQ(arena::readFile(path("again")), smallMap);
    EXPECT_EQ(out, "") << "every colour was a material's";
}

TEST_F(MapTool, BrokenInputIsRefusedWithItsPlaceAndLeavesTheOutputAlone) {
    const std::string output = file("mapdata", "old");
    const std::string broken = file("broken.plan", "arena A\nsize 2 x 2\n");
    EXPECT_EQ(run("build " + broken + " -o " + output), 2);
    EXPECT_EQ(err.substr(0, broken.size() + 6), broken + ":2:8: ");
    EXPECT_EQ(arena::readFile(output), "old");

    const std::string numbers = file("numbers", "2 1 2\n 1 1 1 1\n 1 1 0\n");
    EXPECT_EQ(run("plan " + numbers + " -o " + output), 2);
    EXPECT_EQ(err.substr(0, numbers.size() + 1), numbers + ":");
    EXPECT_EQ(run("import " + numbers + " -o " + output), 2);
    EXPECT_EQ(err.substr(0, numbers.size() + 1), numbers + ":");
    EXPECT_EQ(arena::readFile(output), "old");
}

TEST_F(MapTool, VoxelFileCannotHoldEveryMap) {
    EXPECT_EQ(run("export " + file("mapdata", "1 1 1 2 1 ") + " -o " + path("a.vox")), 2);
    EXPECT_EQ(err.substr(0, path("mapdata").size() + 1), path("mapdata") + ":");
    EXPECT_EQ(access(path("a.vox").c_str(), F_OK), -1);
}

TEST_F(MapTool, CheckSaysByItsStatusWhetherAnArenaCanBePlayed) {
    EXPECT_EQ(run("check " + file("good", arenaText(32, 16, 32, solidInRing))), 0) << out;
    EXPECT_TRUE(out.ends_with("/good: can be played\n")) << out;

    const std::string bad = arenaText(32, 16, 32, [](int i, int j, int k) {
        return solidInRing(i, j, k) && !(i == 9 && k == 3);
    });
    EXPECT_EQ(run("check " + file("bad", bad)), 1);
    EXPECT_NE(out.find("/bad:1:"), std::string::npos) << out;
    EXPECT_NE(out.find(": error: players can leave the world here (cell 9, 0, 3)\n"),
              std::string::npos)
        << out;
    EXPECT_TRUE(out.ends_with("/bad: cannot be played\n")) << out;

    EXPECT_EQ(run("check " + path("missing")), 2);
    EXPECT_EQ(err, path("missing") + ": cannot be read (No such file or directory)\n");
    EXPECT_EQ(run("check " + file("empty", "")), 2);
    EXPECT_NE(out.find("/empty:1:1: error: "), std::string::npos) << out;
}

TEST_F(MapTool, CheckOfAPlanNamesItsLines) {
    std::string plan = "arena Holed\nsize 32 16 32\nlegend\n. 0 air\ng 1 ground\n";
    for (int j = 0; j < 16; ++j) {
        plan += "row " + std::to_string(j) + "\n";
        for (int k = 0; k < 32; ++k) {
            for (int i = 0; i < 32; ++i)
                plan += solidInRing(i, j, k) && !(i == 9 && k == 3) ? 'g' : '.';
            plan += '\n';
        }
    }
    EXPECT_EQ(run("check " + file("holed.plan", plan)), 1);
    EXPECT_NE(out.find("/holed.plan:10:10: error: players can leave the world here"),
              std::string::npos)
        << out;
}

TEST_F(MapTool, CheckWritesJsonForPrograms) {
    EXPECT_EQ(run("check --json " + file("good", arenaText(32, 16, 32, solidInRing))), 0);
    const nlohmann::json good = nlohmann::json::parse(out);
    EXPECT_EQ(good["playable"], true);
    EXPECT_EQ(good["size"]["columns"], 32);
    EXPECT_EQ(good["spawns"].size(), 8u);
    EXPECT_EQ(good["spawns"][0]["spawn"], 1);
    EXPECT_EQ(good["spawns"][0]["material"], "ground");
    EXPECT_EQ(good["reach"]["walkableReached"], good["reach"]["walkableCells"]);
    EXPECT_EQ(good["findings"].size(), 0u);

    EXPECT_EQ(run("check --json " + file("bad", "2 1 2 1 1\n1 1 1 1 0 0")), 1);
    const nlohmann::json bad = nlohmann::json::parse(out);
    EXPECT_EQ(bad["playable"], false);
    EXPECT_EQ(bad["findings"][0]["subject"], "text");
    EXPECT_EQ(bad["findings"][0]["severity"], "error");
    EXPECT_EQ(bad["findings"][0]["line"], 1);
    EXPECT_EQ(bad["findings"][0]["column"], 9);
    EXPECT_FALSE(bad.contains("reach"));
}

TEST_F(MapTool, PicturesHaveTheSizeAskedFor) {
    const std::string map = file("mapdata", arenaText(32, 16, 32, solidInRing));
    EXPECT_EQ(run("picture " + map + " --size 160x100 -o " + path("iso.png")), 0) << err;
    const arena::Image iso = decodePng(arena::readFile(path("iso.png")));
    EXPECT_EQ(iso.width, 160);
    EXPECT_EQ(iso.height, 100);
    EXPECT_EQ(run("picture " + map +
                  " --view eye --at 1000,300,250 --look 1000,300,0 --size 64x48 "
                  "-o " +
                  path("eye.png")),
              0)
        << err;
    EXPECT_EQ(decodePng(arena::readFile(path("eye.png"))).height, 48);
}

TEST_F(MapTool, WrongUseIsExplainedWithStatusTwo) {
    EXPECT_EQ(run(""), 2);
    EXPECT_EQ(run("check"), 2);
    EXPECT_NE(err.find("file"), std::string::npos) << err;
    EXPECT_EQ(run("picture a -o b --view sideways"), 2);
    EXPECT_EQ(run("picture " + file("a", smallMap) + " -o b.png --view eye"), 2);
    EXPECT_NE(err.find("--at"), std::string::npos) << err;
    EXPECT_EQ(run("picture " + file("a", smallMap) + " -o b.png --size 0x10"), 2);
    EXPECT_EQ(run("--help"), 0);
    EXPECT_NE(out.find("picture"), std::string::npos);
}
