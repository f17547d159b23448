#include "bench/FiringPlaces.h"
#include "bench/Load.h"
#include "bench/Process.h"
#include "bench/Report.h"
#include "bench/Statistics.h"
#include "common/Console.h"
#include "common/Files.h"
#include "src/FileLoader.h"
#include "src/FilePath.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <sys/resource.h>
#include <sys/utsname.h>
#include <vector>

using namespace drench;

// The cost of rooms of drench-server, held against bench/floor: the bare system calls of a room
// under the same load, on one core. Both take turns of half a second, so that a spell in which the
// machine is slow meets the two alike.
//
// A single room shares its core with its load. Otherwise a wake-up would come from another core,
// and schedulers charge a thread for the time from such a wake-up until it runs. On virtual
// machines that takes an interrupt through the host, several times the cost of a datagram in a
// room. Crowds of rooms get their load from another core, if there is one: it would take too much
// of theirs.

namespace {

using namespace drench::bench;
using Seconds = std::chrono::duration<double>;

/// Inputs per second and player while counting rooms, and in rooms whose memory is measured.
constexpr double usualInputs = 120.0;

/// Steps from zero rooms to the first crowd that neither program holds: they find the limit within
/// a few percent of that crowd.
constexpr int crowdSteps = 16;

struct Settings {
    std::string floor = getAppPath() + "/floor";
    std::string server = getAppPath() + "/../drench-server";
    std::string json;
    std::string tsv;
    bool halt = false;
    bool quick = false;

    std::vector<double> inputs = {0.0, 120.0, 300.0};
    std::vector<std::string> firing = {"nobody", "wall", "sky"};
    int rounds = 20;
    double seconds = 0.5;
    double warmUpSeconds = 0.5;

    int fewestRooms = 16;
    int mostRooms = 1024;
    int crowdSamples = 5;
    double crowdSeconds = 2.0;
    double crowdWarmUpSeconds = 0.5;

    double memorySeconds = 60.0;
    int starts = 20;
};

/// The shortest run that still takes every measurement.
void makeQuick(Settings& settings) {
    settings.inputs = {120.0};
    settings.firing = {"nobody", "sky"};
    settings.rounds = 1;
    settings.seconds = 0.2;
    settings.warmUpSeconds = 0.05;
    settings.fewestRooms = 1;
    settings.mostRooms = 2;
    settings.crowdSamples = 1;
    settings.crowdSeconds = 0.1;
    settings.crowdWarmUpSeconds = 0.05;
    settings.memorySeconds = 0.2;
    settings.starts = 2;
}

struct Setup {
    Settings settings;
    std::vector<FiringPlace> walls;
    std::vector<FiringPlace> sky;
    int roomCore;

    /// The core of a crowd's load.
    int crowdLoadCore;
};

/// The terminal, with a line about the present measurement.
Console& console() {
    static Console terminal(false, true);
    return terminal;
}

Conditions conditions(const Setup& setup) {
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
    conditions.roomCore = setup.roomCore;
    conditions.crowdLoadCore = setup.crowdLoadCore;
    conditions.awake = !setup.settings.halt;
    getloadavg(&conditions.loadAverage, 1);
    return conditions;
}

/// A room and its four players.
struct LoadedRoom {
    explicit LoadedRoom(const std::string& executable, int core)
        : room(startRoom(executable, core)), load({room.port}) {}

