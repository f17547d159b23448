#pragma once

/// The length of a tick in milliseconds.
constexpr float tickMilliseconds = 16.666666f;

/// Whole milliseconds since the process first read this clock. Monotonic; never decreases.
long getCurrentMillisecond();

/// Whole seconds since the process first read this clock.
long getCurrentSecond();

/// The sleep of the tick loop: the whole milliseconds left, at the moment `now`, of a tick that
/// began at tickStart; zero or less when the tick has overrun. Single precision throughout: beyond
/// 2^24 ms the result comes in steps of 2 ms, then 4 ms.
long millisecondsLeftInTick(long tickStart, long now);
