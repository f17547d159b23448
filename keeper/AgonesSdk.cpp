#include "keeper/AgonesSdk.h"

#include "common/StopSignals.h"

#include <chrono>
#include <httplib.h>
#include <utility>

namespace drench::keeper {

namespace {

using client::Clock;

/// For connecting, sending and each part of an answer.
constexpr milliseconds patience{1000};

constexpr char host[] = "127.0.0.1";

httplib::Result resultOf(const AgonesCall& call, httplib::Client& client) {
    constexpr char type[] = "application/json";
    if (call.method == "POST")
        return client.Post(call.path, call.body, type);
    if (call.method == "PUT")
        return client.Put(call.path, call.body, type);
    if (call.method == "PATCH")
        return client.Patch(call.path, call.body, type);
    return client.Get(call.path);
}

} // namespace

AgonesSdk::AgonesSdk(std::uint16_t port) : port_(port), thread_([this] { run(); }) {}

AgonesSdk::~AgonesSdk() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void AgonesSdk::update(std::optional<Time> answersUntil, const PlayerPlaces& places) {
    bool isDue;
    {
        const std::lock_guard lock(mutex_);
        calls_.setAnswering(answersUntil);
        calls_.setPlayers(places);
        isDue = calls_.due(Clock::now()).has_value();
    }
    if (isDue)
        changed_.notify_all();
}

bool AgonesSdk::shutDown(milliseconds longest) {
    std::unique_lock lock(mutex_);
    calls_.shutDown();
    changed_.notify_all();
    return changed_.wait_for(lock, longest, [&] { return calls_.isShutDown(); });
}

std::string AgonesSdk::state() const {
    const std::lock_guard lock(mutex_);
    return calls_.state();
}

std::map<std::string, int> AgonesSdk::takeFailures() {
    const std::lock_guard lock(mutex_);
    return std::exchange(failures_, {});
}

void AgonesSdk::run() {
    blockStopSignals();
    httplib::Client client(host, port_);
    client.set_keep_alive(true);
    client.set_connection_timeout(patience);
    client.set_read_timeout(patience);
    client.set_write_timeout(patience);
    std::unique_lock lock(mutex_);
    while (!isEnding_) {
        const Time now = Clock::now();
        const std::optional<AgonesCall> call = calls_.due(now);
        if (!call) {
            changed_.wait_until(lock, std::min(calls_.nextAt(now), now + AgonesCalls::period));
            continue;
        }
        lock.unlock();
        const httplib::Result result = resultOf(*call, client);
        lock.lock();
        const int status = result ? result->status : 0;
        calls_.answered(*call, status, result ? result->body : "", Clock::now());
        if (status < 200 || status >= 300)
            ++failures_[nameOf(call->kind)];
        changed_.notify_all();
    }
}

} // namespace drench::keeper
