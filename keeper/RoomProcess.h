#pragma once

#include "common/ChildProcess.h"
#include "common/Descriptor.h"

#include <cstdint>
#include <optional>
#include <string>

namespace drench::keeper {

/// The server, started as a child whose console is read write by write. Destruction ends it.
class RoomProcess {
  public:
    /// Starts the executable. Throws std::runtime_error if the system gives no process or pipe.
    RoomProcess(const std::string& executable, std::uint16_t port);

    /// For poll(2): readable when something was written, and at the end.
    int console() const { return pipe_.reading.number; }

    /// What the server wrote with one call, or nothing if there is nothing more yet.
    std::optional<std::string> nextWrite();

    /// Whether the server has closed its console, and all that it wrote has been read.
    bool hasEnded() const { return ended_; }

    /// Waits for the end; the exit status, or 128 and the signal's number.
    int status() { return process_.wait(); }

    void signal(int number) const { process_.signal(number); }
    pid_t pid() const { return process_.pid(); }

  private:
    struct ConsolePipe {
        Descriptor reading;
        Descriptor writing;
    };

    static ConsolePipe makePipe();

    ConsolePipe pipe_;
    ChildProcess process_;
    bool ended_ = false;
};

} // namespace drench::keeper
