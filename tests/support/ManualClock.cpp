#include "tests/support/ManualClock.h"

#include "src/Timing.h"

#include <gtest/gtest.h>

namespace {

/// Every test begins at zero, whatever the one before it left.
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
