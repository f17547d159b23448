#include "game/Match.h"

#include "src/Player.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <vector>

using namespace drench;
using namespace drench::game;

namespace {

using std::chrono::milliseconds;

constexpr vec3 somewhere{500.0f, 139.0f, 500.0f};

PlayerUpdate player(char id, const std::string& name, int points = 0) {
    PlayerUpdate update;
    update.id = id;
    update.position = somewhere;
    update.points = points;
    std::copy_n(name.data(), std::min(name.size(), sizeof update.name - 1), update.name);
    return update;
}

PlayerUpdate soaked(PlayerUpdate update) {
    update.position = Player::soakedPlace;
    return update;
}

/// A match that has begun, with a clock of its own.
class MatchUnderWay : public testing::Test {
  protected:
    Match match;
    client::Time now{};

    MatchUnderWay() { match.take(client::Joined{'1'}, now); }

    void pass(int time) { now += milliseconds(time); }
    void take(const client::Event& event) { match.take(event, now); }

    void see(std::initializer_list<PlayerUpdate> players) {
        client::Snapshot snapshot{};
        int slot = 0;
        for (const PlayerUpdate& each : players)
            snapshot.state.updates[slot++] = each;
        take(snapshot);
    }

    double secondsLeft(char id) const { return secondsUntilReturn(*match.player(id), now); }
};

const PlayerUpdate ann = player('1', "Ann");
const PlayerUpdate bob = player('2', "Bob", 3);

} // namespace

TEST_F(MatchUnderWay, PlayersAreThoseOfTheLatestSnapshot) {
    see({bob, ann});
    ASSERT_EQ(match.players().size(), 2u);
    EXPECT_EQ(match.players()[0].id, '1') << "ordered by identifier";
    EXPECT_EQ(match.players()[1].name, "Bob");
    EXPECT_EQ(match.players()[1].points, 3);
    EXPECT_EQ(match.self()->name, "Ann");
    see({ann});
    EXPECT_EQ(match.players().size(), 1u);
    EXPECT_EQ(match.player('2'), nullptr);
}

TEST_F(MatchUnderWay, FirstOfTwoSlotsWithOneIdentifierCounts) {
    see({bob, player('2', "Liar", 9), ann});
    ASSERT_EQ(match.players().size(), 2u);
    EXPECT_EQ(match.player('2')->name, "Bob");
}

TEST_F(MatchUnderWay, NamesCanBeDrawn) {
    see({player('1', "A\x1B[31m"), player('2', "")});
    EXPECT_EQ(match.player('1')->name, "A\xEF\xBF\xBD[31m");
    EXPECT_EQ(match.player('2')->name, "(no name)");
}

TEST_F(MatchUnderWay, SoakedPlayerReturnsAfterFourSeconds) {
    see({ann, bob});
    EXPECT_EQ(match.player('2')->soakedSince, std::nullopt);
    EXPECT_EQ(secondsLeft('2'), 0.0);
    pass(500);
    see({ann, soaked(bob)});
    EXPECT_EQ(match.player('2')->soakedSince, now);
    EXPECT_NEAR(secondsLeft('2'), 4.0, 1e-9);
    pass(1500);
    see({ann, soaked(bob)});
    EXPECT_NEAR(secondsLeft('2'), 2.5, 1e-9);
    pass(3000);
    EXPECT_EQ(secondsLeft('2'), 0.0) << "late, but never negative";
    see({ann, bob});
    EXPECT_EQ(match.player('2')->soakedSince, std::nullopt);
}

TEST_F(MatchUnderWay, TellsWhoSoakedWhom) {
    see({ann, bob});
    take(client::Soaking{"Bob", "Ann"});
    ASSERT_EQ(match.notices().size(), 1u);
    const MatchNotice& notice = match.notices()[0];
    EXPECT_EQ(notice.kind, MatchNotice::Kind::soaking);
    EXPECT_EQ(notice.words, "Bob soaked Ann");
    EXPECT_EQ(notice.who.id, '2');
    EXPECT_EQ(notice.whom.id, '1');
    EXPECT_EQ(notice.moment, now);
    EXPECT_EQ(match.self()->soakedBy, "") << "no snapshot shows it yet";
    pass(16);
    see({soaked(ann), bob});
    EXPECT_EQ(match.self()->soakedBy, "Bob");
    pass(4000);
    see({ann, bob});
    EXPECT_EQ(match.self()->soakedBy, "");
}

TEST_F(MatchUnderWay, TellsWhoSoakedWhomWhenTheSnapshotCameFirst) {
    see({soaked(ann), soaked(bob)});
    pass(10);
    take(client::Soaking{"Bob", "Ann"});
    EXPECT_EQ(match.self()->soakedBy, "Bob");
    EXPECT_EQ(match.player('2')->soakedBy, "");
    take(client::Soaking{"Cid", "Ann"});
    EXPECT_EQ(match.self()->soakedBy, "Bob") << "soaked once";
}

