#include "bots/Bot.h"

#include "bots/Chart.h"
#include "src/FileLoader.h"
#include "src/Player.h"
#include "tests/bots/BotMatch.h"
#include "tests/bots/LevelRoadmap.h"
#include "tests/bots/Snapshots.h"
#include "tests/support/ManualClock.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace drench;

using bots::Bot;
using bots::Mood;

namespace {

bool areSame(const Controls& a, const Controls& b) {
    return std::equal(std::begin(a.held), std::end(a.held), std::begin(b.held)) &&
           a.jump == b.jump && a.dx == b.dx && a.dy == b.dy;
}

bool isNothing(const Controls& controls) {
    return areSame(controls, Controls{});
}

/// A player whom a bot controls, in a court of its own.
struct Puppet {
    MapManager map;
    bots::Roadmap roadmap = levelRoadmap(map);
    Bot bot;
    Player player{'1', "Puppet"};

    /// Decisions that have not acted yet; more than one is a line with a delay.
    std::deque<Controls> underWay;
    Controls last;

    explicit Puppet(const std::function<bool(int, int, int)>& solid = nothing, double skill = 0.7,
                    std::uint64_t seed = 1)
        : Puppet(court(24, 10, 24, solid), skill, seed) {}

    Puppet(MapManager court, double skill, std::uint64_t seed)
        : map(std::move(court)), bot(roadmap, skill, seed) {
        player.setMapMan(&map);
        stand(standingIn(12, 4), {0.0f, 0.0f, 1.0f});
    }

    void stand(vec3 position, vec3 direction) { player.placeAt(position, position + direction); }

    /// Decides with these others about, and acts.
    const Controls& tick(std::initializer_list<PlayerUpdate> others = {}) {
        UpdateMessage snapshot;
        snapshot.add(player.getPlayerUpdate());
        for (const PlayerUpdate& other : others)
            snapshot.add(other);
        underWay.push_back(bot.decide(snapshot, '1'));
        last = underWay.front();
        underWay.pop_front();
        player.apply(last);
        player.update(0.0f);
        return last;
    }

    /// Keeps it where it is, looking along `direction`, until it fights somebody; whether it does.
    bool noticesFrom(vec3 position, vec3 direction, std::initializer_list<PlayerUpdate> others) {
        for (int tick = 0; tick < 60 && bot.mood() == Mood::roam; ++tick) {
            stand(position, direction);
            this->tick(others);
        }
        return bot.mood() == Mood::fight || bot.mood() == Mood::hide;
    }

    /// Whether it fires and soaks a body there.
    bool soaks(vec3 body) const {
        return last.held[keyIndex::shoot] &&
               bots::soaks(map, player.position, bots::viewAlong(player.direction), body);
    }
};

/// A short wall before which the puppet stands, with two enemies beyond in the open.
bool shortWall(int i, int j, int k) {
    return j < 5 && k == 6 && i >= 9 && i <= 13;
}

const PlayerUpdate firstEnemy = playerAt('2', standingIn(12, 18), {0.0f, 0.0f, -1.0f});
const PlayerUpdate secondEnemy = playerAt('3', standingIn(15, 16), {0.0f, 0.0f, -1.0f});

/// Two walls across the court, closed at both ends, hide what is between them.
bool hiddenChamber(int, int, int k) {
    return k == 14 || k == 20;
}

} // namespace

TEST(Bot, DoesNothingWithoutABody) {
    Puppet puppet;
    EXPECT_TRUE(isNothing(puppet.bot.decide(snapshotOf({}), '1')));
    EXPECT_TRUE(isNothing(puppet.bot.decide(snapshotOf({playerAt('2', standingIn(5, 5))}), '1')));
    EXPECT_TRUE(isNothing(puppet.bot.decide(snapshotOf({playerAt('1', soakedPosition)}), '1')));
    EXPECT_TRUE(isNothing(puppet.bot.decide(snapshotOf({playerAt('1', standingIn(5, 5))}), 0)));
    // Fallen out of a world that is not the one charted, or nowhere at all.
    const float nowhere = std::numeric_limits<float>::quiet_NaN();
    for (const vec3 position : {vec3(700.0f, -2e10f, 700.0f), vec3(nowhere, 139.0f, 700.0f)})
        EXPECT_TRUE(isNothing(puppet.bot.decide(snapshotOf({playerAt('1', position)}), '1')));
}

