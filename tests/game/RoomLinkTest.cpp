#include "game/RoomLink.h"

#include <gtest/gtest.h>

using drench::game::roomOfLink;

TEST(RoomLink, NamesARoom) {
    EXPECT_EQ(roomOfLink("drench://example.org:5001"), "example.org:5001");
    EXPECT_EQ(roomOfLink("drench://example.org/"), "example.org");
    EXPECT_EQ(roomOfLink("drench://"), "");
}

TEST(RoomLink, AnyOtherTextStaysAsItIs) {
    EXPECT_EQ(roomOfLink("example.org:5001"), "example.org:5001");
    EXPECT_EQ(roomOfLink("http://example.org/"), "http://example.org/");
    EXPECT_EQ(roomOfLink("host/"), "host/");
    EXPECT_EQ(roomOfLink(""), "");
}
