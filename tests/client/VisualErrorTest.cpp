#include "client/VisualError.h"

#include <gtest/gtest.h>
#include <limits>

using namespace drench;
using namespace drench::client;
using std::chrono::milliseconds;

namespace {

constexpr Time start = Time() + std::chrono::hours(1);

} // namespace

TEST(VisualError, FadesEvenlyWithinAHundredMilliseconds) {
    VisualError error;
    EXPECT_EQ(error.at(start).x, 0.0f);
    error.add({8.0f, -4.0f, 2.0f}, start);
    EXPECT_EQ(error.at(start).x, 8.0f);
    EXPECT_FLOAT_EQ(error.at(start + milliseconds(25)).x, 6.0f);
    EXPECT_FLOAT_EQ(error.at(start + milliseconds(50)).y, -2.0f);
    EXPECT_FLOAT_EQ(error.at(start + milliseconds(75)).z, 0.5f);
    EXPECT_EQ(error.at(start + milliseconds(100)).x, 0.0f);
    EXPECT_EQ(error.at(start + milliseconds(5000)).x, 0.0f);
}

TEST(VisualError, AddsToWhatIsLeft) {
    VisualError error;
    error.add({8.0f, 0.0f, 0.0f}, start);
    error.add({0.0f, 2.0f, 0.0f}, start + milliseconds(50));
    EXPECT_FLOAT_EQ(error.at(start + milliseconds(50)).x, 4.0f);
    EXPECT_FLOAT_EQ(error.at(start + milliseconds(50)).y, 2.0f);
    EXPECT_FLOAT_EQ(error.at(start + milliseconds(100)).x, 2.0f);
}

TEST(VisualError, IsNeverMoreThanWasAdded) {
    VisualError error;
    error.add({8.0f, 0.0f, 0.0f}, start);
    EXPECT_EQ(error.at(start - milliseconds(50)).x, 8.0f);
}

TEST(VisualError, IsGoneWhenCleared) {
    VisualError error;
    error.add({8.0f, 0.0f, 0.0f}, start);
    error.clear();
    EXPECT_EQ(error.at(start).x, 0.0f);
}
