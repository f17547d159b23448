#pragma once

/// Stands in for the server's clock wherever it is linked: time passes only when a test says so.
struct ManualClock {
    /// What getCurrentMillisecond() returns.
    static long now;
};
