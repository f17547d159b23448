#include "src/Server.h"
#include "tests/support/Arenas.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Datagrams.h"
#include "tests/support/Room.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <thread>

TEST(ServerState, StartsWithoutPlayersMessagesOrCells) {
    Server server;
    EXPECT_TRUE(server.players.empty());
    EXPECT_TRUE(server.inMessages.empty());
    EXPECT_FALSE(server.mapMan.hasCells());
    EXPECT_EQ(server.inMessagesMutex, nullptr);
}

TEST(ServerState, InboundQueueIsHandedOutByAddress) {
    Server server;
    EXPECT_EQ(server.getInMessagesPtr(), &server.inMessages);
}

TEST(ServerState, InitPrintsRecordSizesThenThePortAndReadsTheMap) {
    Server server;
    std::string text;
    {
        const CapturedOutput output;
        server.init(0);
        text = output.text();
        EXPECT_EQ(output.flushes(), 3) << "one for each line";
    }
    EXPECT_EQ(text, "sizeof(UpdateMessage) 244\nsizeof(PlayerUpdate)  60\nhtons(port) = 0\n");
    EXPECT_EQ(server.mapMan.columns, 32);
    EXPECT_EQ(server.mapMan.rows, 16);
    EXPECT_EQ(server.mapMan.depth, 32);
    server.cleanup();
}

TEST(ServerState, CleanupClosesTheSocket) {
    Server server;
    {
        const CapturedOutput quiet;
        server.sockInfo.init(0);
    }
    ASSERT_NE(fcntl(server.sockInfo.sockfd, F_GETFD), -1);
    server.cleanup();
    EXPECT_EQ(fcntl(server.sockInfo.sockfd, F_GETFD), -1);
}

TEST(InboundQueue, BurstIsProcessedWholeInTheNextTickInOrderOfArrival) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    for (int i = 0; i < 100; ++i)
        room.queue(chatDatagram(id, std::to_string(i)), peer);
    room.tick();

    EXPECT_TRUE(room.server.inMessages.empty());
    const std::vector<std::string> received = peer.received();
    ASSERT_EQ(received.size(), 101u);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(received[static_cast<size_t>(i)], chatDatagram(id, std::to_string(i)));
}

TEST(InboundQueue, IsGuardedWhileOneThreadPushesAndAnotherDrains) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    pthread_mutex_t mutex;
    ASSERT_EQ(pthread_mutex_init(&mutex, nullptr), 0);
    room.server.inMessagesMutex = &mutex;

    constexpr int presses = 20000;
    std::thread receiver([&room, &mutex, id] {
        for (int i = 0; i < presses; ++i) {
            GenericMessage record;
            const std::string datagram = viewDatagram(id, 1, 0);
            datagram.copy(record.data, datagram.size());
            const ScopedLock lock(&mutex);
            room.server.getInMessagesPtr()->push(record);
        }
    });
    // One yaw of 1/360 rad for each record: the player ends up turned by all of them.
    Player expected = room.server.players[0];
    for (int i = 0; i < presses; ++i)
        expected.rotateView(1, 0);
    for (int i = 0; i < 1000; ++i)
        room.server.readMessages();
    receiver.join();
    room.server.readMessages();

    EXPECT_EQ(room.server.players[0].direction.x, expected.direction.x);
    EXPECT_EQ(room.server.players[0].direction.z, expected.direction.z);
    EXPECT_EQ(pthread_mutex_trylock(&mutex), 0) << "the drain left the mutex locked";
    pthread_mutex_unlock(&mutex);
    pthread_mutex_destroy(&mutex);
}
