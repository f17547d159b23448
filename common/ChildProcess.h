#pragma once

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace drench {

/// A child process. The destructor ends it, and so does the system when this process ends, however
/// it does.
class ChildProcess {
  public:
    /// Starts a process that goes on with `main`, and ends when that returns. Throws
    /// std::runtime_error when there is no process to be had.
    explicit ChildProcess(const std::function<void()>& main);

    /// Where a program's standard output and standard error go; -1 leaves them as they are here.
    struct Outputs {
        int output = -1;
        int errors = -1;
    };

    /// Starts a program: the first word is its file, the others are its arguments. Its exit status
    /// is 127 when the file cannot be run.
    ChildProcess(const std::vector<std::string>& words, const Outputs& outputs);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess();

    pid_t pid() const { return pid_; }

    /// Sends a signal, unless it has ended.
    void signal(int number) const;

    /// The exit status, 128 and the signal's number after a signal; nothing while it runs.
    std::optional<int> status();

    /// Waits for the end, and returns what status() does.
    int wait();

  private:
    pid_t pid_;
    std::optional<int> status_;
};

} // namespace drench
