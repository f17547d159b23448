#include "arena/Check.h"
#include "tests/support/Courts.h"

#include <gtest/gtest.h>

using namespace drench;

using arena::CellIndex;
using arena::CheckResult;
using arena::Finding;
using arena::Severity;
using arena::Subject;

// Broken arenas, each with the words that its maker is told. They are the ring arena of Courts.h
// with something changed.

namespace {

using SolidAt = std::function<bool(int, int, int)>;

std::string ringText(const SolidAt& solid = solidInRing) {
    return arenaText(32, 16, 32, solid);
}

CheckResult checked(const std::string& bytes) {
    arena::MapText text = arena::readMapText(bytes);
    return arena::check(text);
}

std::vector<std::string> wordsOf(const CheckResult& result) {
    std::vector<std::string> words;
    for (const Finding& finding : result.findings)
        words.push_back(finding.words);
    return words;
}

/// The one error, or the first of all.
const Finding& firstError(const CheckResult& result) {
    static const Finding none{};
    for (const Finding& finding : result.findings) {
        if (finding.severity == Severity::error)
            return finding;
    }
    ADD_FAILURE() << "no error was found";
    return none;
}

void expectError(const CheckResult& result, Subject subject, const std::string& words) {
    EXPECT_FALSE(result.playable());
    EXPECT_EQ(firstError(result).subject, subject);
    EXPECT_EQ(firstError(result).words, words);
}

/// The ring without cubes where `free` says so, and with more where `filled` does.
SolidAt ringBut(const SolidAt& free, const SolidAt& filled = nothing) {
    return [=](int i, int j, int k) {
        return filled(i, j, k) || (solidInRing(i, j, k) && !free(i, j, k));
    };
}

} // namespace

TEST(Check, RingCanBePlayed) {
    const CheckResult result = checked(ringText());
    EXPECT_TRUE(result.playable());
    EXPECT_EQ(wordsOf(result), std::vector<std::string>{});
    ASSERT_TRUE(result.reach);
    EXPECT_EQ(result.walkableReached, result.walkable.size());
    EXPECT_FALSE(result.unreached);
    ASSERT_TRUE(result.sight);
}

TEST(Check, FindingsNameTheCellAndWhereItsNumberStands) {
    // A hole of one cube in the outer wall, three cubes high.
    const CheckResult result = checked(
        ringText(ringBut([](int i, int j, int k) { return i > 28 && k == 18 && j > 2 && j < 6; })));
    expectError(result, Subject::reach, "players can leave the world here");
    const Finding& finding = firstError(result);
    ASSERT_TRUE(finding.cell && finding.place);
    EXPECT_EQ(finding.cell->column, 31);
    EXPECT_EQ(finding.cell->depth, 18);
    // "32 16 32", then " s v" for each cell.
    const int cell = (31 * 16 + finding.cell->row) * 32 + 18;
    EXPECT_EQ(finding.place->line, 1);
    EXPECT_EQ(finding.place->column, 8 + 4 * cell + 2);
}

TEST(CheckText, EmptyFile) {
    const CheckResult result = checked("");
    EXPECT_FALSE(result.playable());
    EXPECT_EQ(firstError(result).subject, Subject::text);
    EXPECT_FALSE(result.reach);
}

TEST(CheckText, HeaderWithoutThreeDimensions) {
    expectError(checked("columns 16 32"), Subject::text,
                "\"columns\" where the number of columns is expected; a map text begins with "
                "\"<columns> <rows> <depth>\"");
    expectError(checked("32 0 32"), Subject::text,
                "\"0\" where the number of rows is expected, which is 1 or more");
    expectError(checked("9999 9999 9999"), Subject::text,
                "\"9999\" as the number of rows makes more than 2097152 cells, the most that an "
                "arena may have");
    expectError(checked("32 16"), Subject::text,
                "the end where the depth is expected; a map text begins with "
                "\"<columns> <rows> <depth>\"");
}

TEST(CheckText, MissingNumbers) {
    const std::string whole = ringText();
    expectError(checked(whole.substr(0, whole.size() - 4)), Subject::text,
                "2 numbers missing for 1 cell, from cell (31, 15, 31) on: 32 x 16 x 32 cells take "
                "32768 numbers after the header");
}

TEST(CheckText, WhatIsNoNumber) {
    std::string text = ringText();
    text[text.size() - 1] = 'x';
    expectError(checked(text), Subject::text,
                "\"x\" where a number is expected: the server reads nothing from here on, so all "
                "later cells are empty");
    EXPECT_EQ(checked(text).findings[0].place->column, static_cast<int>(text.size()));
}

