#include "bench/RoomSupply.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <queue>

namespace drench::bench {

namespace {

constexpr double never = std::numeric_limits<double>::infinity();

double rateAt(const RoomSupply& supply, double time) {
    const bool rush = time >= supply.rushStart && time < supply.rushStart + supply.rushLength;
    return supply.groupRate * (rush ? supply.rushFactor : 1.0);
}

/// Thinning (Lewis and Shedler, 1979): as many as at the highest rate, of whom only some come.
double nextArrival(const RoomSupply& supply, double time, Chance& chance) {
    const double highest = supply.groupRate * std::max(1.0, supply.rushFactor);
    do {
        time -= std::log(1.0 - chance.share()) / highest;
    } while (!chance.happens(rateAt(supply, time) / highest));
    return time;
}

} // namespace

double Waiting::shareWhoWait() const {
    const auto waiting =
        std::count_if(waits.begin(), waits.end(), [](double wait) { return wait > 0.0; });
    return waits.empty() ? 0.0 : static_cast<double>(waiting) / static_cast<double>(waits.size());
}

Waiting supplyRooms(const RoomSupply& supply, double seconds, Chance chance) {
    // Of their own, so that more spares meet the same groups.
    Chance arrivals = chance.split();
    Waiting result;
    std::priority_queue<double, std::vector<double>, std::greater<>> starting;
    std::deque<std::size_t> queue;
    std::vector<double> cameAt;
    int ready = supply.spares;
    double arrival = nextArrival(supply, 0.0, arrivals);
    double sync = supply.syncPeriod;
    for (;;) {
        const double started = starting.empty() ? never : starting.top();
        const double now = std::min({arrival, sync, started});
        if (now > seconds)
            break;
        if (now == started) {
            starting.pop();
            ++ready;
        } else if (now == arrival) {
            queue.push_back(result.waits.size());
            result.waits.push_back(0.0);
            cameAt.push_back(now);
            arrival = nextArrival(supply, now, arrivals);
        } else {
            for (int missing = supply.spares - ready - static_cast<int>(starting.size());
                 missing > 0; --missing)
                starting.push(now + supply.startTime(chance));
            sync += supply.syncPeriod;
        }
        while (ready > 0 && !queue.empty()) {
            result.waits[queue.front()] = now - cameAt[queue.front()];
            queue.pop_front();
            --ready;
        }
        result.mostAtOnce = std::max(result.mostAtOnce, queue.size());
    }
    for (const std::size_t group : queue)
        result.waits[group] = seconds - cameAt[group];
    return result;
}

double erlangC(int servers, double load) {
    // The chance to be lost where nobody can wait, server by server; then that to wait.
    double lost = 1.0;
    for (int server = 1; server <= servers; ++server)
        lost = load * lost / (server + load * lost);
    return lost / (1.0 - load / servers * (1.0 - lost));
}

} // namespace drench::bench