    Room room;
    Load load;
};

Sample sample(LoadedRoom& loaded, double seconds, double inputs) {
    const double cpuBefore = cpuSeconds(loaded.room.process);
    const Play play = loaded.load.play(Seconds(seconds), inputs);
    const double cpu = cpuSeconds(loaded.room.process) - cpuBefore;
    return {play.seconds,
            1000.0 * cpu / play.seconds,
            static_cast<double>(play.gaps.size()) / maxPlayers / play.seconds,
            quantile(play.gaps, 0.5),
            quantile(play.gaps, 0.99),
            inputs > 0.0 ? static_cast<double>(play.receipts) / static_cast<double>(play.inputs)
                         : 1.0};
}

LoadFigures loadFigures(const Setup& setup, double inputs, const std::string& firing) {
    const Settings& settings = setup.settings;
    const std::vector<FiringPlace>& places = firing == "sky" ? setup.sky : setup.walls;
    pinTo(setup.roomCore);
    LoadedRoom floor(settings.floor, setup.roomCore);
    LoadedRoom server(settings.server, setup.roomCore);
    server.load.takePlaces(places);
    for (LoadedRoom* loaded : {&floor, &server}) {
        if (firing != "nobody")
            loaded->load.fire(places);
        loaded->load.play(Seconds(settings.warmUpSeconds), inputs);
    }
    LoadFigures figures = {inputs, firing, {}};
    for (int round = 0; round < settings.rounds; ++round)
        figures.rounds.push_back(
            {sample(floor, settings.seconds, inputs), sample(server, settings.seconds, inputs)});
    if (firing != "nobody" && !server.load.allFire(places))
        throw std::runtime_error("somebody stopped firing at the " + firing);
    return figures;
}

void measureLoads(const Setup& setup, Figures& figures) {
    for (const double inputs : setup.settings.inputs) {
        for (const std::string& firing : setup.settings.firing) {
            console().show(std::to_string(static_cast<int>(inputs)) + " inputs, firing: " + firing);
            figures.loads.push_back(loadFigures(setup, inputs, firing));
        }
    }
}

double cpuSecondsOf(const std::vector<Room>& rooms) {
    double sum = 0.0;
    for (const Room& room : rooms)
        sum += cpuSeconds(room.process);
    return sum;
}

CrowdSample crowdSample(const Setup& setup, const std::string& executable, int count) {
    const Settings& settings = setup.settings;
    console().show(std::to_string(count) + " rooms of " +
                   std::filesystem::path(executable).filename().string());
    pinTo(setup.crowdLoadCore);
    std::vector<Room> rooms;
    std::vector<int> ports;
    for (int i = 0; i < count; ++i) {
        rooms.push_back(startRoom(executable, setup.roomCore));
        ports.push_back(rooms.back().port);
    }
    Load load(ports);
    load.play(Seconds(settings.crowdWarmUpSeconds), usualInputs);
    const double cpuBefore = cpuSecondsOf(rooms);
    const Play play = load.play(Seconds(settings.crowdSeconds), usualInputs);
    const double due = usualInputs * maxPlayers * count * settings.crowdSeconds;
    return {quantile(play.gaps, 0.5), quantile(play.gaps, 0.99),
            (cpuSecondsOf(rooms) - cpuBefore) / play.seconds, play.cpuSeconds / play.seconds,
            static_cast<double>(play.inputs) / due};
}

Crowd crowd(const Setup& setup, int rooms, int samples) {
    Crowd crowd = {rooms, {}, {}};
    for (int i = 0; i < samples; ++i) {
        crowd.floor.push_back(crowdSample(setup, setup.settings.floor, rooms));
        crowd.server.push_back(crowdSample(setup, setup.settings.server, rooms));
    }
    return crowd;
}

/// Doubles the number of rooms until neither program holds it, with one sample each, then goes in
/// even steps from the number that both held.
void measureCrowds(const Setup& setup, Figures& figures) {
    const Settings& settings = setup.settings;
    int bothHold = settings.fewestRooms;
    int rooms = settings.fewestRooms;
    for (;; rooms = std::min(2 * rooms, settings.mostRooms)) {
        const Crowd probe = crowd(setup, rooms, 1);
        const bool floorHolds = holds(probe.floor);
        const bool serverHolds = holds(probe.server);
        if (floorHolds && serverHolds)
            bothHold = rooms;
        if ((!floorHolds && !serverHolds) || rooms == settings.mostRooms)
            break;
    }
    const int step = std::max(1, rooms / crowdSteps);
    for (int count = bothHold; count <= rooms; count += step)
        figures.crowds.push_back(crowd(setup, count, settings.crowdSamples));
}

void measureMemory(const Setup& setup, Figures& figures) {
    console().show("memory");
    const Room room = startRoom(setup.settings.server, setup.roomCore);
    Load load({room.port});
    load.fire(setup.walls);
    figures.memorySeconds = load.play(Seconds(setup.settings.memorySeconds), usualInputs).seconds;
    figures.memory = memory(room.process);
}

void measureStarts(const Setup& setup, Figures& figures) {
    for (int i = 0; i < setup.settings.starts; ++i) {
        figures.floorStarts.push_back(
            startRoom(setup.settings.floor, setup.roomCore).startMilliseconds);
        figures.serverStarts.push_back(
            startRoom(setup.settings.server, setup.roomCore).startMilliseconds);
    }
}

std::vector<ChildProcess> startSpinners(const Setup& setup) {
    std::vector<ChildProcess> spinners;
    spinners.push_back(startSpinner(setup.roomCore));
    if (setup.crowdLoadCore != setup.roomCore)
        spinners.push_back(startSpinner(setup.crowdLoadCore));
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
    const std::filesystem::path arenaFile =
        std::filesystem::path(settings.server).parent_path() / "Resources/mapdata";
    if (!std::filesystem::exists(arenaFile))
        throw std::runtime_error("no " + arenaFile.string() + " beside the server");
    MapManager map;
    map.init(fileStringContents(arenaFile.string()));
    const std::vector<int> cores = allowedCores();
    const Setup setup = {settings, placesFacingFarWalls(map), placesFacingSky(map), cores.back(),
                         cores.front()};
    raiseDescriptorLimit();
    const std::vector<ChildProcess> spinners =
        settings.halt ? std::vector<ChildProcess>() : startSpinners(setup);

    Figures figures;
    figures.conditions = conditions(setup);
    measureStarts(setup, figures);
    measureLoads(setup, figures);
    measureCrowds(setup, figures);
    measureMemory(setup, figures);
    console().clear();
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
            replaceFile(settings.json, jsonReport(figures));
        if (!settings.tsv.empty())
            replaceFile(settings.tsv, plotColumns(figures));
    } catch (const std::exception& problem) {
        console().clear();
        std::cerr << "rooms: " << problem.what() << "\n";
        return 1;
    }
    return 0;
}