TEST(CheckText, NumberThatNoIntHolds) {
    expectError(checked(ringText().substr(0, 9) + "99999999999" + ringText().substr(10)),
                Subject::text,
                "\"99999999999\" where a number from -2147483648 to 2147483647 is expected: the "
                "server takes 2147483647 and reads nothing after it, so all later cells are empty");
}

TEST(CheckText, JoinedLinesAreTheOnlyFinding) {
    std::string text = ringText();
    // A line end in place of a blank in the middle.
    const std::size_t blank = text.find(' ', text.size() / 2);
    text[blank] = '\n';
    const CheckResult result = checked(text);
    ASSERT_EQ(result.findings.size(), 1u);
    EXPECT_TRUE(result.findings[0].words.starts_with("line 1 ends in "))
        << result.findings[0].words;
    EXPECT_FALSE(result.playable());
    EXPECT_FALSE(result.reach) << "what the server would read is not worth a walk";
}

TEST(CheckText, LeftOverNumbersDoNotKeepTheArenaFromBeingChecked) {
    const CheckResult result = checked(ringText() + " 1 1");
    EXPECT_FALSE(result.playable());
    EXPECT_EQ(firstError(result).subject, Subject::text);
    EXPECT_TRUE(result.reach);
}

TEST(CheckText, LinesWrappedOnPurposeAreOnlyWarnedOf) {
    std::string text = ringText();
    text.insert(1, "\n");
    const CheckResult result = checked(text);
    EXPECT_TRUE(result.playable());
    EXPECT_EQ(result.findings.size(), 1u);
}

TEST(CheckText, WrongOrderIsTheOnlyFindingOfAnArenaThatIsNotEnclosed) {
    const CheckResult result = checked("32 32 16" + ringText().substr(8));
    ASSERT_EQ(result.findings.size(), 1u);
    expectError(result, Subject::text,
                "reads as an arena when its header is taken as columns, depth, rows; a map text "
                "gives columns, rows, depth");
    EXPECT_EQ(result.findings[0].place, (arena::TextPlace{1, 1}));
    EXPECT_FALSE(result.reach);
    EXPECT_TRUE(result.arrivals.empty());
}

TEST(CheckText, WrongOrderOfAnEnclosedArenaIsToldBesideTheRest) {
    // Turned about its diagonal, the post before spawn 7's corner stands in spawn 3.
    const auto solid = [](int i, int j, int k) {
        return solidInRing(i, j, k) || (i == 29 && k == 16 && j == 9);
    };
    const auto turned = [&](int i, int j, int k) { return solid(k, j, i); };
    EXPECT_TRUE(checked(ringText(solid)).playable());
    const CheckResult result = checked(ringText(turned));
    EXPECT_EQ(wordsOf(result)[0],
              "reads as an arena when its cells are taken in the order depth, rows, columns, of "
              "which the last varies fastest; a map text gives columns, rows, depth");
    EXPECT_EQ(wordsOf(result)[1], "spawn 3 is not clear: its body touches ground");
    EXPECT_TRUE(result.reach);
}

TEST(CheckText, RemarkIsOnlyWarnedOf) {
    const CheckResult result = checked(ringText() + "\nmade by Ann\n");
    EXPECT_TRUE(result.playable());
    ASSERT_EQ(result.findings.size(), 1u);
    EXPECT_EQ(result.findings[0].severity, Severity::warning);
    EXPECT_EQ(result.findings[0].words,
              "\"made by Ann\" after the last cell: the server ignores it");
}

TEST(CheckSpawns, BodyInACube) {
    const CheckResult result = checked(ringText(
        ringBut(nothing, [](int i, int j, int k) { return i == 15 && j == 10 && k == 1; })));
    expectError(result, Subject::spawns, "spawn 1 is not clear: its body touches ground");
    EXPECT_EQ(firstError(result).cell, (CellIndex{15, 10, 1}));
}

TEST(CheckSpawns, OutsideTheArena) {
    const CheckResult result = checked(arenaText(24, 16, 32, solidInRing));
    EXPECT_FALSE(result.playable());
    const std::vector<std::string> words = wordsOf(result);
    EXPECT_EQ(words[0],
              "spawn 4 lies outside the arena: its body reaches to column 30 and depth 15");
    EXPECT_EQ(result.findings[0].cell->column, 23);
}

TEST(CheckSpawns, NothingToLandOn) {
    const CheckResult result = checked(ringText(
        ringBut([](int i, int, int k) { return i >= 15 && i <= 16 && k >= 1 && k <= 2; })));
    expectError(result, Subject::spawns,
                "spawn 1 has nothing to land on: players fall out of the world");
    for (const std::string& words : wordsOf(result))
        EXPECT_FALSE(words.starts_with("no way")) << words;
}

