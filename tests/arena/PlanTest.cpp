#include "arena/Plan.h"
#include "arena/Map.h"
#include "arena/MapText.h"
#include "common/Files.h"
#include "src/FileLoader.h"
#include "tests/support/Arenas.h"
#include "tests/support/Courts.h"

#include <climits>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <set>

using namespace drench;

using arena::Plan;
using arena::readPlan;
using arena::writePlan;

namespace {

const std::string good = "arena Small\n"
                         "size 2 1 2\n"
                         "legend\n"
                         ". 0 air\n"
                         "g 1 ground\n"
                         "row 0\n"
                         "gg\n"
                         "g.\n";

/// The good plan with this line, counted from 1, replaced; by nothing if `lines` is empty.
std::string withLine(int number, const std::string& lines) {
    std::istringstream all(good);
    std::string text;
    std::string line;
    for (int k = 1; std::getline(all, line); ++k) {
        if (k != number)
            text += line + "\n";
        else if (!lines.empty())
            text += lines + "\n";
    }
    return text;
}

std::string errorOf(const std::string& text) {
    try {
        readPlan(text, "p");
    } catch (const InputError& error) {
        return error.what();
    }
    return "no error";
}

std::string writeError(const Plan& plan) {
    try {
        writePlan(plan);
    } catch (const InputError& error) {
        return error.what();
    }
    return "no error";
}

MapManager cellsOf(const std::string& text) {
    return readPlan(text, "p").map;
}

/// A column of cells with these pairs.
MapManager column(const std::vector<std::pair<int, int>>& pairs) {
    MapManager map = arena::emptyMap(1, int(pairs.size()), 1);
    for (int j = 0; j < map.rows; ++j) {
        Box& cube = arena::cell(map, 0, j, 0);
        cube.solid = pairs[size_t(j)].first;
        cube.cellValue = pairs[size_t(j)].second;
    }
    return map;
}

/// Cells with `solid` 1 and the cellValues 1 to `count`.
MapManager distinctSolids(int count) {
    std::vector<std::pair<int, int>> pairs;
    for (int value = 1; value <= count; ++value)
        pairs.emplace_back(1, value);
    return column(pairs);
}

const std::string material = "\"<character> <value> <name>\"";
const std::string materialOrRow = " where " + material + " or \"row 0\" is allowed";
const std::string sizeRule = " where \"size <columns> <rows> <depth>\" is allowed, each 1 or more";
const std::string rowRule = " where \"row <j>\" or \"row <first>-<last>\" is allowed";
const std::string valueRule = " where <cellValue> or <solid>:<cellValue> is allowed";
const std::string nameRule = " where \"arena <name>\" is allowed";

int draw(std::mt19937& random, int count) {
    return static_cast<int>(random() % static_cast<unsigned>(count));
}

/// With rows that are often alike, and cells of all kinds of pairs.
MapManager drawMap(std::mt19937& random) {
    constexpr int solids[] = {0, 0, 1, 1, 1, 1, 2, -1, INT_MAX};
    constexpr int values[] = {0, 0, 1, 2, 7, 12, 13, 40, -5, INT_MAX, INT_MIN};
    const int columns = 1 + draw(random, 5);
    const int rows = 1 + draw(random, 6);
    const int depth = 1 + draw(random, 4);
    MapManager map = arena::emptyMap(columns, rows, depth);
    const int variety = 1 + draw(random, int(std::size(values)));
    for (int j = 0; j < map.rows; ++j) {
        const bool asBelow = j > 0 && draw(random, 2) == 0;
        for (int i = 0; i < map.columns; ++i) {
            for (int k = 0; k < map.depth; ++k) {
                Box& cube = arena::cell(map, i, j, k);
                cube.solid = solids[draw(random, int(std::size(solids)))];
                cube.cellValue = values[draw(random, variety)];
                if (asBelow)
                    cube = arena::cell(map, i, j - 1, k);
            }
        }
    }
    return map;
}

} // namespace

TEST(Plan, GivesNameAndCells) {
    const Plan plan = readPlan(good, "p");
    EXPECT_EQ(plan.name, "Small");
    EXPECT_TRUE(sameCells(plan.map, loaded("2 1 2 1 1 1 1 1 1 0 0")));
    EXPECT_EQ(arena::writeMapText(plan.map), "2 1 2\n 1 1 1 1\n 1 1 0 0\n");
}

