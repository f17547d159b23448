#include "tests/support/SdkStandIn.h"

#include <algorithm>
#include <chrono>
#include <httplib.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using std::chrono::milliseconds;

/// As long as other tests of processes wait.
constexpr milliseconds patience{20'000};

} // namespace

bool comesTrue(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(milliseconds(10));
    }
    return true;
}

SdkStandIn::SdkStandIn(int port, bool hasCounters)
    : server_(std::make_unique<httplib::Server>()), port_(port) {
    using httplib::Request;
    using httplib::Response;
    const auto answer = [this](const std::string& newState) {
        return [this, newState](const Request& request, Response& response) {
            note(request.method + " " + request.path + " " + request.body, newState);
            response.set_content("{}", "application/json");
        };
    };
    server_->Post("/health", answer(""));
    server_->Post("/ready", answer("Ready"));
    server_->Post("/allocate", answer("Allocated"));
    server_->Post("/shutdown", answer("Shutdown"));
    server_->Put("/metadata/label", answer(""));
    if (hasCounters)
        server_->Patch("/v1beta1/counters/players", answer(""));
    server_->Get("/gameserver", [this](const Request&, Response& response) {
        response.set_content(R"({"object_meta": {"name": "room"}, "status": {"state": ")" +
                                 state() + R"("}})",
                             "application/json");
    });
    if (port_ == 0)
        port_ = server_->bind_to_any_port("127.0.0.1");
    else if (!server_->bind_to_port("127.0.0.1", port_))
        port_ = -1;
    if (port_ < 0)
        throw std::runtime_error("no port for the SDK server's stand-in");
    thread_ = std::thread([this] { server_->listen_after_bind(); });
}

SdkStandIn::~SdkStandIn() {
    comesTrue([&] { return server_->is_running(); });
    server_->stop();
    thread_.join();
}

void SdkStandIn::note(const std::string& call, const std::string& newState) {
    const std::lock_guard lock(mutex_);
    calls_.push_back(call);
    if (!newState.empty())
        state_ = newState;
}

void SdkStandIn::setState(const std::string& state) {
    const std::lock_guard lock(mutex_);
    state_ = state;
}

std::string SdkStandIn::state() const {
    const std::lock_guard lock(mutex_);
    return state_;
}

std::vector<std::string> SdkStandIn::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

int SdkStandIn::count(const std::string& call) const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(std::count(calls_.begin(), calls_.end(), call));
}

bool SdkStandIn::waitFor(const std::string& call, int times) const {
    return comesTrue([&] { return count(call) >= times; });
}

HangingServer::HangingServer() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(socket_, 100) != 0)
        throw std::runtime_error("no port that hangs");
}

HangingServer::~HangingServer() {
    close(socket_);
}

int HangingServer::port() const {
    sockaddr_in address = {};
    socklen_t length = sizeof address;
    getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.sin_port);
}

int freeTcpPort() {
    return HangingServer().port();
}
