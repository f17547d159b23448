#include "bench/Process.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <sched.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace drench::bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds longestStart(10);

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

/// A UDP port that is free right now.
int freePort() {
    const int probe = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    socklen_t length = sizeof address;
    if (probe < 0 || bind(probe, reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
        getsockname(probe, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        fail("no free UDP port");
    close(probe);
    return ntohs(address.sin_port);
}

/// Reads up to the line which says on which port the program listens, and returns that.
int awaitListening(int output, const std::string& executable) {
    const std::string listening = " is listening on port ";
    const Clock::time_point deadline = Clock::now() + longestStart;
    std::string written;
    for (;;) {
        const std::size_t found = written.find(listening);
        if (found != std::string::npos && written.ends_with('\n'))
            return std::stoi(written.substr(found + listening.size()));
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd readable = {output, POLLIN, 0};
        char bytes[4096];
        const ssize_t length =
            left.count() > 0 && poll(&readable, 1, static_cast<int>(left.count())) == 1
                ? read(output, bytes, sizeof bytes)
                : 0;
        if (length <= 0)
            throw std::runtime_error(
                std::string(executable).append(" does not listen; it wrote: ").append(written));
        written.append(bytes, static_cast<size_t>(length));
    }
}

/// Starts `become` in a process whose standard output is read up to the line that tells its port.
Room startListener(const std::string& executable, const std::function<void(int output)>& become) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        fail("pipe");
    auto output = std::make_unique<Descriptor>(ends[0]);
    std::optional<Descriptor> written(std::in_place, ends[1]);
    const Clock::time_point start = Clock::now();
    ChildProcess process([&] { become(written->number); });
    // Closed here, so that reading ends when the program ends.
    written.reset();
    const int port = awaitListening(output->number, executable);
    const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
    return {std::move(process), std::move(output), port, taken.count()};
}

/// The number after `field` in a file of /proc, in KiB.
long kibibytes(const std::string& path, const std::string& field) {
    std::ifstream file(path);
    std::string word;
    long value = 0;
    while (file >> word) {
        if (word == field && file >> value)
            return value;
    }
    throw std::runtime_error(path + " has no " + field);
}

} // namespace

std::vector<int> allowedCores() {
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) != 0)
        fail("sched_getaffinity");
    std::vector<int> cores;
    for (int core = 0; core < CPU_SETSIZE; ++core) {
        if (CPU_ISSET(core, &set))
            cores.push_back(core);
    }
    return cores;
}

void pinTo(int core) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(core, &set);
    if (sched_setaffinity(0, sizeof set, &set) != 0)
        fail("core " + std::to_string(core));
}

ChildProcess startSpinner(int core) {
    ChildProcess spinner([core] {
        pinTo(core);
        for (volatile unsigned turns = 0;;)
            turns = turns + 1;
    });
    const sched_param none = {};
    if (sched_setscheduler(spinner.pid(), SCHED_IDLE, &none) != 0)
        fail("idle priority");
    return spinner;
}

Room startRoom(const std::string& executable, int core) {
    const std::string argument = std::to_string(freePort());
    return startListener(executable, [&](int output) {
        pinTo(core);
        dup2(output, STDOUT_FILENO);
        execl(executable.c_str(), executable.c_str(), argument.c_str(), nullptr);
    });
}

Room startRelay(const std::string& executable, const Room& room,
                const std::vector<std::string>& options) {
    const std::string address = "127.0.0.1:" + std::to_string(room.port);
    std::vector<const char*> arguments = {executable.c_str(), "0", address.c_str(), "--quiet"};
    for (const std::string& option : options)
        arguments.push_back(option.c_str());
    arguments.push_back(nullptr);
    return startListener(executable, [&](int output) {
        dup2(output, STDOUT_FILENO);
        execv(executable.c_str(), const_cast<char* const*>(arguments.data()));
    });
}

double cpuSeconds(const ChildProcess& process) {
    clockid_t clock;
    timespec used;
    if (clock_getcpuclockid(process.pid(), &clock) != 0 || clock_gettime(clock, &used) != 0)
        throw std::runtime_error("no processor time of process " + std::to_string(process.pid()));
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

Memory memory(const ChildProcess& process) {
    const std::string folder = "/proc/" + std::to_string(process.pid());
    return {kibibytes(folder + "/status", "VmRSS:"), kibibytes(folder + "/smaps_rollup", "Pss:")};
}

} // namespace drench::bench
