#include "bots/Script.h"
#include "common/Files.h"
#include "src/Messages.h"

#include <gtest/gtest.h>

using namespace drench;

using bots::Action;
using bots::readScript;

namespace {

std::string problemIn(const std::string& text) {
    try {
        readScript(text, "walk.script");
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(Script, EveryKindOfLineIsUnderstood) {
    const std::vector<Action> script = readScript("at 0 hold forward\n"
                                                  "at 1 hold backward\n"
                                                  "at 2 hold left\n"
                                                  "at 3 hold right\n"
                                                  "at 4 hold fire\n"
                                                  "at 5 release fire\n"
                                                  "at 6 jump\n"
                                                  "at 7 turn 90 -10\n"
                                                  "at 8 say Hello, all of you!\n"
                                                  "at 9 leave\n",
                                                  "walk.script");
    using Kind = Action::Kind;
    const std::vector<Action> expected = {{0, Kind::hold, keyIndex::forward, 0, 0, ""},
                                          {1, Kind::hold, keyIndex::backward, 0, 0, ""},
                                          {2, Kind::hold, keyIndex::left, 0, 0, ""},
                                          {3, Kind::hold, keyIndex::right, 0, 0, ""},
                                          {4, Kind::hold, keyIndex::shoot, 0, 0, ""},
                                          {5, Kind::release, keyIndex::shoot, 0, 0, ""},
                                          {6, Kind::jump, 0, 0, 0, ""},
                                          {7, Kind::turn, 0, 90, -10, ""},
                                          {8, Kind::say, 0, 0, 0, "Hello, all of you!"},
                                          {9, Kind::leave, 0, 0, 0, ""}};
    EXPECT_EQ(script, expected);
}

TEST(Script, BlanksEmptyLinesAndCommentsDoNotMatter) {
    const std::vector<Action> script = readScript("# a jump, then a word\r\n"
                                                  "\n"
                                                  "   \t\n"
                                                  "  at\t10   jump \r\n"
                                                  "at 10 say  # is not a comment here  \r\n"
                                                  "#at 11 jump",
                                                  "walk.script");
    ASSERT_EQ(script.size(), 2u);
    EXPECT_EQ(script[0].tick, 10);
    EXPECT_EQ(script[0].kind, Action::Kind::jump);
    EXPECT_EQ(script[1].text, "# is not a comment here");
}

TEST(Script, LastLineNeedsNoEnd) {
    EXPECT_EQ(readScript("at 1 jump\nat 2 jump", "walk.script").size(), 2u);
}

TEST(Script, WithoutALineHasNoActions) {
    EXPECT_TRUE(readScript("", "walk.script").empty());
    EXPECT_TRUE(readScript("# nothing\n\n", "walk.script").empty());
}

TEST(Script, ErrorNamesFileAndLine) {
    EXPECT_EQ(problemIn("# first\n\nat 1 jump\nat 2 dance\n"),
              "walk.script:4: \"dance\" is nothing to do: hold, release, jump, turn, say or leave");
}

TEST(Script, LineMustBeginWithAt) {
    EXPECT_EQ(problemIn("120 hold forward"),
              "walk.script:1: \"120\" stands where a line begins: \"at <tick> ...\"");
}

TEST(Script, TickIsAWholeNumberFromZero) {
    EXPECT_EQ(problemIn("at soon jump"),
              "walk.script:1: \"soon\" stands where the tick belongs, a whole number");
    EXPECT_EQ(problemIn("at 1.5 jump"),
              "walk.script:1: \"1.5\" stands where the tick belongs, a whole number");
    EXPECT_EQ(problemIn("at"), "walk.script:1: \"\" stands where the tick belongs, a whole number");
    EXPECT_EQ(problemIn("at -1 jump"), "walk.script:1: a tick is not negative");
    EXPECT_EQ(problemIn("at 99999999999999999999 jump"),
              "walk.script:1: \"99999999999999999999\" stands where the tick belongs, a whole "
              "number");
}

TEST(Script, TicksMustNotDecrease) {
    EXPECT_EQ(problemIn("at 5 jump\nat 5 jump\n"), "");
    EXPECT_EQ(problemIn("at 5 jump\nat 4 jump\n"), "walk.script:2: tick 4 comes after tick 5");
}

TEST(Script, OnlyKeysThatCanBeHeldAreKeys) {
    EXPECT_EQ(problemIn("at 1 hold jump"),
              "walk.script:1: \"jump\" is no key: forward, backward, left, right or fire");
    EXPECT_EQ(problemIn("at 1 release"),
              "walk.script:1: \"\" is no key: forward, backward, left, right or fire");
}

TEST(Script, TurnTakesTwoCounts) {
    EXPECT_EQ(problemIn("at 1 turn 5"),
              "walk.script:1: \"\" stands where dy belongs, a whole number");
    EXPECT_EQ(problemIn("at 1 turn left 5"),
              "walk.script:1: \"left\" stands where dx belongs, a whole number");
    EXPECT_EQ(problemIn("at 1 turn 5000000000 5"),
              "walk.script:1: \"5000000000\" stands where dx belongs, a whole number");
}

TEST(Script, NothingMayBeLeftOver) {
    EXPECT_EQ(problemIn("at 1 jump twice"),
              "walk.script:1: \"twice\" is left over at the end of the line");
    EXPECT_EQ(problemIn("at 1 turn 5 6 7 8"),
              "walk.script:1: \"7 8\" is left over at the end of the line");
}

TEST(Script, SayingMustFitItsRecord) {
    EXPECT_EQ(problemIn("at 1 say " + std::string(30, 'o')), "");
    EXPECT_EQ(problemIn("at 1 say " + std::string(31, 'o')),
              "walk.script:1: what is said has 1 to 30 bytes, not 31");
    EXPECT_EQ(problemIn("at 1 say  "), "walk.script:1: what is said has 1 to 30 bytes, not 0");
}

TEST(Script, NothingFollowsLeaving) {
    EXPECT_EQ(problemIn("at 1 leave\n# no more\n"), "");
    EXPECT_EQ(problemIn("at 1 leave\nat 2 jump\n"),
              "walk.script:2: nothing can be done after leaving");
}
