#include "bench/Load.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <ctime>
#include <netinet/in.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace drench::bench {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

/// The longest wait for answers to joins and for all players at their places; after it something is
/// broken. A place is drawn from eight, so many joins may be needed.
constexpr auto longestAnswer = 20s;

/// Time between two looks for such answers: less than a tick, so that none is noticed late.
constexpr auto answerPolling = 2ms;

/// Enough to fall from a spawn to the ground.
constexpr auto landingTime = 500ms;

/// The rate at which players without inputs read their socket: its buffer never fills between two
/// reads.
constexpr double idleVisitsPerSecond = 20.0;

/// Players who send no inputs send a sign of life after this, well before the room drops them.
constexpr auto longestSilence = 3s;

/// A shorter sleep costs more than being late by this much.
constexpr auto shortestSleep = 200us;

/// World units along x and z between a player and its place: spawns are much further apart.
constexpr float placeTolerance = 1.0f;

/// Difference along x and z between a view and the direction of its place: more than the sway of a
/// few counts, 1/360 each, and less than one step of the turns tried.
constexpr float directionTolerance = 0.02f;

/// Datagrams that one system call receives: more than arrive between two reads of a playing player.
constexpr std::size_t datagramsAtOnce = 16;

/// The place of a player that has taken none yet.
constexpr std::size_t noPlace = static_cast<std::size_t>(-1);

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

double threadCpuSeconds() {
    timespec used;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

/// A socket that is connected to a port on 127.0.0.1 and stamps datagrams with their arrival times.
int connectedSocket(int port) {
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const int on = 1;
    if (socket < 0 || setsockopt(socket, SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof on) != 0 ||
        connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        fail("socket for port " + std::to_string(port));
    return socket;
}

/// The kernel's arrival time of a datagram, in nanoseconds; 0 if there is none.
std::int64_t arrivalOf(msghdr& message) {
    for (cmsghdr* control = CMSG_FIRSTHDR(&message); control;
         control = CMSG_NXTHDR(&message, control)) {
        if (control->cmsg_level == SOL_SOCKET && control->cmsg_type == SCM_TIMESTAMPNS) {
            timespec time;
            std::memcpy(&time, CMSG_DATA(control), sizeof time);
            return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
        }
    }
    return 0;
}

void sleepUntil(Clock::time_point due) {
    const Clock::time_point now = Clock::now();
    if (due > now)
        std::this_thread::sleep_until(std::max(due, now + shortestSleep));
}

bool isNear(vec3 a, vec3 b, float tolerance) {
    return std::fabs(a.x - b.x) < tolerance && std::fabs(a.z - b.z) < tolerance;
}

} // namespace

struct Load::Player {
    explicit Player(int port) : socket(connectedSocket(port)) {}
    Player(Player&& other) noexcept
        : socket(std::exchange(other.socket, -1)), id(other.id), place(other.place),
          turn(other.turn), latestSend(other.latestSend), latestArrival(other.latestArrival),
          latest(other.latest) {}
    ~Player() {
        if (socket >= 0)
            close(socket);
    }

    template<typename Record>
    void send(const Record& record) {
        if (::send(socket, &record, sizeof record, 0) < 0)
            fail("a room is gone");
        latestSend = Clock::now();
    }

    void sendJoin() {
        id = 0;
        send(JoinMessage{.name = "Bot"});
    }
    void sendKey(int key, bool down) {
        send(KeyMessage{.id = id, .key = static_cast<signed char>(key), .down = down});
    }
    void sendView(int dx, int dy) { send(ViewMessage{.id = id, .dx = dx, .dy = dy}); }

    /// This player in the latest state; null if it is not there.
    const PlayerUpdate* self() const {
        for (const PlayerUpdate& slot : latest.updates) {
            if (slot.id != 0 && slot.id == id)
                return &slot;
        }
        return nullptr;
    }

    int socket;

    /// 0 until let in.
    char id = 0;

    /// Index of the place taken.
    std::size_t place = noPlace;

    /// Counts of the next view record.
    int turn = 1;

    Clock::time_point latestSend;

    /// The arrival of the latest state, 0 before the first.
    std::int64_t latestArrival = 0;
    UpdateMessage latest;
};

/// Memory for the datagrams received at once.
struct Load::Inbox {
    struct Datagram {
        char bytes[sizeof(GenericMessage)];
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timespec))];
        iovec vector;
    };
    std::array<Datagram, datagramsAtOnce> datagrams;
    std::array<mmsghdr, datagramsAtOnce> headers;

    Inbox() {
        for (std::size_t i = 0; i < datagramsAtOnce; ++i) {
            Datagram& datagram = datagrams[i];
            datagram.vector = {datagram.bytes, sizeof datagram.bytes};
            headers[i] = {};
            headers[i].msg_hdr.msg_iov = &datagram.vector;
            headers[i].msg_hdr.msg_iovlen = 1;
            headers[i].msg_hdr.msg_control = datagram.control;
        }
    }
};

Load::Load(const std::vector<int>& ports) : inbox_(std::make_unique<Inbox>()) {
    for (int i = 0; i < maxPlayers; ++i) {
        for (const int port : ports)
            players_.emplace_back(port);
    }
    for (Player& player : players_)
        player.sendJoin();
    awaitAccepted();
}

