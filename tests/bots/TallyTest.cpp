#include "bots/Tally.h"
#include "src/Player.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

using namespace drench;

using bots::Scorer;
using std::chrono::milliseconds;

namespace {

PlayerUpdate at(float x, std::int32_t points = 0, bool shooting = false) {
    PlayerUpdate player;
    player.id = '1';
    player.position = vec3(x, 0.0f, 0.0f);
    player.points = points;
    player.shooting = shooting;
    return player;
}

PlayerUpdate soaked(std::int32_t points = 0) {
    Player player;
    player.die(0.0f);
    PlayerUpdate update = player.getPlayerUpdate();
    update.points = points;
    return update;
}

/// A scorer who sees snapshots 16 ms apart, none missing unless the test says so.
struct Watched {
    Scorer scorer;
    std::int64_t tick = 0;
    std::uint64_t missed = 0;

    Watched() { scorer.join(); }
    void miss(int snapshots) {
        tick += snapshots;
        missed += static_cast<std::uint64_t>(snapshots);
    }
    void see(const PlayerUpdate& self) {
        scorer.see(self, missed, client::Time(milliseconds(16 * tick)));
        ++tick;
    }
    const bots::Tally& tally() const { return scorer.tally(); }
};

} // namespace

TEST(Tally, DistanceIsTheWayOfTheLiving) {
    Watched player;
    player.see(at(0.0f));
    player.see(at(6.0f));
    player.see(at(2.0f));
    EXPECT_DOUBLE_EQ(player.tally().distance, 10.0);
    player.see(soaked(-1));
    player.see(soaked(-1));
    player.see(at(1000.0f, -1));
    player.see(at(1003.0f, -1));
    EXPECT_DOUBLE_EQ(player.tally().distance, 13.0);
}

TEST(Tally, SoakingEarnsAPoint) {
    Watched player;
    player.see(at(0.0f, 0));
    player.see(at(0.0f, 1));
    player.see(at(0.0f, 1));
    player.see(at(0.0f, 3));
    EXPECT_EQ(player.tally().soaks, 3);
    EXPECT_EQ(player.tally().deaths, 0);
}

TEST(Tally, DeathIsCountedOnceAndCostsAPoint) {
    Watched player;
    player.see(at(0.0f, 0));
    for (int i = 0; i < 250; ++i)
        player.see(soaked(-1));
    player.see(at(0.0f, -1));
    player.see(soaked(-2));
    EXPECT_EQ(player.tally().deaths, 2);
    EXPECT_EQ(player.tally().soaks, 0);
}

TEST(Tally, SoakingAndDeathInOneTickAreBothCounted) {
    Watched player;
    player.see(at(0.0f, 5));
    player.see(soaked(5));
    EXPECT_EQ(player.tally().soaks, 1);
    EXPECT_EQ(player.tally().deaths, 1);
}

TEST(Tally, PointsAndPoseFromBeforeJoiningDoNotCount) {
    Watched player;
    player.see(soaked(7));
    player.see(soaked(7));
    EXPECT_EQ(player.tally().soaks, 0);
    EXPECT_EQ(player.tally().deaths, 0);
}

TEST(Tally, JoiningAgainStartsFromThere) {
    Watched player;
    player.miss(3);
    player.see(at(0.0f, 4, true));
    player.scorer.join();
    player.tick = 1000;
    player.missed = 2;
    player.see(at(500.0f, 0));
    EXPECT_EQ(player.tally().joined, 2);
    EXPECT_EQ(player.tally().soaks, 0);
    EXPECT_EQ(player.tally().distance, 0.0);
    EXPECT_EQ(player.tally().snapshots, 2u);
    EXPECT_EQ(player.tally().snapshotsMissed, 5u);
    EXPECT_EQ(player.tally().gaps.count(), 0u);
}

TEST(Tally, MissedSnapshotsCountUnlessTakenBack) {
    Watched player;
    player.see(at(0.0f));
    player.see(at(0.0f));
    player.miss(3);
    player.see(at(0.0f));
    EXPECT_EQ(player.tally().snapshots, 3u);
    EXPECT_EQ(player.tally().snapshotsMissed, 3u);
    EXPECT_EQ(player.tally().gaps.longest(), 64.0);
    player.missed -= 2;
    player.see(at(0.0f));
    EXPECT_EQ(player.tally().snapshotsMissed, 1u);
}

