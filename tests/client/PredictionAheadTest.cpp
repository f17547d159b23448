#include "client/PredictionAhead.h"
#include "common/Chance.h"
#include "src/FileLoader.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace drench::client;

namespace {

constexpr Milliseconds period = 16.0;
constexpr Milliseconds delay = 80.0;

SentRecord viewAt(Milliseconds sentAt, int dx) {
    SentRecord record;
    record.sentAt = sentAt;
    record.isView = true;
    record.dx = dx;
    return record;
}

SentRecord keyAt(Milliseconds sentAt, int key, bool isDown = true) {
    SentRecord record;
    record.sentAt = sentAt;
    record.key = key;
    record.isDown = isDown;
    return record;
}

/// A player who stands in the arena, and a line that takes records 80 ms to act.
class PredictsAhead : public testing::Test {
  protected:
    PredictsAhead() {
        map_.init(fileStringContents(DRENCH_MAPDATA));
        explained_.player = Player('1', "Ann", 0.0f, 5);
        explained_.player.setMapMan(&map_);
        for (int tick = 0; tick < 100; ++tick)
            explained_.player.update(0.0f);
        line_.arrival(0, -1, 0.0, period);
        line_.guessDelay(delay);
    }

    /// Lets the room take what acts in the next tick, whose snapshot comes `late`.
    void passTick(Milliseconds late = 0.0) {
        while (explained_.next < records_.end() &&
               line_.actsAfter(records_[explained_.next].sentAt) <= 1.0)
            records_[explained_.next++].actOn(explained_.player);
        explained_.player.update(0.0f);
        ++ticks_;
        line_.arrival(ticks_, ticks_ - 1, static_cast<double>(ticks_) * period + late, period);
    }

    /// What one that was not there before predicts.
    PredictionAhead::Moment anew(Milliseconds now) const {
        PredictionAhead ahead;
        ahead.follow(explained_, records_, line_, now);
        return ahead.at(records_, line_, now);
    }

    MapManager map_;
    Hypothesis explained_;
    SentRecords records_;
    ArrivalLine line_;
    std::int64_t ticks_ = 0;
    PredictionAhead ahead_;
};

} // namespace

TEST_F(PredictsAhead, TheTickInWhichARecordActs) {
    for (const auto& [now, tick] : {std::pair(0.0, 5), {0.1, 6}, {15.9, 6}, {16.1, 7}}) {
        const PredictionAhead::Moment moment = anew(now);
        EXPECT_EQ(moment.tick, tick) << now;
        EXPECT_NEAR(moment.drawnTick, 5.0 + now / period, 1e-9);
    }
    EXPECT_EQ(anew(-500.0).tick, 1);
    EXPECT_EQ(anew(1e6).tick, 64);
}

TEST_F(PredictsAhead, RecordsInTheTicksInWhichTheyAct) {
    records_.add(keyAt(-70.0, keyIndex::forward));
    records_.add(viewAt(-20.0, 90));
    records_.add(keyAt(-19.0, keyIndex::forward, false));
    Player expected = explained_.player;
    for (int tick = 1; tick <= 6; ++tick) {
        if (tick == 1)
            records_[0].actOn(expected);
        if (tick == 4) {
            records_[1].actOn(expected);
            records_[2].actOn(expected);
        }
        expected.update(0.0f);
    }
    EXPECT_TRUE(sameFuture(anew(10.0).player, expected));
}

TEST_F(PredictsAhead, LaterRecordsInTheLastTickThatIsPredicted) {
    records_.add(viewAt(2000.0, 90));
    Player expected = explained_.player;
    for (int tick = 1; tick <= 64; ++tick) {
        if (tick == 64)
            records_[0].actOn(expected);
        expected.update(0.0f);
    }
    EXPECT_TRUE(sameFuture(anew(2000.0).player, expected));
    EXPECT_LT(anew(2000.0).drawnTick, 64.1);
}

TEST_F(PredictsAhead, TheEyeBetweenTwoTicks) {
    explained_.player.keys[keyIndex::forward] = true;
    Player before = explained_.player;
    for (int tick = 1; tick <= 5; ++tick)
        before.update(0.0f);
    Player after = before;
    after.update(0.0f);
    const vec3 expected = before.position + (after.position - before.position) * 0.25f;
    EXPECT_LT((anew(4.0).eye - expected).length(), 1e-3f);
    EXPECT_LT((anew(0.0).eye - before.position).length(), 1e-3f);
    // Drawn ticks before the explained one are where the player would have come from.
    const vec3 step = after.position - before.position;
    EXPECT_LT((anew(-84.0).eye - (explained_.player.position - step * 0.25f)).length(), 1e-2f);
    EXPECT_LT((anew(-500.0).eye - (explained_.player.position - step)).length(), 1e-2f);
}

TEST_F(PredictsAhead, TheSameFromStepToStepAsAnew) {
    Chance chance(3);
    bool held = false;
    for (int step = 0; step < 3000; ++step) {
        const Milliseconds now = step * 8.0;
        if (step % 2 == 0 && step > 0)
            passTick(chance.happens(0.1) ? chance.between(0.0, 6.0) : 0.0);
        if (chance.happens(0.1))
            line_.guessDelay(delay + chance.between(-20.0, 20.0));
        if (chance.happens(0.8))
            records_.add(viewAt(now, chance.below(21) - 10));
        if (chance.happens(0.1))
            records_.add(keyAt(now, keyIndex::forward, held = !held));
        if (chance.happens(0.03))
            records_.add(keyAt(now, keyIndex::jump));
        // Once in a while something else is explained than was predicted.
        if (chance.happens(0.02))
            explained_.player.verticalSpeed += 1.0f;
        if (chance.happens(0.02) && explained_.next < records_.end())
            ++explained_.next;
        records_.forgetBefore(explained_.next);
        ahead_.follow(explained_, records_, line_, now);
        for (const Milliseconds later : {0.0, 3.0, 40.0}) {
            const PredictionAhead::Moment moment = ahead_.at(records_, line_, now + later);
            PredictionAhead fresh;
            fresh.follow(explained_, records_, line_, now);
            const PredictionAhead::Moment expected = fresh.at(records_, line_, now + later);
            ASSERT_TRUE(sameFuture(moment.player, expected.player)) << step;
            ASSERT_EQ(moment.tick, expected.tick) << step;
            ASSERT_EQ(moment.eye.x, expected.eye.x) << step;
            ASSERT_EQ(moment.eye.y, expected.eye.y) << step;
            ASSERT_EQ(moment.eye.z, expected.eye.z) << step;
            ASSERT_EQ(moment.drawnTick, expected.drawnTick) << step;
        }
    }
}
