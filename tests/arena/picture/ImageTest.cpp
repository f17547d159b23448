#include "arena/picture/Image.h"
#include "common/Files.h"

#include <gtest/gtest.h>
#include <limits>
#include <set>
#include <string>

using namespace drench;
using namespace drench::arena;

namespace {

constexpr Colour black = {0, 0, 0};
constexpr Colour blue = {0, 0, 200};

/// Sum of the blue components in units of `blue`: the area that was drawn, in pixels.
double drawnArea(const Image& image) {
    double sum = 0.0;
    for (const Colour& pixel : image.pixels)
        sum += pixel.blue;
    return sum / blue.blue;
}

/// The text as rows of '#' and '.'.
std::string dots(const std::string& text) {
    std::string drawn;
    for (int row = 0; row < glyphHeight; ++row) {
        for (int column = 0; column < textWidth(text); ++column)
            drawn += textHasDot(text, column, row) ? '#' : '.';
        drawn += '\n';
    }
    return drawn;
}

} // namespace

TEST(Image, StartsInOneColour) {
    const Image image(3, 2, blue);
    EXPECT_EQ(image.width, 3);
    EXPECT_EQ(image.height, 2);
    EXPECT_EQ(image.pixels, std::vector<Colour>(6, blue));
}

TEST(Image, PixelsStandRowByRow) {
    Image image(3, 2);
    image.at(2, 1) = blue;
    EXPECT_EQ(image.pixels[5], blue);
}

TEST(Image, SidesAreOneTo8192Pixels) {
    EXPECT_EQ(Image(8192, 1).pixels.size(), 8192u);
    EXPECT_EQ(Image(1, 8192).pixels.size(), 8192u);
    for (const auto& [width, height] :
         {std::pair{0, 5}, {5, 0}, {-1, 5}, {5, -1}, {8193, 1}, {1, 8193}})
        EXPECT_THROW(Image(width, height), InputError) << width << " x " << height;
}

TEST(Image, RefusalSaysWhichSizeWasAskedFor) {
    try {
        Image(0, 9000);
        FAIL() << "no error";
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(), "a picture is 1 to 8192 pixels wide and high, not 0 x 9000");
    }
}

TEST(ImageMixing, GoesFromTheFirstColourToTheSecondAndRounds) {
    const Colour a = {0, 100, 255};
    const Colour b = {255, 101, 0};
    EXPECT_EQ(mixed(a, b, 0.0), a);
    EXPECT_EQ(mixed(a, b, 1.0), b);
    EXPECT_EQ(mixed(a, b, 0.5), (Colour{128, 101, 128}));
    EXPECT_EQ(mixed(a, b, 0.2), (Colour{51, 100, 204}));
}

TEST(ImageShapes, RectangleFillsWholePixelsAndSharesOfThem) {
    Image image(4, 3, black);
    fillRectangle(image, {1.0, 1.0}, {2.5, 2.0}, blue);
    EXPECT_EQ(image.at(1, 1), blue);
    EXPECT_EQ(image.at(2, 1), (Colour{0, 0, 100}));
    EXPECT_EQ(drawnArea(image), 1.5);
}

TEST(ImageShapes, OpacityMixes) {
    Image image(1, 1, {100, 100, 100});
    fillRectangle(image, {0.0, 0.0}, {1.0, 1.0}, blue, 0.25);
    EXPECT_EQ(image.at(0, 0), (Colour{75, 75, 125}));
}

TEST(ImageShapes, CircleHasItsAreaAndCentre) {
    Image image(40, 40, black);
    fillCircle(image, {20.0, 18.0}, 10.0, blue);
    EXPECT_NEAR(drawnArea(image), 314.16, 2.0);
    EXPECT_EQ(image.at(20, 18), blue);
    EXPECT_EQ(image.at(20, 26), blue);
    EXPECT_EQ(image.at(20, 29), black);
}

TEST(ImageShapes, LineHasRoundEnds) {
    Image image(60, 60, black);
    strokeLine(image, {15.0, 15.0}, {45.0, 15.0}, 8.0, blue);
    EXPECT_NEAR(drawnArea(image), 30 * 8 + 50.27, 2.0);
    Image aslant(60, 60, black);
    strokeLine(aslant, {15.0, 15.0}, {33.0, 39.0}, 8.0, blue);
    EXPECT_NEAR(drawnArea(aslant), 30 * 8 + 50.27, 2.0);
    EXPECT_EQ(aslant.at(24, 27), blue);
}

