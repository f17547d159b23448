#include "keeper/MetricsServer.h"

#include "common/StopSignals.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <httplib.h>
#include <stdexcept>
#include <sys/socket.h>

namespace drench::keeper {

namespace {

using std::chrono::milliseconds;

/// Each connection is served in the thread that accepted it: a room's scrapes need no other.
struct OneAfterTheOther : httplib::TaskQueue {
    void enqueue(std::function<void()> task) override { task(); }
    void shutdown() override {}
};

/// The library's own settings would let two keepers share a port. A keeper that is started again
/// need not wait for its old connections.
void refuseSharing(int socket) {
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

/// How long a slow scraper may keep others waiting.
constexpr std::chrono::seconds patience{1};

} // namespace

MetricsServer::MetricsServer(const std::string& address, std::uint16_t port,
                             std::function<std::string()> text)
    : server_(std::make_unique<httplib::Server>()) {
    server_->new_task_queue = [] { return new OneAfterTheOther; };
    server_->set_socket_options(refuseSharing);
    server_->set_keep_alive_max_count(1);
    server_->set_keep_alive_timeout(patience.count());
    server_->set_read_timeout(patience);
    server_->set_write_timeout(patience);
    server_->set_payload_max_length(0);
    server_->Get("/metrics", [text](const httplib::Request&, httplib::Response& response) {
        response.set_content(text(), "text/plain; version=0.0.4; charset=utf-8");
    });
    errno = 0;
    if (!server_->bind_to_port(address, port))
        throw std::runtime_error("metrics at " + address + ":" + std::to_string(port) + ": " +
                                 (errno != 0 ? std::strerror(errno) : "no such address"));
    thread_ = std::thread([this] {
        blockStopSignals();
        server_->listen_after_bind();
    });
}

MetricsServer::~MetricsServer() {
    // Before it listens, stop() would do nothing, and it would listen for ever.
    while (!server_->is_running())
        std::this_thread::sleep_for(milliseconds(1));
    server_->stop();
    thread_.join();
}

} // namespace drench::keeper
