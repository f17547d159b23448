#include "arena/MapText.h"
#include "arena/Map.h"
#include "common/Files.h"
#include "src/FileLoader.h"
#include "tests/support/Arenas.h"
#include "tests/support/Courts.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

using namespace drench;

using arena::MapText;
using arena::readMapText;
using arena::TextPlace;
using arena::TextProblem;

namespace {

using Lines = std::vector<std::string>;

/// "line:column: words" of each problem; harmless ones begin with '~'.
Lines problemsOf(const MapText& text) {
    Lines lines;
    for (const TextProblem& problem : text.problems)
        lines.push_back((problem.harmless ? "~" : "") + std::to_string(problem.place.line) + ":" +
                        std::to_string(problem.place.column) + ": " + problem.words);
    return lines;
}

Lines problemsIn(const std::string& bytes) {
    return problemsOf(readMapText(bytes));
}

std::string contents(const std::string& bytes) {
    const TemporaryFolder folder;
    return fileStringContents(folder.write("mapdata", bytes));
}

/// As the server loads it.
MapManager served(const std::string& bytes) {
    return loaded(contents(bytes));
}

/// The numbers that the server reads, by the reads that MapManager::init makes.
struct ServedNumbers {
    std::vector<int> values;
    bool isArena = false;

    /// Whether each cell has its two numbers and nothing follows.
    bool exact = false;

    /// Whether each has, and no number follows.
    bool whole = false;

    explicit ServedNumbers(const std::string& joined) {
        std::istringstream stream(joined);
        long size[3] = {};
        for (long& dimension : size)
            dimension = next(stream);
        isArena = values.size() == 3 && arena::isArenaSize(size[0], size[1], size[2]);
        const long needed = isArena ? 2 * size[0] * size[1] * size[2] : 0;
        for (long i = 0; i < needed && stream; ++i)
            next(stream);
        whole = isArena && stream && values.size() == static_cast<size_t>(needed) + 3;
        exact = whole && (stream >> std::ws).eof();
        int more = 0;
        whole = whole && !(stream >> more);
    }

  private:
    int next(std::istringstream& stream) {
        int value = 0;
        if (!stream)
            return 0;
        stream >> value;
        if (stream || value == INT_MAX || value == INT_MIN)
            values.push_back(value);
        return value;
    }
};

int draw(std::mt19937& random, int count) {
    return static_cast<int>(random() % static_cast<unsigned>(count));
}

int drawNumber(std::mt19937& random) {
    constexpr int numbers[] = {0, 0, 0, 1, 1, 1, 2, 7, 40, 4711, -1, -12, INT_MAX, INT_MIN};
    return numbers[draw(random, int(std::size(numbers)))];
}

MapManager drawMap(std::mt19937& random) {
    const int columns = 1 + draw(random, 4);
    const int rows = 1 + draw(random, 4);
    const int depth = 1 + draw(random, 4);
    MapManager map = arena::emptyMap(columns, rows, depth);
    for (auto& column : map.cubes) {
        for (auto& row : column) {
            for (Box& cube : row) {
                cube.solid = drawNumber(random);
                cube.cellValue = drawNumber(random);
            }
        }
    }
    return map;
}

/// A text that somebody or something has spoiled in up to six places.
std::string drawDamagedText(std::mt19937& random) {
    constexpr char alphabet[] = "0123456789  \n\n\n\r\t\f\v+-x.\0\xEF";
    std::string text = arena::writeMapText(drawMap(random));
    for (int damages = draw(random, 7); damages > 0; --damages) {
        const auto at = static_cast<size_t>(draw(random, int(text.size()) + 1));
        const auto length = static_cast<size_t>(draw(random, 4));
        switch (draw(random, 6)) {
        case 0:
            text.erase(at, length);
            break;
        case 1:
            text.insert(at, 1, alphabet[draw(random, int(sizeof alphabet) - 1)]);
            break;
        case 2:
            text.insert(at, "\n");
            break;
        case 3:
            text.insert(at, "99999999999");
            break;
        case 4:
            // A line that is not set in.
            if (const size_t line = text.find("\n ", at); line != std::string::npos)
                text.erase(line + 1, 1);
            break;
        default:
            if (draw(random, 8) == 0)
                text.resize(at);
        }
    }
    return text;
}

/// What the joined file has from a place on.
std::string joinedFrom(const std::string& bytes, TextPlace place) {
    size_t at = 0;
    for (int line = 1; line < place.line; ++line)
        at = bytes.find('\n', at) + 1;
    std::string rest = bytes.substr(at + static_cast<size_t>(place.column) - 1);
    std::erase(rest, '\n');
    return rest;
}

std::string repeated(const std::string& part, int times) {
    std::string text;
    for (int i = 0; i < times; ++i)
        text += part;
    return text;
}

const std::string headerRule = "; a map text begins with \"<columns> <rows> <depth>\"";
const std::string empties = ", so all later cells are empty";
const std::string ignored = ". The server ignores the rest, but probably header and cells disagree";

} // namespace

