#pragma once

#include "common/Chance.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace drench::bench {

/// A fleet with spare rooms, and groups of players who each want one. Times are in seconds.
struct RoomSupply {
    /// Rooms that are ready or starting: the autoscaler's buffer.
    int spares = 1;

    /// How often the autoscaler looks, and starts a room for each that was taken. It does not see
    /// who waits.
    double syncPeriod = 10.0;

    /// From a look of the autoscaler until its room is ready.
    std::function<double(Chance&)> startTime;

    /// Groups a second, each as likely at any moment (a Poisson process).
    double groupRate = 1.0;

    /// A rush: from here on, for so long, they are so many times as many.
    double rushStart = 0.0;
    double rushLength = 0.0;
    double rushFactor = 1.0;
};

struct Waiting {
    /// Of each group that came, in their order; 0 where a room was ready. Whoever still waits at
    /// the end of the time counts with the wait until then.
    std::vector<double> waits;

    /// Groups who waited at the worst moment.
    std::size_t mostAtOnce = 0;

    /// 0 to 1.
    double shareWhoWait() const;
};

/// Lets groups come for `seconds`, who take rooms in the order in which they came.
Waiting supplyRooms(const RoomSupply& supply, double seconds, Chance chance);

/// The probability to wait for one of so many servers, where customers come at random and each
/// takes an exponentially distributed time (A. K. Erlang, 1917).
/// @param load  customers who would be served at once if nobody waited; less than `servers`
double erlangC(int servers, double load);

} // namespace drench::bench
