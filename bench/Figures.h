#pragma once

#include "bench/Process.h"

#include <string>
#include <vector>

namespace drench::bench {

// The measurements of bench/rooms, round by round.

/// The machine that it was measured on, and in what state.
struct Conditions {
    std::string kernel;
    std::string processor;
    int cores = 0;

    /// All rooms run here.
    int roomCore = 0;

    /// The load of many rooms comes from here.
    int crowdLoadCore = 0;

    /// Whether spinners kept these two from halting.
    bool awake = false;

    /// The load average over a minute at the start, which tells whether anything else was running.
    double loadAverage = 0.0;
};

/// A program under load for a time.
struct Sample {
    double seconds;
    double cpuMillisecondsPerSecond;
    double statesPerSecond;

    /// Milliseconds between states.
    double gapMedian;
    double gapP99;

    /// 1, or somewhat off where a receipt came after the end or from before the start.
    double receiptsPerInput;
};

/// Floor and server, one right after the other.
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

    /// Shares of a core that the rooms and their load took.
    double roomsCpu;
    double loadCpu;

    /// Inputs that the load got sent, of those due.
    double sent;
};

/// As many rooms of the one as of the other, started anew for each sample: how the ticks of the
/// rooms lie among each other differs from start to start, and the gaps with it.
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

    /// Of the server, after four played for a while.
    double memorySeconds = 0.0;
    Memory memory = {};

    /// Milliseconds to listening.
    std::vector<double> floorStarts;
    std::vector<double> serverStarts;
};

} // namespace drench::bench