Load::~Load() = default;

void Load::awaitAccepted() {
    const Clock::time_point deadline = Clock::now() + longestAnswer;
    while (!std::ranges::all_of(players_, [](const Player& player) { return player.id != 0; })) {
        if (Clock::now() > deadline)
            throw std::runtime_error("a room did not let its players in");
        std::this_thread::sleep_for(answerPolling);
        for (Player& player : players_)
            receive(player);
    }
}

void Load::receive(Player& player) {
    int count = 0;
    do {
        for (mmsghdr& header : inbox_->headers)
            header.msg_hdr.msg_controllen = sizeof Inbox::Datagram::control;
        count =
            recvmmsg(player.socket, inbox_->headers.data(), datagramsAtOnce, MSG_DONTWAIT, nullptr);
        if (count < 0 && errno != EAGAIN)
            fail("a room is gone");
        for (int i = 0; i < count; ++i) {
            const auto index = static_cast<std::size_t>(i);
            mmsghdr& header = inbox_->headers[index];
            const char* bytes = inbox_->datagrams[index].bytes;
            if (header.msg_len == sizeof(GenericMessage)) {
                ++seen_.receipts;
            } else if (header.msg_len == sizeof(UpdateMessage)) {
                const std::int64_t arrival = arrivalOf(header.msg_hdr);
                if (player.latestArrival != 0)
                    seen_.gaps.push_back(static_cast<double>(arrival - player.latestArrival) / 1e6);
                player.latestArrival = arrival;
                std::memcpy(static_cast<void*>(&player.latest), bytes, sizeof player.latest);
            } else if (header.msg_len == sizeof(AcceptanceMessage) &&
                       bytes[0] == messageCode::accepted) {
                AcceptanceMessage acceptance;
                std::memcpy(&acceptance, bytes, sizeof acceptance);
                player.id = acceptance.id;
                // The state before may show somebody else under this identifier.
                player.latest = {};
            }
        }
    } while (count == datagramsAtOnce);
}

void Load::takePlaces(const std::vector<FiringPlace>& places) {
    const auto isTaken = [&](std::size_t place) {
        return std::ranges::any_of(players_,
                                   [&](const Player& player) { return player.place == place; });
    };
    const auto settle = [&](Player& player) {
        const PlayerUpdate* self = player.self();
        if (player.place != noPlace || !self)
            return;
        for (std::size_t place = 0; place < places.size(); ++place) {
            if (isNear(self->position, places[place].player.position, placeTolerance) &&
                !isTaken(place)) {
                player.place = place;
                return;
            }
        }
        player.send(LeaveMessage{.id = player.id});
        player.sendJoin();
    };
    const Clock::time_point deadline = Clock::now() + longestAnswer;
    while (!std::ranges::all_of(players_,
                                [](const Player& player) { return player.place != noPlace; })) {
        if (Clock::now() > deadline)
            throw std::runtime_error("the players do not get to their places");
        std::this_thread::sleep_for(answerPolling);
        for (Player& player : players_) {
            receive(player);
            settle(player);
        }
    }
    std::this_thread::sleep_for(landingTime);
}

void Load::fire(const std::vector<FiringPlace>& places) {
    for (Player& player : players_) {
        const FiringPlace& place = places[player.place == noPlace ? 0 : player.place];
        player.sendView(place.dx, place.dy);
        player.sendKey(keyIndex::shoot, true);
    }
}

bool Load::allFire(const std::vector<FiringPlace>& places) const {
    return std::ranges::all_of(players_, [&](const Player& player) {
        const PlayerUpdate* self = player.self();
        return self && player.place != noPlace && self->shooting &&
               isNear(self->direction, places[player.place].direction, directionTolerance);
    });
}

Play Load::play(std::chrono::duration<double> time, double inputsPerSecond) {
    const bool sendsInputs = inputsPerSecond > 0.0;
    const double visitsPerSecond = sendsInputs ? inputsPerSecond : idleVisitsPerSecond;
    const auto interval = std::chrono::duration_cast<Clock::duration>(
                              std::chrono::duration<double>(1.0 / visitsPerSecond)) /
                          static_cast<long>(players_.size());
    for (Player& player : players_) {
        receive(player);
        player.latestArrival = 0;
    }
    seen_ = {};
    seen_.gaps.reserve(players_.size() * static_cast<std::size_t>(time.count() * 100.0 + 1.0));

    const double cpuAtStart = threadCpuSeconds();
    const Clock::time_point start = Clock::now();
    const Clock::time_point end = start + std::chrono::duration_cast<Clock::duration>(time);
    Clock::time_point due = start;
    while (due < end && Clock::now() < end) {
        for (Player& player : players_) {
            sleepUntil(due);
            due += interval;
            receive(player);
            if (sendsInputs) {
                player.sendView(player.turn, 0);
                player.turn = -player.turn;
                ++seen_.inputs;
            } else if (Clock::now() - player.latestSend > longestSilence) {
                player.send(KeepAliveMessage{.id = player.id});
            }
        }
    }
    sleepUntil(end);
    for (Player& player : players_)
        receive(player);
    seen_.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    seen_.cpuSeconds = threadCpuSeconds() - cpuAtStart;
    return std::move(seen_);
}

} // namespace drench::bench
