#include "Timing.h"

#include "MathOps.h"

#include <chrono>

namespace {

/// Counted from the first reading, since players and the tick loop hold times as floats. Times
/// since boot would make rooms run at half rate or without any pause on a machine that has been up
/// for days.
double nanosecondsSinceFirstReading() {
    using Clock = std::chrono::steady_clock;
    static const Clock::time_point firstReading = Clock::now();
    return static_cast<double>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - firstReading).count());
}

} // namespace

long getCurrentMillisecond() {
    return static_cast<long>(nanosecondsSinceFirstReading() / 1e6);
}

long getCurrentSecond() {
    return static_cast<long>(nanosecondsSinceFirstReading() / 1e9);
}

long millisecondsLeftInTick(long tickStart, long now) {
    const float target = static_cast<float>(tickStart) + tickMilliseconds;
    return truncateToLong(target - static_cast<float>(now));
}
