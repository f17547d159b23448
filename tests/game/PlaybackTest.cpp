#include "game/Playback.h"

#include "common/Files.h"
#include "game/FrameCosts.h"
#include "tests/game/Allocations.h"
#include "tests/game/RecordedLine.h"
#include "tests/support/Arenas.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

constexpr vec3 start{500.0f, standing, 500.0f};
constexpr float step = 6.0f;

PlayerUpdate walker(int tick, const std::string& name = "Ann") {
    return playerAt('1', start + vec3(0.0f, 0.0f, step * static_cast<float>(tick % 100)), name);
}

const PlayerUpdate bob = playerAt('2', {900.0f, standing, 900.0f}, "Bob");

/// 1,000 ticks, 16 seconds. Ann walks and starts anew every hundred ticks; Bob is soaked by her at
/// 6.4 s, and by somebody unknown, whose notice got lost, at 9.6 s, each time for four seconds but
/// the second until the end.
std::vector<PlayedEvent> match() {
    RecordedLine line;
    line.hear(acceptanceDatagram('1'));
    for (int tick = 0; tick < 1000; ++tick) {
        if (tick == 100)
            line.hear(chatDatagram('2', "hello"));
        if (tick == 400)
            line.hear(noticeDatagram("Ann soaked Bob!"));
        const bool isSoaked = (tick >= 400 && tick < 550) || (tick >= 600 && tick < 800);
        PlayerUpdate other = isSoaked ? soaked(bob) : bob;
        PlayerUpdate first = walker(tick);
        first.points = tick >= 400 ? 1 : 0;
        line.tick({first, other});
    }
    return line.events();
}

struct PlaybackOfAMatch : testing::Test {
    MapManager map = loaded(emptyCourt());
    Playback playback{match()};

    float z() { return playback.players(map).front().position.z - start.z; }
};

/// All that a moment shows, in words that differ if it does.
std::string shown(const Playback& playback, MapManager& map) {
    std::string words;
    for (const MatchPlayer& each : playback.match().players())
        words += each.name + ' ' + std::to_string(each.points) + ' ' + each.soakedBy +
                 (each.soakedSince ? " soaked, " : ", ");
    for (const MatchNotice& each : playback.match().notices())
        words += each.words + "; ";
    for (const SaidLine& each : playback.match().said())
        words += each.speaker.name + ": " + each.words + "; ";
    for (const PlayerUpdate& each : playback.players(map))
        words += std::to_string(each.position.x) + ' ' + std::to_string(each.position.z) + ", ";
    return words;
}

} // namespace

TEST_F(PlaybackOfAMatch, BeginsAtTheFirstSnapshotAndEndsAtTheLast) {
    EXPECT_EQ(playback.moment(), 0.0);
    EXPECT_NEAR(playback.end(), 999 * 0.016, 0.001);
    EXPECT_EQ(playback.recorder(), '1');
    EXPECT_EQ(playback.match().ownId(), '1');
    EXPECT_NEAR(z(), 0.0f, 0.1f);
}

TEST_F(PlaybackOfAMatch, ShowsPlayersBetweenSnapshots) {
    playback.pass(10.5 * 0.016);
    EXPECT_NEAR(z(), 10.5f * step, 0.2f);
    playback.pass(0.25 * 0.016);
    EXPECT_NEAR(z(), 10.75f * step, 0.2f);
}

TEST_F(PlaybackOfAMatch, GoesOnAtItsSpeed) {
    EXPECT_EQ(playback.speed(), 1.0);
    for (int i = 0; i < 9; ++i)
        playback.faster();
    EXPECT_EQ(playback.speed(), 4.0);
    playback.pass(1.0);
    EXPECT_NEAR(playback.moment(), 4.0, 1e-6);
    for (int i = 0; i < 9; ++i)
        playback.slower();
    EXPECT_EQ(playback.speed(), 0.1);
    playback.pass(1.0);
    EXPECT_NEAR(playback.moment(), 4.1, 1e-6);
}

TEST_F(PlaybackOfAMatch, PausesOnRequestAndAtTheEnd) {
    playback.setPaused(true);
    playback.pass(1.0);
    EXPECT_EQ(playback.moment(), 0.0);
    EXPECT_TRUE(playback.passed().empty());
    playback.setPaused(false);
    playback.pass(100.0);
    EXPECT_EQ(playback.moment(), playback.end());
    EXPECT_TRUE(playback.isPaused());
    playback.setPaused(false);
    EXPECT_EQ(playback.moment(), 0.0) << "begins anew";
    playback.pass(1.0);
    EXPECT_NEAR(playback.moment(), 1.0, 1e-6);
}