TEST_F(MatchUnderWay, OldSoakingExplainsNoNewOne) {
    see({ann, bob});
    take(client::Soaking{"Bob", "Ann"});
    pass(1001);
    see({soaked(ann), bob});
    EXPECT_EQ(match.self()->soakedBy, "");
    pass(1001);
    take(client::Soaking{"Bob", "Ann"});
    EXPECT_EQ(match.self()->soakedBy, "");
}

TEST_F(MatchUnderWay, LatestOfSeveralToldSoakingsCounts) {
    see({ann, bob});
    take(client::Soaking{"Cid", "Ann"});
    take(client::Soaking{"Bob", "Ann"});
    take(client::Soaking{"Eve", "Bob"});
    see({soaked(ann), bob});
    EXPECT_EQ(match.self()->soakedBy, "Bob");
}

TEST_F(MatchUnderWay, NameThatSeveralHaveNamesNobody) {
    see({ann, player('2', "Bob"), player('3', "Bob")});
    take(client::Soaking{"Bob", "Ann"});
    EXPECT_EQ(match.notices().back().who.name, "Bob");
    EXPECT_EQ(match.notices().back().who.id, 0);
    EXPECT_EQ(match.notices().back().whom.id, '1');
}

TEST_F(MatchUnderWay, TellsWhoComesAndGoes) {
    see({ann});
    take(client::PlayerJoined{"Bob"});
    take(client::PlayerLeft{"\x07"});
    take(client::Notice{"free\nbeer"});
    ASSERT_EQ(match.notices().size(), 3u);
    EXPECT_EQ(match.notices()[0].words, "Bob joined");
    EXPECT_EQ(match.notices()[0].kind, MatchNotice::Kind::joined);
    EXPECT_EQ(match.notices()[1].words, "\xEF\xBF\xBD left");
    EXPECT_EQ(match.notices()[1].kind, MatchNotice::Kind::left);
    EXPECT_EQ(match.notices()[2].words, "free\xEF\xBF\xBD"
                                        "beer");
    EXPECT_EQ(match.notices()[2].kind, MatchNotice::Kind::other);
}

TEST_F(MatchUnderWay, WordsHaveTheirSpeakersName) {
    see({ann, bob});
    take(client::Chat{'2', "hi \x1B[2J"});
    take(client::Chat{'4', "who am I"});
    ASSERT_EQ(match.said().size(), 2u);
    EXPECT_EQ(match.said()[0].speaker.name, "Bob");
    EXPECT_EQ(match.said()[0].speaker.id, '2');
    EXPECT_EQ(match.said()[0].words, "hi \xEF\xBF\xBD[2J");
    EXPECT_EQ(match.said()[1].speaker.name, "player 4");
    see({ann, player('2', "Eve")});
    EXPECT_EQ(match.said()[0].speaker.name, "Bob") << "as it was then";
}

TEST_F(MatchUnderWay, ListsStayBounded) {
    for (int i = 0; i < 1000; ++i) {
        take(client::Chat{'1', std::to_string(i)});
        take(client::Soaking{"Ann", std::to_string(i)});
    }
    EXPECT_EQ(match.said().size(), Match::mostSaid);
    EXPECT_EQ(match.said().back().words, "999");
    EXPECT_EQ(match.notices().size(), Match::mostNotices);
    EXPECT_EQ(match.notices().back().words, "Ann soaked 999");
}

TEST_F(MatchUnderWay, AnotherPlayerUnderTheSameIdentifierBeginsAnew) {
    see({ann, bob});
    take(client::Soaking{"Ann", "Bob"});
    see({ann, soaked(bob)});
    pass(100);
    see({ann, soaked(player('2', "Eve", -1))});
    EXPECT_EQ(match.player('2')->name, "Eve");
    EXPECT_EQ(match.player('2')->soakedSince, now);
    EXPECT_EQ(match.player('2')->soakedBy, "");
}

TEST(Match, HasUsInItWhileTheRoomHas) {
    Match match;
    EXPECT_EQ(match.ownId(), 0);
    EXPECT_EQ(match.self(), nullptr);
    for (const client::Event& ending :
         std::vector<client::Event>{client::Refused{}, client::Unanswered{true},
                                    client::Dropped{client::Dropped::Reason::silence}}) {
        match.take(client::Joined{'3'}, {});
        EXPECT_EQ(match.ownId(), '3');
        match.take(ending, {});
        EXPECT_EQ(match.ownId(), 0);
    }
}

TEST_F(MatchUnderWay, SoakingBeforeTheRoomWasLostExplainsNoneAfter) {
    see({ann, bob});
    take(client::Soaking{"Bob", "Ann"});
    take(client::Joined{'1'});
    see({soaked(ann), bob});
    EXPECT_EQ(match.self()->soakedBy, "");
}

TEST_F(MatchUnderWay, LostRoomLeavesWhatWasSaid) {
    see({ann, bob});
    take(client::Chat{'2', "hi"});
    take(client::Dropped{client::Dropped::Reason::silence});
    EXPECT_EQ(match.players().size(), 2u) << "as they stood";
    take(client::Joined{'2'});
    EXPECT_TRUE(match.players().empty());
    EXPECT_EQ(match.said().size(), 1u);
}
