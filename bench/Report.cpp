#include "Report.h"

#include "Messages.h"
#include "Statistics.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>

namespace bench {

namespace {

using Json = nlohmann::ordered_json;

template<class Item, class Value>
std::vector<double> each(const std::vector<Item>& items, Value value) {
    std::vector<double> values(items.size());
    std::ranges::transform(items, values.begin(), value);
    return values;
}

/// One value of one program in all rounds.
std::vector<double> each(const LoadFigures& load, Sample Round::*program, double Sample::*value) {
    return each(load.rounds, [&](const Round& round) { return round.*program.*value; });
}

struct Spread {
    explicit Spread(const std::vector<double>& values)
        : middle(median(values)), lowest(quantile(values, 0.0)), highest(quantile(values, 1.0)) {}

    double middle;
    double lowest;
    double highest;
};

std::string text(const Spread& spread) {
    std::ostringstream out;
    out << std::fixed << std::setprecision(2) << spread.middle << " (" << spread.lowest << " to "
        << spread.highest << ")";
    return out.str();
}

std::string roomsText(const Capacity& capacity) {
    return std::to_string(capacity.rooms) + (capacity.endedByLoad ? " or more" : "");
}

/// The samples of all rounds, fewest rooms first.
std::vector<CrowdSample> crowds(const Figures& figures, Capacity CapacityRound::*program) {
    std::vector<CrowdSample> samples;
    for (const CapacityRound& round : figures.capacity) {
        const std::vector<CrowdSample>& more = (round.*program).samples;
        samples.insert(samples.end(), more.begin(), more.end());
    }
    std::ranges::stable_sort(samples, {}, &CrowdSample::rooms);
    return samples;
}

void printConditions(std::ostream& out, const Conditions& where) {
    out << where.kernel << ", " << where.cores << " cores of " << where.processor
        << ", load average " << where.loadAverage << "\n"
        << "rooms on core " << where.roomCore << ", the load of single ones too, of many on core "
        << where.crowdLoadCore << (where.awake ? "; kept awake\n" : "; idle cores halt\n");
}

void printLoads(std::ostream& out, const std::vector<LoadFigures>& loads) {
    out << "\nProcessor time of a room in ms per second, median (and spread) of "
        << loads.front().rounds.size() << " rounds\n"
        << "inputs/s  firing  floor                  server                 server/floor        "
           "   gaps p50, p99 in ms: floor, server\n";
    for (const LoadFigures& load : loads) {
        out << std::right << std::setw(8) << std::lround(load.inputsPerSecond) << "  " << std::left
            << std::setw(8) << load.firing;
        for (Sample Round::*program : {&Round::floor, &Round::server})
            out << std::setw(23)
                << text(Spread(each(load, program, &Sample::cpuMillisecondsPerSecond)));
        out << std::setw(23) << text(Spread(each(load.rounds, &Round::ratio)));
        for (Sample Round::*program : {&Round::floor, &Round::server})
            out << (program == &Round::floor ? "" : "  ")
                << median(each(load, program, &Sample::gapMedian)) << ", "
                << median(each(load, program, &Sample::gapP99));
        out << std::right << "\n";
    }
}

/// Takes loads apart by how they differ, in microseconds: what goes into an input, a tick, and into
/// a tick more when all fire.
void printParts(std::ostream& out, const std::vector<LoadFigures>& loads, Sample Round::*program,
                const std::string& name) {
    const auto perSecond = [&](const LoadFigures& load) {
        return 1000.0 * median(each(load, program, &Sample::cpuMillisecondsPerSecond));
    };
    const LoadFigures& fewest = loads.front();
    const LoadFigures& most = *std::ranges::find_if(
        loads.rbegin(), loads.rend(), [&](auto& load) { return load.firing == fewest.firing; });
    if (fewest.inputsPerSecond > 0.0 || most.inputsPerSecond <= 0.0)
        return;
    const double ticks = median(each(fewest, program, &Sample::statesPerSecond));
    out << name << ", in us: a tick with its states " << perSecond(fewest) / ticks
        << ", an input with its receipt "
        << (perSecond(most) - perSecond(fewest)) / (maxPlayers * most.inputsPerSecond);
    for (const LoadFigures& load : loads) {
        if (load.inputsPerSecond <= 0.0 && load.firing != fewest.firing)
            out << ", a tick of four firing at the " << load.firing << " more by "
                << (perSecond(load) - perSecond(fewest)) / ticks;
    }
    out << "\n";
}

void printCrowds(std::ostream& out, const std::vector<CrowdSample>& samples,
                 const std::string& name) {
    out << "\nMany rooms on one core, " << name << ", 120 inputs/s\n"
        << "rooms  gaps p50, p99 in ms  rooms' cpu  load's cpu  inputs sent\n";
    for (const CrowdSample& sample : samples)
        out << std::setw(5) << sample.rooms << std::setw(11) << sample.gapMedian << ", "
            << std::setw(7) << sample.gapP99 << std::setw(11) << 100.0 * sample.roomsCpu << "%"
            << std::setw(11) << 100.0 * sample.loadCpu << "%" << std::setw(12)
            << 100.0 * sample.sent << "%\n";
}

Json json(const Sample& sample) {
    return {{"seconds", sample.seconds},
            {"cpuMillisecondsPerSecond", sample.cpuMillisecondsPerSecond},
            {"statesPerSecond", sample.statesPerSecond},
            {"gapMillisecondsMedian", sample.gapMedian},
            {"gapMillisecondsP99", sample.gapP99},
            {"receiptsPerInput", sample.receiptsPerInput}};
}

Json json(const Capacity& capacity) {
    Json samples = Json::array();
    for (const CrowdSample& sample : capacity.samples) {
        samples.push_back({{"rooms", sample.rooms},
                           {"gapMillisecondsMedian", sample.gapMedian},
                           {"gapMillisecondsP99", sample.gapP99},
                           {"roomsCpuShare", sample.roomsCpu},
                           {"loadCpuShare", sample.loadCpu},
                           {"inputsSentShare", sample.sent}});
    }
    return {{"rooms", capacity.rooms}, {"endedByLoad", capacity.endedByLoad}, {"samples", samples}};
}

} // namespace

void printReport(std::ostream& out, const Figures& figures) {
    out << std::fixed << std::setprecision(2);
    printConditions(out, figures.conditions);
    printLoads(out, figures.loads);
    printParts(out, figures.loads, &Round::floor, "floor");
    printParts(out, figures.loads, &Round::server, "server");
    printCrowds(out, crowds(figures, &CapacityRound::floor), "floor");
    printCrowds(out, crowds(figures, &CapacityRound::server), "server");
    out << "\n";
    for (const CapacityRound& round : figures.capacity)
        out << "Rooms on one core: floor " << roomsText(round.floor) << ", server "
            << roomsText(round.server) << ", ratio " << round.ratio() << "\n";
    out << "Memory of a server after " << figures.memorySeconds
        << " s of four playing, in KiB: " << figures.memory.resident << " resident, "
        << figures.memory.proportional << " with shared pages counted in part\n"
        << "Start to listening in ms, median of " << figures.serverStarts.size() << ": server "
        << median(figures.serverStarts) << ", floor " << median(figures.floorStarts) << "\n";
}

std::string jsonReport(const Figures& figures) {
    const Conditions& where = figures.conditions;
    Json report = {{"conditions",
                    {{"kernel", where.kernel},
                     {"processor", where.processor},
                     {"cores", where.cores},
                     {"roomCore", where.roomCore},
                     {"crowdLoadCore", where.crowdLoadCore},
                     {"coresKeptAwake", where.awake},
                     {"loadAverage", where.loadAverage}}}};
    for (const LoadFigures& load : figures.loads) {
        Json rounds = Json::array();
        for (const Round& round : load.rounds)
            rounds.push_back({{"floor", json(round.floor)},
                              {"server", json(round.server)},
                              {"ratio", round.ratio()}});
        report["loads"].push_back({{"inputsPerSecond", load.inputsPerSecond},
                                   {"firing", load.firing},
                                   {"ratioMedian", median(each(load.rounds, &Round::ratio))},
                                   {"rounds", rounds}});
    }
    for (const CapacityRound& round : figures.capacity)
        report["capacity"].push_back({{"floor", json(round.floor)},
                                      {"server", json(round.server)},
                                      {"ratio", round.ratio()}});
    report["memory"] = {{"afterSeconds", figures.memorySeconds},
                        {"residentKiB", figures.memory.resident},
                        {"proportionalKiB", figures.memory.proportional}};
    report["startMilliseconds"] = {{"floor", figures.floorStarts},
                                   {"server", figures.serverStarts},
                                   {"serverMedian", median(figures.serverStarts)}};
    return report.dump(2) + "\n";
}

std::string plotColumns(const Figures& figures) {
    std::ostringstream out;
    out << "inputs\tfiring\tfloor\tlow\thigh\tserver\tlow\thigh\n";
    for (const LoadFigures& load : figures.loads) {
        out << load.inputsPerSecond << '\t' << load.firing;
        for (Sample Round::*program : {&Round::floor, &Round::server}) {
            const Spread cpu(each(load, program, &Sample::cpuMillisecondsPerSecond));
            out << '\t' << cpu.middle << '\t' << cpu.lowest << '\t' << cpu.highest;
        }
        out << '\n';
    }
    for (Capacity CapacityRound::*program : {&CapacityRound::floor, &CapacityRound::server}) {
        out << "\n\nrooms\tgap p99\n";
        for (const CrowdSample& sample : crowds(figures, program))
            out << sample.rooms << '\t' << sample.gapP99 << '\n';
    }
    return out.str();
}

} // namespace bench