TEST(Plan, GridHasColumnsToTheRightAndDepthDownward) {
    const MapManager map = cellsOf("arena A\nsize 3 2 2\nlegend\n. 0 air\na 1 a\nb 2 b\n"
                                   "row 0\n..a\n...\nrow 1\n...\n.b.\n");
    EXPECT_EQ(map.cubes[2][0][0].cellValue, 1);
    EXPECT_EQ(map.cubes[1][1][1].cellValue, 2);
    EXPECT_TRUE(sameCells(map, loaded("3 2 2 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1 2 1 1 0 0 0 0 0 0")));
}

TEST(Plan, OneGridMayStandForManyRows) {
    const MapManager map = cellsOf("arena A\nsize 1 5 1\nlegend\n. 0 air\ng 1 ground\n"
                                   "row 0\ng\nrow 1-3\n.\nrow 4-4\ng\n");
    EXPECT_TRUE(sameCells(map, loaded("1 5 1 1 1 0 0 0 0 0 0 1 1")));
}

TEST(Plan, ValueIsACellValueThatIsSolidUnlessAirOrAPair) {
    const MapManager map =
        cellsOf("arena A\nsize 8 1 1\nlegend\n. 0 air\na 1 a\nb 2147483647 b\nc -5 c\nd 2:-5 d\n"
                "e 0:5 e\nf 1:0 f\ng 1:7 g\nrow 0\n.abcdefg\n");
    EXPECT_TRUE(sameCells(map, loaded("8 1 1 0 0 1 1 1 2147483647 1 -5 2 -5 0 5 1 0 1 7")));
}

TEST(Plan, AirMayBeWrittenAsAPairOrBeLeftOut) {
    EXPECT_TRUE(sameCells(cellsOf(withLine(4, ". 0:0 air")), cellsOf(good)));
    EXPECT_TRUE(sameCells(cellsOf("arena A\nsize 1 1 1\nlegend\na 3 wood\nrow 0\na\n"),
                          loaded("1 1 1 1 3")));
}

TEST(Plan, NameIsTheRestOfTheLine) {
    EXPECT_EQ(readPlan(withLine(1, " arena \t The  \"Dry\" Fountain #2 \t"), "p").name,
              "The  \"Dry\" Fountain #2");
    EXPECT_EQ(readPlan(withLine(1, "arena Zu den f\xC3\xBCnf B\xC3\xA4umen"), "p").name,
              "Zu den f\xC3\xBCnf B\xC3\xA4umen");
}

TEST(Plan, CommentsAndEmptyLinesMayStandBetweenGrids) {
    const std::string text = "# one\n\narena Small\n \t\n#\nsize 2 1 2\n# two\nlegend\n\n. 0 air\n"
                             "# 5 hash\n\ng 1 ground\n#three\nrow 0\ngg\ng.\n\n# four\n\n";
    EXPECT_TRUE(sameCells(cellsOf(text), cellsOf(good)));
}

TEST(Plan, AcceptsWhatOtherEditorsWrite) {
    std::string text;
    for (const char c : good)
        text += c == '\n' ? "\r\n" : std::string(1, c);
    const Plan plan = readPlan("\xEF\xBB\xBF" + text, "p");
    EXPECT_EQ(plan.name, "Small");
    EXPECT_TRUE(sameCells(plan.map, cellsOf(good)));
    EXPECT_TRUE(sameCells(cellsOf(good.substr(0, good.size() - 1)), cellsOf(good)))
        << "no line end at the end";
    EXPECT_EQ(errorOf("\xEF\xBB\xBFx"), "p:1:1: \"x\"" + nameRule);
}

TEST(Plan, EveryVisibleCharacterButTheCommentsMayBeInTheLegend) {
    std::string legend;
    std::string grid;
    for (char c = '!'; c <= '~'; ++c) {
        if (c == '#')
            continue;
        grid += c;
        legend += std::string(1, c) + " " + std::to_string(grid.size()) + " some\n";
    }
    const MapManager map = cellsOf("arena A\nsize 93 1 1\nlegend\n" + legend + "row 0\n" + grid);
    for (int i = 0; i < 93; ++i)
        EXPECT_EQ(map.cubes[size_t(i)][0][0].cellValue, i + 1);
}

