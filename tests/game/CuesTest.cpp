#include "game/Cues.h"

#include "tests/game/Snapshots.h"
#include "tests/support/Arenas.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

using namespace drench;
using namespace drench::game;

namespace {

constexpr int wood = 3;
constexpr vec3 middle{1024.0f, standing, 1024.0f};

/// A court with a floor of wood.
MapManager woodenCourt() {
    MapManager map = loaded(emptyCourt());
    for (auto& column : map.cubes) {
        for (Box& cube : column[0])
            cube.cellValue = wood;
    }
    return map;
}

class Hearing : public testing::Test {
  protected:
    MapManager map = woodenCourt();
    Cues cues{map};

    /// What is heard of states in which '1' listens.
    std::vector<Cue> hear(std::initializer_list<PlayerUpdate> players, int ticks = 1) {
        return cues.hear(snapshotOf(players), '1', ticks);
    }

    /// Plays a body by the game's own rules, with the inputs given for each tick, and counts how
    /// often each sound is heard. Only each `period`th state arrives.
    std::vector<Cue> play(char id, int ticks, int period,
                          const std::function<void(Player&, int)>& steer) {
        Player body = bodyAt(map, middle, middle + vec3(0.0f, 0.0f, 1.0f));
        body.playerID = id;
        std::vector<Cue> all;
        hear({body.getPlayerUpdate()});
        for (int tick = 1; tick <= ticks; ++tick) {
            steer(body, tick);
            body.update(0.0f);
            if (tick % period != 0)
                continue;
            for (const Cue& cue : hear({body.getPlayerUpdate()}, period))
                all.push_back(cue);
        }
        return all;
    }
};

int count(const std::vector<Cue>& cues, Sound sound) {
    return static_cast<int>(std::count_if(cues.begin(), cues.end(),
                                          [&](const Cue& cue) { return cue.sound == sound; }));
}

const Cue& only(const std::vector<Cue>& cues) {
    EXPECT_EQ(cues.size(), 1u);
    static const Cue none;
    return cues.empty() ? none : cues[0];
}

void walkForward(Player& body, int) {
    body.keys[keyIndex::forward] = true;
}

} // namespace

TEST_F(Hearing, StandingBodyMakesNoSound) {
    for (const char id : {'1', '2'})
        EXPECT_TRUE(play(id, 200, 1, [](Player&, int) {}).empty());
}

TEST_F(Hearing, WalkSoundsByItsDistanceAndMaterial) {
    const std::vector<Cue> walk = play('2', 100, 1, walkForward);
    // 600 units in strides of 105, the first one begun.
    EXPECT_EQ(count(walk, Sound::step), 6);
    EXPECT_EQ(walk.size(), 6u);
    for (const Cue& cue : walk) {
        EXPECT_EQ(cue.material, wood);
        ASSERT_TRUE(cue.place.has_value());
        EXPECT_FALSE(cue.isOwn);
        EXPECT_FLOAT_EQ(cue.place->x, middle.x);
    }
    EXPECT_LT(walk.front().place->z, walk.back().place->z);
}

TEST_F(Hearing, MissedStatesLoseNoSteps) {
    EXPECT_EQ(count(play('2', 100, 5, walkForward), Sound::step), 6);
}

TEST_F(Hearing, FirstStepIsHeardSoon) {
    EXPECT_EQ(count(play('2', 12, 1, walkForward), Sound::step), 1);
}

TEST_F(Hearing, PauseInAWalkBeginsItsStrideAnew) {
    // Half a stride is walked before the pause, and heard no sooner for it.
    const auto steps = [&](int ticks) {
        cues = Cues(map);
        return count(play('2', ticks, 1,
                          [](Player& body, int tick) {
                              body.keys[keyIndex::forward] = tick <= 6 || tick > 20;
                          }),
                     Sound::step);
    };
    EXPECT_EQ(steps(26), 0);
    EXPECT_EQ(steps(28), 1);
}

TEST_F(Hearing, OwnBodyIsHeardWithoutAPlaceAndSofter) {
    const std::vector<Cue> own = play('1', 100, 1, walkForward);
    const std::vector<Cue> other = play('2', 100, 1, walkForward);
    ASSERT_EQ(count(own, Sound::step), 6);
    const auto step = std::find_if(own.begin(), own.end(),
                                   [](const Cue& cue) { return cue.sound == Sound::step; });
    EXPECT_FALSE(step->place.has_value());
    EXPECT_LT(step->loudness, other.back().loudness);
}

TEST_F(Hearing, JumpIsHeardOnceAndItsLandingOnce) {
    for (const int period : {1, 2, 3}) {
        const std::vector<Cue> heard = play('2', 90, period, [](Player& body, int tick) {
            body.keys[keyIndex::jump] = tick == 10;
        });
        EXPECT_EQ(count(heard, Sound::jump), 1) << period;
        EXPECT_EQ(count(heard, Sound::landing), 1) << period;
        EXPECT_EQ(heard.size(), 2u) << period;
    }
}