TEST(MapText, OfAProperFileHasNoProblems) {
    const MapText text = readMapText("2 1 2\n 1 1 0 0\n 1 7 2 -5\n");
    EXPECT_EQ(problemsOf(text), Lines());
    EXPECT_TRUE(text.hasHeader);
    EXPECT_TRUE(sameCells(text.map, loaded("2 1 2 1 1 0 0 1 7 2 -5")));
}

TEST(MapText, OfTheDefaultArenaHasNoProblems) {
    const MapText text = readMapText(readFile(DRENCH_MAPDATA));
    EXPECT_EQ(problemsOf(text), Lines());
    EXPECT_TRUE(sameCells(text.map, loaded(fileStringContents(DRENCH_MAPDATA))));
}

TEST(MapText, AcceptsWhateverTheServerReadsAsNumbers) {
    EXPECT_EQ(problemsIn("1 1 2\r\n1 -0\r\n+1 007\r\n"), Lines());
    EXPECT_EQ(problemsIn("1\t1\v2\f1 0 -1 2147483647"), Lines());
    EXPECT_EQ(problemsIn("1 1 2 1-2+3-4"), Lines());
    EXPECT_EQ(problemsIn("1 1 1 1\n-2\n"), Lines());
    EXPECT_EQ(problemsIn("\n\n1 1 1 \n\n1 2 \n\n"), Lines());
}

TEST(MapText, KnowsThePlaceOfEachNumberThatTheServerReads) {
    const std::vector<TextPlace> places = {{1, 1}, {1, 3}, {1, 5}, {2, 2},
                                           {2, 4}, {4, 3}, {4, 4}, {5, 1}};
    const MapText text = readMapText("1 1 3\n 1 2\n\n\t 3-4\n-5 x 9 9");
    EXPECT_EQ(text.numbers, places);
    EXPECT_EQ(text.placeOf({0, 0, 0}), (TextPlace{2, 2}));
    EXPECT_EQ(text.placeOf({0, 0, 1}), (TextPlace{4, 3}));
    EXPECT_EQ(text.placeOf({0, 0, 2}), (TextPlace{5, 1}));
}

TEST(MapText, CellsAreFoundColumnByColumnWithTheDepthVaryingFastest) {
    std::string bytes = "2 3 4";
    for (int cell = 0; cell < 2 * 3 * 4; ++cell)
        bytes += "\n 1 1";
    const MapText text = readMapText(bytes);
    EXPECT_EQ(text.placeOf({0, 0, 3}), (TextPlace{2 + 3, 2}));
    EXPECT_EQ(text.placeOf({0, 2, 0}), (TextPlace{2 + 8, 2}));
    EXPECT_EQ(text.placeOf({1, 2, 3}), (TextPlace{2 + 23, 2}));
}

TEST(MapText, CellThatTheTextDoesNotReachHasNoPlace) {
    const MapText text = readMapText("1 1 3 1 1 1 ");
    EXPECT_EQ(text.placeOf({0, 0, 1}), (TextPlace{1, 11}));
    EXPECT_EQ(text.placeOf({0, 0, 2}), (TextPlace{0, 0}));
}

