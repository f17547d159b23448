#include "tests/process/RemotePlayer.h"
#include "tests/process/ServerProcess.h"

#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace {

std::string defaultArena() {
    std::ostringstream text;
    text << std::ifstream(DRENCH_MAPDATA).rdbuf();
    return text.str();
}

bool standsAt(const PlayerUpdate& player, float floor) {
    return std::fabs(player.position.y - 75.0f - floor) < 0.5f;
}

} // namespace

TEST(DefaultArena, FourPlayersJoinLandWalkAndLeave) {
    ServerProcess server = ServerProcess::listening(defaultArena());
    RemotePlayer players[4] = {RemotePlayer(server.port()), RemotePlayer(server.port()),
                               RemotePlayer(server.port()), RemotePlayer(server.port())};
    for (RemotePlayer& player : players)
        ASSERT_NE(player.join("Player"), 0);

    ASSERT_TRUE(players[0].waitForState([](const UpdateMessage& state) {
        for (const PlayerUpdate& player : state.updates) {
            if (!player.id || (!standsAt(player, 448.0f) && !standsAt(player, 64.0f)))
                return false;
        }
        return true;
    })) << "on a balcony or on the ground";

    const UpdateMessage landed = players[0].state;
    for (RemotePlayer& player : players)
        player.send(keyDatagram(player.id(), keyIndex::forward, true));
    EXPECT_TRUE(players[0].waitForState([&](const UpdateMessage& state) {
        for (int i = 0; i < maxPlayers; ++i) {
            if ((state.updates[i].position - landed.updates[i].position).length() < 20.0f)
                return false;
        }
        return true;
    })) << "everyone has room to walk";

    for (RemotePlayer& player : players)
        player.send(leaveDatagram(player.id()));
    for (int i = 0; i < maxPlayers; ++i)
        EXPECT_TRUE(server.waitForLine("Player disconnected"));
}
