#include "arena/MapText.h"
#include "arena/Reach.h"
#include "arena/VoxFile.h"
#include "arena/picture/Picture.h"
#include "arena/picture/Png.h"
#include "common/Files.h"
#include "tests/process/ToolProcess.h"
#include "tests/support/Courts.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/wait.h>

using namespace drench;

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
        out = readFile(path("out"));
        err = readFile(path("err"));
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
    EXPECT_EQ(readFile(path("mapdata")), smallMap);
    EXPECT_EQ(run("plan " + path("mapdata") + " --name Small -o " + path("again.plan")), 0) << err;
    EXPECT_EQ(readFile(path("again.plan")), smallPlan);
    EXPECT_EQ(out + err, "");
}

TEST_F(MapTool, PlanIsNamedAfterItsFileUnlessToldOtherwise) {
    EXPECT_EQ(run("plan " + file("court.mapdata", smallMap) + " -o " + path("a.plan")), 0) << err;
    EXPECT_EQ(readFile(path("a.plan")).substr(0, 12), "arena court\n");
}

TEST_F(MapTool, ExportedArenaIsImportedAgain) {
    const std::string map = file("mapdata", smallMap);
    EXPECT_EQ(run("export " + map + " -o " + path("a.vox")), 0) << err;
    EXPECT_EQ(run("import " + path("a.vox") + " -o " + path("again")), 0) << err;
    EXPECT_EQ(readFile(path("again")), smallMap);
    EXPECT_EQ(out, "") << "every colour was a material's";
}

TEST_F(MapTool, BrokenInputIsRefusedWithItsPlaceAndLeavesTheOutputAlone) {
    const std::string output = file("mapdata", "old");
    const std::string broken = file("broken.plan", "arena A\nsize 2 x 2\n");
    EXPECT_EQ(run("build " + broken + " -o " + output), 2);
    EXPECT_EQ(err.substr(0, broken.size() + 6), broken + ":2:8: ");
    EXPECT_EQ(readFile(output), "old");

    const std::string numbers = file("numbers", "2 1 2\n 1 1 1 1\n 1 1 0\n");
    EXPECT_EQ(run("plan " + numbers + " -o " + output), 2);
    EXPECT_EQ(err.substr(0, numbers.size() + 1), numbers + ":");
    EXPECT_EQ(run("import " + numbers + " -o " + output), 2);
    EXPECT_EQ(err.substr(0, numbers.size() + 1), numbers + ":");
    EXPECT_EQ(readFile(output), "old");
}

TEST_F(MapTool, PlanOfAPlanKeepsItsName) {
    EXPECT_EQ(run("plan " + file("file-name.plan", smallPlan) + " -o " + path("b.plan")), 0) << err;
    EXPECT_EQ(readFile(path("b.plan")), smallPlan);
}

TEST_F(MapTool, NoResultReplacesItsOwnInput) {
    const std::string plan = file("small.plan", smallPlan);
    EXPECT_EQ(run("build " + plan + " -o " + plan), 2);
    EXPECT_EQ(err, plan + ": is the input; the result needs a file of its own\n");
    EXPECT_EQ(readFile(plan), smallPlan);
}

TEST_F(MapTool, LinesWrappedOnPurposeCanStillBeConverted) {
    EXPECT_EQ(run("plan " + file("wrapped", "2 1 2 1 1 1 1 1 1\n2 0 0") + " -o " + path("a")), 0)
        << err;
    EXPECT_NE(readFile(path("a")).find(" 12 "), std::string::npos) << "plaster";
}

TEST_F(MapTool, ImportTellsWhichColoursItReplacedApartFromTheMap) {
    arena::MapText text = arena::readMapText(smallMap);
    std::string vox = arena::writeVox(text.map);
    // The palette's first colour, ground's, becomes black.
    const std::size_t palette = vox.find("RGBA") + 12;
    vox.replace(palette, 3, std::string(3, '\0'));
    EXPECT_EQ(run("import " + file("a.vox", vox) + " -o /dev/stdout"), 0);
    EXPECT_EQ(err, "colour 000000 is no material's; cubes that are slate now: 3\n");
    EXPECT_EQ(out, "2 1 2\n 1 10 1 10\n 1 10 0 0\n");
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

    EXPECT_EQ(run("check --json " + path("missing")), 2);
    const nlohmann::json missing = nlohmann::json::parse(out);
    EXPECT_EQ(missing["findings"][0]["words"],
              path("missing") + ": cannot be read (No such file or directory)");
}

