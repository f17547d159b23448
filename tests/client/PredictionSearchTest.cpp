#include "client/PredictionSearch.h"
#include "client/PredictionStart.h"
#include "src/FileLoader.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::client;

namespace {

constexpr Milliseconds period = 16.0;
constexpr Milliseconds delay = 50.0;

/// A walking player in the arena, on a line that is known well: its spread is 1.5 ms.
class Searching : public testing::Test {
  protected:
    Searching() {
        map_.init(fileStringContents(DRENCH_MAPDATA));
        truth_ = Player('1', "Ann", 0.0f, 5);
        truth_.setMapMan(&map_);
        for (int tick = 0; tick < 100; ++tick)
            truth_.update(0.0f);
        truth_.keys[keyIndex::forward] = true;
        for (int tick = 0; tick < 400; ++tick) {
            now_ += period;
            line_.arrival(tick, tick - 1, now_, period);
            line_.acted(now_ - delay - (tick * 7 % 16 + 0.5));
        }
        explained_.resize(1);
        explained_[0].player = truth_;
    }

    /// A view that is expected to act `late` milliseconds before the end of the next tick.
    void send(int dx, Milliseconds late = 8.0) {
        SentRecord record;
        record.sentAt = now_ + period - late - line_.delay();
        record.isView = true;
        record.dx = dx;
        records_.add(record);
    }

    void tick(const std::vector<std::uint64_t>& acting = {}) {
        for (const std::uint64_t number : acting)
            records_[number].actOn(truth_);
        truth_.update(0.0f);
    }

    /// The snapshot comes when that of the tick `ticks` after the last is due.
    Evidence evidence(int ticks = 1) {
        seen_ = truth_.getPlayerUpdate();
        return {seen_, records_, line_, now_ + ticks * period, period};
    }

