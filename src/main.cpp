#include "MathOps.h"
#include "Server.h"
#include "Timing.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <pthread.h>
#include <unistd.h>

/// Reports the last system error under `msg` on standard error and exits with status 0.
void error(const char* msg) {
    perror(msg);
    exit(0);
}

namespace {

[[noreturn]] void fail(const char* line) {
    std::cout << line;
    exit(0);
}

} // namespace

/// The receive thread: queues every datagram and answers it with a receipt.
/// @param arg  the Server
void* receiveMessages(void* arg) {
    Server* server = static_cast<Server*>(arg);
    const SocketInfo sockInfo = server->sockInfo;
    std::queue<GenericMessage>* queue = server->getInMessagesPtr();
    GenericMessage inbound;
    GenericMessage receipt;
    receipt.data[0] = messageCode::join;
    for (;;) {
        std::fill_n(inbound.data, sizeof inbound.data, '\0');
        sockInfo.receiveBytesFrom(&inbound.client, inbound.data, sizeof inbound.data);
        {
            const ScopedLock lock(server->inMessagesMutex);
            queue->push(inbound);
        }
        sockInfo.sendBytesTo(&inbound.client, &receipt, sizeof receipt);
    }
}

int main(int argc, char** argv) {
    if (argc != 2)
        fail("usage: port\n");
    srand(static_cast<unsigned>(time(nullptr)));
    const int port = atoi(argv[1]);

    Server server;
    server.init(port);
    std::cout << "Server is listening on port " << port << std::endl;

    pthread_mutex_t queueMutex;
    if (pthread_mutex_init(&queueMutex, nullptr) != 0)
        fail("Error initializing mutex\n");
    server.inMessagesMutex = &queueMutex;
    pthread_t receiveThread;
    if (pthread_create(&receiveThread, nullptr, receiveMessages, &server) != 0)
        fail("Error creating pthread: receiveThread\n");

    for (;;) {
        const long tickStart = getCurrentMillisecond();
        server.update();
        const long left = millisecondsLeftInTick(tickStart, getCurrentMillisecond());
        if (left > 0)
            usleep(static_cast<useconds_t>(wrappingMultiply(static_cast<int>(left), 1000)));
    }
}
