#include "src/Messages.h"
#include "src/Timing.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <thread>
#include <unistd.h>

// A room as it would be if the game cost nothing: the system calls of drench-server at its rates,
// and nothing else. Started with a port, like the server, it says the same line when it listens.
//
// One thread waits for datagrams and answers each with a receipt of 532 bytes. The other reads the
// clock, sends 244 bytes to each of the first four who asked to join, reads the clock again and
// sleeps as long as the server would. Everybody who joins is answered, so that the same load can
// drive both; nobody leaves.

namespace {

/// Written by the receiving thread; the other thread reads the first `count`.
struct Peers {
    std::array<Client, maxPlayers> addresses;
    std::atomic<int> count = 0;
};

void answerJoin(const SocketInfo& socket, Peers& peers, const Client& client) {
    const int place = peers.count.load(std::memory_order_relaxed);
    if (place == maxPlayers) {
        const RefusalMessage answer;
        socket.sendBytesTo(&client, &answer, sizeof answer);
        return;
    }
    peers.addresses[static_cast<size_t>(place)] = client;
    peers.count.store(place + 1, std::memory_order_release);
    AcceptanceMessage answer;
    answer.id = static_cast<char>('1' + place);
    socket.sendBytesTo(&client, &answer, sizeof answer);
}

void receive(const SocketInfo socket, Peers& peers) {
    GenericMessage inbound;
    GenericMessage receipt;
    receipt.data[0] = messageCode::join;
    for (;;) {
        socket.receiveBytesFrom(&inbound.client, inbound.data, sizeof inbound.data);
        socket.sendBytesTo(&inbound.client, &receipt, sizeof receipt);
        if (inbound.data[0] == messageCode::join)
            answerJoin(socket, peers, inbound.client);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " port\n";
        return 2;
    }
    const int port = std::atoi(argv[1]);
    SocketInfo socket;
    socket.init(port);
    std::cout << "Server is listening on port " << port << std::endl;

    Peers peers;
    std::thread(receive, socket, std::ref(peers)).detach();
    const UpdateMessage state;
    for (;;) {
        const long tickStart = getCurrentMillisecond();
        const int count = peers.count.load(std::memory_order_acquire);
        for (int i = 0; i < count; ++i)
            socket.sendBytesTo(&peers.addresses[static_cast<size_t>(i)], &state, sizeof state);
        const long left = millisecondsLeftInTick(tickStart, getCurrentMillisecond());
        if (left > 0)
            usleep(static_cast<useconds_t>(left * 1000));
    }
}
