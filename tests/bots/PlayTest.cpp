#include "bots/Play.h"

#include "bots/Chart.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Courts.h"
#include "tests/support/ManualClock.h"
#include "tests/support/Room.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <sys/socket.h>

using namespace drench;

using bots::Play;
using client::RoomAddress;

namespace {

std::string ring() {
    return arenaText(32, 16, 32, solidInRing);
}

/// The ring with a block across each side of its corridor, one cube high.
std::string hurdles() {
    return arenaText(32, 16, 32, [](int i, int j, int k) {
        const bool across = i == 14 || i == 17 || k == 14 || k == 17;
        return solidInRing(i, j, k) || (j == 3 && across);
    });
}

/// A Room that answers what reaches its socket, as the receive thread does.
struct OpenRoom {
    Room room;

    explicit OpenRoom(const std::string& mapText) : room(mapText) {}

    RoomAddress address(const std::string& name) const {
        RoomAddress address;
        address.name = name;
        socklen_t length = sizeof address.address;
        getsockname(room.server.sockInfo.sockfd, reinterpret_cast<sockaddr*>(&address.address),
                    &length);
        address.address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }

    void tick() {
        const SocketInfo& socket = room.server.sockInfo;
        GenericMessage inbound;
        while (recv(socket.sockfd, inbound.data, 1, MSG_PEEK | MSG_DONTWAIT) >= 0) {
            inbound = {};
            socket.receiveBytesFrom(&inbound.client, inbound.data, sizeof inbound.data);
            room.server.inMessages.push(inbound);
            GenericMessage receipt;
            receipt.data[0] = messageCode::join;
            socket.sendBytesTo(&inbound.client, &receipt, sizeof receipt);
        }
        room.tick();
    }
};

/// Bots in rooms whose ticks follow each other as fast as they can.
struct Match {
    const CapturedOutput quiet;
    MapManager map;
    bots::Roadmap roadmap;
    OpenRoom room;
    std::vector<std::string> notes;

    explicit Match(const std::string& mapText = ring())
        : map(loaded(mapText)), roadmap(bots::chart(map)), room(mapText) {}

    std::unique_ptr<Play> play(const std::vector<RoomAddress>& rooms,
                               const bots::PlayOptions& options) {
        return std::make_unique<Play>(roadmap, rooms, options,
                                      [this](const std::string& note) { notes.push_back(note); });
    }

    void tick(Play& play) {
        room.tick();
        play.step(client::Clock::now());
    }

    /// Plays until every player is in.
    void enter(Play& play) {
        for (int i = 0; i < 100 && play.standing().playing < play.standing().players; ++i)
            tick(play);
    }
};

/// Where the player looks, seen from above, in radians.
float headingOf(const Player& player) {
    return std::atan2(player.direction.x, player.direction.z);
}

bots::PlayOptions four() {
    bots::PlayOptions options;
    options.playersPerRoom = 4;
    options.skill = 1.0;
    options.seed = 3;
    return options;
}

} // namespace

TEST(Play, LaterDecisionKeepsWhatTheEarlierAskedFor) {
    Controls earlier;
    earlier.held[keyIndex::forward] = true;
    earlier.jump = true;
    earlier.dx = 3;
    earlier.dy = -4;
    Controls later;
    later.held[keyIndex::shoot] = true;
    later.dx = 10;
    later.dy = -20;
    const Controls both = bots::combined(earlier, later);
    EXPECT_FALSE(both.held[keyIndex::forward]);
    EXPECT_TRUE(both.held[keyIndex::shoot]);
    EXPECT_TRUE(both.jump);
    EXPECT_EQ(both.dx, 13);
    EXPECT_EQ(both.dy, -24);
    EXPECT_TRUE(bots::combined(later, earlier).jump);
    EXPECT_FALSE(bots::combined(later, later).jump);
}

