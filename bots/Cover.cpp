#include "bots/Cover.h"

#include "bots/Sightline.h"

#include <algorithm>
#include <queue>

namespace drench::bots {

namespace {

/// The farthest cover: ticks on the road, and the number of places tried.
constexpr int furthest = 90;
constexpr std::size_t mostPlaces = 80;

bool isHidden(const arena::Grid& grid, vec3 eye, vec3 body) {
    const auto parts = bodyParts(eye, body);
    return std::all_of(parts.begin(), parts.end(), [&](vec3 part) {
        return sightline(grid, eye, body + part) == Sightline::hidden;
    });
}

struct Stop {
    int place;
    int ticks;

    /// Index of the stop before on the way.
    int before;
};

} // namespace

std::vector<int> routeToCover(const Roadmap& roadmap, int from, std::span<const vec3> eyes) {
    std::vector<Stop> stops;
    const auto later = [](const Stop& a, const Stop& b) {
        return a.ticks != b.ticks ? a.ticks > b.ticks : a.place > b.place;
    };
    std::priority_queue<Stop, std::vector<Stop>, decltype(later)> open(later);
    open.push({from, 0, -1});
    while (!open.empty() && stops.size() < mostPlaces) {
        const Stop stop = open.top();
        open.pop();
        if (std::any_of(stops.begin(), stops.end(),
                        [&](const Stop& other) { return other.place == stop.place; }))
            continue;
        stops.push_back(stop);
        const vec3 body = roadmap.place(stop.place).position;
        if (std::all_of(eyes.begin(), eyes.end(),
                        [&](vec3 eye) { return isHidden(roadmap.grid, eye, body); })) {
            std::vector<int> route;
            for (int at = static_cast<int>(stops.size()) - 1; at >= 0;
                 at = stops[static_cast<std::size_t>(at)].before)
                route.push_back(stops[static_cast<std::size_t>(at)].place);
            std::reverse(route.begin(), route.end());
            return route;
        }
        for (const Road& road : roadmap.roads[static_cast<std::size_t>(stop.place)]) {
            if (stop.ticks + road.ticks <= furthest)
                open.push({road.to, stop.ticks + road.ticks, static_cast<int>(stops.size()) - 1});
        }
    }
    return {};
}

} // namespace drench::bots
