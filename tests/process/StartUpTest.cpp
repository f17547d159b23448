#include "tests/process/RemotePlayer.h"
#include "tests/process/ServerProcess.h"
#include "tests/support/Arenas.h"

#include <gtest/gtest.h>

TEST(StartUp, WithoutAPortPrintsUsageAndNothingElse) {
    ServerProcess server({}, emptyCourt());
    EXPECT_EQ(server.restOfOutput(), "usage: port\n");
    EXPECT_EQ(server.exitStatus(), 0);
}

TEST(StartUp, WithTwoArgumentsPrintsUsageAndNothingElse) {
    ServerProcess server({"5000", "5001"}, emptyCourt());
    EXPECT_EQ(server.restOfOutput(), "usage: port\n");
    EXPECT_EQ(server.exitStatus(), 0);
}

TEST(StartUp, LinesComeInTheirOrderEachAsSoonAsItIsWritten) {
    const int port = freePort();
    const int swapped = (port & 255) << 8 | port >> 8;
    ServerProcess server({std::to_string(port)}, emptyCourt());
    EXPECT_EQ(server.line(), "sizeof(UpdateMessage) 244");
    EXPECT_EQ(server.line(), "sizeof(PlayerUpdate)  60");
    EXPECT_EQ(server.line(), "htons(port) = " + std::to_string(swapped));
    EXPECT_EQ(server.line(), "Server is listening on port " + std::to_string(port));
    EXPECT_TRUE(server.isRunning());
}

TEST(StartUp, ArgumentThatIsNoNumberMeansPortZero) {
    ServerProcess server({"abc"}, emptyCourt());
    EXPECT_TRUE(server.waitForLine("htons(port) = 0"));
    EXPECT_TRUE(server.waitForLine("Server is listening on port 0"));
    EXPECT_TRUE(server.isRunning());
}

TEST(StartUp, PortAbove65535IsCutToSixteenBits) {
    const int port = freePort();
    ServerProcess server({std::to_string(port + 65536)}, emptyCourt());
    ASSERT_TRUE(server.waitForLine("Server is listening on port " + std::to_string(port + 65536)));
    RemotePlayer player(port);
    EXPECT_EQ(player.join("Ann"), '1');
}

TEST(StartUp, TakenPortEndsTheProcessBeforeTheMapIsRead) {
    const ServerProcess first = ServerProcess::listening(emptyCourt());
    ServerProcess second({std::to_string(first.port())}, std::nullopt);
    const std::string output = second.restOfOutput();
    EXPECT_NE(output.find("\nError binding socket\n"), std::string::npos) << output;
    EXPECT_EQ(output.find("Error reading file"), std::string::npos) << output;
    EXPECT_EQ(second.exitStatus(), 0);
}

TEST(StartUp, MissingMapEndsTheProcessWithItsPath) {
    ServerProcess server({std::to_string(freePort())}, std::nullopt);
    const std::string path = (server.folder() / "Resources" / "mapdata").string();
    const std::string output = server.restOfOutput();
    const std::string last = "Error reading file at: " + path;
    ASSERT_GE(output.size(), last.size());
    EXPECT_EQ(output.substr(output.size() - last.size()), last);
    EXPECT_EQ(output.find("listening"), std::string::npos);
    EXPECT_EQ(server.exitStatus(), 0);
}

TEST(StartUp, MapWithoutCellsIsServedAndPlayersFallThroughIt) {
    const ServerProcess server = ServerProcess::listening("");
    RemotePlayer player(server.port());
    const char id = player.join("Ann");
    ASSERT_EQ(id, '1');
    player.send(keyDatagram(id, keyIndex::shoot, true));
    EXPECT_TRUE(player.waitForState([&](const UpdateMessage& state) {
        return state.updates[0].shooting && state.updates[0].position.y < 0.0f;
    }));
}