TEST(Play, BotsWalkTurnJumpAndSoak) {
    Match match(hurdles());
    const auto play = match.play({match.room.address("here")}, four());
    match.enter(*play);
    ASSERT_EQ(match.room.room.server.players.size(), 4u);
    float ways[4] = {};
    int turns[4] = {};
    int takeOffs = 0;
    std::vector<Player> before = match.room.room.server.players;
    for (int i = 0; i < 3000; ++i) {
        match.tick(*play);
        const std::vector<Player>& now = match.room.room.server.players;
        ASSERT_EQ(now.size(), 4u);
        for (std::size_t j = 0; j < 4; ++j) {
            if (now[j].dead || before[j].dead)
                continue;
            ways[j] += std::hypot(now[j].position.x - before[j].position.x,
                                  now[j].position.z - before[j].position.z);
            turns[j] += std::abs(headingOf(now[j]) - headingOf(before[j])) > 0.005f;
            takeOffs += now[j].verticalSpeed > 0.0f && before[j].verticalSpeed <= 0.0f;
        }
        before = now;
    }
    for (std::size_t j = 0; j < 4; ++j) {
        EXPECT_GT(ways[j], 20.0f * 64.0f) << j;
        EXPECT_GT(turns[j], 300) << j;
    }
    EXPECT_GT(takeOffs, 10);
    EXPECT_GT(play->standing().soaks, 0);
    EXPECT_EQ(play->standing().playing, 4u);
    EXPECT_TRUE(match.notes.empty()) << match.notes.front();

    // The counts from snapshots are those of the room.
    long soaks = 0;
    long deaths = 0;
    for (const bots::PlayerReport& player : play->players()) {
        soaks += player.tally.soaks;
        deaths += player.tally.deaths;
    }
    EXPECT_EQ(soaks, deaths);
    for (std::size_t j = 0; j < 4; ++j) {
        const bots::Tally tally = play->players()[j].tally;
        const Player& player = match.room.room.server.players[j];
        EXPECT_EQ(play->players()[j].name, player.playerUpdate.name);
        EXPECT_NEAR(double(tally.soaks - tally.deaths), player.playerUpdate.points, 1.0);
    }
}

TEST(Play, BotsFightByWhatAWindowShowsToo) {
    for (const bots::Sight sight : {bots::Sight::drawn, bots::Sight::ahead}) {
        Match match;
        bots::PlayOptions options = four();
        options.sight = sight;
        const auto play = match.play({match.room.address("here")}, options);
        match.enter(*play);
        std::vector<Player>& players = match.room.room.server.players;
        ASSERT_EQ(players.size(), 4u);
        for (int i = 0; i < 4000 && play->standing().soaks < 3; ++i)
            match.tick(*play);
        EXPECT_GE(play->standing().soaks, 3);
        EXPECT_EQ(play->standing().playing, 4u);
    }
}

TEST(Play, EverySnapshotCountsWhenSeveralWait) {
    Match match;
    const auto play = match.play({match.room.address("here")}, four());
    match.enter(*play);
    const std::uint64_t before = play->standing().snapshots;
    for (int i = 0; i < 50; ++i)
        match.room.tick();
    play->step(client::Clock::now());
    EXPECT_EQ(play->standing().snapshots, before + 4 * 50);
}

TEST(Play, LeavingEmptiesTheRoomAndEndsIt) {
    Match match;
    const auto play = match.play({match.room.address("here")}, four());
    match.enter(*play);
    ASSERT_EQ(match.room.room.server.players.size(), 4u);
    play->leave();
    match.room.tick();
    EXPECT_TRUE(match.room.room.server.players.empty());
    for (int i = 0; i < 10; ++i)
        match.tick(*play);
    EXPECT_TRUE(match.room.room.server.players.empty());
    EXPECT_EQ(play->standing().playing, 0u);
    EXPECT_EQ(play->players()[0].tally.joined, 1);
}

TEST(Play, TracksAreThoseOfTheFirstRoom) {
    Match match;
    OpenRoom second(ring());
    bots::PlayOptions options = four();
    options.playersPerRoom = 2;
    options.keepTracks = true;
    // At once the best soak each other, in some orders of joining; and the dead leave no track.
    options.skill = 0.0;
    const auto play = match.play({match.room.address("first"), second.address("second")}, options);
    for (int i = 0; i < 60; ++i) {
        second.tick();
        match.tick(*play);
    }
    EXPECT_EQ(play->standing().playing, 4u);
    ASSERT_EQ(play->tracks().size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(play->tracks()[i].name(), play->players()[i].name);
        ASSERT_FALSE(play->tracks()[i].points().empty());
        const vec3 end = play->tracks()[i].points().back().position;
        // Joins may reach the room in any order.
        std::vector<Player>& players = match.room.room.server.players;
        const auto player = std::find_if(players.begin(), players.end(), [&](Player& someone) {
            return someone.getName() == play->tracks()[i].name();
        });
        ASSERT_NE(player, players.end());
        ASSERT_TRUE(player->alive());
        EXPECT_LT(std::hypot(end.x - player->position.x, end.z - player->position.z), 32.1f);
    }
    EXPECT_EQ(play->players()[2].room, "second");
}

TEST(Play, WhoDoesNotGetInIsCountedAsNotPlaying) {
    Match match;
    const auto one = match.play({match.room.address("here")}, four());
    match.enter(*one);
    bots::PlayOptions options = four();
    options.playersPerRoom = 2;
    const auto more = match.play({match.room.address("here")}, options);
    for (int i = 0; i < 20; ++i) {
        match.tick(*more);
        one->step(client::Clock::now());
    }
    EXPECT_EQ(more->standing().players, 2u);
    EXPECT_EQ(more->standing().playing, 0u);
    EXPECT_EQ(match.notes, std::vector<std::string>{"here: is full; trying again"});
    EXPECT_EQ(match.room.room.server.players.size(), 4u);
}
