#include "bots/Hand.h"

#include "src/Player.h"

#include <cmath>
#include <deque>
#include <gtest/gtest.h>
#include <vector>

using namespace drench;

using bots::Hand;
using bots::Skill;
using bots::View;

namespace {

/// A hand on the mouse of a player whose view follows some ticks late.
struct Desk {
    Player player{'1', "Turner"};
    Hand hand;
    std::deque<Hand::Counts> underWay;

    Desk(double skill, std::uint64_t seed, std::size_t delay = 0)
        : hand(bots::skillOf(skill), Chance(seed)), underWay(delay) {
        look({0.0, 0.0});
    }

    void look(View view) {
        const vec3 centre(500.0f, 500.0f, 500.0f);
        player.placeAt(centre, centre + bots::directionOf(view));
    }

    View view() const { return bots::viewAlong(player.getDirection()); }

    /// One tick; counts that are `lost` never act.
    Hand::Counts tick(const Hand::Aim& aim, bool lost = false) {
        hand.feel(player.getDirection());
        const Hand::Counts counts = hand.move(aim);
        underWay.push_back(lost ? Hand::Counts{} : counts);
        player.rotateView(underWay.front().dx, underWay.front().dy);
        underWay.pop_front();
        return counts;
    }

    double miss(View aim) const { return bots::turnBetween(view(), aim).length(); }
};

/// Ticks until the view stays within some counts of the aim for a while.
int ticksToSettle(double skill, std::uint64_t seed, View aim, double within,
                  std::size_t delay = 0) {
    Desk desk(skill, seed, delay);
    int settledFor = 0;
    for (int tick = 1; tick < 2000; ++tick) {
        desk.tick({aim, {}, 3.0});
        settledFor = desk.miss(aim) <= within ? settledFor + 1 : 0;
        if (settledFor == 5)
            return tick;
    }
    return 2000;
}

double meanTicksToSettle(double skill, View aim, double within, std::size_t delay = 0) {
    double sum = 0.0;
    for (std::uint64_t seed = 1; seed <= 40; ++seed)
        sum += ticksToSettle(skill, seed, aim, within, delay);
    return sum / 40.0;
}

} // namespace

TEST(Hand, GetsToWhereItAims) {
    for (const View aim : {View{300.0, 80.0}, View{-900.0, -200.0}, View{0.0, 400.0}}) {
        for (std::uint64_t seed = 1; seed <= 20; ++seed) {
            EXPECT_LT(ticksToSettle(0.7, seed, aim, 20.0), 150) << aim.right << ", seed " << seed;
        }
    }
}

TEST(Hand, TurnsTheShortWayRound) {
    Desk desk(0.7, 1);
    desk.look({1000.0, 0.0});
    int sum = 0;
    for (int tick = 0; tick < 100; ++tick)
        sum += desk.tick({{-1000.0, 0.0}, {}, 3.0}).dx;
    EXPECT_NEAR(sum, 262, 30);
}

TEST(Hand, IsFasterAndSurerWithSkill) {
    const View aim = {400.0, 50.0};
    EXPECT_LT(meanTicksToSettle(1.0, aim, 15.0), 0.6 * meanTicksToSettle(0.4, aim, 15.0));
    EXPECT_LT(meanTicksToSettle(0.4, aim, 15.0), 0.75 * meanTicksToSettle(0.0, aim, 15.0));
}

TEST(Hand, NoTickTurnsFasterThanTheHandCan) {
    for (const double skill : {0.0, 0.5, 1.0}) {
        Desk desk(skill, 3);
        const double fastest = bots::skillOf(skill).topSpeed + 1.5;
        for (int tick = 0; tick < 600; ++tick) {
            // The aim jumps about, faster than anybody can follow.
            const View aim = {tick % 50 < 25 ? 1000.0 : -1000.0, tick % 70 < 35 ? 300.0 : -300.0};
            const Hand::Counts counts = desk.tick({aim, {30.0, 0.0}, 3.0});
            EXPECT_LE(std::hypot(counts.dx, counts.dy), fastest);
        }
    }
}

