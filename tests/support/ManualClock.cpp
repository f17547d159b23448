#include "tests/support/ManualClock.h"

#include "src/Timing.h"

#include <gtest/gtest.h>

namespace {

/// Every test begins at zero, after any other test.
struct ClockReset : testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { ManualClock::now = 0; }
};

const bool isInstalled = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new ClockReset);
    return true;
}();

} // namespace

long ManualClock::now = 0;

long getCurrentMillisecond() {
    return ManualClock::now;
}

long getCurrentSecond() {
    return ManualClock::now / 1000;
}
