#include "tools/ReplayReport.h"

#include "arena/Map.h"
#include "arena/MapText.h"
#include "client/Records.h"
#include "common/Counting.h"
#include "common/Decimals.h"
#include "common/Json.h"
#include "replay/Footage.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <variant>

namespace drench {

namespace {

using nlohmann::ordered_json;

double secondsOf(client::RecordedTime time) {
    return std::chrono::duration<double>(time).count();
}

/// "2026-11-22 10:30:05 UTC".
std::string dateOf(std::int64_t microseconds) {
    const std::time_t seconds = microseconds / 1000000;
    std::tm parts = {};
    char text[64] = "";
    if (!gmtime_r(&seconds, &parts) ||
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &parts) == 0)
        return "-";
    return text;
}

/// Names are bytes of strangers: what a terminal would act on is shown as a dot.
std::string printable(const std::string& name) {
    std::string text = name.empty() ? "-" : name;
    for (char& letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        letter = byte < 0x20 || byte == 0x7f ? '.' : letter;
    }
    return text;
}

std::string arenaOf(const RecordingInfo& info) {
    if (info.header.arena.empty())
        return "not known";
    const MapManager map = arena::readMapText(info.header.arena).map;
    return std::to_string(map.columns) + " x " + std::to_string(map.rows) + " x " +
           std::to_string(map.depth) + " cubes";
}

ordered_json jsonOf(const std::optional<vec3>& point) {
    return point ? ordered_json{point->x, point->y, point->z} : ordered_json(nullptr);
}

/// The column and the depth of a point's cell, as drench-map has them.
std::string cellOf(const std::optional<vec3>& point) {
    if (!point)
        return "-";
    return decimals(static_cast<double>(point->x / arena::cubeEdge), 1) + ", " +
           decimals(static_cast<double>(point->y / arena::cubeEdge), 1) + ", " +
           decimals(static_cast<double>(point->z / arena::cubeEdge), 1);
}

/// Columns as wide as their longest words; the last one as it is.
void writeRows(std::ostream& out, const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths(rows.front().size());
    for (const std::vector<std::string>& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    for (const std::vector<std::string>& row : rows) {
        for (std::size_t i = 0; i + 1 < row.size(); ++i)
            out << row[i] << std::string(widths[i] - row[i].size() + 2, ' ');
        out << row.back() << '\n';
    }
}

} // namespace

RecordingInfo::RecordingInfo(client::RecordingReader& reader)
    : header(reader.header()), duration(reader.duration()), fileBytes(reader.fileBytes()) {
    replay::OneLine line;
    while (const std::optional<client::RecordedDatagram> datagram = reader.next()) {
        ++(datagram->way == client::Way::fromRoom ? fromRoom : toRoom);
        lines = std::max(lines, datagram->line + 1);
        if (!line.takes(*datagram))
            continue;
        const client::RoomRecord record = client::readRecord(datagram->bytes);
        const auto* state = std::get_if<UpdateMessage>(&record);
        if (!state)
            continue;
        ++states;
        for (const PlayerUpdate& player : state->updates) {
            // A hostile room may have any number of names.
            constexpr std::size_t mostPlayers = 1000;
            if (player.id != 0 && players.size() < mostPlayers &&
                std::find(players.begin(), players.end(), player.name) == players.end())
                players.emplace_back(player.name);
        }
    }
}

std::string clockTime(client::RecordedTime time) {
    const std::int64_t milliseconds = time.count() / 1000;
    const std::int64_t seconds = milliseconds / 1000;
    const std::int64_t minutes = seconds / 60;
    char text[64];
    if (minutes >= 60)
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld.%03ld", static_cast<long>(minutes / 60),
                      static_cast<long>(minutes % 60), static_cast<long>(seconds % 60),
                      static_cast<long>(milliseconds % 1000));
    else
        std::snprintf(text, sizeof text, "%ld:%02ld.%03ld", static_cast<long>(minutes),
                      static_cast<long>(seconds % 60), static_cast<long>(milliseconds % 1000));
    return text;
}

