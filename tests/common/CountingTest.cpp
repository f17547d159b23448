#include "common/Counting.h"

#include <gtest/gtest.h>

TEST(Counting, OnlyOneThingIsNamedWithoutAnS) {
    EXPECT_EQ(drench::counted(0, "standing place"), "0 standing places");
    EXPECT_EQ(drench::counted(1, "standing place"), "1 standing place");
    EXPECT_EQ(drench::counted(2, "standing place"), "2 standing places");
    EXPECT_EQ(drench::counted(11, "cell"), "11 cells");
}
