#include "RoomInProcess.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <map>
#include <string>

// Plays ticks of a room with four players and ends: for bench/instructions.sh, which counts what
// they take.

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
        bench::RoomInProcess room(pastimes.at(argv[1]));
        for (int ticks = std::atoi(argv[2]); ticks > 0; --ticks)
            room.tick(std::atoi(argv[3]));
    } catch (const std::exception& problem) {
        std::cerr << "ticks: " << problem.what() << "\n";
        return 1;
    }
    return 0;
}
