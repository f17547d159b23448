#pragma once

#include "common/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Milliseconds in which whatever is waited for comes, also where ten others want each processor.
constexpr int patience = 20000;

/// The real server, started as a host starts it: a copy of the executable in a temporary folder of
/// its own, with its own Resources/mapdata, its standard output read through a pipe. Destruction
/// ends it, removes the folder and fails the test if it wrote to standard error, where sanitizers
/// report.
class ServerProcess {
  public:
    /// Starts with the given arguments. Without a map text there is no Resources folder.
    ServerProcess(const std::vector<std::string>& arguments, const std::optional<std::string>& map);

    /// Starts on a free port and waits until the server listens.
    static ServerProcess listening(const std::string& map);

    /// Starts on this port and waits until the server listens; nothing if it does not.
    static std::optional<ServerProcess> listeningAt(int port, const std::string& map);

    ServerProcess(ServerProcess&& other) noexcept;
    ServerProcess& operator=(ServerProcess&&) = delete;
    ~ServerProcess();

    /// The port that it listens at.
    int port() const { return port_; }

    std::filesystem::path folder() const { return folder_->path; }

    /// The next line of standard output without its end, or nothing within `milliseconds`. At the
    /// end of the output a last line without an end counts.
    std::optional<std::string> line(int milliseconds = patience);

    /// Waits for a line that equals `text`, skipping others; false if none comes in time.
    bool waitForLine(const std::string& text, int milliseconds = patience);

    /// All output until the process ends, joined as it was written.
    std::string restOfOutput();

    /// The exit status, once the process has ended by itself; nothing if it does not in time.
    std::optional<int> exitStatus();

    bool isRunning();

  private:
    bool readSome(int milliseconds);

    std::unique_ptr<TemporaryFolder> folder_;
    std::optional<drench::ChildProcess> process_;
    int output_ = -1;
    int port_ = 0;
    std::string unread_;
};

/// A port below the ephemeral range that nobody is bound to right now.
int freePort();