void writeTable(std::ostream& out, const RecordingInfo& info) {
    std::string players;
    for (const std::string& player : info.players)
        players += (players.empty() ? "" : ", ") + printable(player);
    const double minutes = secondsOf(info.duration) / 60.0;
    const double megabytes = static_cast<double>(info.fileBytes) / 1e6;
    writeRows(out, {{"room", printable(info.header.room)},
                    {"recorded", dateOf(info.header.startedAt)},
                    {"by", printable(info.header.program)},
                    {"arena", arenaOf(info)},
                    {"length", clockTime(info.duration)},
                    {"players", players.empty() ? "-" : players},
                    {"states", std::to_string(info.states)},
                    {"lines", std::to_string(info.lines)},
                    {"datagrams", std::to_string(info.fromRoom) + " from the room, " +
                                      std::to_string(info.toRoom) + " to it"},
                    {"size", decimals(megabytes, 3) + " MB, " +
                                 (minutes > 0.0 ? decimals(10.0 * megabytes / minutes, 2) : "-") +
                                 " in ten minutes"}});
}

void writeJson(std::ostream& out, const RecordingInfo& info) {
    writeJson(out, ordered_json{{"room", info.header.room},
                                {"startedAtMicroseconds", info.header.startedAt},
                                {"program", info.header.program},
                                {"arenaKnown", !info.header.arena.empty()},
                                {"seconds", secondsOf(info.duration)},
                                {"players", info.players},
                                {"states", info.states},
                                {"lines", info.lines},
                                {"datagramsFromRoom", info.fromRoom},
                                {"datagramsToRoom", info.toRoom},
                                {"bytes", info.fileBytes}});
}

void writeTable(std::ostream& out, std::span<const replay::Soaking> soakings) {
    std::vector<std::vector<std::string>> rows = {
        {"when", "who", "soaked", "at cube", "from cube", "cubes away"}};
    for (const replay::Soaking& soaking : soakings) {
        const std::optional<double> cubes =
            soaking.distance ? std::optional(*soaking.distance / arena::cubeEdge) : std::nullopt;
        rows.push_back({clockTime(soaking.time), printable(soaking.shooter),
                        printable(soaking.victim), cellOf(soaking.at), cellOf(soaking.from),
                        decimals(cubes, 1)});
    }
    writeRows(out, rows);
}

void writeJson(std::ostream& out, std::span<const replay::Soaking> soakings) {
    ordered_json all = ordered_json::array();
    for (const replay::Soaking& soaking : soakings)
        all.push_back({{"seconds", secondsOf(soaking.time)},
                       {"shooter", soaking.shooter},
                       {"victim", soaking.victim},
                       {"at", jsonOf(soaking.at)},
                       {"from", jsonOf(soaking.from)},
                       {"distance", jsonOf(soaking.distance)}});
    writeJson(out, ordered_json{{"soakings", all}});
}

void writeTable(std::ostream& out, const VerifyReport& report) {
    const replay::Verification& verification = report.verification;
    for (const replay::Impossible& one : verification.listed)
        out << clockTime(one.time) << ": " << one.id << " (" << printable(one.name) << ") "
            << one.what << '\n';
    if (verification.impossibleSteps > verification.listed.size())
        out << "... and " << verification.impossibleSteps - verification.listed.size() << " more\n";
    out << counted(verification.steps, "step") << " of players over "
        << counted(verification.states, "state") << ": " << verification.impossibleSteps
        << " impossible, " << verification.overGaps << " over lost states; "
        << counted(verification.late, "late state") << " left out\n";
    for (const replay::KnownInputs& known : report.inputs) {
        const client::Prediction::Statistics& statistics = known.statistics;
        out << printable(known.name)
            << ", by its own inputs: " << counted(statistics.exact, "state") << " to the bit, "
            << statistics.close << " closely, " << statistics.unexplained << " not\n";
    }
}

void writeJson(std::ostream& out, const VerifyReport& report) {
    const replay::Verification& verification = report.verification;
    ordered_json inputs = ordered_json::array();
    for (const replay::KnownInputs& known : report.inputs)
        inputs.push_back({{"line", known.line},
                          {"name", known.name},
                          {"exact", known.statistics.exact},
                          {"close", known.statistics.close},
                          {"unexplained", known.statistics.unexplained},
                          {"lostKeys", known.statistics.lostKeys},
                          {"lostViews", known.statistics.lostViews}});
    ordered_json listed = ordered_json::array();
    for (const replay::Impossible& one : verification.listed)
        listed.push_back({{"seconds", secondsOf(one.time)},
                          {"player", std::string(1, one.id)},
                          {"name", one.name},
                          {"what", one.what}});
    writeJson(out, ordered_json{{"states", verification.states},
                                {"steps", verification.steps},
                                {"overLostStates", verification.overGaps},
                                {"lateStates", verification.late},
                                {"impossibleSteps", verification.impossibleSteps},
                                {"impossible", listed},
                                {"byInputs", inputs}});
}

} // namespace drench
