#include "replay/Soakings.h"

#include "client/recording/RecordingBytes.h"
#include "common/Files.h"
#include "src/Player.h"
#include "tests/replay/RecordedMatch.h"
#include "tests/support/Datagrams.h"

#include <gtest/gtest.h>

using client::Way;
using replay::RecordedTime;
using replay::Soaking;

namespace {

PlayerUpdate playerAt(char id, const std::string& name, float x, int points = 0) {
    PlayerUpdate player;
    player.id = id;
    name.copy(player.name, sizeof player.name - 1);
    player.position = vec3(x, 139.25f, 100.0f);
    player.points = points;
    return player;
}

PlayerUpdate soaked(PlayerUpdate player, int points) {
    player.position = Player::soakedPlace;
    player.points = points;
    return player;
}

/// A recording bit by bit, a tick after the other.
struct Script {
    client::RecordingBytes recording{client::RecordingHeader{}};
    RecordedTime now{0};

    void datagram(const std::string& bytes, std::uint32_t line = 0) {
        recording.add({now, Way::fromRoom, line, bytes});
    }
    void state(const PlayerUpdate& a, const PlayerUpdate& b) {
        now += RecordedTime(16400);
        UpdateMessage state;
        state.add(a);
        state.add(b);
        datagram(bytesOf(state));
    }
    std::vector<Soaking> soakings(std::size_t most = replay::mostSoakings) {
        recording.end();
        client::RecordingReader reader(recording.takeReady(), "script");
        return replay::soakingsOf(reader, most);
    }
};

const PlayerUpdate ann = playerAt('1', "Ann", 100.0f);
const PlayerUpdate bo = playerAt('2', "Bo", 400.0f);
const PlayerUpdate annScored = playerAt('1', "Ann", 100.0f, 1);

} // namespace

TEST(Soakings, TellWhoWhomWhereAndFromHowFar) {
    Script script;
    script.state(ann, bo);
    script.datagram(noticeDatagram("Ann soaked Bo!"));
    const RecordedTime shot = script.now;
    script.state(annScored, soaked(bo, -1));
    script.state(annScored, soaked(bo, -1));
    const std::vector<Soaking> soakings = script.soakings();
    ASSERT_EQ(soakings.size(), 1u);
    EXPECT_EQ(soakings[0].time, shot);
    EXPECT_EQ(soakings[0].shooter, "Ann");
    EXPECT_EQ(soakings[0].victim, "Bo");
    EXPECT_EQ(soakings[0].at->x, 400.0f);
    EXPECT_EQ(soakings[0].from->x, 100.0f);
    EXPECT_EQ(soakings[0].distance, 300.0);
}

TEST(Soakings, ComeFromPointsWhenTheNoticeGotLost) {
    Script script;
    script.state(ann, bo);
    script.state(annScored, soaked(bo, -1));
    const std::vector<Soaking> soakings = script.soakings();
    ASSERT_EQ(soakings.size(), 1u);
    EXPECT_EQ(soakings[0].shooter, "Ann");
    EXPECT_EQ(soakings[0].distance, 300.0);
}

TEST(Soakings, ComeFromTheNoticeWhenStatesGotLost) {
    Script script;
    script.state(ann, bo);
    script.datagram(noticeDatagram("Ann soaked Bo!"));
    script.now += RecordedTime(6000000);
    script.state(annScored, playerAt('2', "Bo", 700.0f, -1));
    const std::vector<Soaking> soakings = script.soakings();
    ASSERT_EQ(soakings.size(), 1u);
    EXPECT_EQ(soakings[0].victim, "Bo");
    EXPECT_EQ(soakings[0].distance, 300.0);
}

TEST(Soakings, CountOnceWhenStatesOrNoticesComeLateOrTwice) {
    Script script;
    script.state(ann, bo);
    script.datagram(noticeDatagram("Ann soaked Bo!"));
    script.datagram(noticeDatagram("Ann soaked Bo!"));
    script.state(annScored, soaked(bo, -1));
    script.state(ann, bo);
    script.state(annScored, soaked(bo, -1));
    script.now += RecordedTime(4000000);
    script.state(annScored, playerAt('2', "Bo", 700.0f, -1));
    script.state(annScored, soaked(bo, -1));
    script.state(annScored, playerAt('2', "Bo", 700.0f, -1));
    EXPECT_EQ(script.soakings().size(), 1u);
}

TEST(Soakings, OfAnotherLineCountNotTwice) {
    Script script;
    script.state(ann, bo);
    script.datagram(noticeDatagram("Ann soaked Bo!"), 1);
    script.datagram(noticeDatagram("Ann soaked Bo!"));
    script.state(annScored, soaked(bo, -1));
    EXPECT_EQ(script.soakings().size(), 1u);
}

TEST(Soakings, OfTheSamePlayerCountAgainAfterAWhile) {
    Script script;
    for (int i = 0; i < 3; ++i) {
        script.state(ann, bo);
        script.state(annScored, soaked(bo, -1));
        script.now += RecordedTime(4000000);
    }
    EXPECT_EQ(Script(script).soakings(3).size(), 3u);
    EXPECT_THROW(script.soakings(2), InputError);
}

TEST(Soakings, OfARecordedMatchAreKnown) {
    RecordedMatch match;
    std::string all;
    for (const Soaking& soaking : replay::soakingsOf(match.reader))
        all += soaking.shooter + " soaked " + soaking.victim + " at " +
               std::to_string(soaking.time.count() / 1000) + " ms from " +
               std::to_string(static_cast<int>(soaking.distance.value_or(-1.0))) + "\n";
    EXPECT_EQ(all, "Brook soaked Walrus at 4727 ms from 385\n"
                   "Misty soaked Brook at 7923 ms from 257\n"
                   "Misty soaked Otter at 9291 ms from 252\n");
}