TEST(Bot, DecidesWithinBoundsWhateverFloatsARoomSends) {
    using Limits = std::numeric_limits<float>;
    const float odd[] = {0.0f,
                         -0.0f,
                         1.0f,
                         -1.0f,
                         700.0f,
                         Limits::quiet_NaN(),
                         Limits::infinity(),
                         -Limits::infinity(),
                         Limits::max(),
                         Limits::lowest(),
                         Limits::denorm_min(),
                         1e10f,
                         -1e10f};
    Chance chance(1);
    const auto any = [&] { return odd[chance.below(static_cast<int>(std::size(odd)))]; };
    Puppet puppet;
    for (int tick = 0; tick < 20000; ++tick) {
        UpdateMessage snapshot;
        for (const char id : {'1', '2', '3'}) {
            PlayerUpdate update = playerAt(id, standingIn(4 + tick % 15, id - '1' + 5));
            if (chance.happens(0.3))
                update.position = vec3(any(), any(), any());
            if (chance.happens(0.5))
                update.direction = vec3(any(), any(), any());
            snapshot.add(update);
        }
        const Controls controls = puppet.bot.decide(snapshot, '1');
        EXPECT_LE(std::abs(controls.dx), 200);
        EXPECT_LE(std::abs(controls.dy), 200);
        EXPECT_FALSE(controls.held[keyIndex::forward] && controls.held[keyIndex::backward]);
        EXPECT_FALSE(controls.held[keyIndex::left] && controls.held[keyIndex::right]);
    }
}

TEST(Bot, DoesNothingWithoutAView) {
    Puppet puppet;
    PlayerUpdate self = playerAt('1', standingIn(5, 5));
    self.direction.z = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(isNothing(puppet.bot.decide(snapshotOf({self}), '1')));
}

TEST(Bot, RoamsWhileNobodyIsAbout) {
    Puppet puppet;
    vec3 low = puppet.player.position;
    vec3 high = low;
    for (int tick = 0; tick < 2000; ++tick) {
        EXPECT_FALSE(puppet.tick().held[keyIndex::shoot]);
        EXPECT_EQ(puppet.bot.mood(), Mood::roam);
        low.x = std::min(low.x, puppet.player.position.x);
        low.z = std::min(low.z, puppet.player.position.z);
        high.x = std::max(high.x, puppet.player.position.x);
        high.z = std::max(high.z, puppet.player.position.z);
    }
    EXPECT_GT(high.x - low.x, 600.0f);
    EXPECT_GT(high.z - low.z, 600.0f);
}

TEST(Bot, SetsOutAtOnce) {
    Puppet puppet;
    const Controls& first = puppet.tick();
    EXPECT_TRUE(std::any_of(first.held, first.held + keyIndex::jump, [](bool key) { return key; }));
}

TEST(Bot, SoaksWhoStandsInSight) {
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        Puppet puppet(nothing, 0.7, seed);
        puppet.stand(standingIn(4, 12), {1.0f, 0.0f, 0.0f});
        const PlayerUpdate target = playerAt('2', standingIn(12, 14));
        int tick = 0;
        bool soaked = false;
        for (; tick < 900 && !soaked; ++tick) {
            puppet.tick({target});
            soaked = puppet.soaks(target.position);
        }
        EXPECT_TRUE(soaked) << "seed " << seed;
        // Not before anybody could have seen, turned and fired.
        EXPECT_GT(tick, 12) << "seed " << seed;
    }
}

namespace {

/// In how many ticks of a chase a runner would have been soaked, a mean over seeds.
double meanTicksOnRunner(double skill, std::size_t delay) {
    int sum = 0;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Puppet puppet(nothing, skill, seed);
        puppet.underWay.resize(delay);
        for (int tick = 0; tick < 300; ++tick) {
            // To and fro at the pace of walkers.
            const float way =
                6.0f * static_cast<float>(tick % 120 < 60 ? tick % 60 : 60 - tick % 60);
            const vec3 runner = standingIn(10, 12) + vec3(way, 0.0f, 0.0f);
            puppet.tick({playerAt('2', runner)});
            sum += puppet.soaks(runner);
        }
    }
    return sum / 20.0;
}

} // namespace

