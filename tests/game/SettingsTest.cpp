#include "game/Settings.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace drench::game;

TEST(Settings, DefaultsAreWithinTheirLimits) {
    Settings settings;
    clamp(settings);
    EXPECT_EQ(settings, Settings());
}

TEST(Settings, ValuesStopAtTheirLimits) {
    Settings low;
    low.sensitivity = -1.0;
    low.fieldOfView = 0.0;
    low.frameLimit = -5;
    low.renderScale = 0.0;
    low.interfaceScale = -INFINITY;
    low.masterVolume = -0.1;
    clamp(low);
    EXPECT_EQ(low.sensitivity, 0.01);
    EXPECT_EQ(low.fieldOfView, 60.0);
    EXPECT_EQ(low.frameLimit, 0);
    EXPECT_EQ(low.renderScale, 0.25);
    EXPECT_EQ(low.interfaceScale, 0.5);
    EXPECT_EQ(low.masterVolume, 0.0);

    Settings high;
    high.stickSensitivity = 1e300;
    high.frameLimit = 1'000'000;
    high.renderScale = 2.0;
    high.effectsVolume = INFINITY;
    clamp(high);
    EXPECT_EQ(high.stickSensitivity, 4.0);
    EXPECT_EQ(high.frameLimit, 1000);
    EXPECT_EQ(high.renderScale, 1.0);
    EXPECT_EQ(high.effectsVolume, 1.0);
}

TEST(Settings, NoNumberIsBroughtToTheLeast) {
    Settings settings;
    settings.interfaceScale = std::nan("");
    clamp(settings);
    EXPECT_EQ(settings.interfaceScale, 0.5);
}

TEST(Settings, PictureIsPlainByItselfOnlyWhereTheProcessorDraws) {
    EXPECT_FALSE(isFull(Picture::automatic, true));
    EXPECT_TRUE(isFull(Picture::automatic, false));
    for (const bool drawsInSoftware : {false, true}) {
        EXPECT_FALSE(isFull(Picture::plain, drawsInSoftware));
        EXPECT_TRUE(isFull(Picture::full, drawsInSoftware));
    }
}

TEST(Settings, FrameLimitIsNoneOrOneThatCanBeSteered) {
    Settings settings;
    settings.frameLimit = 1;
    clamp(settings);
    EXPECT_EQ(settings.frameLimit, 10);
    settings.frameLimit = 0;
    clamp(settings);
    EXPECT_EQ(settings.frameLimit, 0);
}

TEST(Settings, NameIsAsLongAsARoomKeepsIt) {
    Settings settings;
    settings.name = "Bartholomew the First";
    clamp(settings);
    EXPECT_EQ(settings.name, "Bartholomew");
    settings.name = "0123456789ä";
    clamp(settings);
    EXPECT_EQ(settings.name, "0123456789") << "no half character";
    settings.name = "A\xFF";
    clamp(settings);
    EXPECT_EQ(settings.name, "A\xEF\xBF\xBD");
}

TEST(Settings, LatestRoomComesFirstAndOnce) {
    Settings settings;
    rememberRoom(settings, "a:1");
    rememberRoom(settings, "b:2");
    rememberRoom(settings, "a:1");
    EXPECT_EQ(settings.rooms, (std::vector<std::string>{"a:1", "b:2"}));
    for (int i = 0; i < 20; ++i)
        rememberRoom(settings, "room" + std::to_string(i));
    ASSERT_EQ(settings.rooms.size(), mostRooms);
    EXPECT_EQ(settings.rooms.front(), "room19");
    EXPECT_EQ(settings.rooms.back(), "room10");
}

TEST(Settings, WhatIsNoAddressIsNotKept) {
    Settings settings;
    for (const char* text : {"", "a b", "a\n", "h\xC3\xA4user"})
        rememberRoom(settings, text);
    rememberRoom(settings, std::string(longestAddress + 1, 'a'));
    EXPECT_TRUE(settings.rooms.empty());
    rememberRoom(settings, std::string(longestAddress, 'a'));
    EXPECT_EQ(settings.rooms.size(), 1u);

    settings.rooms = {"a:1", "a b", ""};
    clamp(settings);
    EXPECT_EQ(settings.rooms, std::vector<std::string>{"a:1"});
    settings.rooms.assign(50, "a:1");
    clamp(settings);
    EXPECT_EQ(settings.rooms.size(), mostRooms);
}
