#include "tests/support/Arenas.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Datagrams.h"
#include "tests/support/ManualClock.h"
#include "tests/support/Room.h"

#include <climits>
#include <gtest/gtest.h>

TEST(Dispatch, FifthJoinIsRefusedWithOneByteAndLeavesThePlayersAlone) {
    Room room(emptyCourt());
    UdpPeer peers[5];
    for (int i = 0; i < 4; ++i)
        room.join("P", peers[i]);
    peers[0].received();

    const CapturedOutput output;
    room.dispatch(joinDatagram("Late"), peers[4]);
    EXPECT_EQ(output.text(), "Player denied --- Game is full.\n");
    EXPECT_EQ(peers[4].received(), (std::vector<std::string>{"f"}));
    EXPECT_TRUE(peers[0].received().empty());
    ASSERT_EQ(room.server.players.size(), 4u);
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(room.server.players[i].getPlayerID(), static_cast<char>('1' + i));
}

TEST(Dispatch, KeyRecordHoldsAndReleasesAKey) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    room.dispatch(keyDatagram(id, keyIndex::forward, true), peer);
    EXPECT_TRUE(room.server.players[0].keys[keyIndex::forward]);
    room.dispatch(keyDatagram(id, keyIndex::forward, false), peer);
    EXPECT_FALSE(room.server.players[0].keys[keyIndex::forward]);
}

TEST(Dispatch, AnyNonZeroByteHoldsAKey) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    const KeyMessage key{.id = id, .key = keyIndex::shoot, .down = static_cast<char>(0x80)};
    room.dispatch(bytesOf(key), peer);
    EXPECT_TRUE(room.server.players[0].keys[keyIndex::shoot]);
}

TEST(Dispatch, KeyRecordOfThreeBytesIsARelease) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    room.server.players[0].setKey(keyIndex::left, true);
    room.dispatch(keyDatagram(id, keyIndex::left, true).substr(0, 3), peer);
    EXPECT_FALSE(room.server.players[0].keys[keyIndex::left]);
}

TEST(Dispatch, BytesBehindTheFourthOfAKeyRecordMeanNothing) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    const Player& player = room.server.players[0];
    room.dispatch(keyDatagram(id, keyIndex::left, true) + std::string("\0\1\0", 3), peer);
    EXPECT_TRUE(player.keys[keyIndex::left]) << "held, whatever follows";
    room.dispatch(keyDatagram(id, keyIndex::left, false) + std::string(508, '\1'), peer);
    for (const bool held : player.keys)
        EXPECT_FALSE(held) << "released, whatever follows";
}

TEST(Dispatch, KeyIndexOutOfRangeIsIgnoredButIsASignOfLife) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    const Player& player = room.server.players[0];
    for (const int key : {9, -1, 6, -128, 127}) {
        ManualClock::now += 10;
        room.dispatch(keyDatagram(id, key, true), peer);
        for (const bool held : player.keys)
            EXPECT_FALSE(held) << "key " << key;
        EXPECT_EQ(player.lastMessageTime, static_cast<float>(ManualClock::now)) << "key " << key;
    }
}

TEST(Dispatch, ViewRecordTurnsByTheCountsAtBytesFourAndEight) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    Player expected = room.server.players[0];
    expected.rotateView(-37, 12);
    room.dispatch(viewDatagram(id, -37, 12), peer);
    const Player& player = room.server.players[0];
    EXPECT_EQ(std::memcmp(&player.direction, &expected.direction, sizeof(vec3)), 0);
    EXPECT_EQ(std::memcmp(&player.rotation, &expected.rotation, sizeof(quat)), 0);
}

TEST(Dispatch, SmallestIntOfMouseCountsTurnsAndDoesNotTrap) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    const vec3 before = room.server.players[0].direction;
    room.dispatch(viewDatagram(id, INT_MIN, INT_MIN), peer);
    EXPECT_NE(room.server.players[0].direction.x, before.x);
    EXPECT_NEAR(room.server.players[0].direction.length(), 1.0f, 1e-5f);
}

TEST(Dispatch, InputOfADeadPlayerIsDroppedButIsASignOfLife) {
    Room room(emptyCourt());
    UdpPeer peer;
    const char id = room.join("Ann", peer);
    Player& player = room.server.players[0];
    player.die(static_cast<float>(ManualClock::now));
    const vec3 direction = player.direction;

    ManualClock::now += 10;
    room.dispatch(viewDatagram(id, 100, 0), peer);
    EXPECT_EQ(std::memcmp(&player.direction, &direction, sizeof direction), 0);
    EXPECT_EQ(player.lastMessageTime, static_cast<float>(ManualClock::now));

    ManualClock::now += 10;
    room.dispatch(keyDatagram(id, keyIndex::shoot, true), peer);
    EXPECT_FALSE(player.isShooting());
    EXPECT_EQ(player.lastMessageTime, static_cast<float>(ManualClock::now));
}

