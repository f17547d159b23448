#include "client/Interpolation.h"
#include "common/Chance.h"
#include "src/Player.h"
#include "tests/support/Arenas.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <utility>

using namespace drench::client;
using std::chrono::milliseconds;

namespace {

const Time start = Time() + std::chrono::hours(1);

constexpr double period = 16.5;

Time moment(double ticks) {
    return start + std::chrono::duration_cast<Clock::duration>(
                       std::chrono::duration<double, std::milli>(ticks * period));
}

PlayerUpdate playerAt(char id, vec3 position) {
    PlayerUpdate player;
    player.id = id;
    player.position = position;
    player.direction = vec3(0.0f, 0.0f, 1.0f);
    return player;
}

template<typename... Players>
UpdateMessage stateOf(const Players&... players) {
    UpdateMessage state;
    (state.add(players), ...);
    return state;
}

/// A body on the floor of an empty court, seeing along z.
Player bodyIn(MapManager& map, vec3 centre) {
    Player body = bodyAt(map, centre, centre + vec3(0.0f, 0.0f, 1.0f));
    body.playerID = '2';
    return body;
}

UpdateMessage stateAfterTick(Player& body) {
    body.update(0.0f);
    return stateOf(body.getPlayerUpdate());
}

} // namespace

TEST(Interpolation, BlendsPositionAndViewBetweenTwoTicks) {
    MapManager map = loaded(emptyCourt());
    Interpolation others(map);
    PlayerUpdate from = playerAt('2', {500.0f, standing, 500.0f});
    PlayerUpdate to = playerAt('2', {508.0f, standing, 496.0f});
    to.direction = vec3(1.0f, 0.0f, 0.0f);
    to.rotation = quat(0.0f, 1.0f, 0.0f, 0.0f);
    others.take(stateOf(from), 10, start);
    others.take(stateOf(to), 12, start);
    const std::vector<PlayerUpdate> drawn = others.at(10.5, start);
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_FLOAT_EQ(drawn[0].position.x, 502.0f);
    EXPECT_FLOAT_EQ(drawn[0].position.z, 499.0f);
    EXPECT_NEAR(drawn[0].direction.x / drawn[0].direction.z, 1.0 / 3.0, 1e-6);
    EXPECT_NEAR(drawn[0].direction.length(), 1.0, 1e-6);
    EXPECT_NEAR(drawn[0].rotation.y / drawn[0].rotation.w, 1.0 / 3.0, 1e-6);
}

TEST(Interpolation, TurnsTheShorterWay) {
    MapManager map = loaded(emptyCourt());
    Interpolation others(map);
    PlayerUpdate from = playerAt('2', {500.0f, standing, 500.0f});
    PlayerUpdate to = from;
    to.rotation = quat(0.0f, -0.6f, 0.0f, -0.8f);
    others.take(stateOf(from), 1, start);
    others.take(stateOf(to), 2, start);
    const quat drawn = others.at(1.5, start)[0].rotation;
    EXPECT_GT(drawn.w, 0.9f);
    EXPECT_GT(drawn.y, 0.2f);
}

TEST(Interpolation, TurnsTheShorterWayAboutAnyAxis) {
    MapManager map = loaded(emptyCourt());
    for (int one = 0; one < 4; ++one) {
        for (int other = 0; other < 4; ++other) {
            if (one == other)
                continue;
            float parts[4] = {};
            parts[one] = 0.6f;
            parts[other] = 0.8f;
            PlayerUpdate from = playerAt('2', {500.0f, standing, 500.0f});
            from.rotation = quat(parts[0], parts[1], parts[2], parts[3]);
            PlayerUpdate to = from;
            std::swap(parts[one], parts[other]);
            to.rotation = quat(-parts[0], -parts[1], -parts[2], -parts[3]);
            Interpolation others(map);
            others.take(stateOf(from), 1, start);
            others.take(stateOf(to), 2, start);
            const quat drawn = others.at(1.5, start)[0].rotation;
            const float along = drawn.x * from.rotation.x + drawn.y * from.rotation.y +
                                drawn.z * from.rotation.z + drawn.w * from.rotation.w;
            EXPECT_NEAR(along, 1.4f / std::sqrt(2.0f), 1e-5f) << one << " " << other;
        }
    }
}