TEST(PlanErrors, NameTheFile) {
    try {
        readPlan("x", "some folder/my.plan");
        FAIL();
    } catch (const InputError& error) {
        EXPECT_EQ(std::string(error.what()), "some folder/my.plan:1:1: \"x\"" + nameRule);
    }
}

TEST(PlanErrors, LinesBeforeTheLegendHaveTheirOrder) {
    EXPECT_EQ(errorOf(withLine(1, "arean Small")), "p:1:1: \"arean\"" + nameRule);
    EXPECT_EQ(errorOf(withLine(1, "  arena")), "p:1:8: the end of the line" + nameRule);
    EXPECT_EQ(errorOf(withLine(1, "")), "p:1:1: \"size\"" + nameRule);
    EXPECT_EQ(errorOf(withLine(2, "")), "p:2:1: \"legend\"" + sizeRule);
    EXPECT_EQ(errorOf(withLine(3, "")), "p:3:1: \".\" where \"legend\" is allowed");
    EXPECT_EQ(errorOf(withLine(3, "legend of")),
              "p:3:8: \"of\" behind \"legend\"; nothing is allowed there");
    EXPECT_EQ(errorOf(""), "p:1:1: the end where \"arena\" is allowed");
    EXPECT_EQ(errorOf("# all\n# of it\n\n"), "p:3:1: the end where \"arena\" is allowed");
    EXPECT_EQ(errorOf("arena Small"), "p:1:12: the end where \"size\" is allowed");
    EXPECT_EQ(errorOf("arena Small\nsize 2 1 2\r\n"),
              "p:2:11: the end where \"legend\" is allowed");
    EXPECT_EQ(errorOf("arena Small\nsize 2 1 2\nlegend\n"),
              "p:3:7: the end where " + material + " is allowed; rows 0 to 0 must stand");
}

TEST(PlanErrors, NameHasNoControlCharacters) {
    EXPECT_EQ(errorOf(withLine(1, "arena Sm\tall")), "p:1:9: a control character" + nameRule);
    EXPECT_EQ(errorOf(withLine(1, "arena \x1b[1mSmall")), "p:1:7: a control character" + nameRule);
    EXPECT_EQ(errorOf(withLine(1, "arena Small\x7f")), "p:1:12: a control character" + nameRule);
    EXPECT_EQ(errorOf("arena Small\rsize 2 1 2\rlegend\r"),
              "p:1:12: a control character" + nameRule)
        << "lines that end in carriage returns alone";
}

TEST(PlanErrors, SizeIsThreeNumbersOfAnArena) {
    EXPECT_EQ(errorOf(withLine(2, "size 2 x 2")), "p:2:8: \"x\"" + sizeRule);
    EXPECT_EQ(errorOf(withLine(2, "size 0 1 2")), "p:2:6: \"0\"" + sizeRule);
    EXPECT_EQ(errorOf(withLine(2, "size 2 1 -2")), "p:2:10: \"-2\"" + sizeRule);
    EXPECT_EQ(errorOf(withLine(2, "size 02 1 2")), "p:2:6: \"02\"" + sizeRule);
    EXPECT_EQ(errorOf(withLine(2, "size 2 99999999999 2")), "p:2:8: \"99999999999\"" + sizeRule);
    EXPECT_EQ(errorOf(withLine(2, "size 2 1")), "p:2:9: the end of the line" + sizeRule);
    EXPECT_EQ(errorOf(withLine(2, "size 2 1 2 2")), "p:2:12: \"2\"" + sizeRule);
    EXPECT_EQ(errorOf(withLine(2, "size 256 32 257")),
              "p:2:6: 256 x 32 x 257 cells; at most 2097152 are allowed");
    EXPECT_EQ(errorOf(withLine(2, "size  2147483647 2147483647 2147483647")),
              "p:2:7: 2147483647 x 2147483647 x 2147483647 cells; at most 2097152 are allowed");
}

