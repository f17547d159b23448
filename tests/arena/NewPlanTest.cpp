#include "arena/NewPlan.h"
#include "arena/Check.h"
#include "arena/Plan.h"
#include "common/Files.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace drench;

using arena::newPlan;

namespace {

std::string refusalOf(const std::string& name, int columns, int rows, int depth) {
    try {
        newPlan(name, columns, rows, depth);
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(NewPlan, IsABorderedCourtThatCanBePlayed) {
    arena::Plan plan = arena::readPlan(newPlan("Mine", 33, 12, 34), "p");
    EXPECT_EQ(plan.name, "Mine");
    EXPECT_EQ(plan.map.columns, 33);
    EXPECT_EQ(plan.map.rows, 12);
    EXPECT_EQ(plan.map.depth, 34);
    for (int i = 0; i < 33; ++i) {
        for (int j = 0; j < 12; ++j) {
            for (int k = 0; k < 34; ++k) {
                const Box& cube = arena::cell(plan.map, i, j, k);
                const bool isBorder = i == 0 || i == 32 || k == 0 || k == 33;
                ASSERT_EQ(cube.solid, isBorder || j == 0) << i << ", " << j << ", " << k;
                ASSERT_EQ(cube.cellValue, isBorder ? 2 : j == 0 ? 1 : 0);
            }
        }
    }
    const arena::CheckResult result = arena::check(plan.map, {});
    EXPECT_TRUE(result.playable());
    for (const arena::Finding& finding : result.findings)
        EXPECT_EQ(finding.subject, arena::Subject::sight) << "an empty court has no cover";
    EXPECT_EQ(result.walkableReached, result.walkable.size());
}

TEST(NewPlan, MarksTheCellsOfEachSpawnWithItsDigit) {
    const std::string text = newPlan("Mine", 32, 16, 32);
    const arena::Plan plan = arena::readPlan(text, "p");
    const auto character = [&](int column, int row, int depth) {
        const arena::TextPlace place = plan.placeOf({column, row, depth});
        std::size_t line = 0;
        for (int k = 1; k < place.line; ++k)
            line = text.find('\n', line) + 1;
        return text[line + static_cast<std::size_t>(place.column) - 1];
    };
    EXPECT_EQ(character(15, 9, 1), '1');
    EXPECT_EQ(character(16, 11, 2), '1');
    EXPECT_EQ(character(15, 8, 1), '.') << "below its feet";
    EXPECT_EQ(character(15, 12, 1), '.') << "above its head";
    EXPECT_EQ(character(14, 9, 1), '.');
    EXPECT_EQ(character(15, 9, 3), '.');
    EXPECT_EQ(character(1, 10, 16), '2');
    EXPECT_EQ(character(30, 10, 15), '4');
    EXPECT_EQ(character(30, 10, 16), '.');
    EXPECT_EQ(character(2, 3, 4), '5');
    EXPECT_EQ(character(3, 5, 28), '8');
    EXPECT_NE(text.find("\n1 0 spawn-1\n"), std::string::npos);
    EXPECT_NE(text.find("\n8 0 spawn-8\n"), std::string::npos);
    EXPECT_NE(text.find("\nrow 12-15\n"), std::string::npos) << "rows alike are one grid";
    EXPECT_EQ(std::count(text.begin(), text.end(), '#'), 1) << "says what the digits are";
}

TEST(NewPlan, NeedsRoomForTheCellsInWhichPlayersAppear) {
    const std::string least = " cells; at least 32 x 12 x 32 hold the cells in which players "
                              "appear, and the border";
    EXPECT_EQ(refusalOf("A", 31, 16, 32), "an arena of 31 x 16 x 32" + least);
    EXPECT_EQ(refusalOf("A", 32, 11, 32), "an arena of 32 x 11 x 32" + least);
    EXPECT_EQ(refusalOf("A", 32, 16, 31), "an arena of 32 x 16 x 31" + least);
    EXPECT_EQ(refusalOf("A", 32, 12, 32), "");
    EXPECT_EQ(refusalOf("A", 32, 0, 32), "an arena of 32 x 0 x 32 cells; 1 to 2097152 are allowed");
    EXPECT_EQ(refusalOf("A", 2000, 2000, 2000),
              "an arena of 2000 x 2000 x 2000 cells; 1 to 2097152 are allowed");
    EXPECT_NE(refusalOf("", 32, 16, 32), "");
}
