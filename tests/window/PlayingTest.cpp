#include "client/Records.h"
#include "src/Player.h"
#include "tests/window/Desk.h"

#include <cmath>
#include <csignal>

using client::isSoaked;

namespace {

/// How far the second point lies from the first along a direction, and beside it.
struct Way {
    double along;
    double aside;
};

Way wayBetween(const PlayerUpdate& from, vec3 to) {
    const vec3 moved = to - from.position;
    const double length = std::hypot(from.direction.x, from.direction.z);
    const double x = from.direction.x / length;
    const double z = from.direction.z / length;
    return {moved.x * x + moved.z * z, std::abs(moved.x * z - moved.z * x)};
}

} // namespace

TEST(WindowPlaying, KeysWalkAndLetGo) {
    Desk desk;
    desk.settle();
    const PlayerUpdate start = *desk.seen();
    desk.press("w");
    EXPECT_TRUE(desk.sees(
        [&](const PlayerUpdate& ann) { return wayBetween(start, ann.position).along > 60.0; }));
    desk.release("w");
    EXPECT_TRUE(desk.comesToRest());
    const PlayerUpdate there = *desk.seen();
    EXPECT_LT(wayBetween(start, there.position).aside, 1.0);
    desk.press("s");
    EXPECT_TRUE(desk.sees(
        [&](const PlayerUpdate& ann) { return wayBetween(there, ann.position).along < -60.0; }));
    desk.release("s");
    EXPECT_TRUE(desk.comesToRest());
}

TEST(WindowPlaying, TheMouseTurnsByItsVeryCounts) {
    Desk desk;
    desk.settle();
    for (const int counts : {90, -250}) {
        const vec3 before = desk.seen()->direction;
        desk.moveMouse(counts, 0);
        const double wanted = counts / Player::countsPerRadian;
        EXPECT_TRUE(desk.sees([&](const PlayerUpdate& ann) {
            return std::abs(turnRight(before, ann.direction) - wanted) < 1e-3;
        })) << counts;
    }
    const float level = desk.seen()->direction.y;
    desk.moveMouse(0, 72);
    EXPECT_TRUE(desk.sees([&](const PlayerUpdate& ann) { return ann.direction.y < level - 0.15f; }))
        << "down";
}

TEST(WindowPlaying, SpaceJumpsOnce) {
    Desk desk;
    desk.settle();
    const float ground = desk.seen()->position.y;
    desk.tap("space");
    EXPECT_TRUE(desk.sees([&](const PlayerUpdate& ann) { return ann.position.y > ground + 100; }));
    EXPECT_TRUE(desk.comesToRest());
    EXPECT_NEAR(desk.seen()->position.y, ground, 1.0f);
}

TEST(WindowPlaying, TheLeftButtonFiresAsLongAsItIsDown) {
    Desk desk;
    desk.settle();
    desk.pressButton(1);
    EXPECT_TRUE(desk.sees([](const PlayerUpdate& ann) { return ann.shooting; }));
    desk.releaseButton(1);
    EXPECT_TRUE(desk.sees([](const PlayerUpdate& ann) { return !ann.shooting; }));
}

TEST(WindowPlaying, AShotSoaksWhoeverStandsThere) {
    Desk desk;
    desk.settle();
    // Both may have come to the same place.
    desk.keepWatcherAway(200.0f);
    ASSERT_TRUE(desk.aimAt(desk.seenWatcher().position));
    desk.pressButton(1);
    EXPECT_TRUE(desk.sees(
        [&](const PlayerUpdate& ann) { return ann.points == 1 && isSoaked(desk.seenWatcher()); }));
    desk.releaseButton(1);
    EXPECT_TRUE(desk.sees([](const PlayerUpdate& ann) { return !ann.shooting; }));
    EXPECT_EQ(desk.seen()->points, 1);
}

TEST(WindowPlaying, ASignalEndsItAndItsPlayerLeavesAtOnce) {
    Desk desk;
    desk.settle();
    desk.window.signal(SIGTERM);
    EXPECT_EQ(desk.window.status(), 0);
    EXPECT_EQ(desk.window.err(), "");
    EXPECT_TRUE(desk.seesLeave(2000)) << "long before it would be dropped";
}
