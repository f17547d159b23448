#include "game/HostedRoom.h"

#include "common/Descriptor.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace drench::game {

namespace {

/// A room that says nothing for so long will not.
constexpr std::chrono::seconds patience{10};

/// A port that nobody has now; nothing if the system has none. Another program may take it before
/// the room does.
std::optional<int> freePort() {
    const Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in any = {};
    any.sin_family = AF_INET;
    any.sin_addr.s_addr = htonl(INADDR_ANY);
    auto* const address = reinterpret_cast<sockaddr*>(&any);
    socklen_t length = sizeof any;
    if (::bind(socket.number, address, sizeof any) != 0 ||
        ::getsockname(socket.number, address, &length) != 0)
        return std::nullopt;
    return ntohs(any.sin_port);
}

std::unique_ptr<ChildProcess> startQuietly(const std::vector<std::string>& words) {
    const Descriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    return std::make_unique<ChildProcess>(words,
                                          ChildProcess::Streams{nowhere.number, nowhere.number});
}

bool isProgram(const std::string& file) {
    return ::access(file.c_str(), X_OK) == 0;
}

} // namespace

HostedRoom::HostedRoom(std::string folder, int bots, Time now)
    : folder_(std::move(folder)), bots_(bots), begin_(now) {
    try {
        startServer();
    } catch (const std::runtime_error& error) {
        fail("It cannot be started: " + std::string(error.what()) + ".");
    }
}

void HostedRoom::startServer() {
    const std::string program = folder_ + "/drench-server";
    for (const std::string& file : {program, folder_ + "/drench-bots"}) {
        if (!isProgram(file)) {
            fail("There is no " + file + ". It comes with the server's package.");
            return;
        }
    }
    const std::optional<int> port = freePort();
    if (!port) {
        fail("This machine has no free port.");
        return;
    }
    address_ = "localhost:" + std::to_string(*port);
    server_ = startQuietly({program, std::to_string(*port)});
    probe_.emplace(address_);
}

void HostedRoom::service(Time now) {
    if (state_ == State::failed)
        return;
    if (server_->status()) {
        fail("It has ended.");
        return;
    }
    if (state_ == State::open)
        return;
    probe_->service(now);
    if (probe_->finding() == RoomProbe::Finding::answers) {
        probe_.reset();
        state_ = State::open;
        players_ = startQuietly({folder_ + "/drench-bots", address_, "--arena",
                                 folder_ + "/Resources/mapdata", "--players", std::to_string(bots_),
                                 "--quiet"});
    } else if (now - begin_ > patience) {
        fail("It does not answer.");
    }
}

void HostedRoom::fail(const std::string& problem) {
    state_ = State::failed;
    problem_ = problem;
    probe_.reset();
}

} // namespace drench::game