TEST_F(PlaybackOfAMatch, ShowsAtAMomentWhatItShowsHoweverOneGotThere) {
    for (const double moment : {0.0, 1.7, 3.0, 6.41, 7.0, 9.9, 12.0, 15.9}) {
        Playback again(match());
        again.seek(moment);
        const std::string words = shown(again, map);
        playback.seek(15.0);
        playback.seek(moment);
        EXPECT_EQ(shown(playback, map), words) << "backward to " << moment;
        playback.seek(0.3);
        playback.pass(moment);
        playback.seek(moment);
        EXPECT_EQ(shown(playback, map), words) << "forward to " << moment;
    }
}

TEST_F(PlaybackOfAMatch, PassingShowsTheSameAsLeaping) {
    playback.pass(7.0);
    Playback leapt(match());
    leapt.seek(7.0);
    EXPECT_EQ(shown(playback, map), shown(leapt, map));
    EXPECT_NE(shown(playback, map).find("Bob 0 Ann soaked"), std::string::npos);
    EXPECT_NE(shown(playback, map).find("Bob: hello"), std::string::npos);
}

TEST_F(PlaybackOfAMatch, LeapsStayWithinIt) {
    playback.seek(-5.0);
    EXPECT_EQ(playback.moment(), 0.0);
    playback.seek(1e9);
    EXPECT_EQ(playback.moment(), playback.end());
    EXPECT_TRUE(playback.isAtEnd());
    EXPECT_FALSE(playback.players(map).empty());
}

TEST_F(PlaybackOfAMatch, TellsWhatHappenedOnTheWayAndNothingAfterALeap) {
    playback.pass(1.0);
    const auto snapshots = static_cast<long>(playback.passed().size());
    EXPECT_NEAR(static_cast<double>(snapshots), 62.0, 1.0);
    const unsigned leaps = playback.leaps();
    playback.seek(10.0);
    EXPECT_TRUE(playback.passed().empty());
    EXPECT_GT(playback.leaps(), leaps);
}

TEST_F(PlaybackOfAMatch, FindsSoakingsOnceEachEvenWithoutTheirNotice) {
    ASSERT_EQ(playback.soakings().size(), 2u);
    EXPECT_NEAR(playback.soakings()[0].moment, 6.4, 0.05);
    EXPECT_EQ(playback.soakings()[0].who, '1');
    EXPECT_EQ(playback.soakings()[0].whom, '2');
    EXPECT_NEAR(playback.soakings()[1].moment, 9.6, 0.05);
    EXPECT_EQ(playback.soakings()[1].who, 0);
    EXPECT_EQ(playback.soakings()[1].whom, '2');
}

TEST_F(PlaybackOfAMatch, LeapsFromSoakingToSoaking) {
    EXPECT_FALSE(playback.seekLastSoaking());
    ASSERT_TRUE(playback.seekNextSoaking());
    const double first = playback.soakings()[0].moment - Playback::leadToSoaking;
    EXPECT_NEAR(playback.moment(), first, 1e-6);
    ASSERT_TRUE(playback.seekNextSoaking());
    EXPECT_NEAR(playback.moment(), playback.soakings()[1].moment - Playback::leadToSoaking, 1e-6);
    EXPECT_FALSE(playback.seekNextSoaking());
    playback.pass(0.5);
    ASSERT_TRUE(playback.seekLastSoaking()) << "though some of it has passed";
    EXPECT_NEAR(playback.moment(), first, 1e-6);
    playback.pass(2.0);
    ASSERT_TRUE(playback.seekLastSoaking());
    EXPECT_NEAR(playback.moment(), first, 1e-6) << "once more the same";
}

TEST_F(PlaybackOfAMatch, IsSeenByWhomeverItIsWatchedAs) {
    playback.watchAs('2');
    playback.seek(7.0);
    ASSERT_TRUE(playback.match().self());
    EXPECT_EQ(playback.match().self()->name, "Bob");
    EXPECT_TRUE(playback.match().self()->soakedSince);
    playback.watchAs(0);
    playback.pass(1.0);
    EXPECT_EQ(playback.match().self(), nullptr);
}