TEST(CheckSpawns, WithoutAnyFloorNobodySeesAnybodyOrGetsAnywhere) {
    const CheckResult result = checked(arenaText(32, 16, 32, nothing));
    EXPECT_FALSE(result.playable());
    EXPECT_EQ(firstError(result).words,
              "spawn 1 has nothing to land on: players fall out of the world");
    for (const Finding& finding : result.findings)
        EXPECT_NE(finding.subject, Subject::sight) << finding.words;
}

TEST(CheckSpawns, WhoStandsOnTopOfTheWorldIsFoundInItsHighestCell) {
    const CheckResult result = checked(arenaText(32, 1, 32, [](int, int, int) { return true; }));
    EXPECT_FALSE(result.playable());
    for (const Finding& finding : result.findings) {
        if (finding.cell) {
            EXPECT_EQ(finding.cell->row, 0) << finding.words;
            EXPECT_GT(finding.place->line, 0);
        }
    }
}

TEST(CheckSpawns, AllOutsideIsTheEndOfTheCheck) {
    const CheckResult result = checked(arenaText(2, 2, 2, solidInRing));
    EXPECT_EQ(result.findings.size(), 8u);
    EXPECT_FALSE(result.reach);
}

TEST(CheckReach, HoleInTheFloor) {
    const CheckResult result =
        checked(ringText(ringBut([](int i, int, int k) { return i == 9 && k == 3; })));
    expectError(result, Subject::reach, "players can leave the world here");
    EXPECT_EQ(firstError(result).cell, (CellIndex{9, 0, 3}));
}

TEST(CheckReach, BorderThatCanBeClimbed) {
    // Behind spawn 1 the wall is two cubes high only.
    const CheckResult result = checked(ringText(
        ringBut([](int i, int j, int k) { return i >= 15 && i <= 16 && k == 0 && j > 4; })));
    expectError(result, Subject::reach, "players can leave the world here");
    EXPECT_EQ(firstError(result).cell->depth, 0);
}

TEST(CheckReach, ManyHolesAreCounted) {
    const CheckResult result =
        checked(ringText(ringBut([](int i, int, int k) { return k == 3 && i >= 13 && i <= 18; })));
    EXPECT_FALSE(result.playable());
    std::vector<std::string> words = wordsOf(result);
    words.resize(4);
    const std::string hole = "players can leave the world here";
    EXPECT_EQ(words, (std::vector<std::string>{hole, hole, hole, "and 3 more like these"}));
}

TEST(CheckReach, GapThatOnlyAFlickedJumpCrossesIsNoBorder) {
    // East of the ring a ledge, a moat of eight cubes that one climbs out of on the near side only,
    // and a ledge that ends at the side of the world.
    const CheckResult result = checked(arenaText(44, 16, 32, [](int i, int j, int k) {
        if (i < 29 || k < 20 || k > 21)
            return i > 31 || solidInRing(i, j, k);
        const bool moat = i >= 32 && i <= 39;
        const bool step = i == 32 && k == 21;
        return j > 12 || j < (!moat ? 4 : step ? 3 : 1);
    }));
    expectError(result, Subject::reach,
                "players can leave the world here, at least by flicking their view in a jump");
    EXPECT_EQ(firstError(result).cell->column, 43);
    EXPECT_TRUE(result.reach->departures.empty());
}

TEST(CheckReach, SpawnBehindAWall) {
    // The alcove of spawn 1 is walled off.
    const CheckResult result = checked(
        ringText(ringBut(nothing, [](int i, int, int k) { return i >= 15 && i <= 16 && k == 3; })));
    expectError(result, Subject::reach,
                "spawn 1 is cut off: no way from there to spawns 2, 3, 4, 5, 6, 7 and 8, and none "
                "back");
    EXPECT_EQ(firstError(result).cell, (CellIndex{15, 3, 2})) << "where it lands";
    EXPECT_EQ(result.findings.size(), 1u) << "one cause, one line";
}

TEST(CheckReach, LargestAreaThatNobodyReachesIsKnown) {
    // Two rooms in the block in the middle.
    const CheckResult result = checked(ringText(ringBut([](int i, int j, int k) {
        return j > 2 && j < 7 && k == 12 && ((i > 8 && i < 12) || (i > 14 && i < 20));
    })));
    EXPECT_TRUE(result.playable());
    EXPECT_EQ(result.unreached, (arena::Area{5, {15, 3, 12}}));
    EXPECT_EQ(result.walkable.size(), result.walkableReached + 8);
}

TEST(CheckReach, SpawnThatCanOnlyBeLeft) {
    // The alcove of spawn 1 lies three cubes above the ring.
    const CheckResult result = checked(ringText(ringBut(
        nothing, [](int i, int j, int k) { return i >= 15 && i <= 16 && k <= 2 && j < 6; })));
    expectError(result, Subject::reach, "no way from spawns 2, 3, 4, 5, 6, 7 and 8 to spawn 1");
}

