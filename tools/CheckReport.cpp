#include "tools/CheckReport.h"

#include "arena/Map.h"
#include "arena/Materials.h"
#include "common/Counting.h"

#include <cmath>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>

namespace drench {

namespace {

using arena::CellIndex;
using nlohmann::ordered_json;

/// The cube below the feet of a landed player.
CellIndex floorOf(const MapManager& map, const arena::Arrival& arrival) {
    const Box& body = arrival.landed.box;
    return arena::cellAt(map, {body.centre.x, body.min.y - 0.5f * arena::cubeEdge, body.centre.z});
}

/// The floor below a player. A body at an edge may stand on a neighbour of the cube below it.
std::string floorName(const MapManager& map, const CellIndex& floor) {
    const Box& cube = arena::cell(map, floor.column, floor.row, floor.depth);
    return cube.solid != 0 ? arena::materialName(cube.cellValue) : "an edge";
}

std::string cellWords(const CellIndex& cell) {
    return std::to_string(cell.column) + ", " + std::to_string(cell.row) + ", " +
           std::to_string(cell.depth);
}

/// A share as a whole percentage; 0 and 100 only if exact.
int percentage(double share) {
    if (share > 0.0 && share < 0.01)
        return 1;
    if (share < 1.0 && share > 0.99)
        return 99;
    return static_cast<int>(std::lround(100.0 * share));
}

void writeSpawns(std::ostream& out, const MapManager& map, const arena::CheckResult& result) {
    out << "spawns  (cells are column, row, depth)\n";
    for (const arena::Arrival& arrival : result.arrivals) {
        out << "  " << arrival.pose + 1 << "     ";
        if (!arrival.insideWorld)
            out << "lies outside\n";
        else if (!arrival.clear)
            out << "not clear\n";
        else if (!arrival.lands)
            out << "never lands\n";
        else {
            const CellIndex floor = floorOf(map, arrival);
            out << "falls " << std::fixed << std::setprecision(1)
                << arrival.fall() / arena::cubeEdge << " cubes onto " << floorName(map, floor)
                << " at " << cellWords(floor) << '\n';
        }
    }
}

void writeReach(std::ostream& out, const arena::CheckResult& result) {
    const double share = result.walkable.empty() ? 0.0
                                                 : static_cast<double>(result.walkableReached) /
                                                       static_cast<double>(result.walkable.size());
    out << "reach   " << result.reach->places.size() << " standing places; "
        << result.walkableReached << " of " << result.walkable.size() << " walkable cells ("
        << percentage(share) << " %)\n";
    if (result.unreached)
        out << "        largest area that nobody reaches: "
            << counted(result.unreached->cells, "cell") << ", beginning at "
            << cellWords(result.unreached->first) << '\n';
}

void writeSight(std::ostream& out, const arena::CheckResult& result) {
    const arena::Sight& sight = *result.sight;
    const std::size_t spawns = result.arrivals.size();
    out << "sight   " << sight.whenSpawned.size() << " of " << spawns * (spawns - 1)
        << " views from spawn to spawn are free on appearing, " << sight.whenLanded.size()
        << " after landing\n"
        << "        " << percentage(sight.openSky) << " % of all shots are lost in the open sky\n";
}

const char* nameOf(arena::Severity severity) {
    return severity == arena::Severity::error ? "error" : "warning";
}

const char* nameOf(arena::Subject subject) {
    switch (subject) {
    case arena::Subject::file:
        return "file";
    case arena::Subject::text:
        return "text";
    case arena::Subject::spawns:
        return "spawns";
    case arena::Subject::reach:
        return "reach";
    case arena::Subject::sight:
        break;
    }
    return "sight";
}

ordered_json jsonOf(const CellIndex& cell) {
    return {{"column", cell.column}, {"row", cell.row}, {"depth", cell.depth}};
}

ordered_json jsonOf(const arena::Finding& finding) {
    ordered_json json = {{"severity", nameOf(finding.severity)},
                         {"subject", nameOf(finding.subject)},
                         {"words", finding.words}};
    if (finding.cell)
        json["cell"] = jsonOf(*finding.cell);
    if (finding.place) {
        json["line"] = finding.place->line;
        json["column"] = finding.place->column;
    }
    return json;
}

ordered_json jsonOf(const MapManager& map, const arena::Arrival& arrival) {
    ordered_json json = {
        {"spawn", arrival.pose + 1}, {"clear", arrival.startsFree()}, {"lands", arrival.lands}};
    if (arrival.startsFree() && arrival.lands) {
        const CellIndex floor = floorOf(map, arrival);
        json["fallWorldUnits"] = arrival.fall();
        json["floor"] = jsonOf(floor);
        json["material"] = floorName(map, floor);
    }
    return json;
}

ordered_json jsonOf(const std::vector<std::pair<int, int>>& pairs) {
    ordered_json json = ordered_json::array();
    for (const auto& [from, to] : pairs)
        json.push_back({from + 1, to + 1});
    return json;
}

} // namespace

void writeReport(std::ostream& out, const std::string& file, const MapManager& map,
                 const arena::CheckResult& result) {
    if (map.hasCells())
        out << "size    " << map.columns << " columns, " << map.rows << " rows, " << map.depth
            << " depth\n";
    if (!result.arrivals.empty())
        writeSpawns(out, map, result);
    if (result.reach)
        writeReach(out, result);
    if (result.sight)
        writeSight(out, result);
    for (const arena::Finding& finding : result.findings) {
        out << file << ':';
        if (finding.place)
            out << finding.place->line << ':' << finding.place->column << ':';
        out << ' ' << nameOf(finding.severity) << ": " << finding.words;
        if (finding.cell)
            out << " (cell " << cellWords(*finding.cell) << ')';
        out << '\n';
    }
    out << file << (result.playable() ? ": can be played\n" : ": cannot be played\n");
}

void writeJson(std::ostream& out, const std::string& file, const MapManager& map,
               const arena::CheckResult& result) {
    ordered_json json = {
        {"file", file},
        {"playable", result.playable()},
        {"size", {{"columns", map.columns}, {"rows", map.rows}, {"depth", map.depth}}},
        {"findings", ordered_json::array()},
        {"spawns", ordered_json::array()}};
    for (const arena::Finding& finding : result.findings)
        json["findings"].push_back(jsonOf(finding));
    for (const arena::Arrival& arrival : result.arrivals)
        json["spawns"].push_back(jsonOf(map, arrival));
    if (result.reach)
        json["reach"] = {{"standingPlaces", result.reach->places.size()},
                         {"walkableCells", result.walkable.size()},
                         {"walkableReached", result.walkableReached},
                         {"ticks", result.reach->ticks}};
    if (result.unreached)
        json["reach"]["largestUnreachedArea"] = {{"cells", result.unreached->cells},
                                                 {"cell", jsonOf(result.unreached->first)}};
    if (result.sight)
        json["sight"] = {{"seenOnAppearing", jsonOf(result.sight->whenSpawned)},
                         {"seenAfterLanding", jsonOf(result.sight->whenLanded)},
                         {"sniperPlaces", result.sight->sniperPlaces.size()},
                         {"openSky", result.sight->openSky}};
    // File names are bytes and need not be UTF-8.
    out << json.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

} // namespace drench
