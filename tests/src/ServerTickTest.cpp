#include "tests/support/Arenas.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Datagrams.h"
#include "tests/support/ManualClock.h"
#include "tests/support/Room.h"

#include <gtest/gtest.h>

TEST(Tick, WithoutPlayersDrainsTheQueueAndTellsNobody) {
    Room room(emptyCourt());
    UdpPeer stranger;
    room.queue("x1", stranger);
    const CapturedOutput output;
    room.tick();
    EXPECT_TRUE(room.server.inMessages.empty());
    EXPECT_EQ(output.text(), "");
    EXPECT_TRUE(stranger.received().empty());
}

TEST(Tick, SendsEveryPlayerOneStateOfAllPlayersInOrderOfJoining) {
    Room room(emptyCourt());
    UdpPeer ann;
    UdpPeer bo;
    room.join("Ann", ann);
    room.join("Bo", bo);
    ann.received();
    room.tick();

    const std::vector<std::string> toAnn = ann.received();
    ASSERT_EQ(toAnn.size(), 1u);
    EXPECT_EQ(bo.received(), toAnn);
    UpdateMessage state;
    ASSERT_TRUE(readState(toAnn[0], state));
    for (size_t i = 0; i < 2; ++i) {
        const PlayerUpdate expected = room.server.players[i].getPlayerUpdate();
        EXPECT_EQ(std::memcmp(&state.updates[i], &expected, sizeof expected), 0);
    }
    EXPECT_EQ(state.updates[2].id, 0);
    EXPECT_EQ(state.updates[3].id, 0);
}

TEST(Tick, BytesWithoutMeaningAreZero) {
    Room room(emptyCourt());
    UdpPeer ann;
    room.join("A name that is cut", ann);
    room.join("Bo", ann);
    ann.received();
    room.tick();
    const std::string state = ann.received().at(0);
    EXPECT_EQ(state.substr(1, 3), std::string(3, '\0')) << "between the code and the slots";
    EXPECT_EQ(state.substr(4 + 58, 2), std::string(2, '\0')) << "behind a full slot";
    EXPECT_EQ(state.substr(64 + 40, 12), std::string("Bo") + std::string(10, '\0'));
    EXPECT_EQ(state.substr(124 + 40, 20), std::string(20, '\0')) << "in an empty slot";
}

TEST(Tick, InputsTakeEffectBeforeAnythingMoves) {
    Room room(emptyCourt());
    UdpPeer ann;
    const char id = room.join("Ann", ann);
    room.server.players[0].placeAt({1000, standing, 1000}, {1000, standing, 1001});
    room.queue(keyDatagram(id, keyIndex::forward, true), ann);
    room.tick();
    EXPECT_EQ(room.server.players[0].position.z, 1006.0f);
}

TEST(Tick, PlayerSilentForMoreThanFiveSecondsIsDroppedAndAbsentFromThisTicksState) {
    Room room(emptyCourt());
    UdpPeer ann;
    UdpPeer bo;
    room.join("Ann", ann);
    ManualClock::now += 3000;
    room.join("Bo", bo);
    ann.received();

    room.tick(2000);
    EXPECT_EQ(room.server.players.size(), 2u) << "exactly five seconds are not too long";
    ann.received();
    bo.received();

    const CapturedOutput output;
    room.tick(1);
    EXPECT_EQ(output.text(), "Ann disconnected\n");
    EXPECT_TRUE(ann.received().empty());
    const std::vector<std::string> toBo = bo.received();
    ASSERT_EQ(toBo.size(), 2u);
    EXPECT_EQ(toBo[0], noticeDatagram("Ann disconnected"));
    UpdateMessage state;
    ASSERT_TRUE(readState(toBo[1], state));
    EXPECT_EQ(state.updates[0].id, '2');
    EXPECT_EQ(state.updates[1].id, 0);
}

TEST(Tick, PlayerThatMovesIntoAFreedPlaceIsPassedOverForThatTick) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char silent = room.join("Silent", peer);
    ASSERT_EQ(silent, '1');
    ManualClock::now += 5001;
    room.join("Next", peer);
    room.join("Third", peer);
    for (Player& player : room.server.players)
        player.placeAt({1000, 500, 1000}, {1000, 500, 1001});

    const CapturedOutput quiet;
    room.tick(0);
    ASSERT_EQ(room.server.players.size(), 2u);
    EXPECT_EQ(room.server.players[0].getPlayerID(), '2');
    EXPECT_EQ(room.server.players[0].position.y, 500.0f) << "passed over";
    EXPECT_EQ(room.server.players[1].position.y, 499.5f) << "falls";
    room.tick(0);
    EXPECT_EQ(room.server.players[0].position.y, 499.5f) << "advanced again";
}

TEST(Tick, TwoSilentNeighboursAreDroppedInTwoTicks) {
    Room room(emptyCourt());
    UdpPeer peer;
    room.join("A", peer);
    room.join("B", peer);
    const CapturedOutput output;
    room.tick(5001);
    EXPECT_EQ(output.text(), "A disconnected\n");
    room.tick(0);
    EXPECT_EQ(output.text(), "A disconnected\nB disconnected\n");
}

TEST(Tick, ChatKeepsAPlayerConnected) {
    Room room(emptyCourt());
    UdpPeer ann;
    const char id = room.join("Ann", ann);
    for (int i = 0; i < 4; ++i) {
        room.queue(chatDatagram(id, "still here"), ann);
        room.tick(4900);
    }
    EXPECT_EQ(room.server.players.size(), 1u);
}

TEST(Tick, DeadPlayersAreStillSentAtTheDeathPose) {
    Room room(emptyCourt());
    UdpPeer ann;
    room.join("Ann", ann);
    room.server.players[0].die(static_cast<float>(ManualClock::now));
    room.tick();
    UpdateMessage state;
    ASSERT_TRUE(readState(ann.received().at(0), state));
    EXPECT_EQ(state.updates[0].position.x, -1375.2f);
    EXPECT_EQ(state.updates[0].position.y, 797.701f);
    EXPECT_EQ(state.updates[0].position.z, -1280.61f);
}

TEST(Tick, PlayerSoakedRespawnsAfterFourSeconds) {
    Room room(emptyCourt());
    UdpPeer ann;
    const char id = room.join("Ann", ann);
    room.server.players[0].die(static_cast<float>(ManualClock::now));
    room.tick(3999);
    EXPECT_FALSE(room.server.players[0].alive());
    room.queue(keepAliveDatagram(id), ann);
    room.tick(1);
    EXPECT_TRUE(room.server.players[0].alive());
    EXPECT_GT(room.server.players[0].position.x, 0.0f);
}
