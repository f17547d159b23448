#pragma once

#include "bench/Process.h"

#include <string>
#include <vector>

namespace drench::bench {

// The measurements of bench/rooms, round by round.

/// The measuring machine and its state.
struct Conditions {
    std::string kernel;
    std::string processor;
    int cores = 0;

    /// The core of all rooms.
    int roomCore = 0;

    /// The core of the load of many rooms.
    int crowdLoadCore = 0;

    /// Whether spinners kept these two cores from halting.
    bool awake = false;

    /// The load average over a minute at the start; a high one means that other programs were
    /// running.
    double loadAverage = 0.0;
};

/// One program under load for a time.
struct Sample {
    double seconds;
    double cpuMillisecondsPerSecond;
    double statesPerSecond;

    /// Milliseconds between states.
    double gapMedian;
    double gapP99;

    /// 1, or slightly off if a receipt came after the end or from before the start.
    double receiptsPerInput;
};

/// The floor and the server, one right after the other.
struct Round {
    Sample floor;
    Sample server;

    double ratio() const {
        return server.cpuMillisecondsPerSecond / floor.cpuMillisecondsPerSecond;
    }
};

struct LoadFigures {
    double inputsPerSecond;

    /// "nobody", "wall" or "sky".
    std::string firing;
    std::vector<Round> rounds;
};

/// A number of rooms on one core, for a time.
struct CrowdSample {
    double gapMedian;
    double gapP99;

    /// The shares of a core that the rooms and their load took.
    double roomsCpu;
    double loadCpu;

    /// The share of the due inputs that the load sent.
    double sent;
};

/// Equal numbers of rooms of both programs, started anew for each sample: the ticks of the rooms
/// lie differently after each start, and so the gaps differ.
struct Crowd {
    int rooms;
    std::vector<CrowdSample> floor;
    std::vector<CrowdSample> server;
};

struct Figures {
    Conditions conditions;
    std::vector<LoadFigures> loads;

    /// Ascending.
    std::vector<Crowd> crowds;

    /// The server's memory, and the seconds that four players had played before.
    double memorySeconds = 0.0;
    Memory memory = {};

    /// Milliseconds from the start to listening.
    std::vector<double> floorStarts;
    std::vector<double> serverStarts;
};

} // namespace drench::bench
