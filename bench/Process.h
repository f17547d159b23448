#pragma once

#include "common/ChildProcess.h"
#include "common/Descriptor.h"

#include <memory>
#include <string>
#include <vector>

namespace drench::bench {

/// The processor cores that this process may run on, ascending.
std::vector<int> allowedCores();

/// Keeps the calling thread, and what it starts from now on, on one core. Throws std::runtime_error
/// when it may not run there.
void pinTo(int core);

/// Keeps a core from halting: spins there, at idle priority, whenever nobody else wants it.
ChildProcess startSpinner(int core);

/// The server, or another program that takes a port and says when it listens there.
struct Room {
    ChildProcess process;

    /// What it writes, which must be kept open for it to go on.
    std::unique_ptr<Descriptor> output;
    int port;

    /// From the start to the listening.
    double startMilliseconds;
};

/// Starts a room on one core, at a port that is free, and waits until it listens. Throws
/// std::runtime_error, with what the room wrote, if that does not happen.
Room startRoom(const std::string& executable, int core);

/// Processor time that a process has used so far, the kernel's part included.
double cpuSeconds(const ChildProcess& process);

/// The memory that a process holds, in KiB.
struct Memory {
    long resident;

    /// The same, with each page that others share counting only for this process's part of it.
    long proportional;
};

Memory memory(const ChildProcess& process);

} // namespace drench::bench
