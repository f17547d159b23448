#include "ManualClock.h"

#include "Timing.h"

long ManualClock::now = 0;

long getCurrentMillisecond() {
    return ManualClock::now;
}

long getCurrentSecond() {
    return ManualClock::now / 1000;
}
