#include "game/Text.h"

#include <gtest/gtest.h>

using namespace drench::game;

namespace {

const std::string unknown = "\xEF\xBF\xBD";

} // namespace

TEST(Text, CharactersAreAsLongAsTheirBytes) {
    EXPECT_EQ(characterLength("a", 0), 1u);
    EXPECT_EQ(characterLength("ä", 0), 2u);
    EXPECT_EQ(characterLength("€", 0), 3u);
    EXPECT_EQ(characterLength("💧", 0), 4u);
    EXPECT_EQ(characterLength(std::string_view("\0", 1), 0), 1u);
    EXPECT_EQ(characterLength("xä", 1), 2u);
}

TEST(Text, BytesOfNoCharacterHaveNoLength) {
    EXPECT_EQ(characterLength("", 0), 0u);
    EXPECT_EQ(characterLength("a", 1), 0u);
    EXPECT_EQ(characterLength("ä", 1), 0u) << "the middle of a character";
    EXPECT_EQ(characterLength("\xC3", 0), 0u) << "cut";
    EXPECT_EQ(characterLength("\xC3(", 0), 0u);
    EXPECT_EQ(characterLength("\xE2\x82(", 0), 0u);
    EXPECT_EQ(characterLength("\xC0\x80", 0), 0u) << "overlong";
    EXPECT_EQ(characterLength("\xE0\x9F\xBF", 0), 0u) << "overlong";
    EXPECT_EQ(characterLength("\xF0\x8F\xBF\xBF", 0), 0u) << "overlong";
    EXPECT_EQ(characterLength("\xED\xA0\x80", 0), 0u) << "a surrogate";
    EXPECT_EQ(characterLength("\xED\x9F\xBF", 0), 3u) << "right before the surrogates";
    EXPECT_EQ(characterLength("\xEE\x80\x80", 0), 3u) << "right behind them";
    EXPECT_EQ(characterLength("\xF4\x8F\xBF\xBF", 0), 4u) << "the last character";
    EXPECT_EQ(characterLength("\xF4\x90\x80\x80", 0), 0u);
    EXPECT_EQ(characterLength("\xF5\x80\x80\x80", 0), 0u);
}

TEST(Text, IsCutBetweenCharacters) {
    EXPECT_EQ(wholeCharacters("abc", 2), "ab");
    EXPECT_EQ(wholeCharacters("abc", 3), "abc");
    EXPECT_EQ(wholeCharacters("aä", 2), "a");
    EXPECT_EQ(wholeCharacters("aä", 3), "aä");
    EXPECT_EQ(wholeCharacters("💧", 3), "");
    EXPECT_EQ(wholeCharacters("\xFF\xFF", 1), "\xFF");
}

TEST(Text, ControlsAndStrayBytesAreDrawnAsUnknown) {
    EXPECT_EQ(drawable("Ann ä€💧"), "Ann ä€💧");
    EXPECT_EQ(drawable("\x1B[31mred"), unknown + "[31mred");
    EXPECT_EQ(drawable("a\nb\x7F"), "a" + unknown + "b" + unknown);
    EXPECT_EQ(drawable("\xC2\x85"), unknown) << "a control character of two bytes";
    EXPECT_EQ(drawable("\xE2\x80\xA8"), unknown) << "a line separator";
    EXPECT_EQ(drawable("a\xFF\xC3"), "a" + unknown + unknown);
}

TEST(Text, InvisibleAndTurningCharactersAreDropped) {
    EXPECT_EQ(drawable("a\xE2\x80\xAE"
                       "b"),
              "ab")
        << "right-to-left override";
    EXPECT_EQ(drawable("a\xE2\x80\x8B"
                       "b"),
              "ab")
        << "zero width space";
    EXPECT_EQ(drawable("a\xEF\xBB\xBF"
                       "b"),
              "ab")
        << "byte order mark";
    EXPECT_EQ(drawable("a\xF3\xA0\x81\xA1"
                       "b"),
              "ab")
        << "tag";
}

TEST(Text, NameIsNeverEmpty) {
    EXPECT_EQ(drawableName("Ann"), "Ann");
    EXPECT_EQ(drawableName("  Ann B "), "Ann B");
    EXPECT_EQ(drawableName(""), "(no name)");
    EXPECT_EQ(drawableName("   "), "(no name)");
    EXPECT_EQ(drawableName("\xE2\x80\x8B"), "(no name)");
}
