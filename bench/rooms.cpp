#include "FileLoader.h"
#include "FilePath.h"
#include "Files.h"
#include "FiringPlaces.h"
#include "Load.h"
#include "Process.h"
#include "Report.h"
#include "Statistics.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <sys/resource.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

// What rooms of drench-server cost, held against bench/floor: the bare system calls of a room under
// the same load. Both are started in turn, on one core.
//
// A single room shares its core with its load. Schedulers charge a thread for the time from a
// wake-up that came from another core until it runs there; on virtual machines, where it takes an
// interrupt through the host, that is several times what a room does for a datagram. Crowds of
// rooms get their load from another core, if there is one: it would take too much of theirs.

namespace {

using namespace bench;
using Seconds = std::chrono::duration<double>;

/// Gaps between states that players hardly notice, in milliseconds.
constexpr double longestGapP99 = 20.0;

/// A load that gets fewer of its inputs sent does not keep up.
constexpr double fewestSent = 0.98;

/// Inputs per second and player while counting rooms, and in rooms whose memory is measured.
constexpr double usualInputs = 120.0;

/// Bounds on the number of rooms are narrowed down to this share of it.
constexpr double capacityPrecision = 0.05;

/// How often the same number of rooms is looked at; the middle one counts.
constexpr int crowdSamples = 3;

struct Settings {
    std::string floor = getAppPath() + "/floor";
    std::string server = getAppPath() + "/../drench-server";
    std::string json;
    std::string tsv;
    bool halt = false;
    bool quick = false;

    std::vector<double> inputs = {0.0, 120.0, 300.0};
    std::vector<std::string> firing = {"nobody", "wall", "sky"};
    int rounds = 5;
    double seconds = 1.5;
    double warmUpSeconds = 0.3;

    int capacityRounds = 2;
    int fewestRooms = 16;
    int mostRooms = 1024;
    double crowdSeconds = 1.0;
    double crowdWarmUpSeconds = 0.7;

    double memorySeconds = 60.0;
    int starts = 20;
};

/// As short as a run can be that still comes by everything.
void makeQuick(Settings& settings) {
    settings.inputs = {120.0};
    settings.firing = {"nobody", "sky"};
    settings.rounds = 1;
    settings.seconds = 0.2;
    settings.warmUpSeconds = 0.05;
    settings.capacityRounds = 1;
    settings.fewestRooms = 1;
    settings.mostRooms = 2;
    settings.crowdSeconds = 0.1;
    settings.crowdWarmUpSeconds = 0.05;
    settings.memorySeconds = 0.2;
    settings.starts = 2;
}

struct Bench {
    Settings settings;
    std::vector<FiringPlace> walls;
    std::vector<FiringPlace> sky;
    int roomCore;

