#pragma once

#include <string>
#include <vector>

namespace drench::bench {

/// The processor cores that this process may run on, ascending.
std::vector<int> allowedCores();

/// Keeps the calling thread, and what it starts from now on, on one core. Throws std::runtime_error
/// when it may not run there.
void pinTo(int core);

/// A child process. The destructor ends it, and so does the system when this process ends, however
/// it does.
class Child {
  public:
    /// Takes over a process, and the descriptor that its standard output is read from or -1.
    Child(int pid, int output) : pid_(pid), output_(output) {}
    Child(Child&& other) noexcept;
    Child& operator=(Child&&) = delete;
    ~Child();

    int pid() const { return pid_; }
    int output() const { return output_; }

  private:
    int pid_;
    int output_;
};

/// Keeps a core from halting: spins there, at idle priority, whenever nobody else wants it.
Child startSpinner(int core);

/// The server, or another program that takes a port and says when it listens there.
struct Room {
    Child process;
    int port;

    /// From the start to the listening.
    double startMilliseconds;
};

/// Starts a room on one core, at a port that is free, and waits until it listens. Throws
/// std::runtime_error, with what the room wrote, if that does not happen.
Room startRoom(const std::string& executable, int core);

/// Processor time that a process has used so far, the kernel's part included.
double cpuSeconds(const Child& process);

/// The memory that a process holds, in KiB.
struct Memory {
    long resident;

    /// The same, with each page that others share counting only for this process's part of it.
    long proportional;
};

Memory memory(const Child& process);

} // namespace drench::bench