TEST(Interpolation, NobodyIsDrawnBeforeTheFirstSnapshot) {
    MapManager map = loaded(emptyCourt());
    Interpolation others(map);
    EXPECT_TRUE(others.at(5.0, start).empty());
}

TEST(Interpolation, SoakedPlayersAndSpawnsLeapBetweenTicks) {
    MapManager map = loaded(emptyCourt());
    Interpolation others(map);
    const PlayerUpdate alive = playerAt('2', {500.0f, standing, 500.0f});
    const PlayerUpdate soaked = playerAt('2', Player::soakedPlace);
    const PlayerUpdate back = playerAt('2', {1033.1f, 658.0f, 1919.0f});
    others.take(stateOf(alive), 1, start);
    others.take(stateOf(soaked), 2, start);
    others.take(stateOf(back), 3, start);
    EXPECT_EQ(others.at(1.9, start)[0].position.x, 500.0f);
    EXPECT_EQ(others.at(2.0, start)[0].position.x, Player::soakedPlace.x);
    EXPECT_EQ(others.at(2.9, start)[0].position.x, Player::soakedPlace.x);
    EXPECT_EQ(others.at(3.0, start)[0].position.x, 1033.1f);
}

TEST(Interpolation, SoakedPlayersAreDrawnAtTheirPlaceToTheBit) {
    MapManager map = loaded(emptyCourt());
    Interpolation others(map);
    others.take(stateOf(playerAt('2', {500.0f, standing, 500.0f})), 1, start);
    others.at(1.5, start);
    others.take(stateOf(playerAt('2', {520.0f, standing, 500.0f})), 2, start);
    others.at(2.5, start);
    others.take(stateOf(playerAt('2', Player::soakedPlace)), 3, start);
    const vec3 place = others.at(3.5, start)[0].position;
    EXPECT_EQ(place.x, Player::soakedPlace.x);
    EXPECT_EQ(place.y, Player::soakedPlace.y);
    EXPECT_EQ(place.z, Player::soakedPlace.z);
}

TEST(Interpolation, WhoLeavesIsGoneAndWhoComesAppearsWithItsTick) {
    MapManager map = loaded(emptyCourt());
    Interpolation others(map);
    const PlayerUpdate first = playerAt('2', {500.0f, standing, 500.0f});
    const PlayerUpdate second = playerAt('3', {600.0f, standing, 500.0f});
    others.take(stateOf(first), 1, start);
    others.take(stateOf(second), 2, start);
    EXPECT_TRUE(others.at(1.5, start).empty());
    ASSERT_EQ(others.at(2.0, start).size(), 1u);
    EXPECT_EQ(others.at(2.0, start)[0].id, '3');
}

TEST(Interpolation, SnapshotsOfOldTicksAreIgnored) {
    MapManager map = loaded(emptyCourt());
    Interpolation others(map);
    others.take(stateOf(playerAt('2', {500.0f, standing, 500.0f})), 5, start);
    others.take(stateOf(playerAt('2', {600.0f, standing, 500.0f})), 5, start);
    EXPECT_EQ(others.at(5.0, start)[0].position.x, 500.0f);
}

TEST(Interpolation, BeyondTheNewestSnapshotTheGameMovesThemOn) {
    const int pairs[][2] = {{keyIndex::forward, -1},
                            {keyIndex::backward, -1},
                            {keyIndex::left, -1},
                            {keyIndex::right, -1},
                            {keyIndex::forward, keyIndex::left},
                            {keyIndex::backward, keyIndex::right}};
    for (const auto& keys : pairs) {
        MapManager map = loaded(emptyCourt());
        Interpolation others(map);
        Player body = bodyIn(map, {1000.0f, standing, 1000.0f});
        body.rotateView(100, 40);
        // A strafe goes by the view of one report before.
        body.rotateView(0, 0);
        for (const int key : keys)
            body.setKey(key, true);
        others.take(stateAfterTick(body), 1, start);
        others.take(stateAfterTick(body), 2, start);
        for (int tick = 3; tick <= 12; ++tick) {
            const vec3 before = body.position;
            body.update(0.0f);
            const vec3 drawn = others.at(tick, start)[0].position;
            EXPECT_LT((drawn - body.position).length(), 0.02f) << keys[0] << " " << tick;
            const vec3 half = others.at(tick - 0.5, start)[0].position;
            EXPECT_LT((half - (before + body.position) * 0.5f).length(), 0.02f);
        }
    }
}