TEST(MapText, JoinedNumberStandsWhereItBegins) {
    const MapText text = readMapText("1 1 1 1 4\n7");
    EXPECT_EQ(text.numbers.back(), (TextPlace{1, 9}));
    EXPECT_EQ(text.map.cubes[0][0][0].cellValue, 47);
    EXPECT_EQ(readMapText("1 1 1 4\n7-5").numbers.back(), (TextPlace{2, 2}));
}

TEST(MapTextHeader, MissingOneIsTold) {
    EXPECT_EQ(problemsIn(""), Lines{"1:1: the file is empty" + headerRule});
    EXPECT_EQ(problemsIn(" \n\r\n"), Lines{"1:1: nothing but white space" + headerRule});
    EXPECT_EQ(problemsIn("no map\n1 1\n"),
              Lines{"1:1: \"no\" where the number of columns is expected" + headerRule});
    EXPECT_EQ(problemsIn("3 x 5"),
              Lines{"1:3: \"x\" where the number of rows is expected" + headerRule});
    EXPECT_EQ(problemsIn("3 2\n 5.0 1 1"),
              Lines{"2:2: \"5.0\" where the depth is expected" + headerRule});
    EXPECT_EQ(problemsIn("3\n"),
              Lines{"1:2: the end where the number of rows is expected" + headerRule});
    EXPECT_EQ(problemsIn("3 16 \n\n"),
              Lines{"1:5: the end where the depth is expected" + headerRule});
}

TEST(MapTextHeader, ByteOrderMarkIsNamed) {
    EXPECT_EQ(problemsIn("\xEF\xBB\xBF"
                         "1 1 1 1 1"),
              Lines{"1:1: a byte order mark where the number of columns is expected" + headerRule});
}

TEST(MapTextHeader, SixteenBitCharactersAreNamed) {
    const Lines told = {"1:1: UTF-16, to be saved as plain ASCII or UTF-8, where the number of "
                        "columns is expected" +
                        headerRule};
    const std::string littleEndian("1\0 \0001\0 \0001\0", 10);
    const std::string bigEndian("\0001\0 \0001\0 \0001", 10);
    EXPECT_EQ(problemsIn("\xFF\xFE" + littleEndian), told);
    EXPECT_EQ(problemsIn("\xFE\xFF" + bigEndian), told);
    EXPECT_EQ(problemsIn(littleEndian), told);
    EXPECT_EQ(problemsIn(bigEndian), told);
    EXPECT_EQ(problemsIn(std::string("ab\0", 3)),
              Lines{"1:1: \"ab?\" where the number of columns is expected" + headerRule});
}

TEST(MapTextHeader, DimensionsArePositive) {
    EXPECT_EQ(problemsIn("0 1 1"),
              Lines{"1:1: \"0\" where the number of columns is expected, which is 1 or more"});
    EXPECT_EQ(problemsIn("1 -1 1 1 1"),
              Lines{"1:3: \"-1\" where the number of rows is expected, which is 1 or more"});
    EXPECT_EQ(problemsIn("1 1 -99999999999"),
              Lines{"1:5: \"-99999999999\" where the depth is expected, which is 1 or more"});
}

TEST(MapTextHeader, DimensionsAreAnArenas) {
    const std::string most = " makes more than 2097152 cells, the most that an arena may have";
    EXPECT_EQ(problemsIn("2097153 1 1"), Lines{"1:1: \"2097153\" as the number of columns" + most});
    EXPECT_EQ(problemsIn("99999999999 1 1"),
              Lines{"1:1: \"99999999999\" as the number of columns" + most});
    EXPECT_EQ(problemsIn("2000 2000 1"), Lines{"1:6: \"2000\" as the number of rows" + most});
    EXPECT_EQ(problemsIn("200 200 200 1 1"), Lines{"1:9: \"200\" as the depth" + most});
}

TEST(MapTextHeader, WithoutOneThereAreNoCells) {
    for (const char* bytes : {"", "x", "1 1", "0 1 1 1 1", "2147483647 -1 1", "2147483647 1 1 0 0",
                              "1 1 99999999999", "99999 99999 99999"}) {
        const MapText text = readMapText(bytes);
        EXPECT_FALSE(text.hasHeader) << bytes;
        EXPECT_TRUE(text.map.cubes.empty()) << bytes;
        EXPECT_EQ(text.map.columns, 0) << bytes;
    }
    EXPECT_EQ(readMapText("0 1 1 1 1").numbers.size(), 3u);
    EXPECT_EQ(readMapText("5 x").numbers.size(), 1u);
}

