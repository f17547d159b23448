#include "bench/PlayedLife.h"
#include "bench/PredictionFigures.h"
#include "common/Console.h"
#include "common/Files.h"
#include "src/FileLoader.h"
#include "src/FilePath.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

using namespace drench;

// How well players are predicted over real sockets: the server, drench-lag before it, and a player
// whose hands make two key changes and 125 turns a second, in a room of its own. A second player,
// on no worse line than loopback, sees every tick; its sightings tell which record acted when.

namespace {

using namespace drench::bench;

/// Milliseconds without a tick of the room: the machine stood still.
constexpr double standstill = 100.0;
constexpr int mostAttempts = 5;

struct Settings {
    std::string server = getAppPath() + "/../drench-server";
    std::string relay = getAppPath() + "/../drench-lag";
    std::string json;
    std::string tsv;
    int lives = 12;
    double seconds = 20.0;
    std::uint64_t seed = 1;
};

const std::vector<LineUnderTest>& linesUnderTest() {
    static const std::vector<LineUnderTest> lines = {
        {"loopback", {}, 0.0},
        {"40 ms", {"--delay", "40"}, 40.0},
        {"40 ms, 5 ms jitter, 2 % loss", {"--delay", "40", "--jitter", "5", "--loss", "2%"}, 40.0},
        {"100 ms, 20 ms jitter, 5 % loss in threes",
         {"--delay", "100", "--jitter", "20", "--loss", "5%", "--burst", "3"},
         100.0}};
    return lines;
}

/// The longest time between two ticks, in milliseconds.
double longestGap(const PlayedLife& life) {
    double longest = 0.0;
    for (std::size_t tick = 1; tick < life.sightings.size(); ++tick)
        longest = std::max(longest, life.sightings[tick].at - life.sightings[tick - 1].at);
    return longest;
}

/// Plays a life again while it fails or the machine stands still in it: that is not the line's.
template<class Play>
PlayedLife playSteadily(Console& console, const Play& play) {
    for (int attempt = 1;; ++attempt) {
        std::string problem;
        try {
            PlayedLife life = play();
            const double gap = longestGap(life);
            if (gap < standstill || attempt == mostAttempts)
                return life;
            problem = std::to_string(std::lround(gap)) + " ms without a tick";
        } catch (const std::runtime_error& error) {
            if (attempt == mostAttempts)
                throw;
            problem = error.what();
        }
        console.note("once more: " + problem);
    }
}

std::vector<LineFigures> measure(const Settings& settings) {
    Console console(false, true);
    MapManager map;
    map.init(fileStringContents(DRENCH_MAPDATA));
    std::vector<LineFigures> figures;
    for (const LineUnderTest& line : linesUnderTest())
        figures.emplace_back().name = line.name;
    // The lines take turns, so that a spell in which the machine is slow meets them alike.
    for (int life = 0; life < settings.lives; ++life) {
        for (std::size_t i = 0; i < figures.size(); ++i) {
            LineUnderTest line = linesUnderTest()[i];
            console.show("life " + std::to_string(life + 1) + " of " +
                         std::to_string(settings.lives) + ": " + line.name);
            const std::uint64_t seed = settings.seed * 1000 + static_cast<std::uint64_t>(life);
            if (!line.options.empty()) {
                line.options.emplace_back("--seed");
                line.options.push_back(std::to_string(seed));
            }
            const auto habit = life % 2 == 0 ? Hands::Habit::random : Hands::Habit::scripted;
            const PlayedLife played = playSteadily(console, [&] {
                return playLife({settings.server, settings.relay}, map, line, habit, seed,
                                settings.seconds);
            });
            add(figures[i], played, map, line.delay);
        }
    }
    console.clear();
    return figures;
}

void printConditions(const Settings& settings) {
    double load = 0.0;
    getloadavg(&load, 1);
    std::cout << settings.lives << " lives of " << settings.seconds
              << " s a line, every other one scripted; load average " << load << "\n\n";
}

} // namespace

int main(int argc, char** argv) {
    Settings settings;
    CLI::App app("Measures how well a player's own body is predicted over lines good and bad.",
                 "prediction");
    app.add_option("--server", settings.server, "The server, with Resources/mapdata beside it")
        ->check(CLI::ExistingFile);
    app.add_option("--relay", settings.relay, "drench-lag")->check(CLI::ExistingFile);
    app.add_option("--json", settings.json, "Write all figures to this file");
    app.add_option("--tsv", settings.tsv, "Write what plot-prediction.sh draws to this file");
    app.add_option("--lives", settings.lives, "Lives to play on each line")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--seconds", settings.seconds, "The length of a life")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--seed", settings.seed, "What chance follows from")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    try {
        printConditions(settings);
        const std::vector<LineFigures> figures = measure(settings);
        printTable(std::cout, figures);
        if (!settings.json.empty())
            replaceFile(settings.json, jsonReport(figures));
        if (!settings.tsv.empty())
            replaceFile(settings.tsv, plotColumns(figures));
    } catch (const std::exception& problem) {
        std::cerr << "prediction: " << problem.what() << "\n";
        return 1;
    }
    return 0;
}
