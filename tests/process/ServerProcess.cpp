#include "tests/process/ServerProcess.h"

#include "common/Descriptor.h"

#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <unistd.h>
#include <utility>

using namespace drench;

namespace {

using Clock = std::chrono::steady_clock;

int millisecondsUntil(Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

} // namespace

int freePort() {
    static int next = 20000 + static_cast<int>(getpid()) * 13 % 10000;
    for (int tries = 0; tries < 1000; ++tries) {
        const int port = next;
        next = next == 31999 ? 20000 : next + 1;
        const int probe = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<unsigned short>(port));
        const bool isFree =
            bind(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        close(probe);
        if (isFree)
            return port;
    }
    throw std::runtime_error("no free UDP port from 20000 to 31999");
}

ServerProcess::ServerProcess(const std::vector<std::string>& arguments,
                             const std::optional<std::string>& map)
    : folder_(std::make_unique<TemporaryFolder>()) {
    const std::filesystem::path executable = folder() / "drench-server";
    std::filesystem::copy_file(DRENCH_SERVER, executable);
    if (map) {
        std::filesystem::create_directory(folder() / "Resources");
        folder_->write("Resources/mapdata", *map);
    }

    std::vector<std::string> words = {executable.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const Descriptor output(ends[1]);
    const Descriptor errors(
        open((folder() / "stderr").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    output_ = ends[0];
    process_.emplace(words, ChildProcess::Streams{output.number, errors.number});
}

std::optional<ServerProcess> ServerProcess::listeningAt(int port, const std::string& map) {
    ServerProcess server({std::to_string(port)}, map);
    if (!server.waitForLine("Server is listening on port " + std::to_string(port)))
        return std::nullopt;
    server.port_ = port;
    return server;
}

ServerProcess ServerProcess::listening(const std::string& map) {
    for (int tries = 0; tries < 20; ++tries) {
        // Another process may have taken the port in between.
        if (std::optional<ServerProcess> server = listeningAt(freePort(), map))
            return std::move(*server);
    }
    throw std::runtime_error("the server does not start");
}

ServerProcess::ServerProcess(ServerProcess&& other) noexcept
    : folder_(std::move(other.folder_)), process_(std::move(other.process_)),
      output_(std::exchange(other.output_, -1)), port_(other.port_),
      unread_(std::move(other.unread_)) {}

ServerProcess::~ServerProcess() {
    if (!folder_)
        return;
    process_.reset();
    close(output_);
    std::ostringstream errors;
    errors << std::ifstream(folder() / "stderr").rdbuf();
    EXPECT_EQ(errors.str(), "") << "on the server's standard error";
}

bool ServerProcess::readSome(int milliseconds) {
    pollfd waiting = {output_, POLLIN, 0};
    if (poll(&waiting, 1, milliseconds) <= 0)
        return false;
    char buffer[4096];
    const ssize_t length = read(output_, buffer, sizeof buffer);
    if (length <= 0)
        return false;
    unread_.append(buffer, static_cast<size_t>(length));
    return true;
}

std::optional<std::string> ServerProcess::line(int milliseconds) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    size_t end;
    while ((end = unread_.find('\n')) == std::string::npos) {
        if (!readSome(millisecondsUntil(deadline))) {
            if (unread_.empty() || Clock::now() >= deadline)
                return std::nullopt;
            return std::exchange(unread_, {});
        }
    }
    std::string first = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    return first;
}

bool ServerProcess::waitForLine(const std::string& text, int milliseconds) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (auto next = line(millisecondsUntil(deadline))) {
        if (*next == text)
            return true;
    }
    return false;
}

std::string ServerProcess::restOfOutput() {
    while (readSome(patience)) {
    }
    return std::exchange(unread_, {});
}

std::optional<int> ServerProcess::exitStatus() {
    const auto deadline = Clock::now() + std::chrono::milliseconds(patience);
    while (isRunning() && Clock::now() < deadline)
        usleep(2000);
    return process_->status();
}

bool ServerProcess::isRunning() {
    return !process_->status();
}
