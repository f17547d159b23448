#include "bench/RoomSupply.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

using namespace drench;

// How many spare rooms a fleet needs, by simulation: docs/fleet.md says what came of it.

namespace {

using bench::RoomSupply;
using bench::supplyRooms;

/// A day, so that one of a thousand is still many at a group a second.
constexpr double steadySeconds = 86'400.0;

/// Three minutes, long after the start.
constexpr double rushStart = 600.0;
constexpr double rushLength = 180.0;
constexpr double rushEnd = 1800.0;
constexpr double rushFactor = 5.0;

/// How long rooms take to start: on a node that has the image, on a busy one, after a download, and
/// on a node that has to come first.
constexpr double startTimes[] = {2.0, 5.0, 15.0, 60.0};
constexpr int mostSpares = 200;

/// Some pods take half as long again.
std::function<double(Chance&)> around(double seconds) {
    return [=](Chance& chance) { return seconds * chance.between(0.75, 1.5); };
}

double shareWhoWait(int spares, double rate, double start, double sync, std::uint64_t seed) {
    const RoomSupply supply = {
        .spares = spares, .syncPeriod = sync, .startTime = around(start), .groupRate = rate};
    // As many groups at any rate.
    return supplyRooms(supply, steadySeconds / rate, Chance(seed)).shareWhoWait();
}

std::size_t mostInRush(int spares, double start, double sync, std::uint64_t seed) {
    const RoomSupply supply = {.spares = spares,
                               .syncPeriod = sync,
                               .startTime = around(start),
                               .groupRate = 1.0,
                               .rushStart = rushStart,
                               .rushLength = rushLength,
                               .rushFactor = rushFactor};
    return supplyRooms(supply, rushEnd, Chance(seed)).mostAtOnce;
}

/// The fewest spares with which no more than that share waits, found by halving: more never hurt
/// but by chance.
int fewestSpares(double share, double rate, double start, double sync, std::uint64_t seed) {
    int tooFew = 0;
    int enough = 1;
    while (shareWhoWait(enough, rate, start, sync, seed) > share) {
        tooFew = enough;
        enough *= 2;
    }
    while (enough - tooFew > 1) {
        const int middle = (tooFew + enough) / 2;
        (shareWhoWait(middle, rate, start, sync, seed) > share ? tooFew : enough) = middle;
    }
    return enough;
}

void writeColumns(std::ostream& out, double sync, std::uint64_t seed) {
    const auto block = [&](const char* title, const auto& value) {
        out << title;
        for (const double start : startTimes)
            out << "\t" << start << " s";
        out << "\n";
        for (int spares = 1; spares <= mostSpares; ++spares) {
            out << spares;
            for (const double start : startTimes)
                out << "\t" << value(spares, start);
            out << "\n";
        }
    };
    block("spares, share who wait",
          [&](int spares, double start) { return shareWhoWait(spares, 1.0, start, sync, seed); });
    out << "\n\n";
    block("spares, most at once in a rush",
          [&](int spares, double start) { return mostInRush(spares, start, sync, seed); });
}

void printTable(double sync, std::uint64_t seed) {
    std::cout << "Fewest spares for 1 group in 1000 to wait, the autoscaler looking every " << sync
              << " s\n"
              << "groups a second";
    for (const double start : startTimes)
        std::cout << std::setw(6) << start << " s";
    std::cout << "\n";
    for (const double rate : {0.1, 0.5, 1.0, 2.0, 5.0, 8.3}) {
        std::cout << std::setw(15) << rate;
        for (const double start : startTimes)
            std::cout << std::setw(8) << fewestSpares(0.001, rate, start, sync, seed);
        std::cout << std::endl;
    }
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Simulates groups of players who come to a fleet with spare rooms.", "spares");
    double sync = 10.0;
    std::uint64_t seed = 1;
    std::string columns;
    app.add_option("--sync", sync, "Seconds between two looks of the autoscaler")
        ->check(CLI::Range(0.1, 600.0))
        ->capture_default_str();
    app.add_option("--seed", seed, "Of the dice")->capture_default_str();
    app.add_option("--tsv", columns, "Columns for bench/plot-spares.sh");
    CLI11_PARSE(app, argc, argv);
    if (!columns.empty()) {
        std::ofstream out(columns);
        writeColumns(out, sync, seed);
        if (!out.flush()) {
            std::cerr << "spares: " << columns << " cannot be written\n";
            return 1;
        }
    }
    printTable(sync, seed);
    return 0;
}
