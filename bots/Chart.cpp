#include "bots/Chart.h"

#include "arena/PlaceGraph.h"
#include "bots/Geometry.h"
#include "bots/Routes.h"
#include "bots/Trials.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace drench::bots {

namespace {

/// The farthest leap that is tried, in columns or depth.
constexpr int farthestLeap = 6;

/// A leap counts when it saves as many ticks of the way round: it may miss, and walking does not.
constexpr double leastSaving = 20.0;

/// A leap counts when it saves as large a share of the way round.
constexpr double leastShare = 0.3;

/// Ticks beyond which the way round is not measured.
constexpr double farthestWayRound = 400.0;

/// Ticks from the point at which a Walker counts a place as reached to the place's middle.
constexpr int restOfTheWay = 3;

/// Trials of a road over level floor, on which a body can neither fall nor miss.
constexpr int trialsOnLevel = 5;

/// Trials of a road up or down.
constexpr int trialsElsewhere = 25;

/// Trials of a leap: most leaps that fail at all fail rarely.
constexpr int trialsOfLeaps = 50;

/// Places between two reports of progress.
constexpr int placesPerReport = 64;

std::size_t asIndex(int i) {
    return static_cast<std::size_t>(i);
}

/// Adds a road if it takes at most `longest` ticks and none of the trials fails.
void addRoad(Roadmap& roadmap, int from, int to, Gait gait, int trials, double longest) {
    std::vector<Road>& roads = roadmap.roads[asIndex(from)];
    // A walker follows roads of the roadmap, so the road is there before it is tried.
    roads.push_back({to, gait, 0});
    const int ticks = pacedTicks(roadmap, from, to);
    roads.back().ticks = ticks + restOfTheWay;
    if (ticks < 0 || roads.back().ticks > longest || !isSure(roadmap, from, to, trials))
        roads.pop_back();
}

/// Adds the move from one column of cubes to a neighbouring one, if it can be made. None leads
/// round the corner of a wall or a hole: there is a way by the neighbour of both.
void addStep(Roadmap& roadmap, int from, int to) {
    const arena::CellIndex& start = roadmap.place(from).feet;
    const arena::CellIndex& end = roadmap.place(to).feet;
    const vec3 here = bodyIn(start);
    const vec3 there = bodyIn(end);
    if (!roadmap.isClear(here, there, std::max(start.row, end.row), 0.0f))
        return;
    if (end.row > start.row)
        addRoad(roadmap, from, to, Gait::jump, trialsElsewhere, anyTime);
    else if (end.row < start.row)
        addRoad(roadmap, from, to, Gait::walk, trialsElsewhere, anyTime);
    else if (roadmap.isOpen(here, there, end.row, 0.0f))
        addRoad(roadmap, from, to, Gait::walk, trialsOnLevel, anyTime);
}

/// Adds the moves from a place to one neighbouring column of cubes: to floors that a jump reaches,
/// and to the highest of the others.
void addStepsTowards(Roadmap& roadmap, int from, int columns, int depth) {
    const arena::CellIndex feet = roadmap.place(from).feet;
    for (int row = feet.row + arena::highestClimb; row >= 0; --row) {
        const arena::CellIndex end = {feet.column + columns, row, feet.depth + depth};
        const int to = roadmap.placeIn(end);
        if (to >= 0)
            addStep(roadmap, from, to);
        if (row <= feet.row && (to >= 0 || !roadmap.map->cubeIsNull(end.column, row, end.depth)))
            return;
    }
}

/// Adds the moves from a place to its neighbours.
void addSteps(Roadmap& roadmap, int from) {
    for (int columns = -1; columns <= 1; ++columns) {
        for (int depth = -1; depth <= 1; ++depth) {
            if (columns != 0 || depth != 0)
                addStepsTowards(roadmap, from, columns, depth);
        }
    }
}

/// Whether a leap from edge to edge may lead so far: straight or nearly so, or along a diagonal.
bool isLeap(int columns, int depth) {
    const int farther = std::max(std::abs(columns), std::abs(depth));
    const int nearer = std::min(std::abs(columns), std::abs(depth));
    return farther >= 2 && (nearer <= 1 || nearer == farther);
}

/// The neighbouring column that a leap of these columns and this depth first passes.
arena::CellIndex firstStep(int columns, int depth) {
    const auto part = [](int along, int other) {
        return 2 * std::abs(along) > std::abs(other) ? (along > 0) - (along < 0) : 0;
    };
    return {part(columns, depth), 0, part(depth, columns)};
}

arena::CellIndex sum(const arena::CellIndex& a, const arena::CellIndex& b) {
    return {a.column + b.column, a.row + b.row, a.depth + b.depth};
}

/// Adds a leap if it can be made and saves much of the way round, which takes `wayRound` ticks.
void addLeap(Roadmap& roadmap, int from, int to, double wayRound) {
    const double longest = std::min(wayRound - leastSaving, wayRound * (1.0 - leastShare));
    const arena::StandingPlace& start = roadmap.place(from);
    const arena::StandingPlace& end = roadmap.place(to);
    const vec3 way = horizontal(end.position - start.position);
    const int row = std::max(start.feet.row, end.feet.row);
    // A leap that takes too long at the speed of one key is not tried, though two keys are faster.
    if (static_cast<double>(way.length()) / static_cast<double>(Player::walkingSpeed) <= longest &&
        roadmap.isClear(start.position, end.position, row, 0.0f))
        addRoad(roadmap, from, to, Gait::leap, trialsOfLeaps, longest);
}

/// Adds the leaps from an edge to others.
void addLeaps(Roadmap& roadmap, int from) {
    const arena::StandingPlace& start = roadmap.place(from);
    const std::vector<double> wayRound = ticksFrom(roadmap, from, farthestWayRound);
    for (int columns = -farthestLeap; columns <= farthestLeap; ++columns) {
        for (int depth = -farthestLeap; depth <= farthestLeap; ++depth) {
            const arena::CellIndex step = firstStep(columns, depth);
            if (!isLeap(columns, depth) || roadmap.placeIn(sum(start.feet, step)) >= 0)
                continue;
            for (int row = 0; row <= start.feet.row + arena::highestClimb; ++row) {
                const arena::CellIndex end =
                    sum(start.feet, {columns, row - start.feet.row, depth});
                const int to = roadmap.placeIn(end);
                const bool isEdge =
                    roadmap.placeIn({end.column - step.column, row, end.depth - step.depth}) < 0;
                if (to >= 0 && isEdge)
                    addLeap(roadmap, from, to, wayRound[asIndex(to)]);
            }
        }
    }
}

/// Removes all places except these.
void keepPlaces(Roadmap& roadmap, const std::vector<bool>& kept) {
    std::vector<int> newIndex(kept.size(), -1);
    std::vector<arena::StandingPlace> places;
    for (std::size_t place = 0; place < kept.size(); ++place) {
        if (!kept[place])
            continue;
        newIndex[place] = static_cast<int>(places.size());
        places.push_back(std::move(roadmap.reach.places[place]));
    }
    const auto renumber = [&](std::vector<int>& all) {
        for (int& place : all)
            place = place < 0 ? -1 : newIndex[asIndex(place)];
    };
    for (arena::StandingPlace& place : places) {
        renumber(place.next);
        std::erase(place.next, -1);
    }
    roadmap.reach.places = std::move(places);
    renumber(roadmap.reach.landings);

    std::vector<std::vector<Road>> roads(roadmap.reach.places.size());
    for (std::size_t place = 0; place < roadmap.roads.size(); ++place) {
        if (!kept[place])
            continue;
        std::vector<Road>& leaving = roads[asIndex(newIndex[place])];
        for (const Road& road : roadmap.roads[place]) {
            if (const int to = newIndex[asIndex(road.to)]; to >= 0)
                leaving.push_back({to, road.gait, road.ticks});
        }
    }
    roadmap.roads = std::move(roads);
    roadmap.indexPlaces();
}

/// Keeps only the places whose own cell has the floor that carries the body, and moves bodies to
/// its middle. No floor is lost: a body on an edge has such a place beside it.
void keepFirmPlaces(Roadmap& roadmap) {
    std::vector<bool> firm;
    for (arena::StandingPlace& place : roadmap.reach.places) {
        const arena::CellIndex& feet = place.feet;
        firm.push_back(!roadmap.map->cubeIsNull(feet.column, feet.row - 1, feet.depth));
        place.position = bodyIn(feet);
    }
    keepPlaces(roadmap, firm);
}

/// Keeps only the places that roads lead to from some landing and from which roads lead to one.
void keepConnectedPlaces(Roadmap& roadmap) {
    arena::Reach& reach = roadmap.reach;
    for (std::size_t place = 0; place < roadmap.roads.size(); ++place) {
        std::vector<int>& next = reach.places[place].next;
        next.clear();
        for (const Road& road : roadmap.roads[place])
            next.push_back(road.to);
        std::sort(next.begin(), next.end());
    }
    std::vector<bool> kept(reach.places.size(), false);
    for (const int landing : reach.landings) {
        if (landing < 0)
            continue;
        const std::vector<bool> reached = arena::reachableFrom(reach, landing);
        for (std::size_t place = 0; place < kept.size(); ++place)
            kept[place] = kept[place] || reached[place];
    }
    for (const std::vector<int>& pit : arena::pits(reach)) {
        for (const int place : pit)
            kept[asIndex(place)] = false;
    }
    keepPlaces(roadmap, kept);
}

} // namespace

