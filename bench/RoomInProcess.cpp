#include "bench/RoomInProcess.h"

#include "src/FileLoader.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <unistd.h>

namespace drench::bench {

namespace {

/// Walkers turn back after this many ticks, two or three cubes.
constexpr long ticksOneWay = 32;

/// Ticks between signs of life of players who send nothing else.
constexpr long ticksBetweenSignsOfLife = 64;

/// More ticks than any fall from a spawn takes.
constexpr int landingTicks = 64;

/// The first spawn on the ground; from this pose on there is space to walk.
constexpr int firstGroundPose = 4;

/// A socket on 127.0.0.1 that takes datagrams until its buffer is full; the system drops the rest.
int unreadSocket(Client& address) {
    const int socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    address.addr.sin_family = AF_INET;
    address.addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* name = reinterpret_cast<sockaddr*>(&address.addr);
    if (socket < 0 || bind(socket, name, address.addrLen) != 0 ||
        getsockname(socket, name, &address.addrLen) != 0)
        throw std::runtime_error("no socket on 127.0.0.1");
    return socket;
}

/// Keeps the server's lines to itself.
class Quiet {
  public:
    Quiet() : output_(std::cout.rdbuf(nullptr)) {}
    ~Quiet() { std::cout.rdbuf(output_); }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

  private:
    std::streambuf* output_;
};

} // namespace

RoomInProcess::RoomInProcess(Pastime pastime)
    : pastime_(pastime), sinkSocket_(unreadSocket(sink_)) {
    const Quiet quiet;
    server.sockInfo.init(0);
    server.mapMan.init(fileStringContents(DRENCH_MAPDATA));
    const std::vector<FiringPlace> places = pastime == Pastime::firingAtSky
                                                ? placesFacingSky(server.mapMan)
                                                : placesFacingFarWalls(server.mapMan);
    for (int i = 0; i < maxPlayers; ++i) {
        queue(JoinMessage{.name = "Bot"});
        server.readMessages();
        server.players.back().spawnAt(pastime == Pastime::walking ? firstGroundPose + i : i);
    }
    for (int i = 0; i < landingTicks; ++i)
        server.update();
    if (pastime != Pastime::firingAtWalls && pastime != Pastime::firingAtSky)
        return;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const char id = server.players[i].getPlayerID();
        queueView(id, places[i].dx, places[i].dy);
        queueKey(id, keyIndex::shoot, true);
    }
    server.update();
}

RoomInProcess::~RoomInProcess() {
    server.cleanup();
    close(sinkSocket_);
}

template<typename Record>
void RoomInProcess::queue(const Record& record) {
    GenericMessage datagram;
    std::memcpy(datagram.data, &record, sizeof record);
    datagram.client = sink_;
    server.inMessages.push(datagram);
}

void RoomInProcess::queueKey(char id, int key, bool down) {
    queue(KeyMessage{.id = id, .key = static_cast<signed char>(key), .down = down});
}

void RoomInProcess::queueView(char id, int dx, int dy) {
    queue(ViewMessage{.id = id, .dx = dx, .dy = dy});
}

void RoomInProcess::tick(int inputs) {
    for (int input = 0; input < inputs; ++input) {
        for (int i = 0; i < maxPlayers; ++i)
            queueView(static_cast<char>('1' + i), (tick_ + input) % 2 == 0 ? 1 : -1, 0);
    }
    for (int i = 0; i < maxPlayers; ++i) {
        const char id = static_cast<char>('1' + i);
        if (tick_ % ticksBetweenSignsOfLife == 0)
            queue(KeepAliveMessage{.id = id});
        if (pastime_ == Pastime::walking && tick_ % ticksOneWay == 0) {
            const bool forward = tick_ / ticksOneWay % 2 == 0;
            queueKey(id, keyIndex::forward, forward);
            queueKey(id, keyIndex::backward, !forward);
        }
    }
    ++tick_;
    server.update();
}

} // namespace drench::bench
