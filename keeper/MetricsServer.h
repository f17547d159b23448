#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace httplib {
class Server;
}

namespace drench::keeper {

/// Answers GET /metrics over HTTP, in one thread of its own, one request after the other.
class MetricsServer {
  public:
    /// Throws std::runtime_error if it cannot listen there.
    /// @param text  makes the answer; called in that thread
    MetricsServer(const std::string& address, std::uint16_t port,
                  std::function<std::string()> text);
    ~MetricsServer();
    MetricsServer(const MetricsServer&) = delete;
    MetricsServer& operator=(const MetricsServer&) = delete;

  private:
    std::unique_ptr<httplib::Server> server_;
    std::thread thread_;
};

} // namespace drench::keeper
