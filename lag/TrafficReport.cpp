#include "lag/TrafficReport.h"

#include "common/Decimals.h"
#include "common/Json.h"

#include <array>
#include <iomanip>
#include <optional>
#include <ostream>

namespace drench::lag {

namespace {

using nlohmann::ordered_json;

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
    for (const std::optional<double> delay :
         {traffic.delays.percentile(typical), traffic.delays.percentile(nearlyAll),
          traffic.delays.longest()})
        out << std::setw(11) << decimals(delay, 1);
    out << '\n';
}

void writeWord(std::ostream& out, std::uint64_t count, const char* word) {
    if (count > 0)
        out << count << ' ' << word << '\n';
}

ordered_json settingsJson(const Settings& settings) {
    return {{"delayMilliseconds", milliseconds(settings.delay)},
            {"jitterMilliseconds", milliseconds(settings.jitter)},
            {"loss", settings.loss},
            {"meanBurst", jsonOf(settings.meanBurst)},
            {"duplication", settings.duplication},
            {"reordering", settings.reordering},
            {"heldBackMilliseconds", milliseconds(settings.heldBack)}};
}

ordered_json trafficJson(const Traffic& traffic, const Settings& settings) {
    return {{"settings", settingsJson(settings)},
            {"in", traffic.in},
            {"out", traffic.out},
            {"lost", traffic.lost},
            {"duplicated", traffic.duplicated},
            {"reordered", traffic.reordered},
            {"overflowed", traffic.overflowed},
            {"unsent", traffic.unsent},
            {"delayMilliseconds", jsonOf(traffic.delays)}};
}

} // namespace

void writeTable(std::ostream& out, const Report& report) {
    out << report.clients << (report.clients == 1 ? " client" : " clients") << " to " << report.room
        << " for " << decimals(report.seconds, 1) << " s, seed " << report.seed << '\n';
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
                               {"up", trafficJson(report.up, report.upSettings)},
                               {"down", trafficJson(report.down, report.downSettings)}};
    drench::writeJson(out, json);
}

} // namespace drench::lag
