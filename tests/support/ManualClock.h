#pragma once

/// Replaces the server's clock in every test program that links it: time passes only by a test's
/// order.
struct ManualClock {
    /// The result of getCurrentMillisecond().
    static long now;
};