TEST(MapTextHeader, ThatTheServerReadsCountsEvenIfItsNumberIsMisspelt) {
    const MapText text = readMapText("1 2 1x 1 1 1 1");
    EXPECT_TRUE(text.hasHeader);
    EXPECT_EQ(text.map.rows, 2);
    EXPECT_EQ(problemsOf(text), Lines{"1:5: \"1x\" where the depth is expected" + headerRule});
}

TEST(MapTextCells, WhatIsNoNumberEndsTheServersReading) {
    EXPECT_EQ(
        problemsIn("1 1 2\n 1 1\n x1 1\n"),
        Lines{"3:2: \"x1\" where a number is expected: the server reads nothing from here on" +
              empties});
    for (const char* word : {"x1", "1x", "1.5", "1,4", "0x10", "-", "+", "+-1", "--1", "1e3"}) {
        const MapText text = readMapText(std::string("1 1 2 1 1 ") + word + " 1");
        ASSERT_EQ(text.problems.size(), 1u) << word;
        EXPECT_EQ(text.problems[0].place, (TextPlace{1, 11})) << word;
        EXPECT_TRUE(text.problems[0].words.starts_with(std::string("\"") + word + "\" where"))
            << word;
    }
}

TEST(MapTextCells, OfManyStrangeWordsThreeAreTold) {
    EXPECT_EQ(
        problemsIn("1 1 3\n a\n b\n c\n d\n e\n 1"),
        (Lines{"2:2: \"a\" where a number is expected: the server reads nothing from here "
               "on" +
                   empties,
               "3:2: \"b\" where a number is expected", "4:2: \"c\" where a number is expected",
               "5:2: 2 more where a number is expected, the first of them here"}));
    EXPECT_EQ(problemsIn("1 1 3 a b c d 1 1").back(),
              "1:13: 1 more where a number is expected, the first of them here");
    EXPECT_EQ(problemsIn("1 1 3 a b c 1 1 1").size(), 3u);
}

TEST(MapTextCells, NumberBeyondAnIntEndsTheServersReading) {
    const std::string rule = "\" where a number from -2147483648 to 2147483647 is expected";
    EXPECT_EQ(problemsIn("1 1 2 1 2147483648 1 1"),
              Lines{"1:9: \"2147483648" + rule +
                    ": the server takes 2147483647 and reads nothing after it" + empties});
    EXPECT_EQ(problemsIn("1 1 2\n -2147483649 2 1 1"),
              Lines{"2:2: \"-2147483649" + rule +
                    ": the server takes -2147483648 and reads nothing after it" + empties});
    EXPECT_EQ(problemsIn("1 1 2 2147483647 -2147483648 1 1"), Lines());
    EXPECT_EQ(problemsIn("1 1 3\n 1\n 99999999991\n x\n 99999999992\n 99999999993\n 99999999994"),
              (Lines{"3:2: \"99999999991" + rule +
                         ": the server takes 2147483647 and reads nothing after it" + empties,
                     "4:2: \"x\" where a number is expected", "5:2: \"99999999992" + rule,
                     "6:2: \"99999999993" + rule,
                     "7:2: 1 more beyond these limits, the first of them here"}));
}

TEST(MapTextCells, MissingNumbersAreCountedWithTheFirstCellThatLacksThem) {
    EXPECT_EQ(problemsIn("2 2 3\n 1 1 1 1 1 1\n 1 1 1 1 1 1\n 1 1 1 1 1 1\n 1 1 1\n\n"),
              Lines{"5:7: 3 numbers missing for 2 cells, from cell (1, 1, 1) on: 2 x 2 x 3 cells "
                    "take 24 numbers after the header"});
    EXPECT_EQ(problemsIn("1 1 1 1"),
              Lines{"1:8: 1 number missing for 1 cell, from cell (0, 0, 0) on: 1 x 1 x 1 cells "
                    "take 2 numbers after the header"});
    EXPECT_EQ(problemsIn("1 3 1"),
              Lines{"1:6: 6 numbers missing for 3 cells, from cell (0, 0, 0) on: 1 x 3 x 1 cells "
                    "take 6 numbers after the header"});
    EXPECT_EQ(problemsIn("1 3 1 1 1"),
              Lines{"1:10: 4 numbers missing for 2 cells, from cell (0, 1, 0) on: 1 x 3 x 1 cells "
                    "take 6 numbers after the header"});
}

