#include "bots/Report.h"

#include "arena/Map.h"
#include "common/Decimals.h"
#include "common/Json.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace drench::bots {

namespace {

using nlohmann::ordered_json;

double cubesOf(double worldUnits) {
    return worldUnits / arena::cubeEdge;
}

constexpr std::array<const char*, 11> headings = {
    "",           "soaks",   "deaths",  "accuracy", "cubes walked", "snapshots",
    "and missed", "gap p50", "gap p99", "longest",  "round trip ms"};

using Row = std::array<std::string, headings.size()>;

Row rowOf(const std::string& name, const Tally& tally, std::optional<double> roundTrip) {
    const std::optional<double> accuracy = tally.accuracy();
    return {name,
            std::to_string(tally.soaks),
            std::to_string(tally.deaths),
            accuracy ? decimals(100.0 * *accuracy, 0) + " %" : "-",
            decimals(cubesOf(tally.distance), 0),
            std::to_string(tally.snapshots),
            std::to_string(tally.snapshotsMissed),
            decimals(tally.gaps.percentile(typical), 1),
            decimals(tally.gaps.percentile(nearlyAll), 1),
            decimals(tally.gaps.longest(), 1),
            decimals(roundTrip, 2)};
}

void writeRows(std::ostream& out, const std::vector<Row>& rows) {
    std::array<std::size_t, headings.size()> widths{};
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    for (const Row& row : rows) {
        out << row[0] << std::string(widths[0] - row[0].size(), ' ');
        for (std::size_t i = 1; i < row.size(); ++i)
            out << "  " << std::string(widths[i] - row[i].size(), ' ') << row[i];
        out << '\n';
    }
}

std::string plural(std::size_t count, const std::string& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

ordered_json tallyJson(const Tally& tally, std::optional<double> roundTrip) {
    return {{"joined", tally.joined},
            {"soaks", tally.soaks},
            {"deaths", tally.deaths},
            {"bursts", tally.bursts},
            {"burstsThatSoaked", tally.burstsThatSoaked},
            {"accuracy", jsonOf(tally.accuracy())},
            {"distanceCubes", cubesOf(tally.distance)},
            {"snapshots", tally.snapshots},
            {"snapshotsMissed", tally.snapshotsMissed},
            {"gapMilliseconds", jsonOf(tally.gaps)},
            {"roundTripMilliseconds", jsonOf(roundTrip)}};
}

} // namespace

std::size_t Report::roomsEntered() const {
    return static_cast<std::size_t>(
        std::count_if(rooms.begin(), rooms.end(),
                      [&](const std::string& room) { return total(room).joined > 0; }));
}

std::size_t Report::playersEntered() const {
    return static_cast<std::size_t>(
        std::count_if(players.begin(), players.end(),
                      [](const PlayerReport& player) { return player.tally.joined > 0; }));
}

Tally Report::total() const {
    Tally sum;
    for (const PlayerReport& player : players)
        sum.add(player.tally);
    return sum;
}

Tally Report::total(const std::string& room) const {
    Tally sum;
    for (const PlayerReport& player : players) {
        if (player.room == room)
            sum.add(player.tally);
    }
    return sum;
}

std::string Report::worstRoom() const {
    std::string worst;
    double longest = 0.0;
    for (const std::string& room : rooms) {
        const Tally tally = total(room);
        const std::optional<double> gap = tally.gaps.percentile(nearlyAll);
        if (gap && (worst.empty() || *gap > longest)) {
            worst = room;
            longest = *gap;
        }
    }
    return worst;
}

std::optional<double> Report::medianRoundTrip() const {
    std::vector<double> known;
    for (const PlayerReport& player : players) {
        if (player.tally.roundTrip)
            known.push_back(*player.tally.roundTrip);
    }
    return upperMedian(known);
}

void writeTable(std::ostream& out, const Report& report) {
    out << plural(report.playersEntered(), "player") << " in "
        << (report.rooms.size() == 1 ? report.rooms.front() : plural(report.roomsEntered(), "room"))
        << " for " << decimals(report.seconds, 1) << " s";
    if (report.bots)
        out << ", skill " << report.bots->skill << ", seed " << report.bots->seed;
    out << '\n';
    if (report.playersEntered() < report.players.size())
        out << report.players.size() - report.playersEntered() << " never got in\n";
    if (report.playersEntered() == 0)
        return;

    std::vector<Row> rows = {Row()};
    std::copy(headings.begin(), headings.end(), rows.front().begin());
    if (report.rooms.size() == 1) {
        for (const PlayerReport& player : report.players) {
            if (player.tally.joined > 0)
                rows.push_back(rowOf(player.name, player.tally, player.tally.roundTrip));
        }
    } else if (const std::string worst = report.worstRoom(); !worst.empty()) {
        rows.push_back(rowOf("worst: " + worst, report.total(worst), std::nullopt));
    }
    rows.push_back(rowOf("total", report.total(), report.medianRoundTrip()));
    writeRows(out, rows);
}

void writeJson(std::ostream& out, const Report& report) {
    ordered_json json = ordered_json::object();
    if (report.bots)
        json = {{"arena", report.bots->arena},
                {"seed", report.bots->seed},
                {"skill", report.bots->skill}};
    json.update({{"seconds", report.seconds},
                 {"roomsAsked", report.rooms.size()},
                 {"roomsEntered", report.roomsEntered()},
                 {"playersAsked", report.players.size()},
                 {"playersEntered", report.playersEntered()},
                 {"worstRoom", nullptr},
                 {"players", ordered_json::array()}});
    if (const std::string worst = report.worstRoom(); !worst.empty())
        json["worstRoom"] = worst;
    for (const PlayerReport& player : report.players) {
        ordered_json line = {{"room", player.room}, {"name", player.name}};
        line.update(tallyJson(player.tally, player.tally.roundTrip));
        json["players"].push_back(line);
    }
    json["total"] = tallyJson(report.total(), report.medianRoundTrip());
    drench::writeJson(out, json);
}

} // namespace drench::bots