TEST(PlanErrors, LegendGivesEachCharacterAndEachValueOnce) {
    EXPECT_EQ(errorOf(withLine(5, "g 0 ground")),
              "p:5:3: \"0\", which is air already; each value is allowed once");
    EXPECT_EQ(errorOf(withLine(5, "g 1 ground\nh 1:1 stone")),
              "p:6:3: \"1:1\", which is ground already; each value is allowed once");
    EXPECT_EQ(errorOf(withLine(5, "g 2:-1 odd\nh 2:-1 odd")),
              "p:6:3: \"2:-1\", which is odd already; each value is allowed once");
    EXPECT_EQ(errorOf(withLine(5, "g 1 ground\n g 2 stone")),
              "p:6:2: \"g\" a second time; each character is allowed once");
}

TEST(PlanErrors, AirIsNothingElseAndNothingElseIsAir) {
    EXPECT_EQ(errorOf(withLine(4, ". 0 void")),
              "p:4:5: \"void\" with value 0; air has 0, and nothing else has");
    EXPECT_EQ(errorOf(withLine(4, ". 0:0 void")),
              "p:4:7: \"void\" with value 0:0; air has 0, and nothing else has");
    EXPECT_EQ(errorOf(withLine(5, "g 1 air")),
              "p:5:5: \"air\" with value 1; air has 0, and nothing else has");
    EXPECT_EQ(errorOf(withLine(5, "g 1:0 air")),
              "p:5:7: \"air\" with value 1:0; air has 0, and nothing else has");
}

TEST(PlanErrors, MaterialIsACharacterAValueAndAName) {
    EXPECT_EQ(errorOf(withLine(5, "gr 1 ground")), "p:5:1: \"gr\"" + materialOrRow);
    EXPECT_EQ(errorOf(withLine(5, "\xFC 1 ground")), "p:5:1: \"?\"" + materialOrRow);
    EXPECT_EQ(errorOf(withLine(5, " # 1 ground")), "p:5:2: \"#\"" + materialOrRow);
    EXPECT_EQ(errorOf(withLine(5, "g")), "p:5:2: the end of the line" + materialOrRow);
    EXPECT_EQ(errorOf(withLine(5, "g 1")), "p:5:4: the end of the line" + materialOrRow);
    EXPECT_EQ(errorOf(withLine(5, "g 1 wet ground")), "p:5:9: \"ground\"" + materialOrRow);
    EXPECT_EQ(errorOf("arena A\nsize 1 1 1\nlegend\nrow 0\n.\n"),
              "p:4:1: \"row\" where " + material + " is allowed");
    for (const char* value : {"x", "01", "+1", "-0", "1x", "1.5", "2147483648", ":", "1:", ":1",
                              "1:2:3", "1:x", "x:1", "01:1", "1:2147483648"})
        EXPECT_EQ(errorOf(withLine(5, std::string("g  ") + value + " ground")),
                  std::string("p:5:4: \"") + value + "\"" + valueRule);
}

TEST(PlanErrors, HeadingsStandOnce) {
    EXPECT_EQ(errorOf(withLine(2, "arena Small")), "p:2:1: \"arena\"" + sizeRule);
    EXPECT_EQ(errorOf(withLine(3, "size 2 1 2")), "p:3:1: \"size\" where \"legend\" is allowed");
    EXPECT_EQ(errorOf(withLine(5, "arena Small")), "p:5:1: \"arena\"" + materialOrRow);
    EXPECT_EQ(errorOf(withLine(5, "size 2 1 2")), "p:5:1: \"size\"" + materialOrRow);
    EXPECT_EQ(errorOf(withLine(5, "legend")), "p:5:1: \"legend\"" + materialOrRow);
    EXPECT_EQ(errorOf(good + "arena Small"),
              "p:9:1: \"arena\" where nothing but comments is allowed; rows 0 to 0 stand already");
    EXPECT_EQ(errorOf("arena A\nsize 1 2 1\nlegend\n. 0 air\nrow 0\n.\n\nsize 1 2 1\n"),
              "p:8:1: \"size\" where \"row 1\" is allowed");
}

