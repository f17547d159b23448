#include "lag/TrafficReport.h"

#include <array>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>

namespace drench::lag {

namespace {

using nlohmann::ordered_json;

/// Shares of the delays.
constexpr double typical = 0.50;
constexpr double nearlyAll = 0.99;

constexpr std::array<const char*, 8> headings = {
    "in", "out", "lost", "duplicated", "reordered", "delay p50", "delay p99", "longest"};

double milliseconds(Duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

void writeHeadings(std::ostream& out) {
    out << "    ";
    for (const char* heading : headings)
        out << std::setw(11) << heading;
    out << '\n';
}

void writeRow(std::ostream& out, const char* direction, const Traffic& traffic) {
    out << std::left << std::setw(4) << direction << std::right;
    for (const std::uint64_t count :
         {traffic.in, traffic.out, traffic.lost, traffic.duplicated, traffic.reordered})
        out << std::setw(11) << count;
    for (const double delay : {traffic.delays.percentile(typical),
                               traffic.delays.percentile(nearlyAll), traffic.delays.longest()})
        out << std::setw(11) << delay;
    out << '\n';
}

void writeWord(std::ostream& out, std::uint64_t count, const char* word) {
    if (count > 0)
        out << count << ' ' << word << '\n';
}

ordered_json jsonOf(const Settings& settings) {
    ordered_json json = {{"delayMilliseconds", milliseconds(settings.delay)},
                         {"jitterMilliseconds", milliseconds(settings.jitter)},
                         {"loss", settings.loss},
                         {"meanBurst", nullptr},
                         {"duplication", settings.duplication},
                         {"reordering", settings.reordering},
                         {"heldBackMilliseconds", milliseconds(settings.heldBack)}};
    if (settings.meanBurst)
        json["meanBurst"] = *settings.meanBurst;
    return json;
}

ordered_json jsonOf(const Traffic& traffic, const Settings& settings) {
    return {{"settings", jsonOf(settings)},
            {"in", traffic.in},
            {"out", traffic.out},
            {"lost", traffic.lost},
            {"duplicated", traffic.duplicated},
            {"reordered", traffic.reordered},
            {"overflowed", traffic.overflowed},
            {"unsent", traffic.unsent},
            {"delayMilliseconds",
             {{"p50", traffic.delays.percentile(typical)},
              {"p99", traffic.delays.percentile(nearlyAll)},
              {"max", traffic.delays.longest()}}}};
}

} // namespace

void writeTable(std::ostream& out, const Report& report) {
    out << std::fixed << std::setprecision(1) << report.clients
        << (report.clients == 1 ? " client" : " clients") << " to " << report.room << " for "
        << report.seconds << " s, seed " << report.seed << '\n';
    writeHeadings(out);
    writeRow(out, "up", report.up);
    writeRow(out, "down", report.down);
    writeWord(out, report.waiting, "still on their way");
    writeWord(out, report.up.overflowed + report.down.overflowed,
              "thrown away, too much was waiting");
    writeWord(out, report.up.unsent + report.down.unsent, "not sent by the system");
    writeWord(out, report.refusals, "refused by the room's host: nobody listened there");
}

void writeJson(std::ostream& out, const Report& report) {
    const ordered_json json = {{"port", report.port},
                               {"room", report.room},
                               {"seconds", report.seconds},
                               {"seed", report.seed},
                               {"clients", report.clients},
                               {"refusals", report.refusals},
                               {"waiting", report.waiting},
                               {"up", jsonOf(report.up, report.upSettings)},
                               {"down", jsonOf(report.down, report.downSettings)}};
    // Names of hosts are bytes and need not be UTF-8.
    out << json.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

} // namespace drench::lag