TEST(Interpolation, JumpsGoOnInTheirArcAndLand) {
    for (const int missed : {0, 3}) {
        MapManager map = loaded(emptyCourt());
        Interpolation others(map);
        Player body = bodyIn(map, {1000.0f, standing, 1000.0f});
        body.update(0.0f);
        body.setKey(keyIndex::jump, true);
        others.take(stateAfterTick(body), 1, start);
        for (int tick = 0; tick < missed; ++tick)
            body.update(0.0f);
        others.take(stateAfterTick(body), 2 + missed, start);
        for (int tick = 3 + missed; tick <= 30; ++tick) {
            body.update(0.0f);
            EXPECT_LT((others.at(tick, start)[0].position - body.position).length(), 0.02f) << tick;
        }
    }
}

TEST(Interpolation, NobodyIsCarriedThroughAWallNorForEver) {
    MapManager map = loaded(emptyCourt());
    Interpolation others(map);
    others.take(stateOf(playerAt('2', {1000.0f, standing, 1000.0f})), 1, start);
    others.take(stateOf(playerAt('2', {1000.0f, standing, 1006.0f})), 2, start);
    const double longest = Interpolation::longestCarry;
    EXPECT_NEAR(others.at(2.0 + longest, start)[0].position.z, 1006.0 + 6.0 * longest, 0.01);
    EXPECT_EQ(others.at(1000.0, start)[0].position.z,
              others.at(2.0 + longest, start)[0].position.z);

    Interpolation near(map);
    near.take(stateOf(playerAt('2', {1000.0f, standing, 1940.0f})), 1, start);
    near.take(stateOf(playerAt('2', {1000.0f, standing, 1946.0f})), 2, start);
    EXPECT_LE(near.at(20.0, start)[0].position.z + Player::bodySize.z / 2.0f, 31.0f * 64.0f);
}

TEST(Interpolation, ASurpriseFadesInsteadOfJumping) {
    MapManager map = loaded(emptyCourt());
    Interpolation others(map);
    others.take(stateOf(playerAt('2', {1000.0f, standing, 1000.0f})), 1, start);
    others.take(stateOf(playerAt('2', {1006.0f, standing, 1000.0f})), 2, start);
    EXPECT_NEAR(others.at(4.0, moment(0))[0].position.x, 1018.0, 0.01);
    // It had stopped instead.
    others.take(stateOf(playerAt('2', {1006.0f, standing, 1000.0f})), 3, moment(0));
    others.take(stateOf(playerAt('2', {1006.0f, standing, 1000.0f})), 4, moment(0));
    EXPECT_NEAR(others.at(4.0, moment(0))[0].position.x, 1018.0, 0.01);
    const double half = VisualError::fadesIn / 2.0 / period;
    EXPECT_NEAR(others.at(4.0, moment(half))[0].position.x, 1012.0, 0.01);
    EXPECT_NEAR(others.at(4.0, moment(2.0 * half))[0].position.x, 1006.0, 0.01);
}

