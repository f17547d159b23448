#pragma once

#include "client/Clock.h"

#include <chrono>
#include <optional>

namespace drench::keeper {

using client::Time;
using std::chrono::milliseconds;

/// What a host has chosen. Durations of 0 mean at once, absent ones never.
struct Policy {
    /// How long the room goes on for its players once its stop is asked for.
    milliseconds waitForPlayers{300'000};

    /// A room of this age ends as soon as it is empty for `quietTime`.
    std::optional<milliseconds> oldAge{86'400'000};
    milliseconds quietTime{60'000};

    /// An allocated room that is empty for so long ends.
    std::optional<milliseconds> longestUnused{120'000};

    /// Whether a room that ended is started again; else the keeper reports that and ends as well.
    bool startAgain = true;
};

/// All that a room's end depends on.
struct Situation {
    Time started;

    /// Nothing while somebody plays.
    std::optional<Time> emptySince;
    std::optional<Time> allocatedSince;
    std::optional<Time> stopAskedAt;
};

/// Why a room's time is up.
enum class Ending {
    /// It is not.
    none,

    /// Its stop was asked for, and nobody plays.
    stopped,

    /// Its stop was asked for, and players were waited for long enough.
    stoppedWithPlayers,
    aged,
    unused
};

Ending endingDue(const Situation& situation, const Policy& policy, Time now);

/// Whether the keeper starts the room again after it ended, for a reason of the keeper's or, with
/// Ending::none, by itself.
bool startsAgain(Ending ending, const Situation& situation, const Policy& policy);

/// How long a start waits after the room's end: 200 ms, and twice as long after each life of less
/// than ten seconds, up to five seconds.
class RestartPause {
  public:
    milliseconds after(Time::duration life);

  private:
    milliseconds next_ = shortest;
    static constexpr milliseconds shortest{200};
    static constexpr milliseconds longest{5000};
    static constexpr milliseconds shortLife{10'000};
};

} // namespace drench::keeper
