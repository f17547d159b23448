#pragma once

#include "client/Clock.h"
#include "common/ChildProcess.h"
#include "game/RoomProbe.h"

#include <memory>
#include <optional>
#include <string>

namespace drench::game {

/// A room on this machine with bots in it. Its programs lie beside the window's and end with it.
class HostedRoom {
  public:
    using Time = client::Time;

    /// Starts a room on a free port.
    /// @param folder  where drench-server and drench-bots lie, and Resources/mapdata
    HostedRoom(std::string folder, int bots, Time now);

    /// Lets the bots come once the room answers.
    void service(Time now);

    enum class State { starting, open, failed };
    State state() const { return state_; }

    /// "localhost:40123".
    const std::string& address() const { return address_; }

    /// What went wrong, in a sentence; empty if nothing did.
    const std::string& problem() const { return problem_; }

    /// For poll(); -1 if there is nothing to read.
    int descriptor() const { return probe_ ? probe_->descriptor() : -1; }

  private:
    void startServer();
    void fail(const std::string& problem);

    std::string folder_;
    int bots_;
    Time begin_;
    State state_ = State::starting;
    std::string address_;
    std::string problem_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<ChildProcess> players_;
    std::optional<RoomProbe> probe_;
};

} // namespace drench::game
