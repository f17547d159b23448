#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace drench::keeper {

/// Answers GET /metrics over HTTP, in one thread of its own, one request after the other. Each has
/// a second and 8 KiB: whoever sends more or slower gets no answer.
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
    class Http;

    std::unique_ptr<Http> server_;
    std::atomic<bool> hasEnded_ = false;
    std::thread thread_;
};

} // namespace drench::keeper
