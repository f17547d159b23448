#include "bench/Report.h"

#include "bench/Statistics.h"
#include "src/Messages.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>

namespace drench::bench {

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

/// Stalls of the machine reach far beyond the middle half of the values.
struct Spread {
    explicit Spread(const std::vector<double>& values)
        : middle(median(values)), lowerQuartile(quantile(values, 0.25)),
          upperQuartile(quantile(values, 0.75)) {}

    double middle;
    double lowerQuartile;
    double upperQuartile;
};

std::string text(const Spread& spread) {
    std::ostringstream out;
    out << std::fixed << std::setprecision(2) << spread.middle << " (" << spread.lowerQuartile
        << " to " << spread.upperQuartile << ")";
    return out.str();
}

/// The middle one of a value in all samples of a crowd.
double middle(const std::vector<CrowdSample>& samples, double CrowdSample::*value) {
    return median(each(samples, [&](const CrowdSample& sample) { return sample.*value; }));
}

/// The number of rooms that a core holds.
struct Capacity {
    double rooms = 0.0;

    /// Whether there may be room for more: the largest crowd was held, or the load failed before
    /// the rooms did.
    bool isLeast = true;
};

/// The 99th percentile of the gaps by crowd, given that more rooms cannot be better. If a larger
/// crowd measured less, it and the crowds before it share their mean (isotonic regression by
/// pooling adjacent violators; Ayer et al., "An empirical distribution function for sampling with
/// incomplete information", 1955).
std::vector<double> ascendingGaps(const std::vector<Crowd>& crowds,
                                  std::vector<CrowdSample> Crowd::*program) {
    struct Pool {
        double mean;
        std::size_t size;
    };
    std::vector<Pool> pools;
    for (const Crowd& crowd : crowds) {
        Pool last = {middle(crowd.*program, &CrowdSample::gapP99), 1};
        for (; !pools.empty() && pools.back().mean > last.mean; pools.pop_back()) {
            const Pool& before = pools.back();
            const auto share =
                static_cast<double>(before.size) / static_cast<double>(before.size + last.size);
            last = {last.mean + share * (before.mean - last.mean), before.size + last.size};
        }
        pools.push_back(last);
    }
    std::vector<double> gaps;
    for (const Pool& pool : pools)
        gaps.insert(gaps.end(), pool.size, pool.mean);
    return gaps;
}

/// The number of rooms, between two crowds, at which the 99th percentile of the gaps passes its
/// limit.
Capacity capacity(const std::vector<Crowd>& crowds, std::vector<CrowdSample> Crowd::*program) {
    const std::vector<double> gaps = ascendingGaps(crowds, program);
    Capacity found;
    for (std::size_t i = 0; i < crowds.size(); ++i) {
        if (middle(crowds[i].*program, &CrowdSample::sent) < fewestSent)
            return found;
        if (gaps[i] > longestGapP99) {
            if (i > 0)
                found.rooms += (crowds[i].rooms - found.rooms) * (longestGapP99 - gaps[i - 1]) /
                               (gaps[i] - gaps[i - 1]);
            found.isLeast = false;
            return found;
        }
        found.rooms = crowds[i].rooms;
    }
    return found;
}

std::string text(const Capacity& capacity) {
    return std::to_string(std::lround(capacity.rooms)) + (capacity.isLeast ? " or more" : "");
}

void printConditions(std::ostream& out, const Conditions& where) {
    out << where.kernel << ", " << where.cores << " cores of " << where.processor
        << ", load average " << where.loadAverage << "\n"
        << "rooms on core " << where.roomCore << ", the load of single ones too, of many on core "
        << where.crowdLoadCore << (where.awake ? "; kept awake\n" : "; idle cores halt\n");
}

void printLoads(std::ostream& out, const std::vector<LoadFigures>& loads) {
    out << "\nProcessor time of a room in ms per second, median (and middle half) of "
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

/// Splits the cost of loads by their differences, in microseconds: the cost of an input, of a tick,
/// and the extra cost of a tick in which all fire.
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

void printCrowds(std::ostream& out, const std::vector<Crowd>& crowds) {
    out << "\nMany rooms on one core, 120 inputs/s, medians of " << crowds.front().floor.size()
        << " samples: floor, server\n"
        << "rooms  gaps p50 in ms  gaps p99 in ms  rooms' cpu in %  load's cpu in %  inputs sent "
           "in %\n";
    for (const Crowd& crowd : crowds) {
        out << std::setw(5) << crowd.rooms;
        const auto column = [&](double CrowdSample::*value, double scale, int width) {
            out << std::setw(width) << scale * middle(crowd.floor, value) << ", " << std::setw(6)
                << scale * middle(crowd.server, value);
        };
        column(&CrowdSample::gapMedian, 1.0, 8);
        column(&CrowdSample::gapP99, 1.0, 8);
        column(&CrowdSample::roomsCpu, 100.0, 9);
        column(&CrowdSample::loadCpu, 100.0, 9);
        column(&CrowdSample::sent, 100.0, 10);
        out << "\n";
    }
    const Capacity floor = capacity(crowds, &Crowd::floor);
    const Capacity server = capacity(crowds, &Crowd::server);
    out << "Rooms on one core until the p99 passes " << longestGapP99 << " ms: floor "
        << text(floor) << ", server " << text(server) << ", ratio " << server.rooms / floor.rooms
        << "\n";
}

Json json(const Sample& sample) {
    return {{"seconds", sample.seconds},
            {"cpuMillisecondsPerSecond", sample.cpuMillisecondsPerSecond},
            {"statesPerSecond", sample.statesPerSecond},
            {"gapMillisecondsMedian", sample.gapMedian},
            {"gapMillisecondsP99", sample.gapP99},
            {"receiptsPerInput", sample.receiptsPerInput}};
}

Json json(const std::vector<CrowdSample>& samples) {
    Json list = Json::array();
    for (const CrowdSample& sample : samples) {
        list.push_back({{"gapMillisecondsMedian", sample.gapMedian},
                        {"gapMillisecondsP99", sample.gapP99},
                        {"roomsCpuShare", sample.roomsCpu},
                        {"loadCpuShare", sample.loadCpu},
                        {"inputsSentShare", sample.sent}});
    }
    return list;
}

Json json(const Capacity& capacity) {
    return {{"rooms", capacity.rooms}, {"orMore", capacity.isLeast}};
}

} // namespace

bool holds(const std::vector<CrowdSample>& samples) {
    return middle(samples, &CrowdSample::gapP99) <= longestGapP99 &&
           middle(samples, &CrowdSample::sent) >= fewestSent;
}

void printReport(std::ostream& out, const Figures& figures) {
    out << std::fixed << std::setprecision(2);
    printConditions(out, figures.conditions);
    printLoads(out, figures.loads);
    printParts(out, figures.loads, &Round::floor, "floor");
    printParts(out, figures.loads, &Round::server, "server");
    printCrowds(out, figures.crowds);
    out << "\nMemory of a server after " << figures.memorySeconds
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
    for (const Crowd& crowd : figures.crowds)
        report["crowds"].push_back(
            {{"rooms", crowd.rooms}, {"floor", json(crowd.floor)}, {"server", json(crowd.server)}});
    report["capacity"] = {{"floor", json(capacity(figures.crowds, &Crowd::floor))},
                          {"server", json(capacity(figures.crowds, &Crowd::server))}};
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
            out << '\t' << cpu.middle << '\t' << cpu.lowerQuartile << '\t' << cpu.upperQuartile;
        }
        out << '\n';
    }
    out << "\n\nrooms\tfloor\tserver\n";
    for (const Crowd& crowd : figures.crowds)
        out << crowd.rooms << '\t' << middle(crowd.floor, &CrowdSample::gapP99) << '\t'
            << middle(crowd.server, &CrowdSample::gapP99) << '\n';
    return out.str();
}

} // namespace drench::bench
