#include "client/Bodies.h"
#include "src/Player.h"
#include "tests/client/SessionLine.h"
#include "tests/support/Arenas.h"

#include <gtest/gtest.h>
#include <variant>

using drench::client::Bodies;

namespace {

/// A room with two players: oneself, '1', and another, '2', who walks along x.
struct Company {
    MapManager map = loaded(emptyCourt());
    Line line{"Ann"};
    Player self{'1', "Ann", 0.0f, 4};
    Player other = bodyAt(map, {400.0f, standing, 1000.0f}, {401.0f, standing, 1000.0f});
    Bodies bodies{map};

    Company() {
        self.setMapMan(&map);
        other.playerID = '2';
        other.setKey(keyIndex::forward, true);
        line.hear(acceptanceDatagram('1'));
        line.pass(milliseconds(1));
        line.heardByRoom();
    }

    /// One tick of the room; `acts` decides whether what it heard reaches the players.
    void tick(bool acts = true) {
        for (const std::string& datagram : line.heardByRoom()) {
            if (!acts || datagram.size() < sizeof(ViewMessage) || datagram[0] != messageCode::view)
                continue;
            ViewMessage view;
            std::memcpy(&view, datagram.data(), sizeof view);
            self.rotateView(view.dx, view.dy);
        }
        self.update(0.0f);
        other.update(0.0f);
        UpdateMessage state;
        state.add(self.getPlayerUpdate());
        state.add(other.getPlayerUpdate());
        line.hear(bytesOf(state));
        bodies.serviced(line.session, line.now);
        line.pass(milliseconds(16));
        bodies.serviced(line.session, line.now);
        while (const auto event = line.session.nextEvent()) {
            if (const auto* snapshot = std::get_if<drench::client::Snapshot>(&*event))
                bodies.take(*snapshot, line.session);
        }
    }
};

} // namespace

TEST(Bodies, NobodyIsAnywhereBeforeTheFirstSnapshot) {
    Company company;
    EXPECT_FALSE(company.bodies.own(company.line.now).has_value());
    EXPECT_TRUE(company.bodies.others(company.line.now, false).empty());
}

TEST(Bodies, OneselfIsPredictedAndNotAmongTheOthers) {
    Company company;
    for (int tick = 0; tick < 30; ++tick)
        company.tick();
    const auto own = company.bodies.own(company.line.now);
    ASSERT_TRUE(own.has_value());
    EXPECT_NEAR((own->eye - company.self.position).length(), 0.0, 10.0);
    const std::vector<PlayerUpdate> others = company.bodies.others(company.line.now, false);
    ASSERT_EQ(others.size(), 1u);
    EXPECT_EQ(others[0].id, '2');
    EXPECT_EQ(company.bodies.prediction().statistics().exact, 30u);
}

TEST(Bodies, TheOthersAreDrawnBehindOrWhereAShotWillMeetThem) {
    Company company;
    for (int tick = 0; tick < 60; ++tick) {
        company.tick();
        company.bodies.others(company.line.now, false);
    }
    const float truth = company.other.position.x;
    const float behind = company.bodies.others(company.line.now, false)[0].position.x;
    EXPECT_LT(behind, truth - 6.0f);
    EXPECT_GT(behind, truth - 24.0f);
    const float ahead = company.bodies.others(company.line.now, true)[0].position.x;
    EXPECT_GT(ahead, truth - 3.0f);
    EXPECT_LT(ahead, truth + 18.0f);
}

TEST(Bodies, LostTurnsAreSentAgain) {
    Company company;
    for (int tick = 0; tick < 20; ++tick)
        company.tick();
    company.line.session.turn(40, 3);
    company.tick();
    company.tick(false);
    company.line.session.turn(5, 0);
    for (int tick = 0; tick < 8; ++tick)
        company.tick();
    const vec3 turned = company.self.direction;
    Player expected = company.self;
    expected.spawnAt(4);
    expected.rotateView(45, 3);
    EXPECT_NEAR((turned - expected.direction).length(), 0.0, 0.003);
}
