#pragma once

#include "common/ChildProcess.h"
#include "common/Descriptor.h"

#include <memory>
#include <string>
#include <vector>

namespace drench::bench {

/// The processor cores that this process may run on, ascending.
std::vector<int> allowedCores();

/// Keeps the calling thread and the threads and processes it starts from now on on one core. Throws
/// std::runtime_error if they may not run there.
void pinTo(int core);

/// Keeps a core from halting: spins there, at idle priority, whenever nothing else runs.
ChildProcess startSpinner(int core);

/// A running server, or another program that takes a port and prints a line when it listens.
struct Room {
    ChildProcess process;

    /// The program's output. It must stay open for the program to go on.
    std::unique_ptr<Descriptor> output;
    int port;

    /// Milliseconds from the start to listening.
    double startMilliseconds;
};

/// Starts a room on one core, at a free port, and waits until it listens. Throws
/// std::runtime_error, with the room's output, if it does not.
Room startRoom(const std::string& executable, int core);

/// Starts drench-lag before a room, with options for its line, at a free port. Throws as
/// startRoom() does.
Room startRelay(const std::string& executable, const Room& room,
                const std::vector<std::string>& options);

/// Processor time that a process has used so far, kernel time included.
double cpuSeconds(const ChildProcess& process);

/// The memory that a process holds, in KiB.
struct Memory {
    long resident;

    /// The same, but a page shared by n processes counts as 1/n.
    long proportional;
};

Memory memory(const ChildProcess& process);

} // namespace drench::bench
