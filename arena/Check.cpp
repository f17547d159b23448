#include "arena/Check.h"

#include "arena/CellOrder.h"
#include "arena/Map.h"
#include "arena/Materials.h"
#include "arena/PlaceGraph.h"
#include "arena/SpawnWays.h"
#include "common/Counting.h"
#include "src/Collisions.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace drench::arena {

namespace {

/// Up to this many findings of one kind are listed, the others only counted.
constexpr std::size_t toldOneByOne = 3;

/// The search ends once an arena can be left in this many cells.
constexpr std::size_t enoughDepartures = 16;

/// Dead ends up to this many cubes bother nobody.
constexpr int shortDeadEnd = 3;

struct Checker {
    MapManager& map;
    const PlaceOfCell& placeOf;
    CheckResult result;
};

void addFinding(Checker& checker, Severity severity, Subject subject, const std::string& words,
                std::optional<CellIndex> cell = {}) {
    const std::optional<TextPlace> place =
        cell && checker.placeOf ? std::optional(checker.placeOf(*cell)) : std::nullopt;
    checker.result.findings.push_back({severity, subject, words, cell, place});
}

/// The cell that the feet of a standing place are in, or the one below the top of the world.
CellIndex feetOf(const Checker& checker, const Reach& reach, int place) {
    CellIndex feet = reach.places[static_cast<std::size_t>(place)].feet;
    feet.row = std::min(feet.row, checker.map.rows - 1);
    return feet;
}

std::string spawnName(int pose) {
    return spawnNames({pose});
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

/// Findings of one kind: the first ones at their cells, then how many more there are.
void addFindings(Checker& checker, Severity severity, Subject subject,
                 const std::vector<std::pair<std::string, CellIndex>>& findings) {
    const std::size_t told = std::min(findings.size(), toldOneByOne);
    for (std::size_t i = 0; i < told; ++i)
        addFinding(checker, severity, subject, findings[i].first, findings[i].second);
    if (findings.size() > told)
        addFinding(checker, severity, subject,
                   "and " + std::to_string(findings.size() - told) + " more like these");
}

void checkSpawns(Checker& checker) {
    const MapManager& map = checker.map;
    for (const Arrival& arrival : checker.result.arrivals) {
        const std::string name = spawnName(arrival.pose);
        if (!arrival.insideWorld)
            addFinding(checker, Severity::error, Subject::spawns,
                       name + " lies outside the arena: its body reaches to column " +
                           std::to_string(cubeNumber(arrival.spawned.box.max.x)) + " and depth " +
                           std::to_string(cubeNumber(arrival.spawned.box.max.z)),
                       cellAt(map, arrival.spawned.position));
        else if (!arrival.clear) {
            const CellIndex touched = *cellTouchedBy(map, arrival.spawned.box);
            addFinding(
                checker, Severity::error, Subject::spawns,
                name + " is not clear: its body touches " +
                    materialName(cell(map, touched.column, touched.row, touched.depth).cellValue),
                touched);
        } else if (!arrival.lands)
            addFinding(checker, Severity::error, Subject::spawns,
                       name + (hasLeftTheWorld(arrival.landed)
                                   ? " has nothing to land on: players fall out of the world"
                                   : " never comes to stand: its body hangs on a cube"),
                       cellAt(map, arrival.landed.position));
    }
}

void checkDepartures(Checker& checker, const Reach& reach, const std::string& words) {
    std::vector<std::pair<std::string, CellIndex>> findings;
    for (const CellIndex& cell : reach.departures)
        findings.emplace_back(words, cell);
    addFindings(checker, Severity::error, Subject::reach, findings);
}

void checkSpawnsReachEachOther(Checker& checker, const Reach& reach) {
    for (const MissingWay& missing : missingWays(reach))
        addFinding(checker, Severity::error, Subject::reach, missing.words,
                   feetOf(checker, reach, reach.landings[static_cast<std::size_t>(missing.pose)]));
}

void checkPits(Checker& checker, const Reach& reach) {
    std::vector<std::pair<std::string, CellIndex>> findings;
    for (const std::vector<int>& pit : pits(reach))
        findings.emplace_back("a pit of " + counted(pit.size(), "standing place") +
                                  ": who gets in never gets out to a spawn again",
                              feetOf(checker, reach, pit.front()));
    addFindings(checker, Severity::error, Subject::reach, findings);
}

void checkDeadEnds(Checker& checker, const Reach& reach) {
    std::vector<std::pair<std::string, CellIndex>> findings;
    for (const DeadEnd& deadEnd : deadEnds(reach)) {
        if (deadEnd.depth > shortDeadEnd)
            findings.emplace_back("a dead end, " + std::to_string(deadEnd.depth) + " cubes long",
                                  feetOf(checker, reach, deadEnd.end));
    }
    addFindings(checker, Severity::warning, Subject::reach, findings);
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
    result.unreached = largestUnreachedArea(result.walkable, reached);
}

void checkSight(Checker& checker, const Reach& reach, const Sight& sight) {
    std::vector<std::pair<std::string, CellIndex>> findings;
    for (const auto& [from, to] : sight.whenLanded) {
        const auto back = std::pair(to, from);
        const bool mutual = std::find(sight.whenLanded.begin(), sight.whenLanded.end(), back) !=
                            sight.whenLanded.end();
        // A pair that sees each other is reported once.
        if (mutual && from > to)
            continue;
        findings.emplace_back(
            "who lands at " + spawnName(from) + " sees who lands at " + spawnName(to) +
                (mutual ? ", and is seen" : ""),
            feetOf(checker, reach, reach.landings[static_cast<std::size_t>(from)]));
    }
    addFindings(checker, Severity::warning, Subject::sight, findings);
    if (!sight.sniperPlaces.empty())
        addFinding(checker, Severity::warning, Subject::sight,
                   "from " + counted(sight.sniperPlaces.size(), "standing place") +
                       " two spawns can be soaked in one view and no third one shoots back, "
                       "from here for one",
                   feetOf(checker, reach, sight.sniperPlaces.front()));
}

/// Whether the server reads both numbers of every cell.
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
    result.reach = explore(map, result.arrivals, Pace::ordinary, report("reach"), enoughDepartures);
    const Reach& reach = *result.reach;
    checkDepartures(checker, reach, "players can leave the world here");
    countWalkable(result, map, reach);
    if (!reach.isWhole)
        return std::move(result);
    if (reach.departures.empty() && mightLeave(map, result.arrivals, Pace::flicked))
        checkDepartures(
            checker,
            explore(map, result.arrivals, Pace::flicked, report("reach at double pace"),
                    enoughDepartures),
            "players can leave the world here, at least by flicking their view in a jump");
    checkSpawnsReachEachOther(checker, reach);
    checkPits(checker, reach);
    checkDeadEnds(checker, reach);

    result.sight = lookAround(map, result.arrivals, reach, report("sight"));
    checkSight(checker, reach, *result.sight);
    return std::move(result);
}

CheckResult check(MapText& text, const CheckProgress& progress) {
    CheckResult result;
    std::vector<Finding> ofText;
    for (const TextProblem& problem : text.problems)
        ofText.push_back({.severity = problem.harmless ? Severity::warning : Severity::error,
                          .subject = Subject::text,
                          .words = problem.words,
                          .cell = {},
                          .place = problem.place});
    if (givesEveryCell(text)) {
        const std::optional<std::string> order = orderOfAnArena(text.map);
        if (order)
            ofText.push_back({.severity = Severity::error,
                              .subject = Subject::text,
                              .words = "reads as an arena when " + *order +
                                       "; a map text gives columns, rows, depth",
                              .cell = {},
                              .place = text.numbers.front()});
        if (!order || isEnclosed(text.map))
            result = check(
                text.map, [&](const CellIndex& cell) { return text.placeOf(cell); }, progress);
    }
    result.findings.insert(result.findings.begin(), ofText.begin(), ofText.end());
    return result;
}

} // namespace drench::arena