TEST(ImageShapes, TriangleMayGoRoundEitherWay) {
    Image one(50, 50, black);
    fillTriangle(one, {5.0, 5.0}, {45.0, 5.0}, {5.0, 35.0}, blue);
    EXPECT_NEAR(drawnArea(one), 600.0, 4.0);
    Image other(50, 50, black);
    fillTriangle(other, {45.0, 5.0}, {5.0, 5.0}, {5.0, 35.0}, blue);
    EXPECT_EQ(one, other);
    EXPECT_EQ(one.at(10, 10), blue);
    EXPECT_EQ(one.at(40, 30), black);
}

TEST(ImageShapes, WhatLiesOutsideIsCutOff) {
    Image image(10, 10, black);
    fillRectangle(image, {-100.0, -100.0}, {5.0, 1e12}, blue);
    EXPECT_EQ(drawnArea(image), 50.0);
    fillCircle(image, {-300.0, 5.0}, 20.0, blue);
    fillTriangle(image, {20.0, 20.0}, {30.0, 20.0}, {25.0, 30.0}, blue);
    strokeLine(image, {1e30, 0.0}, {1e30, 10.0}, 3.0, blue);
    EXPECT_EQ(drawnArea(image), 50.0);
}

TEST(ImageShapes, CoordinatesThatAreNotFiniteDrawNothing) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double odd : {none, infinite, -infinite}) {
        Image image(4, 4, black);
        fillRectangle(image, {odd, 0.0}, {4.0, 4.0}, blue);
        fillCircle(image, {2.0, odd}, 2.0, blue);
        strokeLine(image, {0.0, 0.0}, {4.0, odd}, 2.0, blue);
        fillTriangle(image, {0.0, 0.0}, {4.0, 0.0}, {odd, 4.0}, blue);
        EXPECT_EQ(drawnArea(image), 0.0) << odd;
    }
}

TEST(ImageText, GlyphsAreFiveBySevenDotsOneDotApart) {
    EXPECT_EQ(textWidth(""), 0);
    EXPECT_EQ(textWidth("1"), 5);
    EXPECT_EQ(textWidth("12"), 11);
    EXPECT_EQ(dots("1L"), "..#...#....\n"
                          ".##...#....\n"
                          "..#...#....\n"
                          "..#...#....\n"
                          "..#...#....\n"
                          "..#...#....\n"
                          ".###..#####\n");
}

TEST(ImageText, DigitsAndLettersAllLookDifferent) {
    std::set<std::string> glyphs;
    const std::string all = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    for (const char character : all)
        glyphs.insert(dots(std::string(1, character)));
    EXPECT_EQ(glyphs.size(), all.size());
}

TEST(ImageText, OtherCharactersAreBlank) {
    const std::string blank = dots(" ");
    EXPECT_EQ(blank.find('#'), std::string::npos);
    EXPECT_EQ(dots("a"), blank);
    EXPECT_EQ(dots("\xe4"), blank);
}

TEST(ImageText, BeyondTheTextThereAreNoDots) {
    EXPECT_FALSE(textHasDot("L", 0, -1));
    EXPECT_FALSE(textHasDot("L", 0, glyphHeight));
    EXPECT_FALSE(textHasDot("L", -1, 0));
    EXPECT_FALSE(textHasDot("L", 5, glyphHeight - 1));
    EXPECT_TRUE(textHasDot("L", 4, glyphHeight - 1));
}

TEST(ImageText, DotsAreWholeSquares) {
    Image image(20, 20, black);
    drawText(image, {2.4, 3.4}, "1", 2, blue);
    for (int row = 0; row < glyphHeight; ++row) {
        for (int column = 0; column < textWidth("1"); ++column) {
            const Colour expected = textHasDot("1", column, row) ? blue : black;
            EXPECT_EQ(image.at(2 + 2 * column, 3 + 2 * row), expected) << column << ", " << row;
            EXPECT_EQ(image.at(3 + 2 * column, 4 + 2 * row), expected) << column << ", " << row;
        }
    }
    EXPECT_EQ(drawnArea(image), 4.0 * 10);
}

TEST(ImageText, CanBeCentred) {
    Image around(20, 20, black);
    drawTextAround(around, {10.0, 10.0}, "88", 1, blue);
    Image from(20, 20, black);
    drawText(from, {4.5, 6.5}, "88", 1, blue);
    EXPECT_EQ(around, from);
}