TEST(Bot, KeepsUpWithWhoRuns) {
    EXPECT_GT(meanTicksOnRunner(0.9, 0), 110.0);
}

TEST(Bot, LeadsByTheDelayOfTheLine) {
    EXPECT_GT(meanTicksOnRunner(0.9, 5), 80.0);
}

TEST(Bot, TakesLongerWithLessSkill) {
    const auto meanTicks = [](double skill) {
        // With fewer, chance decides.
        constexpr int players = 150;
        int sum = 0;
        for (std::uint64_t seed = 1; seed <= players; ++seed) {
            Puppet puppet(nothing, skill, seed);
            const PlayerUpdate target = playerAt('2', standingIn(15, 14));
            for (int tick = 0; tick < 600; ++tick, ++sum) {
                puppet.tick({target});
                if (puppet.soaks(target.position))
                    break;
            }
        }
        return static_cast<double>(sum) / players;
    };
    EXPECT_LT(meanTicks(1.0), 0.8 * meanTicks(0.5));
    EXPECT_LT(meanTicks(0.5), 0.8 * meanTicks(0.0));
}

TEST(Bot, DecidesAlikeWhereverTheHiddenAre) {
    Puppet here(hiddenChamber);
    Puppet there(hiddenChamber);
    for (int tick = 0; tick < 3000; ++tick) {
        const float way = static_cast<float>(tick % 600);
        const Controls one = here.tick({playerAt('2', standingIn(3, 17) + vec3(way, 0.0f, 0.0f))});
        const Controls other =
            there.tick({tick % 1000 < 250 ? playerAt('2', soakedPosition)
                                          : playerAt('2', standingIn(18, 16), {1.0f, 0.0f, 0.0f})});
        ASSERT_TRUE(areSame(one, other)) << "tick " << tick;
    }
}

TEST(Bot, DecidesByItsSeedAndTheSnapshotsAlone) {
    const auto decisions = [](std::uint64_t seed) {
        Puppet puppet(nothing, 0.7, seed);
        std::vector<Controls> all;
        for (int tick = 0; tick < 500; ++tick) {
            // The clock is none of its business.
            ManualClock::now += static_cast<long>(seed) * tick;
            const float aside = static_cast<float>(tick % 200) * 3.0f;
            all.push_back(
                puppet.tick({playerAt('2', standingIn(8, 15) + vec3(aside, 0.0f, 0.0f))}));
        }
        return all;
    };
    const std::vector<Controls> once = decisions(1);
    const std::vector<Controls> again = decisions(1);
    const std::vector<Controls> other = decisions(2);
    EXPECT_TRUE(std::equal(once.begin(), once.end(), again.begin(), areSame));
    EXPECT_FALSE(std::equal(once.begin(), once.end(), other.begin(), areSame));
}

TEST(Bot, HuntsWhoGotOutOfSight) {
    // A wall with a gap at its end; the target goes behind it.
    Puppet puppet([](int i, int, int k) { return k == 12 && i < 20; });
    const PlayerUpdate seen = playerAt('2', standingIn(21, 13), {0.0f, 0.0f, -1.0f});
    puppet.stand(standingIn(18, 6), {0.4f, 0.0f, 1.0f});
    int tick = 0;
    while (puppet.bot.mood() != Mood::fight && tick++ < 60)
        puppet.tick({seen});
    ASSERT_EQ(puppet.bot.mood(), Mood::fight);
    const PlayerUpdate gone = playerAt('2', standingIn(5, 20));
    bool hunted = false;
    float furthest = 0.0f;
    for (tick = 0; tick < 300; ++tick) {
        puppet.tick({gone});
        hunted |= puppet.bot.mood() == Mood::hunt;
        furthest = std::max(furthest, puppet.player.position.z);
    }
    EXPECT_TRUE(hunted);
    EXPECT_GT(furthest, 12.0f * 64.0f);
}

