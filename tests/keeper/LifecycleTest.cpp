#include "keeper/Lifecycle.h"

#include <gtest/gtest.h>

using namespace drench::keeper;
using std::chrono::seconds;

namespace {

const Time start = Time() + seconds(1'000'000);
constexpr seconds day{86'400};

/// A room that has been empty since its start.
Situation emptyRoom() {
    return {.started = start, .emptySince = start, .allocatedSince = {}, .stopAskedAt = {}};
}

Situation playedRoom() {
    Situation situation = emptyRoom();
    situation.emptySince.reset();
    return situation;
}

} // namespace

TEST(Lifecycle, GoesOnWhileNothingIsDue) {
    const Policy policy;
    EXPECT_EQ(endingDue(emptyRoom(), policy, start), Ending::none);
    EXPECT_EQ(endingDue(emptyRoom(), policy, start + day - seconds(1)), Ending::none);
    EXPECT_EQ(endingDue(playedRoom(), policy, start + 3 * day), Ending::none);
}

TEST(Lifecycle, OldRoomEndsInItsFirstEmptyMinute) {
    const Policy policy;
    EXPECT_EQ(endingDue(emptyRoom(), policy, start + day), Ending::aged);
    Situation situation = playedRoom();
    const Time left = start + day + seconds(500);
    EXPECT_EQ(endingDue(situation, policy, left), Ending::none);
    situation.emptySince = left;
    EXPECT_EQ(endingDue(situation, policy, left + seconds(59)), Ending::none);
    EXPECT_EQ(endingDue(situation, policy, left + seconds(60)), Ending::aged);
}

TEST(Lifecycle, AgeAndQuietTimeAreTheHosts) {
    Policy policy;
    policy.oldAge = seconds(10);
    policy.quietTime = seconds(2);
    Situation situation = emptyRoom();
    situation.emptySince = start + seconds(9);
    EXPECT_EQ(endingDue(situation, policy, start + seconds(10)), Ending::none);
    EXPECT_EQ(endingDue(situation, policy, start + seconds(11)), Ending::aged);
    policy.oldAge.reset();
    EXPECT_EQ(endingDue(situation, policy, start + 100 * day), Ending::none);
}

TEST(Lifecycle, StopWaitsForPlayersUpToTheLimit) {
    Policy policy;
    policy.waitForPlayers = seconds(30);
    Situation situation = playedRoom();
    situation.stopAskedAt = start + seconds(5);
    EXPECT_EQ(endingDue(situation, policy, start + seconds(34)), Ending::none);
    EXPECT_EQ(endingDue(situation, policy, start + seconds(35)), Ending::stoppedWithPlayers);
    situation.emptySince = start + seconds(20);
    EXPECT_EQ(endingDue(situation, policy, start + seconds(20)), Ending::stopped);
}

TEST(Lifecycle, AllocatedRoomEndsWhenItIsUnused) {
    Policy policy;
    policy.longestUnused = seconds(120);
    Situation situation = emptyRoom();
    EXPECT_EQ(endingDue(situation, policy, start + seconds(5000)), Ending::none)
        << "a spare room waits for its allocation";
    situation.allocatedSince = start + seconds(4000);
    EXPECT_EQ(endingDue(situation, policy, start + seconds(4119)), Ending::none)
        << "players need time to arrive";
    EXPECT_EQ(endingDue(situation, policy, start + seconds(4120)), Ending::unused);
    situation.emptySince = start + seconds(4500);
    EXPECT_EQ(endingDue(situation, policy, start + seconds(4619)), Ending::none);
    EXPECT_EQ(endingDue(situation, policy, start + seconds(4620)), Ending::unused);
    situation.emptySince.reset();
    EXPECT_EQ(endingDue(situation, policy, start + seconds(9000)), Ending::none);
    situation.emptySince = start + seconds(4500);
    policy.longestUnused.reset();
    EXPECT_EQ(endingDue(situation, policy, start + seconds(9000)), Ending::none);
}

TEST(Lifecycle, AllocationKeepsAnOldRoomForThoseWhoCome) {
    Policy policy;
    policy.longestUnused = seconds(600);
    Situation situation = emptyRoom();
    situation.allocatedSince = start + day + seconds(10);
    EXPECT_EQ(endingDue(situation, policy, start + day + seconds(69)), Ending::none);
    EXPECT_EQ(endingDue(situation, policy, start + day + seconds(70)), Ending::aged);
}

TEST(Lifecycle, RoomStartsAgainAsTheHostChose) {
    Policy policy;
    Situation situation = emptyRoom();
    EXPECT_TRUE(startsAgain(Ending::none, situation, policy));
    EXPECT_TRUE(startsAgain(Ending::aged, situation, policy));
    EXPECT_FALSE(startsAgain(Ending::unused, situation, policy));
    situation.stopAskedAt = start;
    EXPECT_FALSE(startsAgain(Ending::none, situation, policy));
    EXPECT_FALSE(startsAgain(Ending::stopped, situation, policy));
    situation.stopAskedAt.reset();
    policy.startAgain = false;
    EXPECT_FALSE(startsAgain(Ending::none, situation, policy));
    EXPECT_FALSE(startsAgain(Ending::aged, situation, policy));
}

TEST(RestartPause, GrowsWithEachShortLifeAndIsForgottenAfterALongOne) {
    RestartPause pause;
    const seconds shortly(1);
    for (const int expected : {200, 400, 800, 1600, 3200, 5000, 5000})
        EXPECT_EQ(pause.after(shortly), milliseconds(expected));
    EXPECT_EQ(pause.after(seconds(10)), milliseconds(200));
    EXPECT_EQ(pause.after(shortly), milliseconds(400));
}