TEST(Interpolation, LostAndLateSnapshotsNeitherStopNorJumpAWalk) {
    MapManager map = loaded(emptyCourt());
    drench::Chance chance(7);
    Interpolation others(map);
    DrawnTick clock;
    Player body = bodyIn(map, {200.0f, standing, 200.0f});
    body.setKey(keyIndex::forward, true);
    struct Arrival {
        double at;
        UpdateMessage state;
        std::int64_t tick;
    };
    std::vector<Arrival> arrivals;
    for (int tick = 0; tick < 250; ++tick) {
        const Arrival arrival = {tick + chance.between(0.0, 0.3), stateAfterTick(body), tick};
        if (tick % 10 != 7)
            arrivals.push_back(arrival);
    }
    std::size_t taken = 0;
    double last = 0.0;
    constexpr double framesPerTick = 4.0;
    for (int frame = 0; frame < 1000; ++frame) {
        const double now = frame / framesPerTick;
        for (; taken < arrivals.size() && arrivals[taken].at <= now; ++taken)
            others.take(arrivals[taken].state, arrivals[taken].tick, moment(arrivals[taken].at));
        const double tick = clock.advance(moment(now), now - 2.0, period);
        const std::vector<PlayerUpdate> drawn = others.at(tick, moment(now));
        if (drawn.empty())
            continue;
        const double z = drawn[0].position.z;
        if (now > 6.0) {
            EXPECT_NEAR(z - last, 6.0 / framesPerTick, 0.1) << frame;
        }
        last = z;
    }
    EXPECT_GT(last, 1400.0);
}

TEST(Interpolation, AnyFloatsAreDrawnWithoutHarm) {
    MapManager map = loaded(emptyCourt());
    Interpolation others(map);
    const float huge = std::numeric_limits<float>::max();
    std::int64_t tick = 0;
    for (const vec3 place : {vec3(huge, -huge, huge), vec3(-huge, huge, 0.0f),
                             vec3(1e30f, 0.0f, 0.0f), vec3(0.0f, 1e-40f, 0.0f)}) {
        for (int copy = 0; copy < 2; ++copy) {
            PlayerUpdate player = playerAt('4', place);
            player.direction = copy == 0 ? vec3(0.0f) : place;
            player.rotation = quat(0.0f, 0.0f, 0.0f, 0.0f);
            others.take(stateOf(player, playerAt('4', vec3(0.0f))), ++tick, start);
            for (const double at : {0.0, -1e300, 1e300, static_cast<double>(tick) - 0.5,
                                    static_cast<double>(tick) + 7.5})
                EXPECT_LE(others.at(at, start).size(), 4u);
        }
    }
}

TEST(DrawnTick, FollowsTheTargetGentlyAndNeverGoesBack) {
    DrawnTick clock;
    double last = clock.advance(moment(0.0), 100.0, period);
    EXPECT_EQ(last, 100.0);
    for (int frame = 1; frame <= 400; ++frame) {
        const double now = frame / 4.0;
        const double target = 100.0 + now + (frame > 40 ? -0.8 : 0.0) + (frame > 200 ? 3.0 : 0.0);
        const double tick = clock.advance(moment(now), target, period);
        EXPECT_GE(tick - last, 0.25 * 0.5 - 1e-6) << frame;
        EXPECT_LE(tick - last, 0.25 * 1.5 + 1e-6) << frame;
        last = tick;
    }
    EXPECT_NEAR(last, 100.0 + 100.0 - 0.8 + 3.0, 0.01);
}

TEST(DrawnTick, StartsAnewWhenTheTargetIsFarAway) {
    DrawnTick clock;
    clock.advance(moment(0.0), 5.0, period);
    EXPECT_EQ(clock.advance(moment(1.0), 60.0, period), 60.0);
    EXPECT_EQ(clock.advance(moment(2.0), 10.0, period), 10.0);
}

TEST(DrawnTick, ADistanceUnderATickShrinksByATwentiethOfTheTime) {
    DrawnTick clock;
    clock.advance(moment(0.0), 10.0, period);
    EXPECT_NEAR(clock.advance(moment(2.0), 12.5, period), 12.1, 1e-6);
    EXPECT_NEAR(clock.advance(moment(4.0), 16.5, period), 15.1, 1e-6);
}

TEST(InterpolationDelay, IsTwoTicksOnAGoodLineAndGrowsWithLateness) {
    EXPECT_EQ(interpolationDelay(0.3, 1.5, period), 2.0);
    EXPECT_NEAR(interpolationDelay(10.0, 6.0, period), 1.75 + 22.0 / 16.5, 1e-9);
}
