#include "bots/Routes.h"

#include <algorithm>
#include <queue>
#include <utility>

namespace drench::bots {

namespace {

constexpr int noPlace = -1;

std::size_t asIndex(int i) {
    return static_cast<std::size_t>(i);
}

/// A place on the quickest way from somewhere.
struct Stop {
    double ticks = anyTime;

    /// The toll of the place; below 0 until it was asked for.
    double toll = -1.0;
    int before = noPlace;
};

/// The quickest ways from a start (Dijkstra). No road takes negative time, so the nearest open
/// place cannot be reached more quickly. The search may end there if it is the goal, or if it and
/// so all the others take longer than `longest`.
std::vector<Stop> quickestWays(const Roadmap& roadmap, int start, int goal, double longest,
                               const std::function<double(int place)>& toll) {
    std::vector<Stop> stops(roadmap.roads.size());
    using Entry = std::pair<double, int>;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> open;
    stops[asIndex(start)].ticks = 0.0;
    open.push({0.0, start});
    while (!open.empty() && open.top().second != goal && open.top().first <= longest) {
        const auto [ticks, place] = open.top();
        open.pop();
        if (ticks > stops[asIndex(place)].ticks)
            continue;
        for (const Road& road : roadmap.roads[asIndex(place)]) {
            Stop& stop = stops[asIndex(road.to)];
            if (stop.toll < 0.0)
                stop.toll = toll ? std::max(0.0, toll(road.to)) : 0.0;
            const double total = ticks + road.ticks + stop.toll;
            if (total < stop.ticks) {
                stop.ticks = total;
                stop.before = place;
                open.push({total, road.to});
            }
        }
    }
    return stops;
}

} // namespace

std::vector<double> ticksFrom(const Roadmap& roadmap, int start, double longest) {
    std::vector<double> ticks;
    for (const Stop& stop : quickestWays(roadmap, start, noPlace, longest, {}))
        ticks.push_back(stop.ticks);
    return ticks;
}

std::vector<int> quickestRoute(const Roadmap& roadmap, int from, int to,
                               const std::function<double(int place)>& toll) {
    if (from < 0 || to < 0)
        return {};
    const std::vector<Stop> stops = quickestWays(roadmap, from, to, anyTime, toll);
    if (to != from && stops[asIndex(to)].before < 0)
        return {};
    std::vector<int> places;
    for (int place = to; place >= 0; place = stops[asIndex(place)].before)
        places.push_back(place);
    std::reverse(places.begin(), places.end());
    return places;
}

} // namespace drench::bots
