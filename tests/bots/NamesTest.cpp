#include "bots/Names.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace drench;

TEST(Names, DifferInOneRoom) {
    for (std::uint64_t seed = 0; seed < 100; ++seed) {
        std::vector<std::string> names = bots::namesFor(24, seed);
        ASSERT_EQ(names.size(), 24u);
        std::sort(names.begin(), names.end());
        EXPECT_EQ(std::unique(names.begin(), names.end()), names.end()) << seed;
    }
}

TEST(Names, FitTheirRecord) {
    for (const std::string& name : bots::namesFor(24, 1)) {
        EXPECT_GE(name.size(), 1u);
        EXPECT_LE(name.size(), 11u) << name;
    }
}

TEST(Names, FollowFromTheSeed) {
    EXPECT_EQ(bots::namesFor(4, 5), bots::namesFor(4, 5));
    EXPECT_NE(bots::namesFor(4, 5), bots::namesFor(4, 6));
}