Roadmap chart(MapManager& map, const Progress& progress) {
    return chart(map, arena::arrivals(map), progress);
}

Roadmap chart(MapManager& map, const std::vector<arena::Arrival>& arrivals,
              const Progress& progress) {
    arena::requireCells(map);
    // The search through the game's own movement finds more places than bots need: also those of
    // bodies that hang over edges, and of flights that take luck.
    Roadmap roadmap;
    roadmap.map = &map;
    roadmap.grid = arena::gridOf(map);
    roadmap.reach = arena::explore(map, arrivals, arena::Pace::ordinary, [&](std::size_t places) {
        if (progress)
            progress("exploring", places);
    });
    // Only middles of cells that carry a body stay: there a walker has room to begin and end.
    keepFirmPlaces(roadmap);
    roadmap.reach.landings.clear();
    for (const arena::Arrival& arrival : arrivals)
        roadmap.reach.landings.push_back(
            arrival.comesToStand() ? roadmap.placeBelow(arrival.landed.position) : -1);

    const auto count = static_cast<int>(roadmap.reach.places.size());
    roadmap.roads.resize(roadmap.reach.places.size());
    const auto forEachPlace = [&](const char* stage, const auto& add) {
        for (int place = 0; place < count; ++place) {
            if (progress && place % placesPerReport == 0)
                progress(stage, asIndex(place));
            add(roadmap, place);
        }
    };
    // Steps come first, since the worth of a leap is the way round by steps that it saves. A road
    // stays only if no Walker ever failed on it, so a bot that follows the road arrives.
    forEachPlace("trying steps", addSteps);
    forEachPlace("trying leaps", addLeaps);
    // A place without a road away would trap bots, and a place without a road to it would be a goal
    // that nobody reaches. Both are removed.
    keepConnectedPlaces(roadmap);
    return roadmap;
}

} // namespace drench::bots