TEST(PlanErrors, EveryRowStandsOnceAndInOrder) {
    EXPECT_EQ(errorOf(withLine(6, "row 1")), "p:6:5: \"1\" where row 0 is the next allowed");
    EXPECT_EQ(errorOf(withLine(6, "row 0-1")), "p:6:5: \"0-1\" where rows from 0 to 0 are allowed");
    EXPECT_EQ(errorOf(good + "row 1\n"),
              "p:9:1: \"row\" where nothing but comments is allowed; rows 0 to 0 stand already");
    EXPECT_EQ(errorOf("arena Small\nsize 2 1 2\nlegend\n. 0 air\ng 1 ground\n"),
              "p:5:11: the end where " + material +
                  " or \"row 0\" is allowed; rows 0 to 0 must stand");

    const std::string head = "arena A\nsize 1 4 1\nlegend\n. 0 air\nrow 0-1\n.\n";
    EXPECT_EQ(errorOf(head), "p:6:2: the end where \"row 2\" is allowed; rows 0 to 3 must stand");
    EXPECT_EQ(errorOf(head + "row 1\n.\n"), "p:7:5: \"1\" where row 2 is the next allowed");
    EXPECT_EQ(errorOf(head + "row 3\n.\n"), "p:7:5: \"3\" where row 2 is the next allowed");
    EXPECT_EQ(errorOf(head + "row 2-1\n.\n"), "p:7:5: \"2-1\" where rows from 2 to 3 are allowed");
    EXPECT_EQ(errorOf(head + "row 2-4\n.\n"), "p:7:5: \"2-4\" where rows from 2 to 3 are allowed");
    EXPECT_EQ(errorOf(head + "g 1 ground\n"), "p:7:1: \"g\" where \"row 2\" is allowed");
}

TEST(PlanErrors, RowsAreGivenAsANumberOrARange) {
    EXPECT_EQ(errorOf(withLine(6, "row")), "p:6:4: the end of the line" + rowRule);
    EXPECT_EQ(errorOf(withLine(6, "row 0 - 1")), "p:6:7: \"-\"" + rowRule);
    for (const char* range : {"x", "-", "0-", "-0", "00", "0-x", "0-0-0", "0-00"})
        EXPECT_EQ(errorOf(withLine(6, std::string("row ") + range)),
                  std::string("p:6:5: \"") + range + "\"" + rowRule);
}

TEST(PlanErrors, GridHoldsCharactersOfTheLegend) {
    EXPECT_EQ(errorOf(withLine(7, "g?")),
              "p:7:2: \"?\" in column 1 of row 0; the legend allows . g");
    EXPECT_EQ(errorOf(withLine(7, "g#")),
              "p:7:2: \"#\" in column 1 of row 0; the legend allows . g");
    EXPECT_EQ(errorOf(withLine(8, " gg")),
              "p:8:1: a blank in column 0 of row 0; the legend allows . g");
    EXPECT_EQ(errorOf(withLine(7, "gg ")),
              "p:7:3: a blank in column 2 of row 0; the legend allows . g");
    EXPECT_EQ(errorOf(withLine(7, "g\xC3\xBC")),
              "p:7:2: no visible ASCII character in column 1 of row 0; the legend allows . g");
    EXPECT_EQ(errorOf(withLine(7, "g\t")),
              "p:7:2: no visible ASCII character in column 1 of row 0; the legend allows . g");
}

TEST(PlanErrors, GridHasItsColumnsAndLines) {
    const std::string inside = " inside row 0; its 2 lines are allowed there, and ";
    EXPECT_EQ(errorOf(withLine(7, "ggg")),
              "p:7:3: 3 characters in depth index 0 of row 0; 2 are allowed");
    EXPECT_EQ(errorOf(withLine(8, "g")),
              "p:8:2: 1 characters in depth index 1 of row 0; 2 are allowed");
    EXPECT_EQ(errorOf(withLine(8, "")), "p:7:3: the end" + inside + "1 stand so far");
    EXPECT_EQ(errorOf(withLine(8, "\ng.")), "p:8:1: an empty line" + inside + "1 stand so far");
    EXPECT_EQ(errorOf(withLine(7, "# a comment")),
              "p:7:1: \"# a comment\"" + inside + "0 stand so far");
    EXPECT_EQ(errorOf(withLine(8, "row 1")), "p:8:1: \"row 1\"" + inside + "1 stand so far");
    EXPECT_EQ(errorOf(good + "g.\n"),
              "p:9:1: \"g.\" where nothing but comments is allowed; rows 0 to 0 stand already");
    EXPECT_EQ(errorOf("arena A\nsize 2 3 1\nlegend\n. 0 air\nrow 0-2\n.\n"),
              "p:6:2: 1 characters in depth index 0 of row 0-2; 2 are allowed");
}