TEST(Hand, StartsAndEndsItsMovementsSoftly) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Desk desk(1.0, seed);
        int before = 0;
        int fastest = 0;
        for (int tick = 0; tick < 60; ++tick) {
            const int dx = desk.tick({{300.0, 0.0}, {}, 3.0}).dx;
            EXPECT_LE(std::abs(dx - before), 0.45 * bots::skillOf(1.0).topSpeed);
            fastest = std::max(fastest, dx);
            before = dx;
        }
        EXPECT_GT(fastest, 25);
    }
}

TEST(Hand, HasteScalesTheSpeed) {
    const auto ticksToHalf = [](double haste) {
        Desk desk(0.7, 5);
        int tick = 0;
        while (desk.view().right < 150.0 && tick < 500) {
            desk.tick({{300.0, 0.0}, {}, 3.0, haste});
            ++tick;
        }
        return tick;
    };
    EXPECT_NEAR(ticksToHalf(0.4), ticksToHalf(1.0) / 0.4, 4.0);
}

TEST(Hand, FirstMovementsEndBesideTheirAim) {
    double squares = 0.0;
    for (std::uint64_t seed = 1; seed <= 100; ++seed) {
        Desk desk(0.5, seed);
        const int movement =
            static_cast<int>(std::ceil(1.875 * 400.0 / bots::skillOf(0.5).topSpeed));
        for (int tick = 0; tick <= movement; ++tick) {
            // With this tolerance nothing is corrected.
            desk.tick({{400.0, 0.0}, {}, 250.0});
        }
        const double miss = 400.0 - desk.view().right;
        squares += miss * miss;
    }
    const double deviation = std::sqrt(squares / 100.0);
    EXPECT_NEAR(deviation, 400.0 * bots::skillOf(0.5).spread, 16.0);
}

TEST(Hand, LeavesErrorsWithinTheToleranceAlone) {
    Desk desk(1.0, 1);
    for (int tick = 0; tick < 200; ++tick) {
        const Hand::Counts counts = desk.tick({{40.0, 30.0}, {}, 70.0});
        EXPECT_EQ(counts.dx, 0);
        EXPECT_EQ(counts.dy, 0);
    }
}

TEST(Hand, IsNeverQuiteStill) {
    Desk desk(0.2, 1);
    int moved = 0;
    for (int tick = 0; tick < 300; ++tick) {
        const Hand::Counts counts = desk.tick({{0.0, 0.0}, {}, 2.0});
        moved += counts.dx != 0 || counts.dy != 0;
    }
    EXPECT_GT(moved, 50);
    EXPECT_LT(desk.miss({0.0, 0.0}), 50.0);
}

TEST(Hand, DoesNotSwingWhenTheViewFollowsLate) {
    const View aim = {400.0, 0.0};
    EXPECT_LT(meanTicksToSettle(0.7, aim, 15.0, 6), meanTicksToSettle(0.7, aim, 15.0) + 15.0);
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Desk desk(1.0, seed, 6);
        double farthest = 0.0;
        for (int tick = 0; tick < 200; ++tick) {
            desk.tick({aim, {}, 3.0});
            farthest = std::max(farthest, desk.view().right);
            if (tick > 80) {
                EXPECT_LT(desk.miss(aim), 25.0);
            }
        }
        EXPECT_LT(farthest, 480.0);
    }
}

TEST(Hand, KnowsTheLagFromHowTheViewFollows) {
    for (const std::size_t delay : {0u, 3u, 6u}) {
        Desk desk(0.7, 1, delay);
        for (int tick = 0; tick < 400; ++tick)
            desk.tick({{tick % 80 < 40 ? 500.0 : -500.0, 0.0}, {}, 3.0});
        EXPECT_NEAR(desk.hand.delay(), static_cast<double>(delay), 0.7);
    }
}

