#include "bench/RoomInProcess.h"
#include "common/NumberIn.h"

#include <exception>
#include <iostream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

using namespace drench;

// Plays ticks of a room with four players and ends: for bench/instructions.sh, which counts what
// they take.

namespace {

int wholeNumber(std::string_view text) {
    const std::optional<int> number = numberIn<int>(text);
    if (!number || *number < 0)
        throw std::runtime_error("\"" + std::string(text) + "\" is no whole number");
    return *number;
}

} // namespace

int main(int argc, char** argv) {
    using bench::Pastime;
    const std::map<std::string, Pastime> pastimes = {{"standing", Pastime::standing},
                                                     {"walking", Pastime::walking},
                                                     {"wall", Pastime::firingAtWalls},
                                                     {"sky", Pastime::firingAtSky}};
    if (argc != 4 || !pastimes.contains(argv[1])) {
        std::cerr << "usage: ticks standing|walking|wall|sky TICKS INPUTS\n"
                     "INPUTS are view records of each player for each tick.\n";
        return 2;
    }
    try {
        const int ticks = wholeNumber(argv[2]);
        const int inputs = wholeNumber(argv[3]);
        bench::RoomInProcess room(pastimes.at(argv[1]));
        for (int tick = 0; tick < ticks; ++tick)
            room.tick(inputs);
    } catch (const std::exception& problem) {
        std::cerr << "ticks: " << problem.what() << "\n";
        return 1;
    }
    return 0;
}
