#include "bots/Play.h"
#include "src/Messages.h"
#include "tests/bots/LevelRoadmap.h"
#include "tests/fuzz/RoomSocket.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>

using namespace drench;

namespace {

/// Datagrams that still come from the room as fast as they are read, and what each holds.
std::size_t floodLeft = 0;
std::string flooded;

std::string stateOfBot1() {
    PlayerUpdate player;
    player.id = '1';
    player.position = standingIn(2, 2);
    player.direction = vec3(0.0f, 0.0f, 1.0f);
    constexpr std::string_view name = "Bot 1";
    std::copy(name.begin(), name.end(), player.name);
    UpdateMessage state;
    state.add(player);
    std::string bytes(sizeof state, '\0');
    std::memcpy(bytes.data(), &state, sizeof state);
    return bytes;
}

} // namespace

// The linker has these stand for recv() here.
// NOLINTBEGIN(bugprone-reserved-identifier): these are the linker's names.
extern "C" {
ssize_t __real_recv(int socket, void* buffer, std::size_t size, int flags);

ssize_t __wrap_recv(int socket, void* buffer, std::size_t size, int flags) {
    if (floodLeft == 0)
        return __real_recv(socket, buffer, size, flags);
    --floodLeft;
    const std::size_t length = std::min(size, flooded.size());
    std::memcpy(buffer, flooded.data(), length);
    return static_cast<ssize_t>(length);
}
}
// NOLINTEND(bugprone-reserved-identifier)

TEST(Play, AStepEndsInAFloodOfStates) {
    MapManager map = court(9, 6, 9, nothing);
    const bots::Roadmap roadmap = levelRoadmap(map);
    RoomSocket room;
    bots::Play play(roadmap, {{"room", room.address()}}, {.playersPerRoom = 1, .name = "Bot"},
                    [](const std::string&) {});
    play.step(client::Clock::now());
    ASSERT_TRUE(room.receive());
    room.send({messageCode::accepted, '1'});
    play.step(client::Clock::now());
    ASSERT_EQ(play.standing().playing, 1u);

    constexpr std::size_t flood = 10000;
    flooded = stateOfBot1();
    floodLeft = flood;
    room.send(flooded);
    play.step(client::Clock::now());
    floodLeft = 0;
    const std::uint64_t taken = play.standing().snapshots;
    EXPECT_GT(taken, 0u);
    EXPECT_LE(taken, 1024u) << "four times what a session reads at once";
    EXPECT_EQ(play.standing().playing, 1u);
}
