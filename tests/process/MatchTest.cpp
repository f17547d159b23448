#include "tests/process/RemotePlayer.h"
#include "tests/process/ServerProcess.h"
#include "tests/support/Arenas.h"

#include <chrono>
#include <cmath>
#include <gtest/gtest.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr double countsPerRadian = 360.0;

/// Centre of a body that stands on the court's floor; the last step down may leave half a unit.
bool stands(const PlayerUpdate& player) {
    return player.position.y >= 139.0f && player.position.y < 139.6f;
}

/// Four clients in one room.
struct Match {
    ServerProcess server = ServerProcess::listening(emptyCourt());
    RemotePlayer ann{server.port()};
    RemotePlayer bo{server.port()};
    RemotePlayer cy{server.port()};
    RemotePlayer dee{server.port()};
    bool deeIsSilent = false;
    Clock::time_point nextSignsOfLife = Clock::now();

    /// Listens as Ann until a state satisfies `wanted`, while the others stay alive.
    bool waitForState(const std::function<bool(const UpdateMessage&)>& wanted) {
        return ann.waitForState([&](const UpdateMessage& state) {
            if (Clock::now() >= nextSignsOfLife) {
                for (RemotePlayer* player : {&bo, &cy, &dee}) {
                    if (player->id() && !(player == &dee && deeIsSilent))
                        player->send(keepAliveDatagram(player->id()));
                }
                nextSignsOfLife = Clock::now() + std::chrono::seconds(1);
            }
            return wanted(state);
        });
    }

    /// Turns Ann's view towards another player by mouse counts, until it is within a hundredth.
    bool aim(char target) {
        for (int tries = 0; tries < 50; ++tries) {
            const PlayerUpdate* self = ann.seen(ann.id());
            const PlayerUpdate* other = ann.seen(target);
            const vec3 way = other->position - self->position;
            if (way.length() < 50.0f)
                return true;
            const double yaw = std::remainder(std::atan2(way.x, way.z) -
                                                  std::atan2(self->direction.x, self->direction.z),
                                              2.0 * std::acos(-1.0));
            const double pitch = std::asin(way.y / way.length()) - std::asin(self->direction.y);
            if (std::fabs(yaw) < 0.01 && std::fabs(pitch) < 0.01)
                return true;
            // Positive counts turn right and down.
            ann.send(viewDatagram(ann.id(), static_cast<int>(std::lround(-yaw * countsPerRadian)),
                                  static_cast<int>(std::lround(-pitch * countsPerRadian))));
            // Until the turn is seen: states before it may still come.
            const vec3 before = self->direction;
            waitForState([&](const UpdateMessage&) {
                return (ann.seen(ann.id())->direction - before).length() > 0.0f;
            });
        }
        return false;
    }
};

} // namespace

TEST(Match, JoinsWalkJumpSoakRespawnTimeOutAndLeave) {
    Match match;
    RemotePlayer& ann = match.ann;
    ASSERT_EQ(ann.join("Bartholomew"), '1');
    ASSERT_EQ(match.bo.join("Christopher"), '2');
    ASSERT_EQ(match.cy.join("Cy"), '3');
    ASSERT_EQ(match.dee.join("Dee"), '4');

    ASSERT_TRUE(match.waitForState([](const UpdateMessage& state) {
        for (const PlayerUpdate& player : state.updates) {
            if (!player.id || !stands(player))
                return false;
        }
        return true;
    })) << "all four land";

    const vec3 start = ann.seen('1')->position;
    ann.send(keyDatagram('1', keyIndex::forward, true));
    EXPECT_TRUE(match.waitForState([&](const UpdateMessage&) {
        return (ann.seen('1')->position - start).length() > 60.0f;
    })) << "walks";
    ann.send(keyDatagram('1', keyIndex::forward, false));

    ann.send(keyDatagram('1', keyIndex::jump, true));
    float highest = 0.0f;
    EXPECT_TRUE(match.waitForState([&](const UpdateMessage&) {
        highest = std::max(highest, ann.seen('1')->position.y);
        return highest > 200.0f && stands(*ann.seen('1'));
    })) << "jumps and lands";
    EXPECT_NEAR(highest, 139.25f + 138.0f, 1.0f);

    ASSERT_TRUE(match.aim('2'));
    match.deeIsSilent = true;
    // Whatever is heard, however late, has happened after this.
    const auto fired = Clock::now();
    ann.send(keyDatagram('1', keyIndex::shoot, true));
    const std::string notice = "tsBartholomew soaked Christopher";
    ASSERT_EQ(notice.size(), 32u);
    EXPECT_TRUE(ann.waitForDatagram(notice)) << "cut to its first 30 characters";
    ann.send(keyDatagram('1', keyIndex::shoot, false));
    EXPECT_TRUE(match.server.waitForLine("Bartholomew soaked Christopher!")) << "printed whole";
    ASSERT_TRUE(
        match.waitForState([&](const UpdateMessage&) { return ann.seen('2')->points == -1; }));
    EXPECT_GE(ann.seen('1')->points, 1);
    EXPECT_EQ(ann.seen('2')->position.x, -1375.2f);
    EXPECT_EQ(ann.seen('2')->position.y, 797.701f);
    EXPECT_EQ(ann.seen('2')->position.z, -1280.61f);

    ASSERT_TRUE(match.waitForState([&](const UpdateMessage&) {
        return ann.seen('2')->position.x > 0.0f;
    })) << "respawns";
    EXPECT_GE(Clock::now() - fired, std::chrono::milliseconds(3900));

    EXPECT_TRUE(match.waitForState([&](const UpdateMessage&) { return !ann.seen('4'); }))
        << "the silent one is dropped";
    EXPECT_TRUE(match.server.waitForLine("Dee disconnected"));

    match.cy.send(leaveDatagram('3'));
    EXPECT_TRUE(ann.waitForDatagram(noticeDatagram("Cy disconnected")));
    EXPECT_TRUE(match.waitForState([](const UpdateMessage& state) {
        return state.updates[0].id == '1' && state.updates[1].id == '2' && state.updates[2].id == 0;
    }));
}
