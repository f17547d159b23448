#include "tests/support/Arenas.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Datagrams.h"
#include "tests/support/Room.h"

#include <gtest/gtest.h>

namespace {

std::string printedWhileDispatching(Room& room, const std::string& datagram, const UdpPeer& peer) {
    const CapturedOutput output;
    room.dispatch(datagram, peer);
    return output.text();
}

} // namespace

TEST(Joining, FirstJoinerGetsIdentifierOneItsAnswerAndTheNotice) {
    Room room(emptyCourt());
    UdpPeer peer;
    EXPECT_EQ(printedWhileDispatching(room, joinDatagram("Ann"), peer), "Ann joined\n");

    ASSERT_EQ(room.server.players.size(), 1u);
    EXPECT_EQ(room.server.players[0].getPlayerID(), '1');
    EXPECT_EQ(room.server.players[0].mapMan, &room.server.mapMan);
    EXPECT_EQ(peer.received(), (std::vector<std::string>{"s1", noticeDatagram("Ann joined")}));
}

TEST(Joining, NoticeIsZeroBehindItsText) {
    Room room(emptyCourt());
    UdpPeer peer;
    printedWhileDispatching(room, joinDatagram("Ann"), peer);
    const std::vector<std::string> received = peer.received();
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[1], std::string("tsAnn joined") + std::string(20, '\0'));
}

TEST(Joining, PlayerIsReachedAtTheAddressItJoinedFrom) {
    Room room(emptyCourt());
    UdpPeer peer;
    room.join("Ann", peer);
    const Client expected = peer.address();
    EXPECT_EQ(std::memcmp(&room.server.players[0].client, &expected, sizeof expected), 0);
}

TEST(Joining, EveryPlayerHearsOfANewcomerAndOnlyTheNewcomerIsAnswered) {
    Room room(emptyCourt());
    UdpPeer ann;
    UdpPeer bo;
    room.join("Ann", ann);
    printedWhileDispatching(room, joinDatagram("Bo"), bo);
    EXPECT_EQ(ann.received(), (std::vector<std::string>{noticeDatagram("Bo joined")}));
    EXPECT_EQ(bo.received(), (std::vector<std::string>{"s2", noticeDatagram("Bo joined")}));
}

TEST(Joining, LowestFreeIdentifierIsReusedAndItsPlayerStandsLast) {
    Room room(emptyCourt());
    UdpPeer peers[4];
    for (int i = 0; i < 3; ++i)
        room.join("P", peers[i]);
    {
        const CapturedOutput quiet;
        room.dispatch(leaveDatagram('2'), peers[1]);
    }
    EXPECT_EQ(room.join("New", peers[3]), '2');
    peers[0].received();
    room.tick();

    UpdateMessage state;
    const std::vector<std::string> received = peers[0].received();
    ASSERT_EQ(received.size(), 1u);
    ASSERT_TRUE(readState(received[0], state));
    EXPECT_EQ(state.updates[0].id, '1');
    EXPECT_EQ(state.updates[1].id, '3');
    EXPECT_EQ(state.updates[2].id, '2');
    EXPECT_STREQ(state.updates[2].name, "New");
    EXPECT_EQ(state.updates[3].id, 0);
}

TEST(Joining, NameIsCutToElevenCharacters) {
    Room room(emptyCourt());
    UdpPeer peer;
    EXPECT_EQ(printedWhileDispatching(room, joinDatagram("Bartholomew the Third"), peer),
              "Bartholomew joined\n");
    EXPECT_STREQ(room.server.players[0].getName(), "Bartholomew");
    EXPECT_EQ(peer.received()[1], noticeDatagram("Bartholomew joined"));
}

TEST(Joining, EmptyNameGivesANoticeThatStartsWithABlank) {
    Room room(emptyCourt());
    UdpPeer peer;
    EXPECT_EQ(printedWhileDispatching(room, "j", peer), " joined\n");
    EXPECT_EQ(peer.received()[1], noticeDatagram(" joined"));
}

