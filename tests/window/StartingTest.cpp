#include "tests/support/Arenas.h"
#include "tests/support/UdpPeer.h"
#include "tests/window/Desk.h"

#include <arpa/inet.h>
#include <chrono>
#include <future>
#include <memory>

namespace {

/// The window's program, run to its end.
struct Ending {
    int status = 0;
    std::string said;
};

Ending run(const std::string& display, const std::string& arguments,
           const std::string& environment = "") {
    const TemporaryFolder folder;
    ToolProcess window("/usr/bin/env", windowCommand(display, folder.path, arguments, environment));
    const int status = window.status();
    return {status, window.err()};
}

/// The same with so many seconds to play, and ever more until the room's answer came in them.
Ending runUntilAnswered(const std::string& display, const std::string& room, int seconds) {
    Ending window;
    do {
        window = run(display, room + " --seconds " + std::to_string(seconds));
        seconds *= 3;
    } while (window.said == room + " has not answered yet.\n" && seconds < 100);
    return window;
}

std::string address(int port) {
    return "localhost:" + std::to_string(port);
}

std::size_t linesIn(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

} // namespace

TEST(WindowStarting, WithoutADisplayOneLineSaysSo) {
    for (const char* display : {"", ":4711"}) {
        const Ending window = run(display, "localhost:1");
        EXPECT_EQ(window.status, 2);
        EXPECT_NE(window.said.find("there is no display"), std::string::npos) << window.said;
        EXPECT_EQ(linesIn(window.said), 1u) << window.said;
    }
}

TEST(WindowStarting, WithAnOldOpenGlOneLineSaysSo) {
    const Display display;
    const Ending window = run(display.name, "localhost:1", "MESA_GL_VERSION_OVERRIDE=2.1");
    EXPECT_EQ(window.status, 2);
    EXPECT_NE(window.said.find("no OpenGL 3.3"), std::string::npos) << window.said;
    EXPECT_EQ(linesIn(window.said), 1u) << window.said;
}

TEST(WindowStarting, WhereNobodyListensOneLineSaysSo) {
    const Display display;
    const std::string room = address(freePort());
    // It is given three seconds.
    const Ending window = runUntilAnswered(display.name, room, 4);
    EXPECT_EQ(window.status, 1);
    EXPECT_EQ(window.said, "Nobody listens at " + room + ".\n");
}

TEST(WindowStarting, WhereTheTimeIsOverBeforeTheRoomAnswersOneLineSaysSo) {
    const Display display;
    const UdpPeer silent;
    const std::string room = address(ntohs(silent.address().addr.sin_port));
    const Ending window = run(display.name, room + " --seconds 0.2");
    EXPECT_EQ(window.status, 1);
    EXPECT_EQ(window.said, room + " has not answered yet.\n");
}

TEST(WindowStarting, InAFullRoomOneLineSaysSo) {
    const Display display;
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    std::vector<std::unique_ptr<RemotePlayer>> players;
    for (const char* name : {"Bob", "Cid", "Dee", "Eve"}) {
        players.push_back(std::make_unique<RemotePlayer>(server.port()));
        ASSERT_NE(players.back()->join(name), 0);
    }
    std::future<Ending> running = std::async(std::launch::async, [&] {
        return runUntilAnswered(display.name, address(server.port()), 1);
    });
    while (running.wait_for(std::chrono::seconds(1)) != std::future_status::ready) {
        for (const std::unique_ptr<RemotePlayer>& each : players)
            each->send(keepAliveDatagram(each->id()));
    }
    const Ending window = running.get();
    EXPECT_EQ(window.status, 1);
    EXPECT_EQ(window.said, address(server.port()) + " is full.\n");
}

TEST(WindowStarting, ABadArenaIsNamedWithItsPlace) {
    const TemporaryFolder folder;
    const std::string arena = folder.write("short", "2 2 2\n 1 1\n");
    const Ending window = run("", "localhost:1 --arena " + arena);
    EXPECT_EQ(window.status, 2);
    EXPECT_EQ(window.said.find(arena), 0u) << window.said;
    EXPECT_EQ(linesIn(window.said), 1u) << window.said;
}

TEST(WindowStarting, HelpAndWrongUseNeedNoDisplay) {
    EXPECT_EQ(run("", "--help").status, 0);
    const Ending wrong = run("", "--seconds -1");
    EXPECT_EQ(wrong.status, 2);
    EXPECT_NE(wrong.said.find("--seconds: -1 is no number from 0"), std::string::npos)
        << wrong.said;
}