TEST_F(PlaybackOfAMatch, KnowsWhereASoakedPlayerWas) {
    playback.seek(7.0);
    ASSERT_TRUE(playback.lastAlive('2'));
    EXPECT_EQ(playback.lastAlive('2')->position.x, bob.position.x);
    EXPECT_FALSE(playback.lastAlive('4'));
}

TEST(Playback, WithoutASnapshotThereIsNothingToWatch) {
    RecordedLine line;
    line.hear(acceptanceDatagram('1'));
    line.hear(noticeDatagram("Ann joined"));
    EXPECT_THROW(Playback(line.events()), InputError);
    EXPECT_THROW(Playback(std::vector<PlayedEvent>()), InputError);
}

TEST(Playback, MomentsCountFromTheBeginOfTheRecording) {
    RecordedLine line;
    line.now = 5000.0 - RecordedLine::period;
    line.ticks(100, {walker(0)});
    Playback playback(line.events());
    EXPECT_NEAR(playback.begin(), 5.0, 1e-3);
    EXPECT_NEAR(playback.end(), 5.0 + 99 * 0.016, 1e-3);
    EXPECT_EQ(playback.moment(), playback.begin());
    playback.seek(6.0);
    EXPECT_NEAR(playback.moment(), 6.0, 1e-6);
    playback.seek(1.0);
    EXPECT_EQ(playback.moment(), playback.begin());
}

TEST(Playback, OfASingleSnapshotStandsStill) {
    RecordedLine line;
    line.tick({walker(0)});
    Playback playback(line.events());
    MapManager map = loaded(emptyCourt());
    EXPECT_EQ(playback.end(), 0.0);
    EXPECT_EQ(playback.players(map).size(), 1u);
    playback.pass(1.0);
    EXPECT_TRUE(playback.isPaused());
    playback.setPaused(false);
    playback.pass(1.0);
    EXPECT_EQ(playback.moment(), 0.0);
    EXPECT_FALSE(playback.seekNextSoaking());
}

TEST(Playback, WhereSnapshotsLackForLongNobodySlidesAcross) {
    RecordedLine line;
    for (int tick = 0; tick < 90; ++tick)
        line.tick({walker(tick)});
    line.now += 2000.0;
    line.ticks(90, {walker(0)});
    Playback playback(line.events());
    MapManager map = loaded(emptyCourt());
    playback.seek(89 * 0.016 + 1.0);
    const float z = playback.players(map).front().position.z;
    EXPECT_GT(z, start.z + 89.0f * step + 20.0f * step) << "walked on for a while";
    EXPECT_LT(z, start.z + 89.0f * step + 40.0f * step) << "then stood";
}

TEST(Playback, OfDaysInWhichLittleHappensTakesLittleMemory) {
    RecordedLine line;
    constexpr long count = 20'000;
    for (long i = 0; i < count; ++i) {
        line.now += 11'000.0;
        line.tick({walker(static_cast<int>(i))});
    }
    std::vector<PlayedEvent> events = line.events();
    const long before = allocatedBytes();
    Playback playback(std::move(events));
    EXPECT_LT((allocatedBytes() - before) / count, long{sizeof(PlayedEvent)});
    MapManager map = loaded(emptyCourt());
    for (const std::size_t tick : {19'999u, 255u, 256u, 257u, 0u, 12'345u}) {
        playback.seek(playback.begin() + 11.016 * static_cast<double>(tick) + 0.001);
        EXPECT_NEAR(playback.players(map).front().position.z - start.z,
                    step * static_cast<float>(tick % 100), 1.0f)
            << tick;
    }
}

TEST(Playback, OfManySoakingsIsReadyAtOnce) {
    RecordedLine line;
    line.tick({walker(0), bob});
    std::vector<PlayedEvent> events = line.events();
    for (int i = 0; i < 300'000; ++i)
        events.push_back(
            {events.back().moment + std::chrono::seconds(2), client::Soaking{"Ann", "Bob"}});
    const std::chrono::nanoseconds before = threadProcessorTime();
    const Playback playback(std::move(events));
    EXPECT_LT(threadProcessorTime() - before, std::chrono::seconds(5));
    EXPECT_EQ(playback.soakings().size(), 300'000u);
}