TEST(Bot, FightsOnForAMomentWithWhoDisappeared) {
    Puppet puppet([](int, int, int k) { return k == 14; });
    int tick = 0;
    while (puppet.bot.mood() != Mood::fight && tick++ < 60)
        puppet.tick({playerAt('2', standingIn(12, 10))});
    ASSERT_EQ(puppet.bot.mood(), Mood::fight);
    int fought = 0;
    while (puppet.bot.mood() == Mood::fight && fought < 100) {
        puppet.tick({playerAt('2', standingIn(12, 20))});
        ++fought;
    }
    EXPECT_GT(fought, 8);
    EXPECT_LT(fought, 30);
    EXPECT_EQ(puppet.bot.mood(), Mood::hunt);
}

TEST(Bot, GivesAHuntUpOnceThePlaceIsSearched) {
    Puppet puppet([](int, int, int k) { return k == 14; }, 1.0);
    int tick = 0;
    while (puppet.bot.mood() != Mood::fight && tick++ < 60)
        puppet.tick({playerAt('2', standingIn(12, 10))});
    ASSERT_EQ(puppet.bot.mood(), Mood::fight);
    const auto lose = [&] { puppet.tick({playerAt('2', standingIn(12, 20))}); };
    int hunted = 0;
    while (puppet.bot.mood() != Mood::roam && hunted < 700) {
        lose();
        ++hunted;
    }
    EXPECT_GT(hunted, 20);
    EXPECT_LT(hunted, 200);
    // Long before it would have forgotten, it goes somewhere else.
    const vec3 searched = puppet.player.position;
    float furthest = 0.0f;
    for (tick = 0; tick < 120; ++tick) {
        lose();
        furthest = std::max(furthest, (puppet.player.position - searched).length());
    }
    EXPECT_EQ(puppet.bot.mood(), Mood::roam);
    EXPECT_GT(furthest, 200.0f);
}

TEST(Bot, DodgesWhoFacesIt) {
    Puppet puppet;
    const PlayerUpdate target = playerAt('2', standingIn(12, 12), {0.0f, 0.0f, -1.0f});
    float left = 1e9f;
    float right = -1e9f;
    int fought = 0;
    for (int tick = 0; tick < 400; ++tick) {
        puppet.tick({target});
        if (puppet.bot.mood() == Mood::fight) {
            ++fought;
            left = std::min(left, puppet.player.position.x);
            right = std::max(right, puppet.player.position.x);
        }
        EXPECT_GT((puppet.player.position - target.position).length(), 150.0f);
    }
    EXPECT_GT(fought, 200);
    EXPECT_GT(right - left, 100.0f);
}

TEST(Bot, GoesAfterWhoLooksAway) {
    float gained = 0.0f;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Puppet puppet(nothing, 0.7, seed);
        // It walks away, at half the pace of bots.
        vec3 runner = standingIn(12, 10);
        ASSERT_TRUE(
            puppet.noticesFrom(standingIn(12, 4), {0.0f, 0.0f, 1.0f}, {playerAt('2', runner)}));
        const float before = (puppet.player.position - runner).length();
        for (int tick = 0; tick < 45; ++tick) {
            runner += vec3(0.0f, 0.0f, 3.0f);
            puppet.tick({playerAt('2', runner)});
        }
        gained += before - (puppet.player.position - runner).length();
    }
    EXPECT_GT(gained / 20.0f, 90.0f);
}

TEST(Bot, TakesAnotherWayWhereOneFailed) {
    int arrived = 0;
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        // Over this wall leads a road that nobody can take, and a way round its end.
        Puppet puppet([](int i, int j, int k) { return j < 4 && k == 12 && i != 8; }, 1.0, seed);
        const int foot = puppet.roadmap.placeIn({12, 1, 11});
        const int top = puppet.roadmap.placeIn({12, 4, 12});
        const int beyond = puppet.roadmap.placeIn({12, 1, 13});
        ASSERT_GE(std::min({foot, top, beyond}), 0);
        puppet.roadmap.roads[static_cast<std::size_t>(foot)].push_back({top, bots::Gait::jump, 30});
        puppet.roadmap.roads[static_cast<std::size_t>(top)].push_back(
            {beyond, bots::Gait::walk, 20});
        const PlayerUpdate jumper = playerAt('2', standingIn(12, 16) + vec3(0.0f, 280.0f, 0.0f));
        int tick = 0;
        while (puppet.bot.mood() != Mood::fight && tick++ < 60)
            puppet.tick({jumper});
        ASSERT_EQ(puppet.bot.mood(), Mood::fight);
        const vec3 inTheWall = standingIn(23, 23);
        bool hunts = true;
        for (tick = 0; hunts && tick < 600; ++tick) {
            puppet.tick({playerAt('2', inTheWall)});
            hunts = puppet.bot.mood() != Mood::roam;
            if (puppet.player.position.z > 13.0f * 64.0f) {
                ++arrived;
                break;
            }
        }
    }
    EXPECT_GE(arrived, 8);
}