    MapManager map_;
    Player truth_ = Player('1', nullptr, 0.0f, 0);
    ArrivalLine line_;
    SentRecords records_;
    std::vector<Hypothesis> explained_;
    PlayerUpdate seen_;
    Milliseconds now_ = 1e6;
};

bool isSameVector(const vec3& a, const vec3& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

} // namespace

TEST_F(Searching, GuessesTheTicksByTheArrival) {
    ASSERT_EQ(line_.spread(), 1.5);
    EXPECT_EQ(likelyTicks(evidence(1)), 1);
    EXPECT_EQ(likelyTicks(evidence(7)), 7);
    Evidence between = evidence(7);
    between.arrival += 0.4 * period;
    EXPECT_EQ(likelyTicks(between), 7);
    between.arrival += 0.2 * period;
    EXPECT_EQ(likelyTicks(between), 8);
    between.arrival = now_ - 5.0;
    EXPECT_EQ(likelyTicks(between), 1);
    EXPECT_EQ(likelyTicks({seen_, records_, ArrivalLine(), now_, period}), 1);
}

TEST_F(Searching, PricesGapsAndArrivals) {
    EXPECT_DOUBLE_EQ(timesAfter(evidence(1), 1).cost, 0.0);
    EXPECT_DOUBLE_EQ(timesAfter(evidence(2), 2).cost, 3.5);
    EXPECT_DOUBLE_EQ(timesAfter(evidence(5), 5).cost, 5.0);
    EXPECT_DOUBLE_EQ(timesAfter(evidence(2), 1).cost, 7.0) << "the room was late";
    const double deviations = period / line_.latenessSpread();
    EXPECT_DOUBLE_EQ(timesAfter(evidence(1), 2).cost, 3.5 + deviations * deviations / 2.0);
    EXPECT_DOUBLE_EQ(timesAfter(evidence(3), 3).due, now_ + 3 * period);
    EXPECT_DOUBLE_EQ(timesAfter(evidence(2), 3).due, now_ + 2 * period);
}

TEST_F(Searching, LosesUpToFourViews) {
    for (int lost = 0; lost <= 5; ++lost) {
        records_ = {};
        truth_ = explained_[0].player;
        // No two choices of these have the same sum.
        for (int number = 0; number <= lost + 1; ++number)
            send((6 << number) - 1);
        tick({0, static_cast<std::uint64_t>(lost + 1)});
        const std::vector<Hypothesis> found = continueExactly(explained_, evidence(), false);
        ASSERT_EQ(found.size(), lost <= 4 ? 1u : 0u) << lost;
        if (lost <= 4) {
            EXPECT_EQ(found[0].lost.size(), static_cast<std::size_t>(lost));
        }
        EXPECT_EQ(continueClosely(explained_, evidence(), false).size(), lost <= 2 ? 1u : 0u)
            << lost;
    }
}

TEST_F(Searching, LetsRecordsActAQuarterOfASecondFromTheirTimeAtMost) {
    for (const auto& [late, isFound] : {std::pair(-240.0, true),
                                        {-260.0, false},
                                        {-7.0, true},
                                        {20.0, true},
                                        {30.0, true},
                                        {250.0, true}}) {
        records_ = {};
        truth_ = explained_[0].player;
        send(5, late);
        tick({0});
        const std::vector<Hypothesis> found = continueExactly(explained_, evidence(), false);
        EXPECT_EQ(!found.empty(), isFound) << late;
    }
}

TEST_F(Searching, IsCloseOnlyWithRecordsNearTheirTime) {
    for (const auto& [late, isFound] :
         {std::pair(-6.0, true), {-7.0, false}, {22.0, true}, {23.0, false}}) {
        records_ = {};
        truth_ = explained_[0].player;
        send(5, late);
        tick({0});
        EXPECT_EQ(!continueClosely(explained_, evidence(), false).empty(), isFound) << late;
    }
}

TEST_F(Searching, KeepsBothALossAndAHold) {
    send(5, 30.0);
    send(5, 8.0);
    tick({0});
    const std::vector<Hypothesis> found = continueExactly(explained_, evidence(), false);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_NE(found[0].next, found[1].next);
}

TEST_F(Searching, TriesTwoTicksMoreOrFewer) {
    for (int ticks = 1; ticks <= 8; ++ticks) {
        tick();
        const std::vector<Hypothesis> found = continueExactly(explained_, evidence(4), false);
        ASSERT_EQ(found.size(), ticks <= 6 ? 1u : 0u) << ticks;
        if (ticks <= 6) {
            EXPECT_EQ(found[0].ticks, ticks);
        }
        // A snapshot that comes much too early is for bold searches.
        EXPECT_EQ(continueClosely(explained_, evidence(4), false).size(),
                  ticks >= 2 && ticks <= 4 ? 1u : 0u)
            << ticks;
    }
}

TEST_F(Searching, TriesFewerTicksIfTheRoomWasHeldUp) {
    tick();
    for (const int late : {3, 4, 10, 24, 25}) {
        const std::vector<Hypothesis> found = continueExactly(explained_, evidence(late), false);
        ASSERT_EQ(found.size(), late <= 24 ? 1u : 0u) << late;
        if (late <= 24) {
            EXPECT_EQ(found[0].ticks, 1);
        }
    }
    for (int ticks = 2; ticks <= 24; ++ticks)
        tick();
    EXPECT_EQ(continueExactly(explained_, evidence(24), false).size(), 1u);
    EXPECT_EQ(continueClosely(explained_, evidence(24), false).size(), 1u);
    EXPECT_TRUE(continueExactly(explained_, evidence(25), false).empty());
    EXPECT_TRUE(continueClosely(explained_, evidence(25), false).empty());
}

TEST_F(Searching, LetsThePlayerSitOutATickOnlyIfItMayHave) {
    const Player before = truth_;
    for (const bool mayHave : {false, true}) {
        EXPECT_EQ(!continueExactly(explained_, evidence(), mayHave).empty(), mayHave);
        EXPECT_EQ(!continueClosely(explained_, evidence(), mayHave).empty(), mayHave);
    }
    EXPECT_TRUE(sameFuture(before, truth_));
}

TEST_F(Searching, EndsWithinABudget) {
    for (int number = 0; number < 40; ++number)
        send(number % 2 == 0 ? 3 : -3);
    tick();
    seen_ = truth_.getPlayerUpdate();
    seen_.position.x += 5.0f;
    const Evidence nothing = {seen_, records_, line_, now_ + period, period};
    int budget = 10'000;
    const std::vector<Departure> departures = {{timesAfter(nothing, 1), explained_}};
    EXPECT_TRUE(search(nothing, departures, false, budget).empty());
    EXPECT_LT(budget, 1000);
    EXPECT_GE(budget, 0);
}

TEST_F(Searching, StartsWithWhatIsSeenToTheBit) {
    seen_ = truth_.getPlayerUpdate();
    // Of no unit length, as rounding leaves it.
    seen_.direction = seen_.direction * 1.0001f;
    seen_.shooting = true;
    send(5);
    for (const bool hasBefore : {false, true}) {
        const std::vector<Hypothesis> starts = startsAtSight(
            map_, {seen_, records_, line_, now_ + 3 * period, period}, 100,
            hasBefore ? std::optional(explained_[0].player.getPlayerUpdate()) : std::nullopt,
            &explained_[0]);
        ASSERT_FALSE(starts.empty());
        for (const Hypothesis& start : starts) {
            EXPECT_TRUE(isSeen(start.player, seen_));
            EXPECT_TRUE(isSameVector(start.player.look, seen_.position + seen_.direction));
            EXPECT_TRUE(start.player.isShooting());
            EXPECT_TRUE(start.player.keys[keyIndex::forward]);
            EXPECT_EQ(start.tick, 103);
            EXPECT_EQ(start.ticks, 3);
        }
        const auto inAir = [](const Hypothesis& start) { return start.player.inAir; };
        EXPECT_EQ(std::any_of(starts.begin(), starts.end(), inAir), hasBefore);
        EXPECT_FALSE(std::all_of(starts.begin(), starts.end(), inAir));
    }
}

TEST_F(Searching, StartsAtEachSpawnInTheTickOfTheSnapshot) {
    for (int pose = 0; pose < Player::spawnPoseCount; ++pose) {
        truth_ = Player('1', "Ann", 0.0f, pose);
        truth_.setMapMan(&map_);
        for (int moved = 0; moved <= 6; ++moved) {
            const std::vector<Hypothesis> starts = startsAtSpawn(map_, evidence(4), 100);
            ASSERT_FALSE(starts.empty()) << pose << " " << moved;
            // A spawn between two snapshots, and one before the last.
            EXPECT_EQ(starts[0].tick, 100 + std::max(4, moved)) << pose << " " << moved;
            EXPECT_TRUE(sameFuture(starts[0].player, truth_));
            truth_.update(0.0f);
        }
        EXPECT_TRUE(startsAtSpawn(map_, evidence(4), 100).empty()) << "two ticks more at most";
    }
}

TEST_F(Searching, StartsAtNoSpawnFarAway) {
    EXPECT_TRUE(startsAtSpawn(map_, evidence(1), 100).empty());
    truth_ = Player('1', "Ann", 0.0f, 5);
    truth_.moveAll({1.0f, 0.0f, 0.0f}, 1.0f);
    EXPECT_TRUE(startsAtSpawn(map_, evidence(1), 100).empty());
}

TEST_F(Searching, StartsInTheAirWithTheSpeedOfAFall) {
    truth_.moveAll({0.0f, 300.0f, 0.0f}, 1.0f);
    truth_.inAir = true;
    truth_.verticalSpeed = 2.0f;
    const PlayerUpdate before = truth_.getPlayerUpdate();
    for (int ticks = 1; ticks <= 4; ++ticks) {
        tick();
        const std::vector<Hypothesis> starts =
            startsAtSight(map_, evidence(ticks), 0, before, &explained_[0]);
        EXPECT_TRUE(std::any_of(starts.begin(), starts.end(), [&](const Hypothesis& start) {
            return start.player.inAir && start.player.verticalSpeed == truth_.verticalSpeed;
        })) << ticks;
    }
}

TEST_F(Searching, GuessesEveryWalkFromOneStep) {
    constexpr int walkKeys[] = {keyIndex::right, keyIndex::left, keyIndex::backward,
                                keyIndex::forward};
    for (int held = 0; held < 16; ++held) {
        for (int walked = 0; walked < 16; ++walked) {
            truth_ = explained_[0].player;
            Hypothesis believed = explained_[0];
            for (int i = 0; i < 4; ++i) {
                believed.player.keys[walkKeys[i]] = (held >> i & 1) != 0;
                truth_.keys[walkKeys[i]] = (walked >> i & 1) != 0;
            }
            const PlayerUpdate before = truth_.getPlayerUpdate();
            tick();
            const std::vector<Hypothesis> starts =
                startsAtSight(map_, evidence(), 0, before, &believed);
            ASSERT_FALSE(starts.empty());
            const Player& guessed = starts.front().player;
            const auto sideways = [](const bool* keys) {
                return int{keys[keyIndex::left]} - int{keys[keyIndex::right]};
            };
            const auto onward = [](const bool* keys) {
                return int{keys[keyIndex::forward]} - int{keys[keyIndex::backward]};
            };
            EXPECT_EQ(sideways(guessed.keys), sideways(truth_.keys)) << held << " " << walked;
            EXPECT_EQ(onward(guessed.keys), onward(truth_.keys)) << held << " " << walked;
            // Where the step leaves a choice, the keys stay as they were.
            if (sideways(believed.player.keys) == sideways(truth_.keys)) {
                EXPECT_EQ(guessed.keys[keyIndex::left], believed.player.keys[keyIndex::left]);
            }
            if (onward(believed.player.keys) == onward(truth_.keys)) {
                EXPECT_EQ(guessed.keys[keyIndex::forward], believed.player.keys[keyIndex::forward]);
            }
        }
    }
}
