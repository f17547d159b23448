#pragma once

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace drench {

/// A child process. The destructor ends it. If this process ends in any way, the system ends the
/// child.
class ChildProcess {
  public:
    /// Forks a process that runs `main` and then ends. Throws std::runtime_error if the system
    /// gives no process.
    explicit ChildProcess(const std::function<void()>& main);

    /// The descriptors that become a program's standard output, error and input; -1 leaves them as
    /// they are. A program gets no others than these four.
    struct Streams {
        int output = -1;
        int errors = -1;
        int input = -1;

        /// Becomes descriptor `furtherNumber`; -1 for none.
        int further = -1;
    };

    static constexpr int furtherNumber = 3;

    /// Starts a program: the first word is its file, the others are its arguments. Its exit status
    /// is 127 if the file cannot be run.
    ChildProcess(const std::vector<std::string>& words, const Streams& streams);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess();

    pid_t pid() const { return pid_; }

    /// Sends a signal, unless the process has ended.
    void signal(int number) const;

    /// The exit status, or 128 and the signal's number after a signal; nothing while it runs.
    std::optional<int> status();

    /// Waits for the end, and returns status().
    int wait();

  private:
    pid_t pid_;
    std::optional<int> status_;
};

/// The file that a shell runs for a program's name, by $PATH; empty if there is none.
std::string programNamed(const std::string& name);

} // namespace drench