TEST(Bot, DoesNotStareUpWhileItWalks) {
    Puppet puppet([](int, int, int k) { return k == 14; }, 1.0);
    int tick = 0;
    while (puppet.bot.mood() != Mood::fight && tick++ < 60)
        puppet.tick({playerAt('2', standingIn(12, 13) + vec3(0.0f, 230.0f, 0.0f))});
    ASSERT_EQ(puppet.bot.mood(), Mood::fight);
    for (tick = 0; tick < 200; ++tick) {
        puppet.tick({playerAt('2', standingIn(12, 20))});
        if (tick > 50) {
            EXPECT_GT(bots::viewAlong(puppet.player.direction).down, -160.0) << tick;
        }
    }
}

namespace {

/// Of twenty bots before the short wall, how many hide from these enemies.
int countHiding(double skill, std::initializer_list<PlayerUpdate> enemies) {
    int hidden = 0;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Puppet puppet(shortWall, skill, seed);
        puppet.noticesFrom(standingIn(14, 7), {0.0f, 0.0f, 1.0f}, enemies);
        bool hides = puppet.bot.mood() == Mood::hide;
        for (int tick = 0; tick < 200; ++tick) {
            puppet.tick(enemies);
            hides |= puppet.bot.mood() == Mood::hide;
        }
        hidden += hides;
    }
    return hidden;
}

} // namespace

TEST(Bot, TakesCoverFromTwo) {
    // The best are cautious four times out of five, beginners once.
    EXPECT_GE(countHiding(1.0, {firstEnemy, secondEnemy}), 10);
    EXPECT_LE(countHiding(0.0, {firstEnemy, secondEnemy}), 10);
}

TEST(Bot, TakesCoverFromWhoAimsFirst) {
    const PlayerUpdate beside = playerAt('2', standingIn(20, 14), {-6.0f, 0.0f, -7.0f});
    const PlayerUpdate looksAway = playerAt('2', standingIn(20, 14), {6.0f, 0.0f, 7.0f});
    EXPECT_GE(countHiding(1.0, {beside}), 3);
    EXPECT_EQ(countHiding(1.0, {looksAway}), 0);
}

TEST(Bot, FearsNoAimThatIsOffByHalfARadian) {
    // From the enemy to the bot the view goes along (-6, -7).
    const auto lookingAside = [](float radians) {
        const float yaw = std::atan2(-6.0f, -7.0f) + radians;
        return playerAt('2', standingIn(20, 14), {std::sin(yaw), 0.0f, std::cos(yaw)});
    };
    EXPECT_GE(countHiding(1.0, {lookingAside(0.15f)}), 3);
    EXPECT_EQ(countHiding(1.0, {lookingAside(0.5f)}), 0);
}

TEST(Bot, PrefersWhoHasACubeBehind) {
    // The court's far wall is open in the middle.
    const std::string open = arenaText(24, 10, 24, [](int i, int j, int k) {
        return j == 0 || i == 0 || i == 23 || k == 0 || (k == 23 && (i < 9 || i > 15));
    });
    const PlayerUpdate beforeSky = playerAt('2', standingIn(12, 12) + vec3(0.0f, 100.0f, 0.0f));
    const PlayerUpdate beforeWall = playerAt('3', standingIn(18, 14));
    int soaked = 0;
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        Puppet puppet(loaded(open), 0.8, seed);
        bool soaks = false;
        for (int tick = 0; tick < 60; ++tick) {
            puppet.tick({beforeSky, beforeWall});
            soaks |= puppet.soaks(beforeWall.position);
        }
        soaked += soaks;
    }
    EXPECT_GE(soaked, 4);
}