TEST_F(MapTool, CheckReadsVoxelFilesToo) {
    const std::string map = file("mapdata", arenaText(32, 16, 32, solidInRing));
    EXPECT_EQ(run("export " + map + " -o " + path("ring.vox")), 0) << err;
    EXPECT_EQ(run("check " + path("ring.vox")), 0) << out;
}

TEST_F(MapTool, ReportThatCannotBeWrittenIsAnError) {
    const std::string empty = file("empty", "");
    const std::string command = std::string(DRENCH_MAP) + " check " + empty + " >/dev/full 2>" +
                                path("err") + " </dev/null";
    const int status = std::system(command.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 2);
    EXPECT_EQ(readFile(path("err")), "the report cannot be written\n");
}

// A whole report of an arena in which much is wrong: the ring with spawn 1 inside a cube, nothing
// below spawn 2, and a hole.
TEST_F(MapTool, ReportIsCompleteAndInOrder) {
    const std::string map = file("bad", arenaText(32, 16, 32, [](int i, int j, int k) {
                                     if (i == 15 && j == 10 && k == 1)
                                         return true;
                                     return solidInRing(i, j, k) &&
                                            !(i >= 1 && i <= 2 && k >= 15 && k <= 16) &&
                                            !(i == 9 && k == 3);
                                 }));
    EXPECT_EQ(run("check " + map), 1);
    EXPECT_EQ(out, "size    32 columns, 16 rows, 32 depth\n"
                   "spawns  (cells are column, row, depth)\n"
                   "  1     not clear\n"
                   "  2     never lands\n"
                   "  3     falls 6.1 cubes onto ground at 16, 2, 29\n"
                   "  4     falls 6.1 cubes onto ground at 30, 2, 15\n"
                   "  5     falls 0.1 cubes onto ground at 2, 2, 4\n"
                   "  6     falls 0.1 cubes onto ground at 27, 2, 3\n"
                   "  7     falls 0.1 cubes onto ground at 27, 2, 27\n"
                   "  8     falls 0.1 cubes onto ground at 3, 2, 28\n"
                   "reach   183 standing places; 180 of 181 walkable cells (99 %)\n"
                   "        largest area that nobody reaches: 1 cell, beginning at 15, 11, 1\n"
                   "sight   0 of 56 views from spawn to spawn are free on appearing, 0 after "
                   "landing\n"
                   "        1 % of all shots are lost in the open sky\n" +
                       map +
                       ":1:32014: error: spawn 1 is not clear: its body touches ground (cell 15, "
                       "10, 1)\n" +
                       map +
                       ":1:2122: error: spawn 2 has nothing to land on: players fall out of the "
                       "world (cell 1, 0, 16)\n" +
                       map + ":1:2118: error: players can leave the world here (cell 1, 0, 15)\n" +
                       map + ":1:2122: error: players can leave the world here (cell 1, 0, 16)\n" +
                       map + ":1:4166: error: players can leave the world here (cell 2, 0, 15)\n" +
                       map + ": error: and 2 more like these\n" + map + ": cannot be played\n");
}

TEST_F(MapTool, PicturesHaveTheSizeAskedFor) {
    const std::string map = file("mapdata", arenaText(32, 16, 32, solidInRing));
    EXPECT_EQ(run("picture " + map + " --size 160x100 -o " + path("iso.png")), 0) << err;
    const arena::Image iso = arena::decodePng(readFile(path("iso.png")));
    EXPECT_EQ(iso.width, 160);
    EXPECT_EQ(iso.height, 100);
    EXPECT_EQ(run("picture " + map +
                  " --view eye --at 1000,300,250 --look 1000,300,0 --size 64x48 "
                  "-o " +
                  path("eye.png")),
              0)
        << err;
    EXPECT_EQ(arena::decodePng(readFile(path("eye.png"))).height, 48);
}