TEST(PlanErrors, BinaryBytesAreShownAsQuestionMarks) {
    EXPECT_EQ(errorOf(std::string("\0\x89PNG \n\x1a", 8)), "p:1:1: \"??PNG\"" + nameRule);
}

TEST(PlanMarks, AreAirThatIsShownByACharacterOfItsOwn) {
    const Plan plan = readPlan("arena A\nsize 3 1 1\nlegend\n1 0 spawn-1\n. 0 air\n2 0:0 spawn-b\n"
                               "g 1 ground\nrow 0\n1.2\n",
                               "p");
    EXPECT_TRUE(sameCells(plan.map, loaded("3 1 1 0 0 0 0 0 0")));
    EXPECT_EQ(plan.placeOf({2, 0, 0}), (arena::TextPlace{9, 3}));
}

TEST(PlanMarks, StandForAirOnlyAndAreNamedAfterSpawns) {
    const auto errorWith = [](const std::string& line) {
        return errorOf(withLine(5, line + "\ng 1 ground"));
    };
    EXPECT_EQ(errorWith("1 0 spawn-1"), "no error");
    EXPECT_EQ(errorWith("1 2 spawn-1"),
              "p:5:5: \"spawn-1\" with value 2; a mark of where players appear has 0");
    EXPECT_EQ(errorWith("1 0 spawn"), "p:5:3: \"0\", which is air already; each value is allowed "
                                      "once");
    EXPECT_EQ(errorWith("1 0 spawn-1\n1 0 spawn-2"),
              "p:6:1: \"1\" a second time; each character is allowed once");
    EXPECT_EQ(errorWith("1 0 spawn-1\n2 0 air"),
              "p:6:3: \"0\", which is air already; each value is allowed once");
}

TEST(PlanMarks, AreWrittenOverCellsOfAir) {
    const std::string text = writePlan(
        {"A", loaded("2 3 2 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1 1 0 0 0 0")},
        std::vector<arena::PlanMark>{{'1', "spawn-1", {{0, 1, 1}}}, {'2', "spawn-2", {{1, 0, 0}}}});
    EXPECT_EQ(text, "arena A\nsize 2 3 2\nlegend\n. 0 air\n1 0 spawn-1\n2 0 spawn-2\n"
                    "g 1 ground\n\nrow 0\n.2\n..\n\nrow 1\n..\n1g\n\nrow 2\n..\n..\n");
}

TEST(PlanText, InSixteenBitCharactersIsNamed) {
    EXPECT_EQ(errorOf(std::string("\xFF\xFE"
                                  "a\0r\0",
                                  6)),
              "p:1:1: UTF-16, to be saved as plain ASCII or UTF-8, where \"arena <name>\" is "
              "allowed");
}

TEST(PlanWriting, ListsAirThenTheKindsUsedAndMergesRowsAlike) {
    const MapManager map = loaded("2 4 1  1 2 0 0 0 0 1 12  1 2 1 40 1 40 1 1");
    EXPECT_EQ(writePlan({"Two words", map}), "arena Two words\n"
                                             "size 2 4 1\n"
                                             "legend\n"
                                             ". 0 air\n"
                                             "g 1 ground\n"
                                             "s 2 stone\n"
                                             "p 12 plaster\n"
                                             "A 40 material-40\n"
                                             "\n"
                                             "row 0\n"
                                             "ss\n"
                                             "\n"
                                             "row 1-2\n"
                                             ".A\n"
                                             "\n"
                                             "row 3\n"
                                             "pg\n");
}