TEST(MapTextCells, LeftOverNumbersAreCountedFromWhereTheFirstStands) {
    EXPECT_EQ(problemsIn("1 1 2\n 1 1 1 1\n 5 1 1"),
              Lines{"3:2: 3 left over, from \"5\" on: 1 x 1 x 2 cells take 4 numbers after the "
                    "header" +
                    ignored});
    EXPECT_EQ(problemsIn("1 1 1 1 2-3"),
              Lines{"1:10: 1 left over, from \"-3\" on: 1 x 1 x 1 cells take 2 numbers after the "
                    "header" +
                    ignored});
}

TEST(MapTextCells, RemarkAfterTheLastCellIsHarmless) {
    const std::string remark = " after the last cell: the server ignores it";
    EXPECT_EQ(problemsIn("1 1 1 1 2 made by Ann, 2026\n"),
              Lines{"~1:11: \"made by Ann, 2026\"" + remark});
    EXPECT_EQ(problemsIn("1 1 1 1 2\n\nmade by Ann \r\nfor Bob 7\n"),
              Lines{"~3:1: \"made by Ann\"" + remark})
        << "joined, the server reads 2 and stops at the m";
    EXPECT_EQ(problemsIn("1 1 1 1 2\n-- Ann"), Lines{"~2:1: \"-- Ann\"" + remark});
    EXPECT_EQ(problemsIn("1 1 1 1 2 x\n"), Lines{"~1:11: \"x\"" + remark});
    EXPECT_EQ(problemsIn("1 1 1 1\n2\nby\nAnn"),
              (Lines{"1:7: line 1 ends in 1 without a blank: it will be read together with the "
                     "next line's 2 as 12",
                     "~3:1: \"by\"" + remark}))
        << "what spoils the cells does not spoil the remark";
}

TEST(MapTextCells, RemarkMayFollowCellsThatAreWrong) {
    EXPECT_EQ(problemsIn("1 1 1\n1 2\nby Ann"),
              (Lines{"1:5: line 1 ends in 1 without a blank: it will be read together with the "
                     "next line's 1 as 11",
                     "~3:1: \"by Ann\" after the last cell: the server ignores it"}));
}

TEST(MapTextCells, WhatBeginsWithANumberIsNoRemark) {
    EXPECT_EQ(problemsIn("1 1 1 1 2\n 3rd of May"),
              Lines{"2:2: 3 left over, from \"3rd\" on: 1 x 1 x 1 cells take 2 numbers after the "
                    "header" +
                    ignored});
    EXPECT_FALSE(readMapText("1 1 1 1 2\n3rd of May").problems.empty())
        << "joined, the server reads 23";
    EXPECT_EQ(problemsIn("1 1 1 1 2x").size(), 1u) << "misspelt";
    EXPECT_EQ(problemsIn("1 1 1 1 2x")[0].substr(0, 5), "1:9: ");
}

TEST(MapTextCells, MisspeltNumberCountsAsOne) {
    EXPECT_EQ(problemsIn("1 1 2 1 1.5 1"),
              (Lines{"1:9: \"1.5\" where a number is expected: the server reads nothing from here "
                     "on" +
                         empties,
                     "1:14: 1 number missing for 1 cell, from cell (0, 0, 1) on: 1 x 1 x 2 cells "
                     "take 4 numbers after the header"}));
    EXPECT_EQ(problemsIn("1 1 1 1 o 3").back(),
              "1:11: 1 left over, from \"3\" on: 1 x 1 x 1 cells take 2 numbers after the header" +
                  ignored);
}