TEST_F(MapTool, PictureIsSeenFromTheCornerThatIsNamed) {
    const std::string map = file("mapdata", arenaText(32, 16, 32, [](int i, int j, int k) {
                                     return solidInRing(i, j, k) && j < 4 + i / 8 + k / 4;
                                 }));
    std::map<std::string, std::string> pictures;
    for (const std::string corner : {"south-east", "south-west", "north-west", "north-east"}) {
        EXPECT_EQ(run("picture " + map + " --size 64x48 --from " + corner + " -o " +
                      path(corner + ".png")),
                  0)
            << err;
        pictures[readFile(path(corner + ".png"))] = corner;
    }
    EXPECT_EQ(pictures.size(), 4u) << "all differ";
    EXPECT_EQ(run("picture " + map + " --size 64x48 -o " + path("usual.PNG")), 0) << err;
    EXPECT_EQ(pictures[readFile(path("usual.PNG"))], "south-east");
}

TEST_F(MapTool, PictureIsRefusedANameThatPromisesAnotherKind) {
    const std::string map = file("mapdata", smallMap);
    EXPECT_EQ(run("picture " + map + " --size 64x48 -o " + path("x.jpg")), 2);
    EXPECT_EQ(err, path("x.jpg") + ": a picture is written as PNG; let its name end in .png\n");
    EXPECT_EQ(access(path("x.jpg").c_str(), F_OK), -1);
    EXPECT_EQ(run("picture " + map + " --size 64x48 -o " + path("x")), 0) << err;
    EXPECT_EQ(arena::decodePng(readFile(path("x"))).width, 64);
}

TEST_F(MapTool, OptionsOfAnotherViewAreRefused) {
    const std::string picture = "picture " + file("mapdata", smallMap) + " -o x.png ";
    EXPECT_EQ(run(picture + "--view top --from south-east"), 2);
    EXPECT_NE(err.find("--from: is for --view iso"), std::string::npos) << err;
    EXPECT_EQ(run(picture + "--at 1,2,3"), 2);
    EXPECT_NE(err.find("--at and --look: are for --view eye"), std::string::npos) << err;
    EXPECT_EQ(run(picture + "--view top --look 1,2,3"), 2);
    EXPECT_EQ(run(picture + "--view eye --at 1,2,3"), 2);
    EXPECT_NE(err.find("--view eye: needs --at X,Y,Z and --look X,Y,Z"), std::string::npos) << err;
    EXPECT_EQ(run(picture + "--view eye --look 1,2,3"), 2);
}

TEST_F(MapTool, NumbersOfAnOptionAreAsManyAsItsFormHas) {
    const std::string picture = "picture " + file("mapdata", smallMap) + " -o x.png ";
    for (const std::string size : {"800", "800x", "x600", "800x600x3", "800,600", "8.5x9"}) {
        EXPECT_EQ(run(picture + "--size " + size), 2);
        EXPECT_NE(err.find("--size: " + size + " is not WxH in numbers"), std::string::npos) << err;
    }
    EXPECT_EQ(run(picture + "--view eye --look 1,2,3 --at 1,2"), 2);
    EXPECT_NE(err.find("--at: 1,2 is not X,Y,Z in numbers"), std::string::npos) << err;
    EXPECT_EQ(run("picture " + file("mapdata", smallMap) + " -o " + path("far.png") +
                  " --size 20x10 --view eye --at -300.5,90,64 --look 64,32,64"),
              0)
        << err;
    EXPECT_EQ(arena::decodePng(readFile(path("far.png"))).width, 20);
}

