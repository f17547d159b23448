#include "bots/Chart.h"
#include "bots/Play.h"
#include "tests/support/Courts.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <string>
#include <vector>

using namespace drench;

TEST(Play, AJoinThatTheSystemRefusesIsToldOnceAndTriedAgain) {
    MapManager map = loaded(arenaText(32, 16, 32, solidInRing));
    const bots::Roadmap roadmap = bots::chart(map);
    client::RoomAddress everybody;
    everybody.name = "everybody";
    everybody.address.sin_family = AF_INET;
    everybody.address.sin_port = htons(5000);
    everybody.address.sin_addr.s_addr = htonl(INADDR_LOOPBACK | IN_CLASSA_HOST);
    bots::PlayOptions options;
    options.playersPerRoom = 2;
    std::vector<std::string> notes;
    bots::Play play(roadmap, {everybody}, options,
                    [&notes](const std::string& note) { notes.push_back(note); });

    const client::Time start = client::Clock::now();
    const auto nextTry = [&] { play.step(start + std::chrono::minutes(1)); };
    nextTry();
    EXPECT_LT(client::Clock::now(), start + std::chrono::milliseconds(400));
    nextTry();
    EXPECT_GE(client::Clock::now(), start + std::chrono::milliseconds(500)) << "not in a busy loop";
    EXPECT_EQ(notes, std::vector<std::string>{"everybody: no way to the room: Permission denied"});
    EXPECT_EQ(play.standing().playing, 0u);
}
