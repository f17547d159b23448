#include "client/Records.h"
#include "src/FileLoader.h"
#include "tests/client/PredictedLine.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::client;
using std::chrono::milliseconds;

namespace {

using Match = Prediction::Match;

const std::string& arena() {
    static const std::string text = fileStringContents(DRENCH_MAPDATA);
    return text;
}

PredictedLine::Settings delayed(int delay, std::uint64_t seed = 4) {
    PredictedLine::Settings settings;
    settings.line.delay = milliseconds(delay);
    settings.seed = seed;
    return settings;
}

/// All snapshots from one on were explained to the bit.
bool allExact(const PredictedLine& line, std::size_t from = 0) {
    return from < line.matches.size() &&
           std::all_of(line.matches.begin() + static_cast<std::ptrdiff_t>(from), line.matches.end(),
                       [](Match match) { return match == Match::exact; });
}

/// Whether the prediction has the very state of the room's player.
bool isTruth(const PredictedLine& line) {
    const Player* const explained = line.prediction.explained();
    const auto isSame = [](const auto& a, const auto& b) {
        return std::memcmp(&a, &b, sizeof a) == 0;
    };
    return explained && isSame(explained->position, line.truth.position) &&
           isSame(explained->look, line.truth.look) &&
           isSame(explained->strafeVector, line.truth.strafeVector) &&
           isSame(explained->box.min, line.truth.box.min) &&
           isSame(explained->keys, line.truth.keys) &&
           isSame(explained->verticalSpeed, line.truth.verticalSpeed) &&
           explained->inAir == line.truth.inAir;
}

/// Turns by the same counts every 8 ms.
void turn(PredictedLine& line, int dx, int times) {
    for (int i = 0; i < times; ++i) {
        line.sendView(dx, 0);
        line.pass(8.0);
    }
}

UpdateMessage stateOf(const PlayerUpdate& player) {
    UpdateMessage state;
    state.add(player);
    return state;
}

bool isFinite(const vec3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

} // namespace

TEST(PredictionStart, KnowsEachSpawnWhole) {
    for (std::uint64_t pose = 0; pose < Player::spawnPoseCount; ++pose) {
        PredictedLine line(arena(), delayed(0, pose));
        line.pass(1000.0);
        EXPECT_GT(line.matches.size(), 50u);
        EXPECT_TRUE(allExact(line)) << pose;
        EXPECT_TRUE(isTruth(line)) << pose;
    }
}

TEST(PredictionStart, NeedsNotTheFirstSnapshots) {
    for (std::uint64_t pose = 0; pose < Player::spawnPoseCount; ++pose) {
        PredictedLine line(arena(), delayed(0, pose));
        line.snapshotsToLose = 12;
        line.pass(1000.0);
        EXPECT_TRUE(allExact(line)) << pose;
        EXPECT_TRUE(isTruth(line)) << pose;
    }
}

TEST(PredictionStart, FindsTheDelayUnderAWrongRoundTrip) {
    for (const double roundTrip : {0.0, 600.0}) {
        PredictedLine::Settings settings = delayed(60);
        settings.roundTrip = roundTrip;
        PredictedLine line(arena(), settings);
        line.playAtRandom(3.0);
        EXPECT_TRUE(allExact(line)) << roundTrip;
        EXPECT_NEAR(line.prediction.line().delay(), 120.0, 8.0) << roundTrip;
    }
}

TEST(PredictionStart, PassesSnapshotsWithoutThePlayer) {
    MapManager map;
    map.init(arena());
    Prediction prediction(map);
    Player other('2', "Bo", 0.0f, 0);
    EXPECT_EQ(prediction.take({stateOf(other.getPlayerUpdate()), 0, Time()}, '1', 1.0, 16.4),
              Match::none);
    EXPECT_FALSE(prediction.body(Time()));
    EXPECT_EQ(prediction.explained(), nullptr);
    EXPECT_EQ(prediction.statistics().unexplained, 0u);
    EXPECT_EQ(prediction.statistics().explainedShare(), 1.0);
}

TEST(PredictionSoaked, HasNoBodyUntilTheReturn) {
    PredictedLine line(arena(), delayed(40));
    line.playAtRandom(2.0);
    EXPECT_TRUE(line.prediction.body(line.now));
    line.soak();
    line.playAtRandom(2.0);
    EXPECT_FALSE(line.prediction.body(line.now));
    EXPECT_EQ(line.prediction.explained(), nullptr);
    line.playAtRandom(3.0);
    EXPECT_TRUE(line.prediction.body(line.now));
    EXPECT_TRUE(allExact(line));
}

TEST(PredictionSoaked, NeedsNotTheTicksOfTheReturn) {
    for (std::uint64_t seed = 0; seed < 8; ++seed) {
        PredictedLine line(arena(), delayed(40, seed));
        line.playAtRandom(1.0);
        line.soak();
        line.playAtRandom(3.96);
        line.snapshotsToLose = 12;
        line.playAtRandom(2.0);
        EXPECT_FALSE(line.truth.dead);
        EXPECT_TRUE(allExact(line)) << seed;
    }
}

TEST(PredictionTicks, MaySitOneOutWhenAnotherPlayerIsRemoved) {
    PredictedLine line(arena(), delayed(0));
    line.others = 2;
    line.sendKey(keyIndex::forward, true);
    line.pass(1000.0);
    line.others = 1;
    line.movesNext = false;
    line.pass(500.0);
    line.others = 0;
    line.pass(500.0);
    EXPECT_TRUE(allExact(line));
    EXPECT_TRUE(isTruth(line));
}

TEST(PredictionTicks, NeverSitOneOutOtherwise) {
    PredictedLine line(arena(), delayed(0));
    line.sendKey(keyIndex::forward, true);
    line.pass(1000.0);
    line.movesNext = false;
    line.pass(100.0);
    EXPECT_FALSE(allExact(line));
}

TEST(PredictionTicks, AreCountedThroughLosses) {
    PredictedLine line(arena(), delayed(0));
    line.sendKey(keyIndex::forward, true);
    line.pass(1000.0);
    for (int missed = 1; missed <= 12; ++missed) {
        line.snapshotsToLose = missed;
        line.pass(missed * 16.5 + 200.0);
        EXPECT_EQ(line.prediction.tick(), line.tick) << missed;
    }
    EXPECT_TRUE(allExact(line));
}

TEST(PredictionTicks, AreNotInventedWhenTheRoomIsHeldUp) {
    PredictedLine line(arena(), delayed(40));
    line.playAtRandom(3.0);
    line.sendKey(keyIndex::forward, true);
    for (const double late : {30.0, 60.0, 120.0}) {
        line.stall(late);
        line.playAtRandom(2.0);
    }
    EXPECT_TRUE(allExact(line));
}

TEST(PredictionLosses, AreNotToldOfRecordsThatWereHeldUp) {
    for (const double held : {8.0, 17.0, 24.0, 32.0}) {
        PredictedLine line(arena(), delayed(40));
        line.sendKey(keyIndex::forward, true);
        line.pass(500.0);
        // Equal counts: one more or less of them tells nothing of which.
        turn(line, -1, 100);
        line.holdRecords(held);
        turn(line, -1, 30);
        turn(line, 2, 60);
        EXPECT_TRUE(allExact(line)) << held;
        EXPECT_TRUE(line.told.empty()) << held;
    }
}

TEST(PredictionLosses, TellOfAViewOnce) {
    PredictedLine line(arena(), delayed(40));
    line.pass(1000.0);
    turn(line, 3, 20);
    line.recordsToLose = 1;
    line.sendView(7, -5);
    line.pass(8.0);
    turn(line, 3, 40);
    ASSERT_EQ(line.told.size(), 1u);
    const auto* const view = std::get_if<ViewMessage>(&line.told[0]);
    ASSERT_TRUE(view);
    EXPECT_EQ(view->dx, 7);
    EXPECT_EQ(view->dy, -5);
    EXPECT_TRUE(allExact(line));
    EXPECT_EQ(line.prediction.statistics().lostViews, 1u);
    EXPECT_EQ(line.prediction.statistics().lostKeys, 0u);
    EXPECT_TRUE(line.prediction.takeLost().empty());
}

TEST(PredictionLosses, AreToldEvenIfNothingFollows) {
    PredictedLine line(arena(), delayed(40));
    line.pass(1000.0);
    turn(line, 3, 20);
    line.recordsToLose = 1;
    line.sendView(7, -5);
    line.pass(400.0);
    EXPECT_EQ(line.told.size(), 1u);
}

TEST(PredictionLosses, AreToldAsSoonAsNoHoldExplainsTheSilence) {
    for (int phase = 0; phase < 8; ++phase) {
        PredictedLine line(arena(), delayed(40));
        line.pass(1000.0);
        turn(line, 3, 100);
        line.pass(200.0 + 2.0 * phase);
        line.recordsToLose = 1;
        line.sendView(7, -5);
        // Due after 80 ms; then a tick and 29 ms, and the wait for the next snapshot.
        line.pass(123.0);
        EXPECT_TRUE(line.told.empty()) << phase;
        line.pass(22.0);
        EXPECT_EQ(line.told.size(), 1u) << phase;
    }
}

TEST(PredictionLosses, OfKeysAreMadeGood) {
    for (const int key : {int{keyIndex::forward}, int{keyIndex::shoot}}) {
        PredictedLine line(arena(), delayed(40));
        line.playAtRandom(0.1);
        line.pass(1000.0);
        line.recordsToLose = 1;
        line.sendKey(key, true);
        turn(line, 3, 60);
        ASSERT_EQ(line.told.size(), 1u) << key;
        const auto* const told = std::get_if<KeyMessage>(&line.told[0]);
        ASSERT_TRUE(told);
        EXPECT_EQ(told->key, key);
        EXPECT_EQ(line.prediction.statistics().lostKeys, 1u);
        EXPECT_TRUE(allExact(line));
    }
}

TEST(PredictionLosses, OfAJumpAreMadeGood) {
    PredictedLine line(arena(), delayed(40));
    line.pass(1000.0);
    const float ground = line.truth.position.y;
    line.recordsToLose = 1;
    line.sendKey(keyIndex::jump, true);
    float highest = ground;
    for (int i = 0; i < 60; ++i) {
        turn(line, 3, 1);
        highest = std::max(highest, line.truth.position.y);
    }
    EXPECT_EQ(line.told.size(), 1u);
    EXPECT_GT(highest, ground + 50.0f);
    EXPECT_TRUE(allExact(line));
}

TEST(PredictionBreaks, AreFollowedUntilTheNextSpawn) {
    PredictedLine line(arena(), delayed(40));
    line.playAtRandom(3.0);
    line.truth.moveAll({0.5f, 0.0f, 0.25f}, 1.0f);
    const std::size_t broken = line.matches.size();
    line.playAtRandom(5.0);
    EXPECT_EQ(line.prediction.statistics().breaks, 1u);
    const auto unexplained = std::count(line.matches.begin() + static_cast<std::ptrdiff_t>(broken),
                                        line.matches.end(), Match::none);
    EXPECT_GE(unexplained, 1);
    EXPECT_LE(unexplained, 15);
    EXPECT_EQ(line.matches.back(), Match::close);

    line.soak();
    line.playAtRandom(4.5);
    const std::size_t returned = line.matches.size();
    line.playAtRandom(2.0);
    EXPECT_TRUE(allExact(line, returned));
    EXPECT_EQ(line.prediction.statistics().breaks, 1u);
}

TEST(PredictionBreaks, LeaveTheBodyWhereTheRoomShowsIt) {
    PredictedLine line(arena(), delayed(0));
    line.truth.moveSpeed = 6.5f;
    line.sendKey(keyIndex::forward, true);
    for (int i = 0; i < 120; ++i) {
        line.pass(16.0);
        ASSERT_TRUE(line.prediction.explained());
        EXPECT_LE((line.prediction.explained()->position - line.truth.position).length(), 0.01f);
    }
    EXPECT_GE(line.prediction.statistics().breaks, 1u);
    EXPECT_GT(line.prediction.statistics().unexplained, 0u);
}

TEST(PredictionBreaks, GuessTheKeysOfAWalk) {
    for (const int key : {int{keyIndex::right}, int{keyIndex::left}, int{keyIndex::backward},
                          int{keyIndex::forward}}) {
        PredictedLine line(arena(), delayed(40));
        line.playAtRandom(0.2);
        line.pass(1500.0);
        line.truth.keys[key] = !line.truth.keys[key];
        const std::size_t broken = line.matches.size();
        turn(line, 3, 80);
        const std::size_t taken = line.matches.size() - broken;
        const auto unexplained =
            std::count(line.matches.begin() + static_cast<std::ptrdiff_t>(broken),
                       line.matches.end(), Match::none);
        EXPECT_GT(taken, 30u);
        EXPECT_LE(unexplained, 6) << key;
        ASSERT_TRUE(line.prediction.explained());
        EXPECT_EQ(line.prediction.explained()->keys[key], line.truth.keys[key]) << key;
    }
}

TEST(PredictionBreaks, GuessTheSpeedOfAFall) {
    PredictedLine line(arena(), delayed(0));
    line.pass(1500.0);
    line.truth.moveAll({0.0f, 400.0f, 0.0f}, 1.0f);
    line.pass(200.0);
    const std::size_t falling = line.matches.size();
    EXPECT_TRUE(line.truth.inAir);
    line.pass(200.0);
    EXPECT_EQ(std::count(line.matches.begin() + static_cast<std::ptrdiff_t>(falling),
                         line.matches.end(), Match::none),
              0);
    ASSERT_TRUE(line.prediction.explained());
    EXPECT_EQ(line.prediction.explained()->verticalSpeed, line.truth.verticalSpeed);
}

TEST(PredictionBreaks, LearnTheDelayAnew) {
    PredictedLine line(arena(), delayed(60));
    line.playAtRandom(2.0);
    line.truth.moveAll({0.5f, 0.0f, 0.25f}, 1.0f);
    line.delayRecords(100.0);
    line.playAtRandom(4.0);
    EXPECT_NEAR(line.prediction.line().delay(), 220.0, 15.0);
    const std::size_t recovered = line.matches.size();
    line.playAtRandom(4.0);
    EXPECT_LE(std::count(line.matches.begin() + static_cast<std::ptrdiff_t>(recovered),
                         line.matches.end(), Match::none),
              10);
}

TEST(PredictionBody, TurnsInTheVeryNextFrame) {
    PredictedLine line(arena(), delayed(100));
    line.pass(1000.0);
    const std::optional<Prediction::Body> before = line.prediction.body(line.now);
    line.sendView(90, 0);
    const std::optional<Prediction::Body> after = line.prediction.body(line.now);
    ASSERT_TRUE(before && after);
    EXPECT_EQ(after->tick, before->tick);
    Player turned = before->player;
    turned.rotateView(90, 0);
    EXPECT_NEAR(after->player.direction.x, turned.direction.x, 1e-5f);
    EXPECT_NEAR(after->player.direction.z, turned.direction.z, 1e-5f);
}

TEST(PredictionBody, StepsInTheNextTick) {
    PredictedLine line(arena(), delayed(100));
    line.pass(1000.0);
    const std::optional<Prediction::Body> before = line.prediction.body(line.now);
    line.sendKey(keyIndex::forward, true);
    line.pass(17.0);
    const std::optional<Prediction::Body> after = line.prediction.body(line.now);
    ASSERT_TRUE(before && after);
    EXPECT_GT((after->player.position - before->player.position).length(), 5.0f);
}

TEST(PredictionBody, IsAheadByTheRoundTrip) {
    for (const int delay : {0, 40, 100}) {
        PredictedLine line(arena(), delayed(delay));
        line.playAtRandom(3.0);
        const std::optional<Prediction::Body> body = line.prediction.body(line.now);
        ASSERT_TRUE(body);
        // Half a tick until the record acts, half a tick since the last snapshot.
        EXPECT_NEAR(static_cast<double>(body->tick - line.prediction.tick()),
                    2.0 * delay / 16.5 + 1.0, 1.1)
            << delay;
    }
}

TEST(PredictionBody, IsAheadByASecondAtMost) {
    PredictedLine line(arena(), delayed(0));
    line.pass(1000.0);
    line.snapshotsToLose = 10'000;
    line.pass(30'000.0);
    const std::optional<Prediction::Body> body = line.prediction.body(line.now);
    ASSERT_TRUE(body);
    EXPECT_EQ(body->tick - line.prediction.tick(), 64);
}

TEST(PredictionBody, IsOfTheTickThatTakesTheInput) {
    // The room's ticks wander by some tenths of a millisecond meanwhile, and by more if it is late.
    for (const auto& [delay, most] : {std::pair(0, 0.02), {40, 0.04}}) {
        for (std::uint64_t seed = 0; seed < 4; ++seed) {
            PredictedLine line(arena(), delayed(delay, seed));
            line.playAtRandom(20.0);
            EXPECT_LT(line.wrongTickShare(), most) << delay << " " << seed;
        }
    }
}

TEST(PredictionBody, IsWhereTheRoomPutsIt) {
    PredictedLine line(arena(), delayed(40));
    line.playAtRandom(20.0);
    const std::vector<float> errors = line.errors();
    ASSERT_GT(errors.size(), 1500u);
    EXPECT_LT(errors[errors.size() / 2], 0.1f);
    EXPECT_LT(errors[errors.size() * 9 / 10], 6.0f);
}

TEST(PredictionEye, NeverJumpsButForASpawn) {
    PredictedLine::Settings settings = delayed(40);
    settings.line.jitter = milliseconds(5);
    settings.line.loss = 0.02;
    PredictedLine line(arena(), settings);
    line.playAtRandom(20.0);
    float farthest = 0.0f;
    int frames = 0;
    for (std::size_t i = 1; i < line.eyes.size(); ++i) {
        if (!line.eyes[i - 1] || !line.eyes[i])
            continue;
        farthest = std::max(farthest, (*line.eyes[i] - *line.eyes[i - 1]).length());
        ++frames;
    }
    EXPECT_GT(frames, 4500);
    // A key shows with a part of one tick's step.
    EXPECT_LT(farthest, 15.0f);
}

TEST(PredictionEye, MovesEvenlyWithoutNews) {
    for (const int delay : {0, 7, 40}) {
        PredictedLine line(arena(), delayed(delay));
        line.playAtRandom(0.5);
        line.pass(1500.0);
        for (int key = 0; key < keyIndex::count; ++key)
            line.sendKey(key, key == keyIndex::forward);
        line.pass(300.0);
        const std::size_t from = line.eyes.size();
        line.pass(500.0);
        for (std::size_t i = from; i < line.eyes.size(); ++i) {
            const float step = (*line.eyes[i] - *line.eyes[i - 1]).length();
            EXPECT_NEAR(step, 6.0f * 1000.0f / 240.0f / 16.5f, 0.6f) << delay;
        }
    }
}

TEST(PredictionHostile, NumbersOfAnySizeLeaveTheBodySomewhere) {
    PredictedLine line(arena(), delayed(0));
    line.sendKey(keyIndex::forward, true);
    line.sendKey(keyIndex::left, true);
    line.pass(1000.0);
    Time now = line.now;
    for (const float size : {0.0f, 1e-38f, 1.9f, 1e3f, 9e6f, 1e10f, 1e38f}) {
        for (int what = 0; what < 6; ++what) {
            PlayerUpdate seen = line.truth.getPlayerUpdate();
            if (what == 0)
                seen.position = {size, -size, size};
            if (what == 1)
                seen.position.y = -size;
            if (what == 2)
                seen.direction = {size, size, -size};
            if (what == 3)
                seen.direction = {0.0f, size, 0.0f};
            if (what == 4)
                seen.rotation = quat(size, -size, size, size);
            if (what == 5)
                seen.rotation.w = size;
            for (int i = 0; i < 3; ++i) {
                now += milliseconds(16);
                line.prediction.take({stateOf(seen), 0, now}, '1', std::nullopt, 16.4);
                const std::optional<Prediction::Body> body = line.prediction.body(now);
                EXPECT_TRUE(!body || (isFinite(body->eye) && isFinite(body->player.position)))
                    << size << " " << what;
            }
        }
    }
    EXPECT_GT(line.prediction.statistics().unexplained, 30u);
}

TEST(PredictionHostile, KeysOfNoKeyboardAndWordsArePassedOver) {
    PredictedLine line(arena(), delayed(0));
    line.pass(1000.0);
    KeyMessage odd;
    odd.down = 1;
    for (const int key : {-128, -1, int{keyIndex::count}, 127}) {
        odd.key = static_cast<signed char>(key);
        line.prediction.sent({odd, TalkMessage()}, line.now);
    }
    line.pass(1000.0);
    EXPECT_TRUE(allExact(line));
    EXPECT_TRUE(line.told.empty());
}

TEST(PredictionHostile, StatesOfNoPlayerChangeNothing) {
    PredictedLine line(arena(), delayed(0));
    line.sendKey(keyIndex::forward, true);
    line.pass(1000.0);
    PlayerUpdate impossible = line.truth.getPlayerUpdate();
    impossible.position.x = 1e8f;
    EXPECT_EQ(line.prediction.take({stateOf(impossible), 0, line.now}, '1', 1.0, 16.4),
              Match::none);
    impossible = line.truth.getPlayerUpdate();
    impossible.direction.y = 3.0f;
    EXPECT_EQ(line.prediction.take({stateOf(impossible), 0, line.now}, '1', 1.0, 16.4),
              Match::none);
    impossible = line.truth.getPlayerUpdate();
    impossible.rotation.w = -3.0f;
    EXPECT_EQ(line.prediction.take({stateOf(impossible), 0, line.now}, '1', 1.0, 16.4),
              Match::none);
    EXPECT_TRUE(isTruth(line));
    line.pass(500.0);
    EXPECT_TRUE(allExact(line));
}

TEST(PredictionHostile, RecordsAndLossesAreForgottenInTheEnd) {
    PredictedLine line(arena(), delayed(0));
    line.pass(1000.0);
    // Nothing that is sent acts any more, and nobody takes what is lost.
    ViewMessage view;
    view.dx = 1;
    Time now = line.now;
    const auto send = [&](int count) {
        for (int i = 0; i < count; ++i)
            line.prediction.sent({view}, now);
    };
    send(200'000);
    for (int i = 0; i < 300; ++i) {
        now += milliseconds(16);
        line.prediction.take({stateOf(line.truth.getPlayerUpdate()), 0, now}, '1', 1.0, 16.4);
        send(20);
    }
    const Prediction::Statistics& statistics = line.prediction.statistics();
    EXPECT_GT(statistics.lostViews, 2000u);
    EXPECT_LT(statistics.lostViews, 20'000u);
    EXPECT_EQ(line.prediction.takeLost().size(), 1024u);
    EXPECT_TRUE(line.prediction.takeLost().empty());
}