TEST_F(Hearing, SuccessiveJumpsAreHeardEach) {
    const std::vector<Cue> heard =
        play('2', 48 * 4, 1, [](Player& body, int) { body.keys[keyIndex::jump] = true; });
    EXPECT_EQ(count(heard, Sound::jump), 4);
    EXPECT_GE(count(heard, Sound::landing), 3);
}

TEST_F(Hearing, LandingIsAsLoudAsTheFallIsFast) {
    const auto landingFrom = [&](float height) {
        Player body = bodyAt(map, middle + vec3(0.0f, height, 0.0f), middle);
        body.playerID = '3';
        cues = Cues(map);
        hear({body.getPlayerUpdate()});
        std::vector<Cue> landings;
        for (int tick = 0; tick < 200; ++tick) {
            body.update(0.0f);
            for (const Cue& cue : hear({body.getPlayerUpdate()}))
                landings.push_back(cue);
        }
        return only(landings);
    };
    const Cue low = landingFrom(100.0f);
    const Cue high = landingFrom(400.0f);
    EXPECT_EQ(low.sound, Sound::landing);
    EXPECT_EQ(low.material, wood);
    EXPECT_LT(low.loudness, high.loudness);
    EXPECT_LE(high.loudness, 1.0f);
}

TEST_F(Hearing, JetBeginsOnceAndGoesOn) {
    PlayerUpdate shooter = playerAt('2', middle);
    hear({shooter});
    EXPECT_TRUE(cues.jets().empty());
    shooter.shooting = true;
    int begins = 0;
    int splashes = 0;
    for (int tick = 0; tick < 90; ++tick) {
        const std::vector<Cue> heard = hear({shooter});
        begins += count(heard, Sound::jet);
        splashes += count(heard, Sound::splash);
        ASSERT_EQ(cues.jets().size(), 1u);
        EXPECT_EQ(cues.jets()[0].whose, '2');
        EXPECT_EQ(cues.jets()[0].place->z, middle.z);
    }
    EXPECT_EQ(begins, 1);
    EXPECT_EQ(splashes, 10);
    shooter.shooting = false;
    EXPECT_TRUE(hear({shooter}).empty());
    EXPECT_TRUE(cues.jets().empty());
}

TEST_F(Hearing, MissedStatesDoNotSlowTheSplashes) {
    PlayerUpdate shooter = playerAt('2', middle);
    hear({shooter});
    shooter.shooting = true;
    int splashes = 0;
    for (int tick = 0; tick < 90; tick += 3)
        splashes += count(hear({shooter}, 3), Sound::splash);
    EXPECT_EQ(splashes, 10);
}

TEST_F(Hearing, JetSplashesWhereItLands) {
    PlayerUpdate shooter = playerAt('1', middle);
    shooter.direction = {0.0f, -1.0f, 0.0f};
    hear({shooter});
    shooter.shooting = true;
    const std::vector<Cue> heard = hear({shooter});
    ASSERT_EQ(count(heard, Sound::splash), 1);
    EXPECT_FALSE(heard[0].place.has_value()) << "one's own jet";
    EXPECT_TRUE(heard[1].isOwn);
    EXPECT_NEAR(heard[1].place->y, 64.0f, 0.01f);
    EXPECT_EQ(heard[1].material, wood);
    EXPECT_FALSE(cues.jets()[0].place.has_value());

    shooter.direction = {0.0f, 1.0f, 0.0f};
    for (int tick = 0; tick < 20; ++tick)
        EXPECT_EQ(count(hear({shooter}), Sound::splash), 0) << "into the sky";
}

TEST_F(Hearing, SoakingSomebodyCheersOnce) {
    PlayerUpdate own = playerAt('1', middle);
    PlayerUpdate other = playerAt('2', {700.0f, standing, 700.0f});
    hear({own, other});
    own.points = 1;
    other.points = -1;
    const std::vector<Cue> heard = hear({own, soaked(other)});
    EXPECT_EQ(heard.size(), 2u);
    EXPECT_EQ(count(heard, Sound::soaking), 1);
    EXPECT_EQ(count(heard, Sound::splash), 1);
    EXPECT_EQ(heard[1].place->x, 700.0f) << "where the other stood";
    EXPECT_TRUE(hear({own, soaked(other)}).empty());
}

TEST_F(Hearing, BeingSoakedGurglesAndTheReturnChimes) {
    PlayerUpdate own = playerAt('1', middle);
    hear({own});
    own.points = -1;
    const Cue gurgle = only(hear({soaked(own)}));
    EXPECT_EQ(gurgle.sound, Sound::soaked);
    EXPECT_FALSE(gurgle.place.has_value());
    EXPECT_TRUE(hear({soaked(own)}, 200).empty());
    own.position = {1010.0f, 658.0f, 133.0f};
    EXPECT_EQ(only(hear({own})).sound, Sound::spawn);
}

TEST_F(Hearing, SoakingAndBeingSoakedInOneTickAreBothHeard) {
    PlayerUpdate own = playerAt('1', middle);
    hear({own});
    const std::vector<Cue> heard = hear({soaked(own)});
    EXPECT_EQ(count(heard, Sound::soaking), 1) << "one point up and one down";
    EXPECT_EQ(count(heard, Sound::soaked), 1);
}

