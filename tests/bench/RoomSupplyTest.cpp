#include "bench/RoomSupply.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

using namespace drench;
using bench::RoomSupply;
using bench::supplyRooms;
using bench::Waiting;

namespace {

std::function<double(Chance&)> always(double seconds) {
    return [=](Chance&) { return seconds; };
}

std::function<double(Chance&)> exponential(double mean) {
    return [=](Chance& chance) { return -mean * std::log(1.0 - chance.share()); };
}

} // namespace

TEST(RoomSupply, ErlangsFormulaGivesItsPublishedValues) {
    // One server is busy as often as its load; two, by the formula's own terms: a^2 / (2 + a) at a
    // = 1.
    EXPECT_NEAR(bench::erlangC(1, 0.6), 0.6, 1e-12);
    EXPECT_NEAR(bench::erlangC(2, 1.0), 1.0 / 3.0, 1e-12);
}

TEST(RoomSupply, SharesWhoWaitAreErlangsWhereTheAutoscalerLooksAtOnce) {
    // Each spare is then a server, busy from the moment when its room is taken until the next is
    // ready.
    for (const int spares : {6, 8, 12}) {
        const RoomSupply supply = {
            .spares = spares, .syncPeriod = 0.01, .startTime = exponential(5.0)};
        const double share = supplyRooms(supply, 100'000.0, Chance(1)).shareWhoWait();
        EXPECT_NEAR(share, bench::erlangC(spares, 5.0), 0.02) << spares;
    }
}

TEST(RoomSupply, GroupsComeAtTheirRateAndInARushMoreOften) {
    RoomSupply supply = {.spares = 1, .startTime = always(1.0), .groupRate = 2.0};
    EXPECT_NEAR(double(supplyRooms(supply, 10'000.0, Chance(2)).waits.size()), 20'000.0, 500.0);
    supply.rushStart = 1000.0;
    supply.rushLength = 1000.0;
    supply.rushFactor = 5.0;
    EXPECT_NEAR(double(supplyRooms(supply, 10'000.0, Chance(2)).waits.size()), 28'000.0, 600.0);
}

TEST(RoomSupply, NobodyWaitsWhereMoreRoomsAreReadyThanGroupsCome) {
    const RoomSupply supply = {.spares = 500, .startTime = always(1000.0)};
    const Waiting waiting = supplyRooms(supply, 300.0, Chance(3));
    EXPECT_GT(waiting.waits.size(), 200u);
    EXPECT_EQ(waiting.shareWhoWait(), 0.0);
    EXPECT_EQ(waiting.mostAtOnce, 0u);
}

TEST(RoomSupply, NoMoreRoomsComeThanTheSparesAllowHoweverManyWait) {
    // The autoscaler counts rooms, not groups: ten spares give ten rooms in each look and start.
    const RoomSupply supply = {
        .spares = 10, .syncPeriod = 10.0, .startTime = always(9.0), .groupRate = 5.0};
    const Waiting waiting = supplyRooms(supply, 1000.0, Chance(4));
    const auto served = double(waiting.waits.size()) - double(waiting.mostAtOnce);
    EXPECT_NEAR(served, 10.0 * 1000.0 / 10.0, 20.0);
}

TEST(RoomSupply, AGroupWaitsForTheNextLookAndTheStart) {
    // All come in the first seconds. The second gets the room that the look at 10 s starts, the
    // third that of the look at 20 s.
    const RoomSupply supply = {
        .spares = 1, .syncPeriod = 10.0, .startTime = always(5.0), .groupRate = 10.0};
    const Waiting waiting = supplyRooms(supply, 25.5, Chance(5));
    ASSERT_GE(waiting.waits.size(), 4u);
    EXPECT_EQ(waiting.waits[0], 0.0);
    EXPECT_NEAR(waiting.waits[1], 14.5, 0.5);
    EXPECT_NEAR(waiting.waits[2], 24.5, 0.5);
    // The fourth still waits at the end.
    EXPECT_NEAR(waiting.waits[3], 25.0, 0.5);
}

TEST(RoomSupply, MoreSparesMeetTheSameGroups) {
    const RoomSupply few = {.spares = 2, .startTime = exponential(5.0)};
    const RoomSupply many = {.spares = 50, .startTime = exponential(5.0)};
    EXPECT_EQ(supplyRooms(few, 1000.0, Chance(8)).waits.size(),
              supplyRooms(many, 1000.0, Chance(8)).waits.size());
}

TEST(RoomSupply, TheSameSeedGivesTheSameWaits) {
    const RoomSupply supply = {.spares = 12, .startTime = exponential(5.0)};
    EXPECT_EQ(supplyRooms(supply, 1000.0, Chance(6)).waits,
              supplyRooms(supply, 1000.0, Chance(6)).waits);
    EXPECT_NE(supplyRooms(supply, 1000.0, Chance(6)).waits,
              supplyRooms(supply, 1000.0, Chance(7)).waits);
}
