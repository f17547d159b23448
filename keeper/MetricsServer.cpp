#include "keeper/MetricsServer.h"

#include "client/Clock.h"
#include "common/Descriptor.h"
#include "common/StopSignals.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <httplib.h>
#include <poll.h>
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

/// A keeper that is started again need not wait for its old connections. The library's own settings
/// would let two keepers share a port besides.
void reuseClosedAddress(int socket) {
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

/// How long a slow scraper may keep others waiting, from its connection on.
constexpr milliseconds patience{1000};

/// A scrape takes some 300 bytes.
constexpr std::size_t longestRequest = 8192;

/// A connection of which no more is read than a request may have, and that ends at its deadline
/// however little comes at a time: the library has no bound for either.
class BriefConnection : public httplib::Stream {
  public:
    explicit BriefConnection(int socket) : socket_(socket) {}

    bool is_readable() const override { return read_ < filled_ || await(POLLIN); }
    bool is_writable() const override { return await(POLLOUT); }

    ssize_t read(char* to, std::size_t size) override {
        if (read_ == filled_)
            fill();
        const std::size_t length = std::min(size, filled_ - read_);
        std::copy_n(request_.begin() + static_cast<std::ptrdiff_t>(read_), length, to);
        read_ += length;
        return static_cast<ssize_t>(length);
    }

    ssize_t write(const char* from, std::size_t size) override {
        return await(POLLOUT) ? send(socket_.number, from, size, MSG_NOSIGNAL | MSG_DONTWAIT) : -1;
    }

    /// Waits for the other end, within the same bounds: what had come and was not read would have
    /// the system take back the answer on its way.
    void finish() {
        ::shutdown(socket_.number, SHUT_WR);
        while (fill()) {
        }
    }

    void get_remote_ip_and_port(std::string&, int&) const override {}
    void get_local_ip_and_port(std::string&, int&) const override {}
    int socket() const override { return socket_.number; }

  private:
    bool await(short event) const {
        const auto left = std::chrono::ceil<milliseconds>(deadline_ - client::Clock::now());
        pollfd polled = {socket_.number, event, 0};
        return left.count() > 0 && poll(&polled, 1, static_cast<int>(left.count())) == 1;
    }

    /// Whether more has come.
    bool fill() {
        if (filled_ == request_.size() || !await(POLLIN))
            return false;
        const ssize_t length = recv(socket_.number, request_.data() + filled_,
                                    request_.size() - filled_, MSG_DONTWAIT);
        filled_ += static_cast<std::size_t>(std::max<ssize_t>(length, 0));
        return length > 0;
    }

    Descriptor socket_;
    client::Time deadline_ = client::Clock::now() + patience;
    std::array<char, longestRequest> request_;
    std::size_t read_ = 0;
    std::size_t filled_ = 0;
};

} // namespace

/// The library's server, for one brief request a connection.
class MetricsServer::Http : public httplib::Server {
    bool process_and_close_socket(int socket) override {
        BriefConnection connection(socket);
        bool isClosed = false;
        const bool isAnswered =
            process_request(connection, true, isClosed,
                            // Thousands of ranges would make up an answer of as many copies.
                            [](httplib::Request& request) { request.ranges.clear(); });
        connection.finish();
        return isAnswered;
    }
};

MetricsServer::MetricsServer(const std::string& address, std::uint16_t port,
                             std::function<std::string()> text)
    : server_(std::make_unique<Http>()) {
    server_->new_task_queue = [] { return new OneAfterTheOther; };
    server_->set_socket_options(reuseClosedAddress);
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
        hasEnded_ = true;
    });
}

MetricsServer::~MetricsServer() {
    // Before it listens, stop() would do nothing, and it would listen for ever. It may have ended
    // by itself, where the system gave no more connections.
    while (!server_->is_running() && !hasEnded_)
        std::this_thread::sleep_for(milliseconds(1));
    server_->stop();
    thread_.join();
}

} // namespace drench::keeper
