#include "arena/picture/Png.h"
#include "common/Files.h"

#include <gtest/gtest.h>
#include <png.h>
#include <string>
#include <vector>

using namespace drench;
using namespace drench::arena;

namespace {

/// No two of its pixels are alike.
Image colourful(int width, int height) {
    Image image(width, height);
    unsigned value = 1;
    for (Colour& pixel : image.pixels) {
        value = value * 1664525u + 1013904223u;
        pixel = {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
                 static_cast<std::uint8_t>(value >> 8)};
    }
    return image;
}

/// A PNG file of another kind than encodePng makes.
std::string encoded(png_uint_32 width, png_uint_32 height, png_uint_32 format,
                    const std::vector<std::uint8_t>& pixels) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = width;
    png.height = height;
    png.format = format;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png);
    std::string bytes(size, '\0');
    EXPECT_TRUE(png_image_write_to_memory(&png, bytes.data(), &size, 0, pixels.data(), 0, nullptr));
    bytes.resize(size);
    return bytes;
}

bool isRefused(const std::string& bytes) {
    try {
        decodePng(bytes);
        return false;
    } catch (const InputError&) {
        return true;
    }
}

/// Where the compressed pixels begin.
std::size_t startOfPixels(const std::string& bytes) {
    return bytes.find("IDAT") + 4;
}

} // namespace

TEST(Png, ComesBackAsItWas) {
    for (const auto& [width, height] : {std::pair{1, 1}, {7, 1}, {1, 7}, {33, 21}, {200, 100}}) {
        const Image image = colourful(width, height);
        EXPECT_EQ(decodePng(encodePng(image)), image) << width << " x " << height;
    }
}

TEST(Png, BeginsWithItsSignature) {
    EXPECT_EQ(encodePng(Image(1, 1)).substr(0, 8), "\x89PNG\r\n\x1a\n");
}

TEST(Png, SameImageGivesTheSameBytes) {
    EXPECT_EQ(encodePng(colourful(40, 30)), encodePng(colourful(40, 30)));
}

TEST(Png, GreyIsReadAsColour) {
    const Image image = decodePng(encoded(2, 1, PNG_FORMAT_GRAY, {10, 200}));
    EXPECT_EQ(image.pixels, (std::vector<Colour>{{10, 10, 10}, {200, 200, 200}}));
}

TEST(Png, WhatIsTransparentIsReadBeforeWhite) {
    const Image image = decodePng(encoded(2, 1, PNG_FORMAT_RGBA, {10, 20, 30, 255, 10, 20, 30, 0}));
    EXPECT_EQ(image.pixels, (std::vector<Colour>{{10, 20, 30}, {255, 255, 255}}));
}

TEST(Png, OtherFilesAreRefused) {
    for (const std::string text : {"", "x", "32 16 32\n 1 1", "GIF89a and more than enough bytes"})
        EXPECT_TRUE(isRefused(text)) << text;
}

TEST(Png, FileCutOffWithinItsPixelsIsRefused) {
    const std::string bytes = encodePng(colourful(33, 21));
    const std::size_t endOfPixels = bytes.rfind("IEND") - 8;
    for (std::size_t length = 0; length < endOfPixels; ++length)
        ASSERT_TRUE(isRefused(bytes.substr(0, length))) << length << " bytes";
}

TEST(Png, NoDamagedBitGivesAnotherPicture) {
    const Image image = colourful(9, 7);
    const std::string bytes = encodePng(image);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        for (const int bit : {0x01, 0x80}) {
            std::string damaged = bytes;
            damaged[i] = static_cast<char>(damaged[i] ^ bit);
            ASSERT_TRUE(isRefused(damaged) || decodePng(damaged) == image) << "byte " << i;
        }
    }
}

TEST(Png, DamagedPixelsAreRefused) {
    const std::string bytes = encodePng(colourful(33, 21));
    std::string damaged = bytes;
    damaged[startOfPixels(bytes) + 100] = static_cast<char>(~damaged[startOfPixels(bytes) + 100]);
    EXPECT_TRUE(isRefused(damaged));
}

TEST(Png, RefusalSaysWhatIsWrong) {
    try {
        decodePng("no picture at all, but long enough");
        FAIL() << "no error";
    } catch (const InputError& error) {
        EXPECT_EQ(std::string(error.what()).rfind("not a whole PNG picture: ", 0), 0u)
            << error.what();
    }
}

TEST(Png, TooLargeOnesAreRefusedWithTheirSize) {
    try {
        decodePng(encoded(8193, 1, PNG_FORMAT_GRAY, std::vector<std::uint8_t>(8193)));
        FAIL() << "no error";
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(), "a PNG picture of 8193 x 1 pixels is too large");
    }
}