TEST_F(Hearing, PointsOfOthersAreSilent) {
    PlayerUpdate other = playerAt('2', middle);
    hear({other});
    other.points = 5;
    EXPECT_TRUE(hear({other}).empty());
}

TEST_F(Hearing, NewcomersChimeButNotThoseWhoWereThereAlready) {
    EXPECT_TRUE(hear({playerAt('2', middle)}).empty());
    EXPECT_EQ(only(hear({playerAt('2', middle), playerAt('3', middle)})).sound, Sound::spawn);
    EXPECT_EQ(only(hear({playerAt('2', middle, "Eve"), playerAt('3', middle)})).sound, Sound::spawn)
        << "another player under the same identifier";
    cues = Cues(map);
    EXPECT_EQ(only(hear({playerAt('1', middle)})).sound, Sound::spawn) << "oneself";
}

TEST_F(Hearing, LeapThatNoBodyMakesIsSilent) {
    hear({playerAt('2', middle)});
    EXPECT_TRUE(hear({playerAt('2', {300.0f, standing, 300.0f})}).empty());
    EXPECT_TRUE(hear({playerAt('2', {300.0f, 900.0f, 300.0f})}).empty());
}

TEST_F(Hearing, StateThatCameBeforeIsSilent) {
    hear({playerAt('2', middle)});
    EXPECT_TRUE(hear({playerAt('3', middle)}, 0).empty());
}

TEST_F(Hearing, OwnTicksMayComeInPairsOrNotAtAll) {
    Player body = bodyAt(map, middle, middle + vec3(0.0f, 0.0f, 1.0f));
    body.playerID = '1';
    cues.hear(snapshotOf({body.getPlayerUpdate()}), '1', 1);
    std::vector<Cue> all;
    for (int i = 0; i < 100; ++i) {
        const int ticks = 2 * (i % 2);
        for (int tick = 0; tick < ticks; ++tick) {
            walkForward(body, i);
            body.keys[keyIndex::jump] = i == 31;
            body.update(0.0f);
        }
        for (const Cue& cue : cues.hear(snapshotOf({body.getPlayerUpdate()}), '1', 1, ticks))
            all.push_back(cue);
    }
    EXPECT_EQ(count(all, Sound::jump), 1);
    EXPECT_EQ(count(all, Sound::landing), 1);
    EXPECT_GE(count(all, Sound::step), 3);
    EXPECT_LE(count(all, Sound::step), 6);
}

TEST_F(Hearing, NumbersOfALyingRoomAreSilent) {
    constexpr float huge = std::numeric_limits<float>::max();
    PlayerUpdate far = playerAt('2', {huge, -huge, huge});
    PlayerUpdate wide = playerAt('3', middle);
    wide.direction = {huge, huge, huge};
    PlayerUpdate blind = playerAt('4', middle);
    blind.direction = {};
    for (PlayerUpdate* each : {&far, &wide, &blind})
        each->shooting = true;
    for (int tick = 0; tick < 3; ++tick)
        EXPECT_TRUE(hear({far, wide, blind}).empty());
    EXPECT_TRUE(cues.jets().empty());

    PlayerUpdate own = playerAt('1', middle);
    own.points = std::numeric_limits<int>::min();
    hear({own});
    own.points = std::numeric_limits<int>::max();
    EXPECT_EQ(count(hear({own}), Sound::soaking), 1);
}

TEST_F(Hearing, TwoSlotsOfOneIdentifierAreOneBody) {
    PlayerUpdate shooter = playerAt('2', middle);
    shooter.shooting = true;
    hear({shooter, shooter});
    EXPECT_EQ(cues.jets().size(), 1u);
}

TEST(CuesWithoutAMap, KnowNoFloor) {
    const MapManager map;
    Cues cues(map);
    PlayerUpdate walker = playerAt('2', middle);
    walker.shooting = true;
    for (int tick = 0; tick < 100; ++tick) {
        walker.position.z += 6.0f;
        for (const Cue& cue : cues.hear(snapshotOf({walker}), '1', 1))
            EXPECT_EQ(cue.sound, Sound::jet);
    }
}

TEST(MaterialBelow, IsOfTheCubeUnderTheMiddleOrACorner) {
    MapManager map = withoutSolids(4, 4, 4);
    Box& cube = map.cubes[1][0][1];
    cube.solid = 1;
    cube.cellValue = wood;
    const auto below = [&](float x, float y, float z) { return materialBelow(map, {x, y, z}); };
    EXPECT_EQ(below(96.0f, standing, 96.0f), wood);
    EXPECT_EQ(below(50.0f, standing, 140.0f), wood) << "a corner of the body";
    EXPECT_EQ(below(30.0f, standing, 96.0f), std::nullopt);
    EXPECT_EQ(below(96.0f, standing + 10.0f, 96.0f), std::nullopt) << "in the air";
    EXPECT_EQ(materialBelow(MapManager(), {96.0f, standing, 96.0f}), std::nullopt);
}
