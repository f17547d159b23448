#include "game/ChatLine.h"

#include <gtest/gtest.h>

using drench::game::ChatLine;

namespace {

ChatLine lineOf(const std::string& text) {
    ChatLine line;
    line.insert(text);
    return line;
}

/// The line with a bar at the cursor.
std::string shown(const ChatLine& line) {
    std::string text = line.text();
    return text.insert(line.cursor(), "|");
}

} // namespace

TEST(ChatLine, TextIsTypedAtTheCursor) {
    ChatLine line = lineOf("ac");
    EXPECT_EQ(shown(line), "ac|");
    line.moveLeft();
    line.insert("b");
    EXPECT_EQ(shown(line), "ab|c");
    line.moveHome();
    line.insert("x");
    EXPECT_EQ(shown(line), "x|abc");
    line.moveEnd();
    EXPECT_EQ(shown(line), "xabc|");
}

TEST(ChatLine, CursorMovesByWholeCharacters) {
    ChatLine line = lineOf("aä💧");
    line.moveLeft();
    EXPECT_EQ(shown(line), "aä|💧");
    line.moveLeft();
    EXPECT_EQ(shown(line), "a|ä💧");
    line.moveLeft();
    line.moveLeft();
    EXPECT_EQ(shown(line), "|aä💧");
    line.moveRight();
    line.moveRight();
    EXPECT_EQ(shown(line), "aä|💧");
    line.moveRight();
    line.moveRight();
    EXPECT_EQ(shown(line), "aä💧|");
}

TEST(ChatLine, WholeCharactersAreErased) {
    ChatLine line = lineOf("aä💧");
    line.moveLeft();
    line.eraseBehind();
    EXPECT_EQ(shown(line), "aä|");
    line.eraseBehind();
    EXPECT_EQ(shown(line), "aä|") << "nothing is behind";
    line.eraseBefore();
    EXPECT_EQ(shown(line), "a|");
    line.eraseBefore();
    line.eraseBefore();
    EXPECT_EQ(shown(line), "|");
}

TEST(ChatLine, HoldsThirtyBytesOfWholeCharacters) {
    EXPECT_EQ(lineOf(std::string(40, 'a')).text(), std::string(30, 'a'));
    ChatLine line = lineOf(std::string(29, 'a'));
    line.insert("ä");
    EXPECT_EQ(line.text().size(), 29u) << "only half of it would fit";
    line.insert("b");
    EXPECT_EQ(line.text(), std::string(29, 'a') + "b");
    line.insert("c");
    EXPECT_EQ(line.text().size(), 30u);
    line.moveHome();
    line.insert("c");
    EXPECT_EQ(line.text().size(), 30u);
    EXPECT_EQ(lineOf("💧💧💧💧💧💧💧💧").text(), "💧💧💧💧💧💧💧");
}

TEST(ChatLine, PastedRubbishIsLeftOut) {
    EXPECT_EQ(lineOf("a\nb\tc\x1B[0m\xFF\xC3").text(), "abc[0m");
    EXPECT_EQ(lineOf("a\xE2\x80\xAE"
                     "b")
                  .text(),
              "ab");
    EXPECT_EQ(lineOf(std::string("a\0b", 3)).text(), "ab") << "a room reads up to the first 0";
}

TEST(ChatLine, FinishedLineIsSaidWithoutBlanksAtItsEnds) {
    ChatLine line = lineOf("  hello you ");
    EXPECT_EQ(line.finish(), "hello you");
    EXPECT_EQ(shown(line), "|");
    EXPECT_EQ(lineOf("   ").finish(), "");
    EXPECT_EQ(ChatLine().finish(), "");
}

TEST(ChatLine, EarlierLinesComeBack) {
    ChatLine line;
    for (const char* text : {"one", "two", "two", "three"}) {
        line.insert(text);
        line.finish();
    }
    line.insert("begun");
    line.showEarlier();
    EXPECT_EQ(shown(line), "three|");
    line.showEarlier();
    EXPECT_EQ(line.text(), "two");
    line.showEarlier();
    EXPECT_EQ(line.text(), "one") << "a repeated line counts once";
    line.showEarlier();
    EXPECT_EQ(line.text(), "one");
    line.showLater();
    EXPECT_EQ(line.text(), "two");
    line.showLater();
    line.showLater();
    EXPECT_EQ(shown(line), "begun|");
    line.showLater();
    EXPECT_EQ(line.text(), "begun");
}

TEST(ChatLine, CancelledLineIsForgotten) {
    ChatLine line = lineOf("one");
    line.finish();
    line.insert("two");
    line.showEarlier();
    line.cancel();
    EXPECT_EQ(shown(line), "|");
    line.showLater();
    EXPECT_EQ(line.text(), "");
    line.showEarlier();
    EXPECT_EQ(line.text(), "one");
    line.showEarlier();
    EXPECT_EQ(line.text(), "one");
}

TEST(ChatLine, OnlySoManyEarlierLinesAreKept) {
    ChatLine line;
    for (int i = 0; i < 60; ++i) {
        line.insert(std::to_string(i));
        line.finish();
    }
    for (int i = 0; i < 100; ++i)
        line.showEarlier();
    EXPECT_EQ(line.text(), "10");
}