TEST(Dispatch, ChatIsRelayedUnchangedToEveryoneTheSpeakerIncluded) {
    Room room(emptyCourt());
    UdpPeer ann;
    UdpPeer bo;
    const char id = room.join("Ann", ann);
    room.join("Bo", bo);
    ann.received();
    const std::string unterminated = chatDatagram(id, std::string(30, '!'));
    ManualClock::now += 10;
    room.dispatch(unterminated + "beyond the record", ann);
    EXPECT_EQ(ann.received(), (std::vector<std::string>{unterminated}));
    EXPECT_EQ(bo.received(), (std::vector<std::string>{unterminated}));
    EXPECT_EQ(room.server.players[0].lastMessageTime, static_cast<float>(ManualClock::now));
}

TEST(Dispatch, BytesBehindAChatsTerminatorAreRelayedToo) {
    Room room(emptyCourt());
    UdpPeer ann;
    const char id = room.join("Ann", ann);
    std::string chat = chatDatagram(id, "hi");
    chat[20] = 'x';
    room.dispatch(chat, ann);
    EXPECT_EQ(ann.received(), (std::vector<std::string>{chat}));
}

TEST(Dispatch, ChatOfAnUnknownSpeakerIsDropped) {
    Room room(emptyCourt());
    UdpPeer ann;
    room.join("Ann", ann);
    room.dispatch(chatDatagram('7', "boo"), ann);
    EXPECT_TRUE(ann.received().empty());
}

TEST(Dispatch, DeadPlayersMayChat) {
    Room room(emptyCourt());
    UdpPeer ann;
    const char id = room.join("Ann", ann);
    room.server.players[0].die(0.0f);
    room.dispatch(chatDatagram(id, "ouch"), ann);
    EXPECT_EQ(ann.received(), (std::vector<std::string>{chatDatagram(id, "ouch")}));
}

TEST(Dispatch, KeepAliveIsASignOfLife) {
    Room room(emptyCourt());
    UdpPeer ann;
    const char id = room.join("Ann", ann);
    ManualClock::now += 4999;
    room.dispatch(keepAliveDatagram(id), ann);
    EXPECT_EQ(room.server.players[0].lastMessageTime, static_cast<float>(ManualClock::now));
}

TEST(Dispatch, LeaveRecordRemovesWhomeverItNames) {
    Room room(emptyCourt());
    UdpPeer ann;
    UdpPeer bo;
    room.join("Ann", ann);
    room.join("Bo", bo);
    const CapturedOutput quiet;
    room.dispatch(leaveDatagram('1'), bo);
    ASSERT_EQ(room.server.players.size(), 1u);
    EXPECT_EQ(room.server.players[0].getPlayerID(), '2');
}

TEST(Dispatch, IdentifierIsTrustedWhateverTheSendersAddress) {
    Room room(emptyCourt());
    UdpPeer ann;
    UdpPeer stranger;
    const char id = room.join("Ann", ann);
    room.dispatch(keyDatagram(id, keyIndex::forward, true), stranger);
    EXPECT_TRUE(room.server.players[0].keys[keyIndex::forward]);
    room.dispatch(chatDatagram(id, "I am Ann"), stranger);
    EXPECT_EQ(ann.received(), (std::vector<std::string>{chatDatagram(id, "I am Ann")}));
    EXPECT_TRUE(stranger.received().empty());
}

TEST(Dispatch, OtherCodesAndEmptyDatagramsAreIgnoredAndNoSignOfLife) {
    Room room(emptyCourt());
    UdpPeer ann;
    const char id = room.join("Ann", ann);
    const float heard = room.server.players[0].lastMessageTime;
    ManualClock::now += 10;
    const CapturedOutput output;
    room.dispatch("", ann);
    for (const char code : {'i', 's', 'u', 'f', 'J', '\xff'})
        room.dispatch({code, id, 5, 1}, ann);
    EXPECT_TRUE(ann.received().empty());
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(room.server.players[0].lastMessageTime, heard);
    EXPECT_FALSE(room.server.players[0].isShooting());
}

TEST(Dispatch, RecordsOfUnknownPlayersChangeNobody) {
    Room room(emptyCourt());
    UdpPeer ann;
    room.join("Ann", ann);
    Player before = room.server.players[0];
    ManualClock::now += 10;
    for (const std::string& datagram : {keyDatagram('2', 3, true), viewDatagram('2', 50, 5),
                                        keepAliveDatagram('2'), leaveDatagram('2')})
        room.dispatch(datagram, ann);
    ASSERT_EQ(room.server.players.size(), 1u);
    EXPECT_EQ(room.server.players[0].lastMessageTime, before.lastMessageTime);
    EXPECT_EQ(room.server.players[0].direction.x, before.direction.x);
    EXPECT_FALSE(room.server.players[0].keys[keyIndex::forward]);
}

TEST(Dispatch, EmptyQueueDoesNothing) {
    Room room(emptyCourt());
    UdpPeer ann;
    room.join("Ann", ann);
    const CapturedOutput output;
    room.server.readMessages();
    EXPECT_EQ(output.text(), "");
    EXPECT_TRUE(ann.received().empty());
    EXPECT_EQ(room.server.players.size(), 1u);
}