TEST(PlanWriting, AirIsListedEvenIfThereIsNone) {
    EXPECT_EQ(writePlan({"Full", loaded("1 1 1 1 1")}),
              "arena Full\nsize 1 1 1\nlegend\n. 0 air\ng 1 ground\n\nrow 0\ng\n");
}

TEST(PlanWriting, WritesUnusualCellsAsPairs) {
    const MapManager map =
        column({{2, -5}, {1, -5}, {0, 2}, {1, 0}, {-1, 1}, {1, 2147483647}, {0, 0}});
    EXPECT_EQ(writePlan({"Odd", map}), "arena Odd\n"
                                       "size 1 7 1\n"
                                       "legend\n"
                                       ". 0 air\n"
                                       "A -1:1 solid-ground\n"
                                       "B 0:2 passable-stone\n"
                                       "C -5 material--5\n"
                                       "D 1:0 solid-air\n"
                                       "E 2147483647 material-2147483647\n"
                                       "F 2:-5 solid-material--5\n"
                                       "\nrow 0\nF\n\nrow 1\nC\n\nrow 2\nB\n\nrow 3\nD\n"
                                       "\nrow 4\nA\n\nrow 5\nE\n\nrow 6\n.\n");
}

TEST(PlanWriting, MergesOnlyRowsThatFollowEachOther) {
    const std::string text = writePlan({"A", column({{0, 0}, {1, 1}, {0, 0}, {0, 0}})});
    EXPECT_TRUE(text.ends_with("\nrow 0\n.\n\nrow 1\ng\n\nrow 2-3\n.\n")) << text;
}

TEST(PlanWriting, HasCharactersForNinetyThreeKindsWithAir) {
    const MapManager most = distinctSolids(92);
    const std::string text = writePlan({"Most", most});
    EXPECT_TRUE(sameCells(cellsOf(text), most));
    EXPECT_EQ(writePlan(readPlan(text, "p")), text);
    EXPECT_EQ(writeError({"More", distinctSolids(93)}),
              "cells of 94 kinds, air included; a plan has characters for 93");
    EXPECT_EQ(writeError({"Many", distinctSolids(5000)}),
              "cells of 5001 kinds, air included; a plan has characters for 93");
}

TEST(PlanWriting, MaterialsKeepTheirCharactersAmongAnyOthers) {
    std::vector<std::pair<int, int>> pairs;
    for (int solid = -90; solid <= 0; ++solid)
        pairs.emplace_back(solid, 1);
    pairs.emplace_back(1, 6);
    const std::string text = writePlan({"Crowd", column(pairs)});
    EXPECT_NE(text.find("\n. 0 air\n"), std::string::npos);
    EXPECT_NE(text.find("\n~ 6 water\n"), std::string::npos);
    EXPECT_TRUE(sameCells(cellsOf(text), column(pairs)));
}

TEST(PlanWriting, RefusesANameThatDoesNotReadBack) {
    const std::string rule =
        " as the arena's name; a name is not empty and has neither blanks at its ends nor control "
        "characters";
    const MapManager map = loaded("1 1 1 1 1");
    EXPECT_EQ(writeError({"", map}), "\"\"" + rule);
    EXPECT_EQ(writeError({"two\nlines", map}), "\"two?lines\"" + rule);
    for (const char* name : {" a", "a ", "a\t", "\ta", "a\tb", "a\r", "\x7f"})
        EXPECT_NE(writeError({name, map}), "no error") << name;
    EXPECT_NE(writeError({std::string("a\0b", 3), map}), "no error");
    for (const char* name : {"a", "#1", "a  b", "\xC3\xA4", "row 0"}) {
        const std::string text = writePlan({name, map});
        EXPECT_EQ(readPlan(text, "p").name, name);
    }
}

TEST(PlanWriting, RefusesAMapThatIsNoArenasSize) {
    EXPECT_EQ(writeError({"None", MapManager()}),
              "a map of 0 x 0 x 0 cells; 1 to 2097152 are allowed");
}