TEST(Joining, SecondJoinFromOneAddressIsASecondPlayer) {
    Room room(emptyCourt());
    UdpPeer peer;
    EXPECT_EQ(room.join("Ann", peer), '1');
    EXPECT_EQ(room.join("Ann", peer), '2');
    EXPECT_EQ(room.server.players.size(), 2u);
}

TEST(Joining, PlayerJoinItselfCountsNobody) {
    Room room(emptyCourt());
    UdpPeer peer;
    GenericMessage record;
    const JoinMessage join;
    std::memcpy(record.data, &join, sizeof join);
    record.client = peer.address();
    const CapturedOutput quiet;
    for (char id = '1'; id <= '5'; ++id)
        EXPECT_EQ(room.server.playerJoin(&record), id);
    EXPECT_EQ(room.server.players.size(), 5u);
}

TEST(Joining, TwoJoinsInOneTickBothSucceedOnlyBelowTheLimit) {
    Room room(emptyCourt());
    UdpPeer peers[5];
    for (int i = 0; i < 3; ++i)
        room.join("P", peers[i]);
    room.queue(joinDatagram("Fourth"), peers[3]);
    room.queue(joinDatagram("Fifth"), peers[4]);
    const CapturedOutput quiet;
    room.server.readMessages();
    EXPECT_EQ(room.server.players.size(), 4u);
    EXPECT_EQ(peers[4].received(), (std::vector<std::string>{"f"}));
}

TEST(PlayerLookUp, FindsByIdentifierOrNot) {
    Room room(emptyCourt());
    UdpPeer peer;
    room.join("Ann", peer);
    room.join("Bo", peer);
    EXPECT_EQ(room.server.playerByID('2'), &room.server.players[1]);
    EXPECT_EQ(room.server.playerByID('3'), nullptr);
    EXPECT_TRUE(room.server.playerIDExists('1'));
    EXPECT_FALSE(room.server.playerIDExists('7'));
}

TEST(Leaving, OthersHearOfItAndTheLeaverHearsNothing) {
    Room room(emptyCourt());
    UdpPeer ann;
    UdpPeer bo;
    room.join("Ann", ann);
    room.join("Bo", bo);
    ann.received();
    EXPECT_EQ(printedWhileDispatching(room, leaveDatagram('1'), ann), "Ann disconnected\n");

    EXPECT_TRUE(ann.received().empty());
    EXPECT_EQ(bo.received(), (std::vector<std::string>{noticeDatagram("Ann disconnected")}));
    ASSERT_EQ(room.server.players.size(), 1u);
    EXPECT_EQ(room.server.players[0].getPlayerID(), '2');
}

TEST(Leaving, LaterPlayersCloseUpInOrder) {
    Room room(emptyCourt());
    UdpPeer peer;
    for (int i = 0; i < 4; ++i)
        room.join("P", peer);
    const CapturedOutput quiet;
    room.server.playerDisconnect('2');
    ASSERT_EQ(room.server.players.size(), 3u);
    EXPECT_EQ(room.server.players[0].getPlayerID(), '1');
    EXPECT_EQ(room.server.players[1].getPlayerID(), '3');
    EXPECT_EQ(room.server.players[2].getPlayerID(), '4');
}

TEST(Leaving, UnknownIdentifierCausesNoOutputAndNoTraffic) {
    Room room(emptyCourt());
    UdpPeer peer;
    room.join("Ann", peer);
    const CapturedOutput output;
    room.server.playerDisconnect('2');
    EXPECT_EQ(output.text(), "");
    EXPECT_TRUE(peer.received().empty());
    EXPECT_EQ(room.server.players.size(), 1u);
}

TEST(Broadcast, ReachesEveryPlayerOncePerPlayer) {
    Room room(emptyCourt());
    UdpPeer twice;
    UdpPeer once;
    room.join("A", twice);
    room.join("B", twice);
    room.join("C", once);
    twice.received();
    char bytes[] = {'h', 'i'};
    room.server.broadcast(bytes, 2);
    EXPECT_EQ(twice.received(), (std::vector<std::string>{"hi", "hi"}));
    EXPECT_EQ(once.received(), (std::vector<std::string>{"hi"}));
}