    /// Where the load of a crowd comes from.
    int crowdLoadCore;
};

void progress(const std::string& what) {
    if (isatty(STDERR_FILENO))
        std::cerr << "\r\033[K" << what << std::flush;
}

Conditions conditions(const Bench& bench) {
    utsname system;
    uname(&system);
    Conditions conditions;
    conditions.kernel = std::string(system.sysname) + " " + system.release;
    std::ifstream processors("/proc/cpuinfo");
    for (std::string line; std::getline(processors, line);) {
        const auto colon = line.find(": ");
        if (line.starts_with("model name") && colon != std::string::npos)
            conditions.processor = line.substr(colon + 2);
    }
    conditions.cores = static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
    conditions.roomCore = bench.roomCore;
    conditions.crowdLoadCore = bench.crowdLoadCore;
    conditions.awake = !bench.settings.halt;
    getloadavg(&conditions.loadAverage, 1);
    return conditions;
}

/// One room under load. Only the server has places to stand at.
Sample sample(const Bench& bench, const std::string& executable, double inputs,
              const std::string& firing) {
    const bool isServer = executable == bench.settings.server;
    const std::vector<FiringPlace>& places = firing == "sky" ? bench.sky : bench.walls;
    pinTo(bench.roomCore);
    const Room room = startRoom(executable, bench.roomCore);
    Load load({room.port});
    if (isServer)
        load.takePlaces(places);
    if (firing != "nobody")
        load.fire(places);
    load.play(Seconds(bench.settings.warmUpSeconds), inputs);

    const double cpuBefore = cpuSeconds(room.process);
    const Play play = load.play(Seconds(bench.settings.seconds), inputs);
    const double cpu = cpuSeconds(room.process) - cpuBefore;
    if (isServer && firing != "nobody" && !load.allFire(places))
        throw std::runtime_error("somebody stopped firing at the " + firing);
    return {play.seconds,
            1000.0 * cpu / play.seconds,
            static_cast<double>(play.gaps.size()) / maxPlayers / play.seconds,
            quantile(play.gaps, 0.5),
            quantile(play.gaps, 0.99),
            inputs > 0.0 ? static_cast<double>(play.receipts) / static_cast<double>(play.inputs)
                         : 1.0};
}

void measureLoads(const Bench& bench, Figures& figures) {
    for (const double inputs : bench.settings.inputs) {
        for (const std::string& firing : bench.settings.firing)
            figures.loads.push_back({inputs, firing, {}});
    }
    for (int round = 1; round <= bench.settings.rounds; ++round) {
        for (LoadFigures& load : figures.loads) {
            progress("round " + std::to_string(round) + ": " +
                     std::to_string(static_cast<int>(load.inputsPerSecond)) +
                     " inputs, firing: " + load.firing);
            const Sample floor =
                sample(bench, bench.settings.floor, load.inputsPerSecond, load.firing);
            const Sample server =
                sample(bench, bench.settings.server, load.inputsPerSecond, load.firing);
            load.rounds.push_back({floor, server});
        }
    }
}

double cpuSeconds(const std::vector<Room>& rooms) {
    double sum = 0.0;
    for (const Room& room : rooms)
        sum += cpuSeconds(room.process);
    return sum;
}

CrowdSample crowdSample(const Bench& bench, const std::string& executable, int count) {
    pinTo(bench.crowdLoadCore);
    std::vector<Room> rooms;
    std::vector<int> ports;
    for (int i = 0; i < count; ++i) {
        rooms.push_back(startRoom(executable, bench.roomCore));
        ports.push_back(rooms.back().port);
    }
    Load load(ports);
    load.play(Seconds(bench.settings.crowdWarmUpSeconds), usualInputs);
    std::vector<CrowdSample> samples;
    for (int i = 0; i < crowdSamples; ++i) {
        const double cpuBefore = cpuSeconds(rooms);
        const Play play = load.play(Seconds(bench.settings.crowdSeconds), usualInputs);
        const double due = usualInputs * maxPlayers * count * bench.settings.crowdSeconds;
        samples.push_back({count, quantile(play.gaps, 0.5), quantile(play.gaps, 0.99),
                           (cpuSeconds(rooms) - cpuBefore) / play.seconds,
                           play.cpuSeconds / play.seconds, static_cast<double>(play.inputs) / due});
    }
    std::ranges::sort(samples, {}, &CrowdSample::gapP99);
    return samples[crowdSamples / 2];
}

/// Doubles the number of rooms until it does not hold, then halves the interval.
Capacity capacity(const Bench& bench, const std::string& executable) {
    Capacity found;
    int tooMany = bench.settings.mostRooms + 1;
    for (int rooms = bench.settings.fewestRooms;;) {
        progress(std::to_string(rooms) + " rooms of " +
                 std::filesystem::path(executable).filename().string());
        const CrowdSample& crowd =
            found.samples.emplace_back(crowdSample(bench, executable, rooms));
        const bool isLoadLate = crowd.sent < fewestSent;
        if (!isLoadLate && crowd.gapP99 <= longestGapP99) {
            found.rooms = rooms;
        } else {
            tooMany = rooms;
            found.endedByLoad = isLoadLate;
        }
        if (tooMany - found.rooms <= 1 || tooMany - found.rooms <= capacityPrecision * tooMany)
            return found;
        rooms = tooMany > bench.settings.mostRooms ? std::min(2 * rooms, bench.settings.mostRooms)
                                                   : (found.rooms + tooMany) / 2;
    }
}

void measureCapacity(const Bench& bench, Figures& figures) {
    for (int round = 0; round < bench.settings.capacityRounds; ++round) {
        Capacity floor = capacity(bench, bench.settings.floor);
        Capacity server = capacity(bench, bench.settings.server);
        figures.capacity.push_back({std::move(floor), std::move(server)});
    }
}

void measureMemory(const Bench& bench, Figures& figures) {
    progress("memory");
    const Room room = startRoom(bench.settings.server, bench.roomCore);
    Load load({room.port});
    load.fire(bench.walls);
    figures.memorySeconds = load.play(Seconds(bench.settings.memorySeconds), usualInputs).seconds;
    figures.memory = memory(room.process);
}

void measureStarts(const Bench& bench, Figures& figures) {
    for (int i = 0; i < bench.settings.starts; ++i) {
        figures.floorStarts.push_back(
            startRoom(bench.settings.floor, bench.roomCore).startMilliseconds);
        figures.serverStarts.push_back(
            startRoom(bench.settings.server, bench.roomCore).startMilliseconds);
    }
}

std::vector<Child> startSpinners(const Bench& bench) {
    std::vector<Child> spinners;
    spinners.push_back(startSpinner(bench.roomCore));
    if (bench.crowdLoadCore != bench.roomCore)
        spinners.push_back(startSpinner(bench.crowdLoadCore));
    return spinners;
}

/// Many rooms take many sockets and pipes.
void raiseDescriptorLimit() {
    rlimit limit;
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

Figures measure(const Settings& settings) {
    const std::filesystem::path arena =
        std::filesystem::path(settings.server).parent_path() / "Resources/mapdata";
    if (!std::filesystem::exists(arena))
        throw std::runtime_error("no " + arena.string() + " beside the server");
    MapManager map;
    map.init(fileStringContents(arena.string()));
    const std::vector<int> cores = allowedCores();
    const Bench bench = {settings, placesFacingFarWalls(map), placesFacingSky(map), cores.back(),
                         cores.front()};
    raiseDescriptorLimit();
    const std::vector<Child> spinners = settings.halt ? std::vector<Child>() : startSpinners(bench);

    Figures figures;
    figures.conditions = conditions(bench);
    measureStarts(bench, figures);
    measureLoads(bench, figures);
    measureCapacity(bench, figures);
    measureMemory(bench, figures);
    progress("");
    return figures;
}

} // namespace

int main(int argc, char** argv) {
    Settings settings;
    CLI::App app("Measures what rooms cost, next to their bare system calls. Takes minutes; the "
                 "machine should do nothing else meanwhile.",
                 "rooms");
    app.add_option("--floor", settings.floor, "The executable of nothing but the calls")
        ->check(CLI::ExistingFile);
    app.add_option("--server", settings.server, "The server, with Resources/mapdata beside it")
        ->check(CLI::ExistingFile);
    app.add_option("--json", settings.json, "Write all figures to this file");
    app.add_option("--tsv", settings.tsv, "Write what plot.sh draws to this file");
    app.add_flag("--halt", settings.halt, "Let idle cores halt instead of keeping them awake");
    auto* quick = app.add_flag("--quick", settings.quick,
                               "Only find out whether everything runs; the figures mean little");
    app.add_option("--rounds", settings.rounds, "How often each load is measured")
        ->check(CLI::PositiveNumber)
        ->capture_default_str()
        ->excludes(quick);
    app.add_option("--seconds", settings.seconds, "How long each time")
        ->check(CLI::PositiveNumber)
        ->capture_default_str()
        ->excludes(quick);
    CLI11_PARSE(app, argc, argv);
    if (settings.quick)
        makeQuick(settings);
    try {
        const Figures figures = measure(settings);
        printReport(std::cout, figures);
        if (!settings.json.empty())
            arena::replaceFile(settings.json, jsonReport(figures));
        if (!settings.tsv.empty())
            arena::replaceFile(settings.tsv, plotColumns(figures));
    } catch (const std::exception& problem) {
        progress("");
        std::cerr << "rooms: " << problem.what() << "\n";
        return 1;
    }
    return 0;
}