TEST(PlanRoundTrip, GivesBackNameAndCells) {
    std::mt19937 random(30);
    size_t mostKinds = 0;
    for (int i = 0; i < 300; ++i) {
        const Plan plan{"Arena " + std::to_string(i), drawMap(random)};
        const std::string text = writePlan(plan);
        const Plan back = readPlan(text, "p");
        ASSERT_EQ(back.name, plan.name);
        ASSERT_TRUE(sameCells(back.map, plan.map)) << text;
        ASSERT_EQ(writePlan(back), text);
        std::set<std::pair<int, int>> kinds;
        for (const auto& column : plan.map.cubes)
            for (const auto& row : column)
                for (const Box& cube : row)
                    kinds.emplace(cube.solid, cube.cellValue);
        mostKinds = std::max(mostKinds, kinds.size());
    }
    EXPECT_GT(mostKinds, 20u);
}

TEST(PlanRoundTrip, SpoiledPlanIsRefusedWithAPlaceOrIsAnotherPlan) {
    std::mt19937 random(31);
    constexpr char alphabet[] = "0123 \n\n\r\t-:.gs#w\0\xC3";
    int refused = 0;
    for (int i = 0; i < 600; ++i) {
        std::string text = writePlan({"Spoiled", drawMap(random)});
        const auto at = static_cast<size_t>(draw(random, int(text.size())));
        if (draw(random, 2) == 0)
            text.erase(at, 1);
        else
            text.insert(at, 1, alphabet[draw(random, int(sizeof alphabet) - 1)]);
        SCOPED_TRACE(testing::PrintToString(text));
        try {
            const Plan plan = readPlan(text, "p");
            const Plan back = readPlan(writePlan(plan), "p");
            ASSERT_EQ(back.name, plan.name);
            ASSERT_TRUE(sameCells(back.map, plan.map));
        } catch (const InputError& error) {
            int line = 0;
            int column = 0;
            ASSERT_EQ(std::sscanf(error.what(), "p:%d:%d: ", &line, &column), 2) << error.what();
            ASSERT_LE(line, std::count(text.begin(), text.end(), '\n') + 1) << error.what();
            ASSERT_GE(line, 1) << error.what();
            ASSERT_GE(column, 1) << error.what();
            ++refused;
        }
    }
    EXPECT_GT(refused, 300);
    EXPECT_LT(refused, 600);
}

TEST(PlanRoundTrip, OfTheDefaultArenaKeepsItsMapText) {
    const std::string bytes = readFile(DRENCH_MAPDATA);
    const std::string text = writePlan({"Default", arena::readMapText(bytes).map});
    EXPECT_EQ(arena::writeMapText(cellsOf(text)), bytes);
    EXPECT_EQ(writePlan(readPlan(text, "p")), text);
}

TEST(DefaultArenaPlan, BuildsTheMapTextThatTheServerReads) {
    const auto source = std::filesystem::path(DRENCH_MAPDATA).parent_path().parent_path();
    const std::string file = source / "arenas" / "default.plan";
    EXPECT_EQ(arena::writeMapText(readPlan(readFile(file), file).map), readFile(DRENCH_MAPDATA));
}

TEST(Plan, KnowsWhereEachCellStands) {
    const Plan plan = arena::readPlan("arena Small\nsize 2 3 2\nlegend\n. 0 air\ng 1 ground\n"
                                      "row 0\ngg\ngg\n# above\nrow 1-2\n..\n.g\n",
                                      "small.plan");
    EXPECT_EQ(plan.placeOf({0, 0, 0}), (arena::TextPlace{7, 1}));
    EXPECT_EQ(plan.placeOf({1, 0, 1}), (arena::TextPlace{8, 2}));
    EXPECT_EQ(plan.placeOf({1, 1, 1}), (arena::TextPlace{12, 2}));
    EXPECT_EQ(plan.placeOf({1, 2, 1}), (arena::TextPlace{12, 2})) << "one grid for two rows";
}

TEST(Plan, IsToldFromOtherFilesByItsFirstWord) {
    EXPECT_TRUE(arena::isPlan("arena Small\n"));
    EXPECT_TRUE(arena::isPlan("# a comment\r\n\n  arena"));
    EXPECT_FALSE(arena::isPlan("32 16 32"));
    EXPECT_FALSE(arena::isPlan("# arena\n"));
    EXPECT_FALSE(arena::isPlan("arenas"));
    EXPECT_FALSE(arena::isPlan(""));
}
