#include "tests/process/RemotePlayer.h"
#include "tests/process/ServerProcess.h"
#include "tests/support/Arenas.h"

#include <gtest/gtest.h>

TEST(FullRoom, RefusesTheFifthAndServesItOnceSomebodyLeft) {
    ServerProcess server = ServerProcess::listening(emptyCourt());
    RemotePlayer players[4] = {RemotePlayer(server.port()), RemotePlayer(server.port()),
                               RemotePlayer(server.port()), RemotePlayer(server.port())};
    for (char id = '1'; id <= '4'; ++id)
        ASSERT_EQ(players[id - '1'].join("Player" + std::string(1, id)), id);

    RemotePlayer late(server.port());
    EXPECT_EQ(late.join("Late"), '\0');
    // Nearly always the receipt comes first; but its thread may be held up after the queueing.
    if (late.receipts == 0)
        late.waitFor(isReceipt);
    EXPECT_EQ(late.receipts, 1);
    EXPECT_EQ(late.heard, (std::vector<std::string>{"f"}));
    EXPECT_TRUE(server.waitForLine("Player denied --- Game is full."));

    players[1].send(leaveDatagram('2'));
    EXPECT_TRUE(players[0].waitForDatagram(noticeDatagram("Player2 disconnected")));
    EXPECT_TRUE(server.waitForLine("Player2 disconnected"));
    EXPECT_EQ(late.join("Late"), '2');
    EXPECT_TRUE(players[0].waitForState([](const UpdateMessage& state) {
        return state.updates[3].id == '2' && std::string(state.updates[3].name) == "Late";
    }));
    EXPECT_EQ(players[0].seen('2'), &players[0].state.updates[3]);
}

TEST(Chat, ReachesEverybodyAsItWasSent) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    RemotePlayer ann(server.port());
    RemotePlayer bo(server.port());
    const char id = ann.join("Ann");
    bo.join("Bo");
    const std::string chat = chatDatagram(id, "Nobody stays dry for ever, Bo!!");
    ASSERT_EQ(chat.size(), 32u);
    ann.send(chat);
    EXPECT_TRUE(ann.waitForDatagram(chat));
    EXPECT_TRUE(bo.waitForDatagram(chat));
}

TEST(Console, JoinsAndLeavesArePrintedAtOnce) {
    ServerProcess server = ServerProcess::listening(emptyCourt());
    RemotePlayer ann(server.port());
    const char id = ann.join("Ann");
    EXPECT_EQ(server.line(), "Ann joined");
    ann.send(leaveDatagram(id));
    EXPECT_EQ(server.line(), "Ann disconnected");
}
