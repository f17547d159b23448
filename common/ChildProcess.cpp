#include "common/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace drench {

namespace {

/// The exit status of shells for this.
constexpr int cannotRun = 127;

int statusOf(int ended) {
    return WIFEXITED(ended) ? WEXITSTATUS(ended) : 128 + WTERMSIG(ended);
}

/// Turns this process into a program, whose arguments end with a null.
void become(const std::vector<char*>& words, const ChildProcess::Streams& streams) {
    if (streams.output >= 0)
        dup2(streams.output, STDOUT_FILENO);
    if (streams.errors >= 0)
        dup2(streams.errors, STDERR_FILENO);
    if (streams.input >= 0)
        dup2(streams.input, STDIN_FILENO);
    unsigned firstToClose = STDERR_FILENO + 1;
    if (streams.further >= 0) {
        dup2(streams.further, ChildProcess::furtherNumber);
        // Where it had that number already.
        fcntl(ChildProcess::furtherNumber, F_SETFD, 0);
        firstToClose = ChildProcess::furtherNumber + 1;
    }
    // Libraries open sockets that a program would inherit.
    close_range(firstToClose, ~0u, 0);
    execv(words.front(), words.data());
    _exit(cannotRun);
}

/// The arguments of execv(), made before the fork: a child of many threads must not allocate.
std::vector<char*> argumentsOf(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    return arguments;
}

} // namespace

ChildProcess::ChildProcess(const std::function<void()>& main) {
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ < 0)
        throw std::runtime_error(std::string("no process: ") + std::strerror(errno));
    if (pid_ == 0) {
        // An exception must not unwind into the parent's code.
        [&]() noexcept {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            // If the parent ended before that call, no signal comes.
            if (getppid() == parent)
                main();
            _exit(1);
        }();
    }
}

ChildProcess::ChildProcess(const std::vector<std::string>& words, const Streams& streams)
    : ChildProcess([arguments = argumentsOf(words), streams] { become(arguments, streams); }) {}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)), status_(other.status_) {}

ChildProcess::~ChildProcess() {
    signal(SIGKILL);
    wait();
}

void ChildProcess::signal(int number) const {
    if (pid_ > 0 && !status_)
        kill(pid_, number);
}

std::optional<int> ChildProcess::status() {
    int ended;
    if (pid_ > 0 && !status_ && waitpid(pid_, &ended, WNOHANG) == pid_)
        status_ = statusOf(ended);
    return status_;
}

int ChildProcess::wait() {
    int ended;
    if (pid_ > 0 && !status_ && waitpid(pid_, &ended, 0) == pid_)
        status_ = statusOf(ended);
    return status_.value_or(-1);
}

std::string programNamed(const std::string& name) {
    const char* const set = std::getenv("PATH");
    std::istringstream folders(set ? set : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::string file = std::move(folder);
        if (!file.empty())
            file += '/';
        file += name;
        struct stat status {};
        if (stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
            access(file.c_str(), X_OK) == 0)
            return file;
    }
    return {};
}

} // namespace drench