TEST(Bot, WaitsInCoverForAMomentOnly) {
    int longest = 0;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Puppet puppet(shortWall, 1.0, seed);
        puppet.stand(standingIn(14, 7), {0.0f, 0.0f, 1.0f});
        int waited = 0;
        for (int tick = 0; tick < 400; ++tick) {
            const vec3 before = puppet.player.position;
            puppet.tick({firstEnemy, secondEnemy});
            const bool still = (puppet.player.position - before).length() == 0.0f;
            waited = still && puppet.bot.mood() == Mood::hide ? waited + 1 : 0;
            longest = std::max(longest, waited);
        }
    }
    EXPECT_GT(longest, 45);
    EXPECT_LT(longest, 140);
}

namespace {

/// Has the puppet soaked for four seconds, then lets it stand again.
void dieAndReturn(Puppet& puppet, const PlayerUpdate& other, vec3 position, vec3 direction) {
    const UpdateMessage soaked = snapshotOf({playerAt('1', soakedPosition), other});
    for (int tick = 0; tick < 250; ++tick)
        EXPECT_TRUE(isNothing(puppet.bot.decide(soaked, '1')));
    puppet.stand(position, direction);
}

} // namespace

TEST(Bot, HasToNoticeAnewAfterItsReturn) {
    Puppet puppet;
    const PlayerUpdate target = playerAt('2', standingIn(12, 12));
    for (int tick = 0; tick < 40; ++tick)
        puppet.tick({target});
    ASSERT_EQ(puppet.bot.mood(), Mood::fight);
    dieAndReturn(puppet, target, standingIn(12, 4), {0.0f, 0.0f, 1.0f});
    for (int tick = 0; tick < 5; ++tick) {
        puppet.tick({target});
        EXPECT_EQ(puppet.bot.mood(), Mood::hunt);
        EXPECT_FALSE(puppet.last.held[keyIndex::shoot]);
    }
}

TEST(Bot, LetsGoOfTheMouseWhenSoaked) {
    int interrupted = 0;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Puppet puppet(nothing, 0.7, seed);
        const PlayerUpdate nobody = playerAt('2', soakedPosition);
        int tick = 0;
        while (std::abs(puppet.last.dx) < 12 && tick++ < 600)
            puppet.tick({nobody});
        interrupted += std::abs(puppet.last.dx) >= 12;
        dieAndReturn(puppet, nobody, standingIn(5, 5), {1.0f, 0.0f, 1.0f});
        EXPECT_LE(std::abs(puppet.tick({nobody}).dx), 2) << "seed " << seed;
    }
    EXPECT_GT(interrupted, 10);
}

TEST(Bot, GetsAwayFromWhereItIsHeld) {
    // Nothing that it does moves the body: it must not press the same keys for ever.
    Puppet puppet;
    std::vector<Controls> decided;
    std::array<int, 4> quarters{};
    for (int tick = 0; tick < 1000; ++tick) {
        puppet.stand(standingIn(12, 4), puppet.player.direction);
        decided.push_back(puppet.tick());
        // Held back, it tried to go there.
        const vec3 way = puppet.player.velocity;
        if (tick > 400 && (way.x != 0.0f || way.z != 0.0f))
            ++quarters[(way.x > 0.0f ? 1u : 0u) + (way.z > 0.0f ? 2u : 0u)];
    }
    for (const int ticks : quarters)
        EXPECT_GT(ticks, 10) << "it tries all directions";
    int jumps = 0;
    int changes = 0;
    for (std::size_t i = 1; i < decided.size(); ++i) {
        jumps += decided[i].jump;
        changes += !std::equal(std::begin(decided[i].held), std::end(decided[i].held),
                               std::begin(decided[i - 1].held));
    }
    EXPECT_GT(jumps, 3);
    EXPECT_GT(changes, 10);
}

