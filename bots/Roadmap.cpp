#include "bots/Roadmap.h"

#include "arena/PlaceGraph.h"
#include "bots/Walker.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <queue>
#include <utility>

namespace drench::bots {

namespace {

/// The farthest leap that is tried, in columns or depth.
constexpr int farthestLeap = 6;

/// A leap counts when it saves as many ticks, and as large a share of the way round.
constexpr double leastSaving = 20.0;
constexpr double leastShare = 0.3;

constexpr double anyTime = std::numeric_limits<double>::infinity();

/// Ticks beyond which the way round is not measured.
constexpr double farthestWayRound = 400.0;

/// A jump rises so many rows.
constexpr int highestStep = 2;

/// Ticks from where a Walker takes a place for reached to its middle.
constexpr int restOfTheWay = 3;

constexpr double fastestWalk = 6.0;

/// How often a road is tried: where falling or missing are out of the question, and elsewhere.
constexpr int trialsOnLevel = 5;
constexpr int trialsElsewhere = 25;
constexpr int trialsOfLeaps = 50;

/// How often progress is reported: after so many places.
constexpr int placesPerReport = 64;

/// Rows of cubes that a body which stands reaches into.
constexpr int bodyRows = 3;

std::size_t asIndex(int i) {
    return static_cast<std::size_t>(i);
}

vec3 middleOf(const arena::CellIndex& feet) {
    const auto middle = [](int index) {
        return arena::cubeEdge * (static_cast<float>(index) + 0.5f);
    };
    return {middle(feet.column), arena::cubeEdge * static_cast<float>(feet.row) + standingHeight,
            middle(feet.depth)};
}

int cubeIndex(float coordinate) {
    return static_cast<int>(std::floor(coordinate / arena::cubeEdge));
}

vec3 horizontal(vec3 v) {
    return {v.x, 0.0f, v.z};
}

/// Whether the segment from a to a + way passes a column of cubes, widened by `half`.
bool passes(vec3 a, vec3 way, int column, int depth, float half) {
    float first = 0.0f;
    float last = 1.0f;
    const auto clip = [&](float start, float step, int index) {
        const float low = arena::cubeEdge * static_cast<float>(index) - half - start;
        const float high = low + arena::cubeEdge + 2.0f * half;
        if (step == 0.0f) {
            if (low >= 0.0f || high <= 0.0f)
                first = 2.0f;
            return;
        }
        first = std::max(first, std::min(low / step, high / step));
        last = std::min(last, std::max(low / step, high / step));
    };
    clip(a.x, way.x, column);
    clip(a.z, way.z, depth);
    return first < last;
}

/// Whether `suits` holds for every column of cubes that a body with a margin around it comes over.
template<class Suits>
bool allOnWay(vec3 from, vec3 to, float margin, const Suits& suits) {
    const float half = 0.5f * Player::bodySize.x + margin;
    const vec3 way = horizontal(to - from);
    const int lastColumn = cubeIndex(std::max(from.x, to.x) + half);
    const int lastDepth = cubeIndex(std::max(from.z, to.z) + half);
    for (int i = cubeIndex(std::min(from.x, to.x) - half); i <= lastColumn; ++i) {
        for (int k = cubeIndex(std::min(from.z, to.z) - half); k <= lastDepth; ++k) {
            if (passes(from, way, i, k, half) && !suits(i, k))
                return false;
        }
    }
    return true;
}

/// How a road is tried: where beside the middle of its place one begins, where one looks, whether
/// the view may turn, how many ticks late the walker's steps act, and how many it is told.
struct Trial {
    float x = 0.0f;
    float z = 0.0f;
    double yaw = 0.0;
    double pitch = 0.0;
    bool turns = true;
    int lag = 0;
    int toldLag = 0;
};

/// The n-th of a sequence of trials that differ in all respects. Where they begin follows the
/// quasirandom R2 sequence (Roberts, "The Unreasonable Effectiveness of Quasirandom Sequences",
/// 2018), so any number of them is spread evenly.
Trial trial(int n) {
    constexpr float farthest = 22.0f;
    constexpr double steepest = 0.7;
    constexpr int lags[] = {0, 3, 5, 2, 4};
    constexpr int errors[] = {0, 1, -1};
    const auto spread = [n](double step) {
        const double multiple = n * step;
        return 2.0 * (multiple - std::floor(multiple)) - 1.0;
    };
    const int lag = lags[asIndex(n) % std::size(lags)];
    return {farthest * static_cast<float>(spread(0.7548776662)),
            farthest * static_cast<float>(spread(0.5698402910)),
            3.14159265 * spread(0.6180339887),
            steepest * spread(0.4142135624),
            n % 2 == 0,
            lag,
            std::max(0, lag + errors[asIndex(n) % std::size(errors)])};
}

/// Somebody who stands at a place.
Player standingAt(MapManager& map, const arena::StandingPlace& place, const Trial& trial) {
    Player player('1', "");
    player.setMapMan(&map);
    player.position = place.position + vec3(trial.x, 0.0f, trial.z);
    const double level = std::cos(trial.pitch);
    player.look = player.position + vec3(static_cast<float>(std::sin(trial.yaw) * level),
                                         static_cast<float>(std::sin(trial.pitch)),
                                         static_cast<float>(std::cos(trial.yaw) * level));
    player.box = Box(player.position, Player::bodySize);
    player.updateDirAndStrafe();
    return player;
}

/// How many ticks a Walker takes from one place to the next; -1 when it does not get there.
int ticksTaken(const Roadmap& roadmap, int from, int to, const Trial& trial) {
    constexpr int limit = 120;
    Player player = standingAt(*roadmap.map, roadmap.reach.places[asIndex(from)], trial);
    if (roadmap.map->collides(player.box)) {
        // Beside the middle may be a wall, but hardly on both sides.
        Trial nearer = trial;
        nearer.x *= 0.3f;
        nearer.z *= 0.3f;
        player = standingAt(*roadmap.map, roadmap.reach.places[asIndex(from)], nearer);
    }
    Walker walker;
    walker.follow({from, to});
    std::deque<Controls> underway(asIndex(trial.lag));
    // The view as it will be when the controls that are underway have acted.
    Player turned = player;
    for (int tick = 0; tick < limit; ++tick) {
        const Steps steps = walker.step(roadmap, player.position, trial.toldLag);
        if (walker.isDone())
            return walker.hasStrayed() ? -1 : tick;
        Controls controls;
        if (trial.turns) {
            controls = legsOnly(steps, turned.direction);
        } else {
            pressForHeading(controls, steps.heading, turned.direction);
            controls.jump = steps.jump;
        }
        turned.rotateView(controls.dx, controls.dy);
        underway.push_back(controls);
        const Controls& now = underway.front();
        for (int key = 0; key < keyIndex::jump; ++key)
            player.setKey(key, now.held[key]);
        if (now.jump)
            player.setKey(keyIndex::jump, true);
        if (now.dx != 0 || now.dy != 0)
            player.rotateView(now.dx, now.dy);
        underway.pop_front();
        player.update(0.0f);
    }
    return -1;
}

/// Tries to get to a place by a gait, and adds the road when that never fails and takes no longer
/// than so many ticks.
void addRoad(Roadmap& roadmap, int from, int to, Gait gait, int trials, double longest) {
    std::vector<Road>& roads = roadmap.roads[asIndex(from)];
    const vec3 way =
        roadmap.reach.places[asIndex(to)].position - roadmap.reach.places[asIndex(from)].position;
    Trial paced;
    paced.yaw = std::atan2(way.x, way.z);
    roads.push_back({to, gait, 0});
    const int ticks = ticksTaken(roadmap, from, to, paced);
    roads.back().ticks = ticks + restOfTheWay;
    bool succeeds = ticks >= 0 && roads.back().ticks <= longest;
    for (int n = 1; n <= trials && succeeds; ++n)
        succeeds = ticksTaken(roadmap, from, to, trial(n)) >= 0;
    if (!succeeds)
        roads.pop_back();
}

/// Adds the move from one column of cubes to a neighbouring one, if it can be made. None leads
/// round the corner of a wall or a hole: there is a way by the neighbour of both.
void addStep(Roadmap& roadmap, int from, int to) {
    const arena::CellIndex& start = roadmap.reach.places[asIndex(from)].feet;
    const arena::CellIndex& end = roadmap.reach.places[asIndex(to)].feet;
    const vec3 here = middleOf(start);
    const vec3 there = middleOf(end);
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
    const arena::CellIndex feet = roadmap.reach.places[asIndex(from)].feet;
    for (int row = feet.row + highestStep; row >= 0; --row) {
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

/// A place as the quickest way from somewhere passes it.
struct Stop {
    double ticks = anyTime;
    double toll = -1.0;
    int before = -1;
};

/// For each place the quickest way from a start, with tolls (Dijkstra); so far as they were found
/// when the goal was reached, -1 for no goal, or the ways became longer than `farthest`.
std::vector<Stop> quickest(const Roadmap& roadmap, int start, int goal, double farthest,
                           const std::function<double(int place)>& toll) {
    std::vector<Stop> stops(roadmap.roads.size());
    using Entry = std::pair<double, int>;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> open;
    stops[asIndex(start)].ticks = 0.0;
    open.push({0.0, start});
    while (!open.empty() && open.top().second != goal && open.top().first <= farthest) {
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

/// Whether a leap from edge to edge may lead so far: straight or nearly so, or along a diagonal.
bool isLeap(int columns, int depth) {
    const int farther = std::max(std::abs(columns), std::abs(depth));
    const int nearer = std::min(std::abs(columns), std::abs(depth));
    return farther >= 2 && (nearer <= 1 || nearer == farther);
}

/// The neighbour that a leap of so many columns and so much depth first comes over.
arena::CellIndex firstStep(int columns, int depth) {
    const auto part = [](int along, int other) {
        return 2 * std::abs(along) > std::abs(other) ? (along > 0) - (along < 0) : 0;
    };
    return {part(columns, depth), 0, part(depth, columns)};
}

arena::CellIndex sum(const arena::CellIndex& a, const arena::CellIndex& b) {
    return {a.column + b.column, a.row + b.row, a.depth + b.depth};
}

/// Adds a leap if it can be made and saves much of the way round, which takes so many ticks.
void addLeap(Roadmap& roadmap, int from, int to, double wayRound) {
    const double longest = std::min(wayRound - leastSaving, wayRound * (1.0 - leastShare));
    const arena::StandingPlace& start = roadmap.reach.places[asIndex(from)];
    const arena::StandingPlace& end = roadmap.reach.places[asIndex(to)];
    const vec3 way = horizontal(end.position - start.position);
    const int row = std::max(start.feet.row, end.feet.row);
    if (static_cast<double>(way.length()) / fastestWalk <= longest &&
        roadmap.isClear(start.position, end.position, row, 0.0f))
        addRoad(roadmap, from, to, Gait::leap, trialsOfLeaps, longest);
}

/// Adds the leaps from an edge to others.
void addLeaps(Roadmap& roadmap, int from) {
    const arena::StandingPlace& start = roadmap.reach.places[asIndex(from)];
    const std::vector<Stop> known = quickest(roadmap, from, -1, farthestWayRound, {});
    for (int columns = -farthestLeap; columns <= farthestLeap; ++columns) {
        for (int depth = -farthestLeap; depth <= farthestLeap; ++depth) {
            const arena::CellIndex step = firstStep(columns, depth);
            if (!isLeap(columns, depth) || roadmap.placeIn(sum(start.feet, step)) >= 0)
                continue;
            for (int row = 0; row <= start.feet.row + highestStep; ++row) {
                const arena::CellIndex end =
                    sum(start.feet, {columns, row - start.feet.row, depth});
                const int to = roadmap.placeIn(end);
                const bool isEdge =
                    roadmap.placeIn({end.column - step.column, row, end.depth - step.depth}) < 0;
                if (to >= 0 && isEdge)
                    addLeap(roadmap, from, to, known[asIndex(to)].ticks);
            }
        }
    }
}

void indexPlaces(Roadmap& roadmap) {
    const MapManager& map = *roadmap.map;
    roadmap.placeOfCell.assign(asIndex(map.columns) * asIndex(map.rows) * asIndex(map.depth), -1);
    for (std::size_t place = 0; place < roadmap.reach.places.size(); ++place) {
        const arena::CellIndex& feet = roadmap.reach.places[place].feet;
        roadmap.placeOfCell[(asIndex(feet.column) * asIndex(map.rows) + asIndex(feet.row)) *
                                asIndex(map.depth) +
                            asIndex(feet.depth)] = static_cast<int>(place);
    }
}

/// Leaves out all places but these.
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
    indexPlaces(roadmap);
}

/// Leaves only places whose own cell has the floor that carries the body, and moves bodies to the
/// middle there: who stands on an edge has such a place beside it.
void keepFirmPlaces(Roadmap& roadmap) {
    std::vector<bool> firm;
    for (arena::StandingPlace& place : roadmap.reach.places) {
        const arena::CellIndex& feet = place.feet;
        firm.push_back(!roadmap.map->cubeIsNull(feet.column, feet.row - 1, feet.depth));
        place.position = middleOf(feet);
    }
    keepPlaces(roadmap, firm);
}

/// Leaves only places that roads lead to from some landing and from which they lead to one.
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

int Roadmap::placeIn(const arena::CellIndex& cell) const {
    if (cell.column < 0 || cell.column >= map->columns || cell.row < 0 || cell.row >= map->rows ||
        cell.depth < 0 || cell.depth >= map->depth)
        return -1;
    return placeOfCell[(asIndex(cell.column) * asIndex(map->rows) + asIndex(cell.row)) *
                           asIndex(map->depth) +
                       asIndex(cell.depth)];
}

int Roadmap::placeBelow(vec3 position) const {
    constexpr float half = 0.5f * Player::bodySize.x;
    const int highestRow = cubeIndex(position.y - 0.5f * Player::bodySize.y + restingTolerance);
    int best = -1;
    int bestRow = -1;
    float bestDistance = 0.0f;
    for (int i = cubeIndex(position.x - half); i <= cubeIndex(position.x + half); ++i) {
        for (int k = cubeIndex(position.z - half); k <= cubeIndex(position.z + half); ++k) {
            for (int row = std::min(highestRow, map->rows - 1);
                 row >= std::max(bestRow, 0) && map->cubeIsNull(i, row, k); --row) {
                const int place = placeIn({i, row, k});
                if (place < 0)
                    continue;
                const vec3 middle = middleOf({i, row, k});
                const float distance =
                    std::max(std::fabs(middle.x - position.x), std::fabs(middle.z - position.z));
                if (row > bestRow || distance < bestDistance) {
                    best = place;
                    bestRow = row;
                    bestDistance = distance;
                }
                break;
            }
        }
    }
    return best;
}

bool Roadmap::isOpen(vec3 from, vec3 to, int row, float margin) const {
    return allOnWay(from, to, margin, [&](int i, int k) { return placeIn({i, row, k}) >= 0; });
}

bool Roadmap::isClear(vec3 from, vec3 to, int row, float margin) const {
    return allOnWay(from, to, margin, [&](int i, int k) {
        for (int j = row; j < std::min(row + bodyRows, map->rows); ++j) {
            if (!map->cubeIsNull(i, j, k))
                return false;
        }
        return true;
    });
}

const Road* Roadmap::road(int from, int to) const {
    for (const Road& road : roads[asIndex(from)]) {
        if (road.to == to)
            return &road;
    }
    return nullptr;
}

std::vector<int> Roadmap::route(int from, int to,
                                const std::function<double(int place)>& toll) const {
    if (from < 0 || to < 0)
        return {};
    const std::vector<Stop> stops = quickest(*this, from, to, anyTime, toll);
    if (to != from && stops[asIndex(to)].before < 0)
        return {};
    std::vector<int> places;
    for (int place = to; place >= 0; place = stops[asIndex(place)].before)
        places.push_back(place);
    std::reverse(places.begin(), places.end());
    return places;
}

Roadmap chart(MapManager& map, const Progress& progress) {
    return chart(map, arena::arrivals(map), progress);
}

Roadmap chart(MapManager& map, const std::vector<arena::Arrival>& arrivals,
              const Progress& progress) {
    arena::requireCells(map);
    Roadmap roadmap;
    roadmap.map = &map;
    roadmap.grid = arena::gridOf(map);
    roadmap.reach = arena::explore(map, arrivals, arena::Pace::ordinary, [&](std::size_t places) {
        if (progress)
            progress("exploring", places);
    });
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
    forEachPlace("trying steps", addSteps);
    forEachPlace("trying leaps", addLeaps);
    keepConnectedPlaces(roadmap);
    return roadmap;
}

} // namespace drench::bots
