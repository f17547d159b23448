#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace httplib {
class Server;
}

/// Stands in for the SDK server of Agones: its REST on 127.0.0.1, and the states that calls lead
/// to.
class SdkStandIn {
  public:
    /// @param port  0 lets the system choose
    /// @param hasCounters  whether the fleet defines a counter "players"
    explicit SdkStandIn(int port = 0, bool hasCounters = true);
    ~SdkStandIn();
    SdkStandIn(const SdkStandIn&) = delete;
    SdkStandIn& operator=(const SdkStandIn&) = delete;

    int port() const { return port_; }

    /// The state in `GET /gameserver`: Scheduled at first.
    void setState(const std::string& state);
    std::string state() const;

    /// All calls but those for the state, as "POST /ready {}".
    std::vector<std::string> calls() const;
    int count(const std::string& call) const;

    /// Waits until the call was made so often; false if it is not in time.
    bool waitFor(const std::string& call, int times = 1) const;

  private:
    void note(const std::string& call, const std::string& newState);

    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
    std::string state_ = "Scheduled";
    std::unique_ptr<httplib::Server> server_;
    int port_;
    std::thread thread_;
};

/// A TCP port that takes connections and never answers.
class HangingServer {
  public:
    HangingServer();
    ~HangingServer();
    HangingServer(const HangingServer&) = delete;
    HangingServer& operator=(const HangingServer&) = delete;

    int port() const;

  private:
    int socket_;
};

/// A TCP port of 127.0.0.1 that nobody listens to right now.
int freeTcpPort();

/// Waits until the condition holds; false if it does not in time.
bool comesTrue(const std::function<bool()>& condition);