TEST(Tally, BurstLastsWhileTheFireKeyIsHeld) {
    Watched player;
    EXPECT_FALSE(player.tally().accuracy().has_value());
    player.see(at(0.0f, 0, true));
    player.see(at(0.0f, 0, true));
    player.see(at(0.0f, 0, false));
    player.see(at(0.0f, 0, true));
    player.see(at(0.0f, 0, true));
    EXPECT_EQ(player.tally().bursts, 2);
    EXPECT_EQ(player.tally().burstsThatSoaked, 0);
    EXPECT_EQ(player.tally().accuracy(), 0.0);
}

TEST(Tally, BurstCountsOnceHoweverManyItSoaks) {
    Watched player;
    player.see(at(0.0f, 0, true));
    player.see(at(0.0f, 1, true));
    player.see(at(0.0f, 2, true));
    EXPECT_EQ(player.tally().bursts, 1);
    EXPECT_EQ(player.tally().burstsThatSoaked, 1);
    EXPECT_EQ(player.tally().soaks, 2);
}

TEST(Tally, PointsThatShowAfterTheReleaseBelongToTheBurst) {
    Watched player;
    player.see(at(0.0f, 0, true));
    player.see(at(0.0f, 1, false));
    player.see(at(0.0f, 1, false));
    player.see(at(0.0f, 1, true));
    player.see(at(0.0f, 1, false));
    EXPECT_EQ(player.tally().bursts, 2);
    EXPECT_EQ(player.tally().burstsThatSoaked, 1);
    EXPECT_EQ(player.tally().accuracy(), 0.5);
}

TEST(Tally, BurstBetweenMissedSnapshotsIsInferredFromItsSoaking) {
    Watched player;
    player.see(at(0.0f, 0, false));
    player.miss(5);
    player.see(at(0.0f, 1, false));
    EXPECT_EQ(player.tally().bursts, 1);
    EXPECT_EQ(player.tally().burstsThatSoaked, 1);
    player.miss(5);
    player.see(at(0.0f, 2, true));
    EXPECT_EQ(player.tally().bursts, 2);
    EXPECT_EQ(player.tally().burstsThatSoaked, 2);
}

TEST(Tally, SumHoldsAllButTheRoundTrip) {
    Watched one;
    Watched other;
    one.see(at(0.0f, 0, true));
    one.see(at(6.0f, 1, true));
    other.see(at(0.0f, 0, true));
    other.miss(2);
    other.see(soaked(-1));
    one.scorer.measureRoundTrip(0.5);
    bots::Tally sum;
    sum.add(one.tally());
    sum.add(other.tally());
    EXPECT_EQ(sum.joined, 2);
    EXPECT_EQ(sum.soaks, 1);
    EXPECT_EQ(sum.deaths, 1);
    EXPECT_EQ(sum.bursts, 2);
    EXPECT_EQ(sum.burstsThatSoaked, 1);
    EXPECT_EQ(sum.distance, 6.0);
    EXPECT_EQ(sum.snapshots, 4u);
    EXPECT_EQ(sum.snapshotsMissed, 2u);
    EXPECT_EQ(sum.gaps.count(), 2u);
    EXPECT_FALSE(sum.roundTrip.has_value());
    EXPECT_EQ(one.tally().roundTrip, 0.5);
}

TEST(Tally, PositionsThatAreNoNumbersAddNoDistance) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    Watched player;
    player.see(at(0.0f));
    for (const float x : {nan, infinity, -infinity, 3e38f, -3e38f})
        player.see(at(x));
    player.see(at(0.0f));
    player.see(at(5.0f));
    EXPECT_TRUE(std::isfinite(player.tally().distance));
    EXPECT_EQ(player.tally().snapshots, 8u);
}

TEST(Tally, PointsAtTheirLimitsAreCounted) {
    Watched player;
    player.see(at(0.0f, INT32_MIN));
    player.see(at(0.0f, INT32_MAX));
    EXPECT_EQ(player.tally().soaks, 4294967295);
    player.see(at(0.0f, INT32_MIN));
    EXPECT_EQ(player.tally().soaks, 0);
}