TEST(MapTextLines, LineWithoutABlankAtItsEndIsToldWithWhatBecomesOfIt) {
    const MapText text = readMapText("1 1 3\n 1 1\n 0 1\n0 1");
    EXPECT_EQ(problemsOf(text), Lines{"3:4: line 3 ends in 1 without a blank: it will be read "
                                      "together with the next line's 0 as 10"});
    EXPECT_EQ(text.map.cubes[0][0][1].cellValue, 10);
}

TEST(MapTextLines, HeaderThatRunsIntoTheCellsIsToldAsAJoinOnly) {
    EXPECT_EQ(problemsIn("1 1 2\n0 1 1 2\n"), Lines{"1:5: line 1 ends in 2 without a blank: it "
                                                    "will be read together with the next line's 0 "
                                                    "as 20"});
    EXPECT_EQ(problemsIn("1 1 1\n999999999 1"),
              Lines{"1:5: line 1 ends in 1 without a blank: it will be read together with the next "
                    "line's 999999999 as 1999999999"})
        << "as the server joins it, the header is no arena's";
}

TEST(MapTextLines, JoinsAreToldAlsoIfOnlyTheyMakeAHeader) {
    EXPECT_EQ(problemsIn("1\n0 1 1 1 1"),
              (Lines{"1:1: line 1 ends in 1 without a blank: it will be read together with the "
                     "next line's 0 as 10",
                     "2:1: \"0\" where the number of rows is expected, which is 1 or more"}));
}

TEST(MapTextLines, SignBehindWhatIsNoNumberKeepsNothingApart) {
    EXPECT_EQ(problemsIn("1 1 1 x\n-2"),
              (Lines{"1:7: line 1 ends in \"x\" without a blank: it will be read together with the "
                     "next line's -2 as \"x-2\"",
                     "1:7: \"x\" where a number is expected: the server reads nothing from here "
                     "on" +
                         empties}));
}

TEST(MapTextLines, EmptyLinesBetweenKeepNothingApart) {
    EXPECT_EQ(problemsIn("1 1 1 1\n\n\n2"), Lines{"1:7: line 1 ends in 1 without a blank: it will "
                                                  "be read together with line 4's 2 as 12"});
}

TEST(MapTextLines, BlankCarriageReturnOrSignKeepsNumbersApart) {
    EXPECT_EQ(problemsIn("1 1 1 \n1\n 2\n"), Lines());
    EXPECT_EQ(problemsIn("1 1 1\r\n1\r\n2\r\n"), Lines());
    EXPECT_EQ(problemsIn("1 1 1\n+1\n-2\n"), Lines());
    EXPECT_EQ(problemsIn("1 1 1 1\n \n2"), Lines());
}

TEST(MapTextLines, NumberOverManyLinesIsToldOnce) {
    EXPECT_EQ(problemsIn("1 1 2\n 1\n2\n3\n4\n"),
              Lines{"2:2: line 2 ends in 1 without a blank: it will be read together with the next "
                    "3 lines as 1234"});
}

TEST(MapTextLines, OfManyJoinsThreeAreTold) {
    EXPECT_EQ(problemsIn("1 1 6\n 1 2\n3 4\n5 6\n7 8\n9 10\n11 12"),
              (Lines{"2:4: line 2 ends in 2 without a blank: it will be read together with the "
                     "next line's 3 as 23",
                     "3:3: line 3 ends in 4 without a blank: it will be read together with the "
                     "next line's 5 as 45",
                     "4:3: line 4 ends in 6 without a blank: it will be read together with the "
                     "next line's 7 as 67",
                     "5:3: 2 more without a blank at the end of a line, the first of them here"}));
}

TEST(MapTextLines, WhatElseIsWrongIsToldBesideTheJoins) {
    EXPECT_EQ(problemsIn("1 1 3\n 1 2\n3 4\n x"),
              (Lines{"2:4: line 2 ends in 2 without a blank: it will be read together with the "
                     "next line's 3 as 23",
                     "4:2: \"x\" where a number is expected: the server reads nothing from here "
                     "on" +
                         empties,
                     "4:3: 1 number missing for 1 cell, from cell (0, 0, 2) on: 1 x 1 x 3 cells "
                     "take 6 numbers after the header"}));
}

