#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

// Gives the sockets of a process that runs the send buffer that net.core.wmem_default would have
// given them. That setting is the whole machine's, which tests leave alone. Needs root.
//
// usage: send-buffer PID BYTES

namespace {

int require(long result, const std::string& what) {
    if (result < 0)
        throw std::runtime_error(what + ": " + std::strerror(errno));
    return static_cast<int>(result);
}

void widen(int descriptor, int bytes) {
    // The kernel doubles what it is asked for here, but not its default.
    const int asked = bytes / 2;
    require(setsockopt(descriptor, SOL_SOCKET, SO_SNDBUFFORCE, &asked, sizeof asked),
            "SO_SNDBUFFORCE");
    int given = 0;
    socklen_t size = sizeof given;
    require(getsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &given, &size), "SO_SNDBUF");
    if (given != bytes)
        throw std::runtime_error("the send buffer has " + std::to_string(given) + " bytes, not " +
                                 std::to_string(bytes));
}

void widenAll(const std::string& process, int bytes) {
    const int handle = require(syscall(SYS_pidfd_open, std::stoi(process), 0), "pidfd_open");
    int sockets = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/" + process + "/fd")) {
        if (!std::filesystem::read_symlink(entry).string().starts_with("socket:"))
            continue;
        const int theirs = std::stoi(entry.path().filename());
        widen(require(syscall(SYS_pidfd_getfd, handle, theirs, 0), "pidfd_getfd"), bytes);
        ++sockets;
    }
    if (sockets == 0)
        throw std::runtime_error("process " + process + " has no socket");
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " PID BYTES\n";
        return 2;
    }
    try {
        widenAll(argv[1], std::stoi(argv[2]));
    } catch (const std::exception& problem) {
        std::cerr << "send-buffer: " << problem.what() << "\n";
        return 1;
    }
}
