#include "game/Capture.h"

#include <gtest/gtest.h>

using namespace drench::game;

TEST(Capture, TheGameHasTheMouseWithTheFocusAndNotWithout) {
    Capture capture;
    EXPECT_FALSE(capture.holdsMouse());
    capture.setFocus(true);
    EXPECT_TRUE(capture.holdsMouse());
    capture.setFocus(false);
    EXPECT_FALSE(capture.holdsMouse());
}

TEST(Capture, AMenuHasTheMouseAsLongAsItIsOpen) {
    Capture capture;
    capture.setFocus(true);
    capture.setMenu(true);
    EXPECT_FALSE(capture.holdsMouse());
    EXPECT_FALSE(capture.click()) << "a click in a menu is the menu's";
    EXPECT_FALSE(capture.holdsMouse());
    capture.setMenu(false);
    EXPECT_TRUE(capture.holdsMouse());
}

TEST(Capture, AClickTakesAFreedMouseAndDoesNothingElse) {
    Capture capture;
    capture.setFocus(true);
    EXPECT_FALSE(capture.click()) << "while the game has it, a click is a shot";
    capture.release();
    EXPECT_FALSE(capture.holdsMouse());
    EXPECT_TRUE(capture.click());
    EXPECT_TRUE(capture.holdsMouse());
}

TEST(Capture, AFreedMouseComesBackWithTheNextFocus) {
    Capture capture;
    capture.setFocus(true);
    capture.release();
    capture.setFocus(true);
    EXPECT_FALSE(capture.holdsMouse()) << "the focus that it had already";
    capture.setFocus(false);
    EXPECT_FALSE(capture.click()) << "a click beside the window";
    capture.setFocus(true);
    EXPECT_TRUE(capture.holdsMouse());
}