TEST(Hand, ViewCountsOnWhatIsUnderWay) {
    Desk desk(0.7, 1, 5);
    for (int tick = 0; tick < 100; ++tick) {
        desk.tick({{tick < 50 ? 500.0 : -200.0, 0.0}, {}, 3.0});
        View sum = desk.view();
        for (const Hand::Counts& counts : desk.underWay)
            sum += View{double(counts.dx), double(counts.dy)};
        EXPECT_NEAR(desk.hand.view().right, sum.right, 0.5);
        EXPECT_NEAR(desk.hand.view().down, sum.down, 0.5);
    }
}

TEST(Hand, ViewCountsOnItAcrossTheBackToo) {
    Desk desk(0.7, 1, 5);
    desk.look({1000.0, 0.0});
    for (int tick = 0; tick < 60; ++tick) {
        desk.tick({{-1000.0, 0.0}, {}, 3.0});
        View sum = desk.view();
        for (const Hand::Counts& counts : desk.underWay)
            sum += View{double(counts.dx), double(counts.dy)};
        EXPECT_NEAR(bots::turnBetween(desk.hand.view(), sum).right, 0.0, 0.5) << tick;
    }
}

TEST(Hand, SendsWholeCountsAndKeepsTheRest) {
    Desk desk(0.0, 1);
    Skill steady = bots::skillOf(0.0);
    steady.wobble = 0.0;
    steady.spread = 0.0;
    desk.hand = Hand(steady, Chance(1));
    // The fastest tick of this movement turns half a count.
    for (int tick = 0; tick < 19; ++tick)
        desk.tick({{5.0, 0.0}, {}, 1.0});
    EXPECT_NEAR(desk.view().right, 5.0, 0.1);
}

TEST(Hand, MakesUpForCountsThatWereLost) {
    Desk desk(0.7, 1, 2);
    const View aim = {400.0, 0.0};
    for (int tick = 0; tick < 150; ++tick)
        desk.tick({aim, {}, 3.0}, tick % 3 == 0);
    EXPECT_LT(desk.miss(aim), 25.0);
}

TEST(Hand, FollowsAMovingAim) {
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        Desk desk(0.8, seed);
        double sum = 0.0;
        View aim;
        for (int tick = 0; tick < 200; ++tick) {
            aim += View{4.0, 0.5};
            desk.tick({aim, {4.0, 0.5}, 4.0});
            if (tick >= 60)
                sum += desk.miss(aim);
        }
        EXPECT_LT(sum / 140.0, 14.0);
        EXPECT_GT(sum / 140.0, 0.5);
    }
}

TEST(Hand, NeverTurnsTowardsTheVertical) {
    Desk desk(1.0, 1);
    for (int tick = 0; tick < 300; ++tick) {
        desk.tick({{0.0, 565.0}, {}, 3.0});
        EXPECT_LT(desk.view().down, 500.0);
    }
    EXPECT_GT(desk.view().down, 430.0);
}

TEST(Hand, LetsGoOfWhatWasUnderWay) {
    Desk desk(0.7, 1);
    for (int tick = 0; tick < 8; ++tick)
        desk.tick({{600.0, 0.0}, {}, 3.0});
    desk.hand.letGo();
    desk.look({-700.0, 0.0});
    for (int tick = 0; tick < 10; ++tick) {
        const Hand::Counts counts = desk.tick({{-700.0, 0.0}, {}, 30.0});
        EXPECT_EQ(counts.dx, 0);
    }
}

TEST(Hand, SameSeedMovesAlikeAndAnotherDoesNot) {
    const auto path = [](std::uint64_t seed) {
        Desk desk(0.5, seed);
        std::vector<int> turns;
        for (int tick = 0; tick < 60; ++tick)
            turns.push_back(desk.tick({{500.0, -100.0}, {}, 3.0}).dx);
        return turns;
    };
    EXPECT_EQ(path(1), path(1));
    EXPECT_NE(path(1), path(2));
}