TEST(MapTextLines, JoinsBehindTheLastPairAreNotTold) {
    EXPECT_EQ(problemsIn("1 1 1\n 1\n2\n 3 5\n4\n"),
              (Lines{"2:2: line 2 ends in 1 without a blank: it will be read together with the "
                     "next line's 2 as 12",
                     "4:2: 3 left over, from \"3\" on: 1 x 1 x 1 cells take 2 numbers after the "
                     "header" +
                         ignored}));
}

TEST(MapTextLines, JoinsInAFileThatIsNoMapAreNotTold) {
    EXPECT_EQ(problemsIn("Dear maker,\nthis is\nno map.\n").size(), 1u);
}

TEST(MapTextLines, NumbersWrappedOnPurposeAreHarmless) {
    const MapText text = readMapText("1 1 2 1 1\n2 1 3\n4\n");
    EXPECT_EQ(problemsOf(text), (Lines{"~1:9: line 1 ends in 1 without a blank: it will be read "
                                       "together with the next line's 2 as 12",
                                       "~2:5: line 2 ends in 3 without a blank: it will be read "
                                       "together with the next line's 4 as 34"}));
    EXPECT_TRUE(sameCells(text.map, loaded("1 1 2 1 12 1 34")));
    EXPECT_EQ(problemsIn("1\n2 1 1" + repeated(" 1", 24)),
              Lines{"~1:1: line 1 ends in 1 without a blank: it will be read together with the "
                    "next line's 2 as 12"});
}

TEST(MapTextQuotes, ShowAtMostFortyPrintableCharacters) {
    EXPECT_EQ(arena::quoted("a b~"), "\"a b~\"");
    EXPECT_EQ(arena::quoted(std::string("\0\x1b\x7f\xff\t", 5)), "\"?????\"");
    EXPECT_EQ(arena::quoted(std::string(40, 'x')), "\"" + std::string(40, 'x') + "\"");
    EXPECT_EQ(arena::quoted(std::string(41, 'x')), "\"" + std::string(37, 'x') + "...\"");
}

TEST(MapTextQuotes, LongOrBinaryWordsStayReadable) {
    EXPECT_EQ(problemsIn(std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)),
              Lines{"1:1: \"?PNG\" where the number of columns is expected" + headerRule});
    EXPECT_EQ(problemsIn("1 1 1\n 1" + std::string(50, '0') + "\n" + std::string(50, '0')),
              (Lines{"2:2: line 2 ends in \"1" + std::string(36, '0') +
                         "...\" without a blank: it will be read together with the next line's \"" +
                         std::string(37, '0') + "...\" as \"1" + std::string(36, '0') + "...\"",
                     "2:2: \"1" + std::string(36, '0') +
                         "...\" where a number from -2147483648 to 2147483647 is expected: the "
                         "server takes 2147483647 and reads nothing after it" +
                         empties}));
}

TEST(MapTextProperty, DamagedTextsAreReadAsTheServerReadsThem) {
    std::mt19937 random(20);
    int withHeader = 0;
    int exact = 0;
    for (int i = 0; i < 1000; ++i) {
        const std::string bytes = drawDamagedText(random);
        const std::string joined = contents(bytes);
        const ServedNumbers numbers(joined);
        if (numbers.isArena &&
            long{numbers.values[0]} * numbers.values[1] * numbers.values[2] > 9999)
            continue;
        const MapText text = readMapText(bytes);
        SCOPED_TRACE(testing::PrintToString(bytes));

        ASSERT_EQ(text.hasHeader, numbers.isArena);
        ASSERT_TRUE(sameCells(text.map, numbers.isArena ? loaded(joined) : MapManager()));
        ASSERT_EQ(text.numbers.size(), numbers.values.size());
        for (size_t k = 0; k < numbers.values.size(); ++k) {
            std::istringstream there(joinedFrom(bytes, text.numbers[k]));
            int value = 0;
            there >> value;
            ASSERT_EQ(value, numbers.values[k]) << "number " << k;
            ASSERT_FALSE(isspace(there.str()[0])) << "number " << k;
        }
        const bool harmless = std::all_of(text.problems.begin(), text.problems.end(),
                                          [](const TextProblem& each) { return each.harmless; });
        // A remark is harmless; a misspelt last number ends in letters too and is not.
        ASSERT_TRUE(harmless ? numbers.whole : !numbers.exact)
            << testing::PrintToString(problemsOf(text));
        withHeader += numbers.isArena;
        exact += numbers.exact;
    }
    EXPECT_GT(withHeader, 700);
    EXPECT_GT(exact, 200);
}