TEST(CheckReach, PitOfThreeCubesHoldsWhoFallsInOneOfTwoDoesNot) {
    const auto isHole = [](int i, int k) { return k == 3 && (i == 10 || i == 11); };
    EXPECT_TRUE(checked(ringText(ringBut([&](int i, int j, int k) {
                    return j > 0 && isHole(i, k);
                }))).playable());

    // Within a rim of one cube the same hole is three deep.
    const CheckResult result = checked(ringText([&](int i, int j, int k) {
        const bool rim = i >= 9 && i <= 12 && k <= 4 && j == 3;
        return isHole(i, k) ? j < 1 : rim || solidInRing(i, j, k);
    }));
    expectError(result, Subject::reach,
                "a pit of 2 standing places: who gets in never gets out to a spawn again");
    EXPECT_EQ(firstError(result).cell->row, 1);
    EXPECT_EQ(firstError(result).cell->depth, 3);
}

TEST(CheckReach, ShortDeadEndIsNone) {
    const CheckResult result = checked(ringText(
        ringBut([](int i, int j, int k) { return i == 17 && j > 2 && j < 7 && k > 4 && k < 9; })));
    EXPECT_EQ(wordsOf(result), std::vector<std::string>{}) << "three cubes behind its mouth";
}

TEST(CheckReach, DeadEndIsAWarning) {
    // A tunnel of six cubes into the block in the middle.
    const CheckResult result = checked(ringText(
        ringBut([](int i, int j, int k) { return i == 17 && j > 2 && j < 7 && k > 4 && k < 11; })));
    EXPECT_TRUE(result.playable());
    ASSERT_EQ(result.findings.size(), 1u);
    EXPECT_EQ(result.findings[0].words, "a dead end, 5 cubes long")
        << "behind the first, its mouth";
    EXPECT_EQ(result.findings[0].cell, (CellIndex{17, 3, 10}));
}

TEST(CheckSight, SpawnsThatSeeEachOther) {
    // A hall between the alcoves of spawns 1 and 3.
    const CheckResult result = checked(
        ringText(ringBut([](int i, int j, int) { return i >= 15 && i <= 16 && j > 2 && j < 8; },
                         [](int, int, int k) { return k == 0 || k == 31; })));
    EXPECT_TRUE(result.playable());
    const std::vector<std::string> words = wordsOf(result);
    EXPECT_EQ(std::count(words.begin(), words.end(),
                         "who lands at spawn 1 sees who lands at spawn 3, and is seen"),
              1);
}

TEST(CheckSight, PlacesThatCoverTwoSpawns) {
    // Without half of its posts the ring's corridors are long views past two spawns.
    const CheckResult result = checked(ringText(ringBut([](int i, int j, int k) {
        const auto isHalf = [](int along, int across) {
            return along >= 19 && along <= 23 &&
                   (across == 3 || across == 4 || across == 27 || across == 28);
        };
        return j > 2 && (isHalf(i, k) || isHalf(k, i));
    })));
    EXPECT_TRUE(result.playable());
    ASSERT_FALSE(result.findings.empty());
    const Finding& last = result.findings.back();
    EXPECT_EQ(last.subject, Subject::sight);
    EXPECT_TRUE(last.words.starts_with("from ")) << last.words;
    EXPECT_TRUE(last.words.ends_with(
        " two spawns can be soaked in one view and no third one shoots back, from here for one"))
        << last.words;
    ASSERT_TRUE(last.cell);
    EXPECT_FALSE(solidInRing(last.cell->column, last.cell->row, last.cell->depth));
}

TEST(Check, ProgressNamesWhatIsLookedAt) {
    const auto subjectsOf = [](const std::string& arena) {
        arena::MapText text = arena::readMapText(arena);
        std::vector<std::string> subjects;
        arena::check(text, [&](const std::string& subject, std::size_t) {
            if (subjects.empty() || subjects.back() != subject)
                subjects.push_back(subject);
        });
        return subjects;
    };
    EXPECT_EQ(subjectsOf(ringText()), (std::vector<std::string>{"reach", "sight"}))
        << "below a ceiling nobody leaves, however fast";
}

TEST(Check, ArenaThatCanBeLeftAnywhereIsNotLookedAtAnyFurther) {
    arena::MapText text =
        arena::readMapText(arenaText(40, 16, 40, [](int, int j, int) { return j == 0; }));
    const CheckResult result = arena::check(text);
    ASSERT_TRUE(result.reach);
    EXPECT_FALSE(result.reach->isWhole);
    EXPECT_EQ(result.reach->departures.size(), 16u);
    EXPECT_FALSE(result.sight);
    EXPECT_FALSE(result.playable());
}