TEST(Bot, LeavesAFightThatKeepsItInOnePlaceForLong) {
    Puppet puppet;
    const vec3 here = standingIn(12, 4);
    const PlayerUpdate enemy = playerAt('2', standingIn(12, 18), {0.0f, 0.0f, 1.0f});
    ASSERT_TRUE(puppet.noticesFrom(here, {0.0f, 0.0f, 1.0f}, {enemy}));
    int fought = 0;
    while (puppet.bot.mood() == Mood::fight && fought < 2000) {
        puppet.stand(here, {0.0f, 0.0f, 1.0f});
        puppet.tick({enemy});
        ++fought;
    }
    EXPECT_EQ(puppet.bot.mood(), Mood::roam) << "though the enemy is in sight";
    EXPECT_GT(fought, 100);
}

TEST(Bot, WandersOnWhereItKnowsNoWay) {
    // The snapshots come from a place that is not on its roadmap.
    Puppet puppet([](int i, int j, int k) { return j < 4 && i > 8 && i < 16 && k > 8 && k < 16; });
    for (int& place : puppet.roadmap.placeOfCell)
        place = -1;
    puppet.stand(standingIn(12, 4), {0.0f, 0.0f, 1.0f});
    const vec3 start = puppet.player.position;
    float furthest = 0.0f;
    for (int tick = 0; tick < 120; ++tick) {
        puppet.tick();
        furthest = std::max(furthest, (puppet.player.position - start).length());
    }
    EXPECT_GT(furthest, 100.0f);
}

TEST(Bot, SpeaksRarely) {
    Puppet puppet;
    int remarks = 0;
    int before = -1240;
    for (int tick = 0; tick < 20000; ++tick) {
        puppet.player.playerUpdate.points = tick / 300;
        puppet.tick();
        if (puppet.bot.remark()) {
            ++remarks;
            EXPECT_GE(tick - before, 1240);
            before = tick;
        }
    }
    EXPECT_GT(remarks, 0);
    EXPECT_LT(remarks, 16);
}

#ifndef DRENCH_SANITIZED

namespace {

/// Two minutes at 16 ms a tick.
constexpr int twoMinutes = 7500;
constexpr int tenSeconds = 625;

/// Four equals make a lively match in which nobody gets stuck.
void expectLively(const BotMatch& match) {
    EXPECT_GE(match.soaks(), 20);
    EXPECT_LT(match.longestStay(), tenSeconds);
    int bursts = 0;
    int burstsThatSoaked = 0;
    for (const BotMatch::Score& score : match.scores()) {
        bursts += score.bursts;
        burstsThatSoaked += score.burstsThatSoaked;
        EXPECT_GT(score.distance, 15000.0);
    }
    EXPECT_GT(3 * burstsThatSoaked, bursts);
}

} // namespace

// One test, as charting the arena takes seconds.
TEST(Bot, PlaysLivelyMatchesThatRepeatByTheirSeedAndGoByTheSkill) {
    const std::string text = fileStringContents(DRENCH_MAPDATA);
    MapManager map = loaded(text);
    const bots::Roadmap roadmap = bots::chart(map);

    BotMatch match({text, roadmap, {0.7, 0.7, 0.7, 0.7}, 1});
    match.play(twoMinutes);
    expectLively(match);

    BotMatch same({text, roadmap, {0.7, 0.7, 0.7, 0.7}, 1});
    same.play(twoMinutes);
    EXPECT_EQ(same.decisions(), match.decisions());
    BotMatch other({text, roadmap, {0.7, 0.7, 0.7, 0.7}, 2});
    other.play(twoMinutes);
    EXPECT_NE(other.decisions(), match.decisions());

    BotMatch uneven({text, roadmap, {1.0, 0.3, 1.0, 0.3}, 1});
    uneven.play(twoMinutes);
    const auto points = [&](std::size_t seat) {
        return uneven.scores()[seat].soaks - uneven.scores()[seat].deaths;
    };
    EXPECT_GT(points(0) + points(2), points(1) + points(3) + 8);

    // Over a line that takes 80 ms.
    BotMatch delayed({text, roadmap, {0.7, 0.7, 0.7, 0.7}, 1, 5});
    delayed.play(twoMinutes);
    EXPECT_GE(delayed.soaks(), 10);
    EXPECT_LT(delayed.longestStay(), tenSeconds);
}

#endif