TEST(MapTextProperty, ProblemsComeInTheOrderOfTheFileAndStandInIt) {
    std::mt19937 random(21);
    for (int i = 0; i < 500; ++i) {
        const std::string bytes = drawDamagedText(random);
        const MapText text = readMapText(bytes);
        TextPlace last{1, 1};
        for (const TextProblem& problem : text.problems) {
            ASSERT_LE(last, problem.place) << testing::PrintToString(bytes);
            std::istringstream lines(bytes);
            std::string line;
            for (int k = 0; k < problem.place.line; ++k)
                std::getline(lines, line);
            ASSERT_LE(problem.place.column, int(line.size()) + 1) << testing::PrintToString(bytes);
            last = problem.place;
        }
    }
}

TEST(MapTextWriting, GivesOneIndentedLineForEachColumnAndRow) {
    EXPECT_EQ(arena::writeMapText(loaded("2 2 2 1 1 0 0 1 2 1 3 1 4 0 0 0 0 2 -5")),
              "2 2 2\n 1 1 0 0\n 1 2 1 3\n 1 4 0 0\n 0 0 2 -5\n");
}

TEST(MapTextWriting, MakesTheDefaultArenaToTheByte) {
    const std::string bytes = readFile(DRENCH_MAPDATA);
    EXPECT_EQ(arena::writeMapText(readMapText(bytes).map), bytes);
}

TEST(MapTextWriting, TheServerReadsBackAnyCells) {
    std::mt19937 random(22);
    for (int i = 0; i < 200; ++i) {
        const MapManager map = drawMap(random);
        const std::string bytes = arena::writeMapText(map);
        ASSERT_TRUE(sameCells(served(bytes), map)) << bytes;
        ASSERT_EQ(problemsIn(bytes), Lines()) << bytes;
    }
}

TEST(ArenaSize, IsPositiveAndOfBoundedVolume) {
    EXPECT_TRUE(arena::isArenaSize(1, 1, 1));
    EXPECT_TRUE(arena::isArenaSize(256, 32, 256));
    EXPECT_TRUE(arena::isArenaSize(1, arena::mostCells, 1));
    EXPECT_FALSE(arena::isArenaSize(0, 1, 1));
    EXPECT_FALSE(arena::isArenaSize(1, -1, 1));
    EXPECT_FALSE(arena::isArenaSize(1, 1, 0));
    EXPECT_FALSE(arena::isArenaSize(-256, -32, 256));
    EXPECT_FALSE(arena::isArenaSize(257, 32, 256));
    EXPECT_FALSE(arena::isArenaSize(256, 33, 256));
    EXPECT_FALSE(arena::isArenaSize(256, 32, 257));
    EXPECT_FALSE(arena::isArenaSize(LONG_MAX, LONG_MAX, LONG_MAX));
    EXPECT_FALSE(arena::isArenaSize(1, LONG_MAX, 2));
}

TEST(ArenaCells, AreTheSameIfDimensionsAndBothNumbersAre) {
    const MapManager map = loaded("1 2 1 1 2 3 4");
    EXPECT_TRUE(sameCells(map, loaded("1 2 1 1 2 3 4")));
    EXPECT_FALSE(sameCells(map, loaded("1 2 1 1 2 3 5")));
    EXPECT_FALSE(sameCells(map, loaded("1 2 1 1 2 0 4")));
    for (const char* larger : {"2 1 1 1 2 1 2", "1 2 1 1 2 1 2", "1 1 2 1 2 1 2"}) {
        EXPECT_FALSE(sameCells(loaded("1 1 1 1 2"), loaded(larger))) << larger;
        EXPECT_FALSE(sameCells(loaded(larger), loaded("1 1 1 1 2"))) << larger;
    }
}
