#pragma once

#include "tests/process/ToolProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <memory>
#include <optional>
#include <string>

/// drench-keeper with the real server, each in the test's own folder, and its metrics on a port of
/// their own.
class KeeperProcess {
  public:
    /// @param options  separated by single blanks
    /// @param agonesPort  what the environment says; 0 leaves it out
    /// @param serverScript  a shell script that is started in the server's place
    explicit KeeperProcess(const std::string& options, int agonesPort = 0,
                           const std::string& serverScript = "");

    /// The room's port.
    int port() const { return port_; }

    /// Waits until the room answers the keeper.
    bool answers() const;

    /// The value of a metric, by its name and labels as they are published; nothing if there is no
    /// such line or no answer.
    std::optional<double> metric(const std::string& name) const;

    /// Waits until a metric has this value.
    bool shows(const std::string& name, double value) const;

    /// Waits until the keeper has written these words.
    bool says(const std::string& words, int times = 1) const;

    /// The process of the server, or -1.
    int serverPid() const;

    std::string metricsText() const;
    std::string out() const { return process_->out(); }
    std::string err() const { return process_->err(); }
    void signal(int number) const { process_->signal(number); }
    int status() { return process_->status(); }

    /// Where the server is.
    std::string folder() const { return folder_.path; }

  private:
    TemporaryFolder folder_;
    int port_;
    int metricsPort_;
    std::optional<ToolProcess> process_;
};
