#include "common/Checksum.h"
#include "common/Decimals.h"
#include "common/NumberIn.h"

#include <cstdint>
#include <gtest/gtest.h>

using namespace drench;

TEST(NumberIn, TextIsTheNumberAndNothingElse) {
    EXPECT_EQ(numberIn<int>("-42"), -42);
    EXPECT_EQ(numberIn<double>("2.5"), 2.5);
    EXPECT_EQ(numberIn<std::uint64_t>("18446744073709551615"), 18446744073709551615u);
    for (const char* text : {"", " 4", "4 ", "4x", "+4", "4.0", "x"})
        EXPECT_EQ(numberIn<int>(text), std::nullopt) << text;
}

TEST(NumberIn, NumberThatDoesNotFitIsNone) {
    EXPECT_EQ(numberIn<int>("2147483648"), std::nullopt);
    EXPECT_EQ(numberIn<std::uint64_t>("-1"), std::nullopt);
    EXPECT_EQ(numberIn<std::uint64_t>("18446744073709551616"), std::nullopt);
    EXPECT_EQ(numberIn<double>("1e999"), std::nullopt);
}

TEST(Decimals, HaveSoManyDigitsAndADashForTheUnknown) {
    EXPECT_EQ(decimals(16.06, 1), "16.1");
    EXPECT_EQ(decimals(16.0, 0), "16");
    EXPECT_EQ(decimals(-0.25, 2), "-0.25");
    EXPECT_EQ(decimals(std::nullopt, 2), "-");
    EXPECT_EQ(decimals(1e300, 1).size(), 303u);
}

TEST(Checksum, IsThatOfThePublishedTable) {
    // draft-eastlake-fnv: FNV-1a, 64 bits, of "", "a" and "foobar".
    EXPECT_EQ(checksum(""), 0xcbf29ce484222325u);
    EXPECT_EQ(checksum("a"), 0xaf63dc4c8601ec8cu);
    EXPECT_EQ(checksum("foobar"), 0x85944171f73967e8u);
    EXPECT_EQ(checksum("bar", checksum("foo")), checksum("foobar"));
    EXPECT_NE(checksum("\xff"), checksum("\x7f"));
}
