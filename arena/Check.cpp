#include "Check.h"

#include "Collisions.h"
#include "Map.h"
#include "Materials.h"
#include "PlaceGraph.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace arena {

namespace {

/// Findings of one kind are told one by one up to this many, then counted.
constexpr std::size_t toldOneByOne = 3;

/// Dead ends up to this many cubes bother nobody.
constexpr int shortDeadEnd = 3;

struct Checker {
    MapManager& map;
    const PlaceOfCell& placeOf;
    CheckResult result;
};

void addFinding(Checker& checker, Severity severity, const std::string& subject,
                const std::string& words, std::optional<CellIndex> cell = {}) {
    const std::optional<TextPlace> place =
        cell && checker.placeOf ? std::optional(checker.placeOf(*cell)) : std::nullopt;
    checker.result.findings.push_back({severity, subject, words, cell, place});
}

/// "1 place", "4 places".
std::string counted(std::size_t count, const std::string& one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string spawnName(int pose) {
    return "spawn " + std::to_string(pose + 1);
}

/// "spawn 1", "spawns 1 and 2", "spawns 1, 2 and 3".
std::string spawnNames(const std::vector<int>& poses) {
    std::string names = poses.size() == 1 ? "spawn " : "spawns ";
    for (std::size_t i = 0; i < poses.size(); ++i) {
        if (i > 0)
            names += i + 1 == poses.size() ? " and " : ", ";
        names += std::to_string(poses[i] + 1);
    }
    return names;
}

/// The solid cell that the body touches first, in the order of the map text.
std::optional<CellIndex> cellTouchedBy(const MapManager& map, const Box& body) {
    for (int i = map.getColumn(body.min.x); i <= map.getColumn(body.max.x); ++i) {
        for (int j = map.getRow(body.min.y); j <= map.getRow(body.max.y); ++j) {
            for (int k = map.getDepth(body.min.z); k <= map.getDepth(body.max.z); ++k) {
                if (cell(map, i, j, k).solid != 0 && intersects(cell(map, i, j, k), body))
                    return CellIndex{i, j, k};
            }
        }
    }
    return std::nullopt;
}

/// The number of the cube along an axis that holds the coordinate, in the arena or not.
int cubeNumber(float coordinate) {
    return static_cast<int>(std::floor(coordinate / cubeEdge));
}

CellIndex cellNearest(const MapManager& map, vec3 position) {
    return {map.getColumn(position.x), map.getRow(position.y), map.getDepth(position.z)};
}

void checkSpawns(Checker& checker) {
    const MapManager& map = checker.map;
    for (const Arrival& arrival : checker.result.arrivals) {
        const std::string name = spawnName(arrival.pose);
        if (!arrival.insideWorld)
            addFinding(checker, Severity::error, "spawns",
                       name + " lies outside the arena: its body reaches to column " +
                           std::to_string(cubeNumber(arrival.spawned.box.max.x)) + " and depth " +
                           std::to_string(cubeNumber(arrival.spawned.box.max.z)),
                       cellNearest(map, arrival.spawned.position));
        else if (!arrival.clear) {
            const CellIndex touched = *cellTouchedBy(map, arrival.spawned.box);
            addFinding(
                checker, Severity::error, "spawns",
                name + " is not clear: its body touches " +
                    materialName(cell(map, touched.column, touched.row, touched.depth).cellValue),
                touched);
        } else if (!arrival.lands)
            addFinding(checker, Severity::error, "spawns",
                       name + " has nothing to land on: players fall out of the world",
                       cellNearest(map, arrival.landed.position));
    }
}

void checkDepartures(Checker& checker, const Reach& reach, const std::string& words) {
    const std::size_t told = std::min(reach.departures.size(), toldOneByOne);
    for (std::size_t i = 0; i < told; ++i)
        addFinding(checker, Severity::error, "reach", words, reach.departures[i].cell);
    if (reach.departures.size() > told)
        addFinding(checker, Severity::error, "reach",
                   "and at " + counted(reach.departures.size() - told, "more cell"));
}

void checkSpawnsReachEachOther(Checker& checker, const Reach& reach) {
    for (std::size_t from = 0; from < reach.landings.size(); ++from) {
        if (reach.landings[from] < 0)
            continue;
        const std::vector<bool> reached = reachableFrom(reach, reach.landings[from]);
        std::vector<int> missed;
        for (std::size_t to = 0; to < reach.landings.size(); ++to) {
            if (reach.landings[to] >= 0 && !reached[static_cast<std::size_t>(reach.landings[to])])
                missed.push_back(static_cast<int>(to));
        }
        if (!missed.empty())
            addFinding(checker, Severity::error, "reach",
                       "no way from " + spawnName(static_cast<int>(from)) + " to " +
                           spawnNames(missed),
                       reach.places[static_cast<std::size_t>(reach.landings[from])].feet);
    }
}

void checkPits(Checker& checker, const Reach& reach) {
    const std::vector<std::vector<int>> groups = pits(reach);
    const std::size_t told = std::min(groups.size(), toldOneByOne);
    for (std::size_t i = 0; i < told; ++i)
        addFinding(checker, Severity::error, "reach",
                   "a pit of " + counted(groups[i].size(), "standing place") +
                       ": who gets in never gets out to a spawn again",
                   reach.places[static_cast<std::size_t>(groups[i].front())].feet);
    if (groups.size() > told)
        addFinding(checker, Severity::error, "reach",
                   "and " + counted(groups.size() - told, "more pit"));
}

void checkDeadEnds(Checker& checker, const Reach& reach) {
    for (const DeadEnd& deadEnd : deadEnds(reach)) {
        if (deadEnd.depth > shortDeadEnd)
            addFinding(checker, Severity::warning, "reach",
                       "a dead end, " + std::to_string(deadEnd.depth) + " cubes long",
                       reach.places[static_cast<std::size_t>(deadEnd.end)].feet);
    }
}

void countWalkable(CheckResult& result, const MapManager& map, const Reach& reach) {
    result.walkable = walkableCells(map);
    std::vector<CellIndex> reached;
    for (const StandingPlace& place : reach.places)
        reached.push_back(place.feet);
    std::sort(reached.begin(), reached.end());
    result.walkableReached = static_cast<std::size_t>(std::count_if(
        result.walkable.begin(), result.walkable.end(), [&](const CellIndex& walkable) {
            return std::binary_search(reached.begin(), reached.end(), walkable);
        }));
}

void checkSight(Checker& checker, const Reach& reach, const Sight& sight) {
    for (const auto& [from, to] : sight.whenLanded)
        addFinding(
            checker, Severity::warning, "sight",
            "who lands at " + spawnName(from) + " sees who lands at " + spawnName(to),
            reach.places[static_cast<std::size_t>(reach.landings[static_cast<std::size_t>(from)])]
                .feet);
    if (!sight.sniperPlaces.empty())
        addFinding(checker, Severity::warning, "sight",
                   "from " + counted(sight.sniperPlaces.size(), "standing place") +
                       " two spawns can be soaked in one view and no third one shoots back, "
                       "from here for one",
                   reach.places[static_cast<std::size_t>(sight.sniperPlaces.front())].feet);
}

/// Whether the server reads two numbers for each cell.
bool givesEveryCell(const MapText& text) {
    const auto count = [](int number) { return static_cast<std::size_t>(number); };
    const MapManager& map = text.map;
    const std::size_t cells = count(map.columns) * count(map.rows) * count(map.depth);
    return text.hasHeader && text.numbers.size() == 3 + 2 * cells;
}

} // namespace

bool CheckResult::playable() const {
    return std::none_of(findings.begin(), findings.end(),
                        [](const Finding& finding) { return finding.severity == Severity::error; });
}

CheckResult check(MapManager& map, const PlaceOfCell& placeOf, const CheckProgress& progress) {
    Checker checker{map, placeOf, {}};
    CheckResult& result = checker.result;
    result.arrivals = arrivals(map);
    checkSpawns(checker);
    if (std::none_of(result.arrivals.begin(), result.arrivals.end(),
                     [](const Arrival& arrival) { return arrival.startsFree(); }))
        return std::move(result);

    const auto report = [&](const char* subject) {
        return [&progress, subject](std::size_t places) {
            if (progress)
                progress(subject, places);
        };
    };
    result.reach = explore(map, result.arrivals, Pace::ordinary, report("reach"));
    const Reach& reach = *result.reach;
    checkDepartures(checker, reach, "players can leave the world here");
    if (reach.departures.empty())
        checkDepartures(checker, explore(map, result.arrivals, Pace::flicked, report("reach")),
                        "players who flick their view in a jump can leave the world here");
    checkSpawnsReachEachOther(checker, reach);
    checkPits(checker, reach);
    checkDeadEnds(checker, reach);
    countWalkable(result, map, reach);

    result.sight = lookAround(map, result.arrivals, reach, report("sight"));
    checkSight(checker, reach, *result.sight);
    return std::move(result);
}

CheckResult check(MapText& text, const CheckProgress& progress) {
    CheckResult result;
    if (givesEveryCell(text))
        result = check(
            text.map, [&](const CellIndex& cell) { return text.placeOf(cell); }, progress);
    std::vector<Finding> ofText;
    for (const TextProblem& problem : text.problems)
        ofText.push_back({problem.harmless ? Severity::warning : Severity::error,
                          "text",
                          problem.words,
                          {},
                          problem.place});
    result.findings.insert(result.findings.begin(), ofText.begin(), ofText.end());
    return result;
}

} // namespace arena