TEST_F(MapTool, PicturesAreOfTheArenaAndItsSpawns) {
    // Nothing is below spawn 2, and spawn 4 lies outside.
    const std::string text = arenaText(30, 16, 32, [](int i, int j, int k) {
        return solidInRing(i, j, k) && !(i >= 1 && i <= 2 && k >= 15 && k <= 16);
    });
    const std::string map = file("mapdata", text);
    MapManager loadedMap = loaded(text);
    const std::vector<arena::Arrival> arrivals = arena::arrivals(loadedMap);
    std::vector<arena::SpawnMark> marks;
    for (const arena::Arrival& arrival : arrivals) {
        const Player& player = arrival.pose == 1 ? arrival.spawned : arrival.landed;
        if (arrival.pose != 3)
            marks.push_back({arrival.pose + 1, player.box, player.direction});
    }
    const auto drawn = [&](const std::string& options) {
        EXPECT_EQ(run("picture " + map + " --size 160x100 -o " + path("x.png") + " " + options), 0)
            << err;
        return arena::decodePng(readFile(path("x.png")));
    };
    EXPECT_EQ(drawn(""),
              arena::isometricPicture(loadedMap, marks, arena::Corner::southEast, 160, 100));
    EXPECT_EQ(drawn("--from north-east"),
              arena::isometricPicture(loadedMap, marks, arena::Corner::northEast, 160, 100));
    EXPECT_EQ(drawn("--view eye --at 1000,280,250 --look 1010,270,0"),
              arena::eyePicture(loadedMap, marks, {1000, 280, 250}, {1010, 270, 0}, 160, 100));

    std::vector<arena::CellIndex> reached;
    for (const arena::StandingPlace& place :
         arena::explore(loadedMap, arrivals, arena::Pace::ordinary).places)
        reached.push_back(place.feet);
    EXPECT_EQ(
        drawn("--view top"),
        arena::topPicture(loadedMap, marks, arena::walkableCells(loadedMap), reached, 160, 100));
    // Of nothing but the sky, which is quickly drawn.
    EXPECT_EQ(run("picture " + map + " --view eye --at 0,9999,0 --look 0,99999,0 -o " +
                  path("large.png")),
              0)
        << err;
    EXPECT_EQ(arena::decodePng(readFile(path("large.png"))).width, 1600);
    EXPECT_EQ(arena::decodePng(readFile(path("large.png"))).height, 1000);
}

TEST_F(MapTool, NewPlanCanBeBuiltAndIsNamedAfterItsFile) {
    EXPECT_EQ(run("new -o " + path("mine.plan")), 0) << err;
    EXPECT_NE(readFile(path("mine.plan")).find("\narena mine\nsize 32 16 32\n"), std::string::npos);
    EXPECT_EQ(run("build " + path("mine.plan") + " -o " + path("mapdata")), 0) << err;
    EXPECT_EQ(readFile(path("mapdata")).substr(0, 9), "32 16 32\n");
    EXPECT_EQ(run("new --size 40x20x36 --name Yours -o " + path("yours.plan")), 0) << err;
    EXPECT_NE(readFile(path("yours.plan")).find("\narena Yours\nsize 40 20 36\n"),
              std::string::npos);
}

TEST_F(MapTool, NewPlanReplacesNothing) {
    const std::string old = file("mine.plan", "work of weeks");
    EXPECT_EQ(run("new -o " + old), 2);
    EXPECT_EQ(err, old + ": exists already, and may be somebody's work\n");
    EXPECT_EQ(readFile(old), "work of weeks");
    EXPECT_EQ(run("new -o " + file("empty.plan", "")), 0) << err;
    EXPECT_EQ(run("new --size 16x16x16 -o " + path("small.plan")), 2);
    EXPECT_EQ(access(path("small.plan").c_str(), F_OK), -1);
}

TEST_F(MapTool, WrongUseIsExplainedWithStatusTwo) {
    EXPECT_EQ(run(""), 2);
    EXPECT_EQ(run("check"), 2);
    EXPECT_NE(err.find("file"), std::string::npos) << err;
    EXPECT_EQ(run("picture a -o b --view sideways"), 2);
    EXPECT_EQ(run("picture " + file("a", smallMap) + " -o b.png --view eye"), 2);
    EXPECT_NE(err.find("--at"), std::string::npos) << err;
    EXPECT_EQ(run("picture " + file("a", smallMap) + " -o b.png --size 0x10"), 2);
    expectHelp(DRENCH_MAP, "--help", {"  picture                         Draws an arena"});
    expectHelp(DRENCH_MAP, "picture --help",
               {"  --size WxH=1600x1000            Width and height in pixels"});
    expectHelp(DRENCH_MAP, "new --help",
               {"  --size CxRxD=32x16x32           Columns, rows and depth in cubes"});
}
