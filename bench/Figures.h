#pragma once

#include "Process.h"

#include <string>
#include <vector>

namespace bench {

// What bench/rooms measures, round by round.

/// Where and how it was measured.
struct Conditions {
    std::string kernel;
    std::string processor;
    int cores = 0;

    /// Where all rooms run, and where the load of many comes from.
    int roomCore = 0;
    int crowdLoadCore = 0;

    /// Whether spinners kept these two from halting.
    bool awake = false;

    /// What else was running at the start: the load average over a minute.
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

    /// Somewhat below 1 or above it where a receipt came after the end or from before the start.
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

/// A number of rooms on one core.
struct CrowdSample {
    int rooms;
    double gapMedian;
    double gapP99;

    /// Shares of a core that the rooms and their load took.
    double roomsCpu;
    double loadCpu;

    /// Inputs that the load got sent, of those due.
    double sent;
};

/// The search for the most rooms that a core holds.
struct Capacity {
    std::vector<CrowdSample> samples;

    /// 0 when not even the fewest tried held.
    int rooms = 0;

    /// Whether the load gave up before the rooms did: then there may be space for more.
    bool endedByLoad = false;
};

struct CapacityRound {
    Capacity floor;
    Capacity server;

    double ratio() const {
        return static_cast<double>(server.rooms) / static_cast<double>(floor.rooms);
    }
};

struct Figures {
    Conditions conditions;
    std::vector<LoadFigures> loads;
    std::vector<CapacityRound> capacity;

    /// Of the server, after four played for a while.
    double memorySeconds = 0.0;
    Memory memory = {};

    /// Milliseconds to listening.
    std::vector<double> floorStarts;
    std::vector<double> serverStarts;
};

} // namespace bench
