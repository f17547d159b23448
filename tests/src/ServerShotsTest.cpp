#include "tests/support/Arenas.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Datagrams.h"
#include "tests/support/ManualClock.h"
#include "tests/support/Room.h"

#include <gtest/gtest.h>

namespace {

constexpr vec3 alongZ(0.0f, 0.0f, 1.0f);

/// Players in the empty court, all facing along +z, in the order of joining.
struct Duel {
    Room room;
    UdpPeer peer;

    explicit Duel(const std::string& mapText = emptyCourt()) : room(mapText) {}

    Player& add(const std::string& name, vec3 position, vec3 facing = alongZ) {
        room.join(name, peer);
        Player& player = room.server.players.back();
        player.placeAt(position, position + facing);
        return player;
    }

    Player& player(size_t i) { return room.server.players[i]; }

    void hold(size_t i) { player(i).setKey(keyIndex::shoot, true); }

    /// One tick; returns what it printed.
    std::string tick() {
        const CapturedOutput output;
        room.tick();
        return output.text();
    }
};

} // namespace

TEST(Shots, VictimOnTheSegmentToTheWallIsSoaked) {
    Duel duel;
    duel.add("Ann", {1000, standing, 500});
    duel.add("Bo", {1000, standing, 900});
    duel.hold(0);
    EXPECT_EQ(duel.tick(), "Ann soaked Bo!\n");
    EXPECT_EQ(duel.player(0).playerUpdate.points, 1);
    EXPECT_EQ(duel.player(1).playerUpdate.points, -1);
    EXPECT_TRUE(duel.player(0).alive());
    EXPECT_FALSE(duel.player(1).alive());
    EXPECT_EQ(duel.player(1).deathTime, static_cast<float>(ManualClock::now));
    EXPECT_EQ(duel.player(1).position.x, -1375.2f);
}

TEST(Shots, NoticeGoesOutAtOnceAndPointsShowInTheNextTicksState) {
    Duel duel;
    duel.add("Ann", {1000, standing, 500});
    duel.add("Bo", {1000, standing, 900});
    duel.peer.received();
    duel.hold(0);
    duel.tick();
    const std::vector<std::string> first = duel.peer.received();
    ASSERT_EQ(first.size(), 4u) << "two states, then two notices, for two players at one address";
    UpdateMessage state;
    ASSERT_TRUE(readState(first[0], state));
    EXPECT_EQ(state.updates[0].points, 0);
    EXPECT_TRUE(state.updates[0].shooting);
    EXPECT_EQ(first[1], first[0]);
    EXPECT_EQ(first[2], noticeDatagram("Ann soaked Bo!"));
    EXPECT_EQ(first[3], first[2]);

    duel.tick();
    ASSERT_TRUE(readState(duel.peer.received().at(0), state));
    EXPECT_EQ(state.updates[0].points, 1);
    EXPECT_EQ(state.updates[1].points, -1);
    EXPECT_EQ(state.updates[1].position.x, -1375.2f);
}

TEST(Shots, AimAtTheOpenSkySoaksNobodyNotEvenWhoStandsInFront) {
    Duel duel;
    duel.add("Ann", {1000, standing, 1000}, {0.0f, 0.9f, 0.2f});
    duel.add("Bo", {1000, standing + 120, 1020});
    // A hit at (-1, -1, -1) taken for a place would soak whoever stands on the way there.
    duel.add("Cy", {900, standing - 10, 900});
    ASSERT_LT(duel.player(0).shoot(&duel.room.server.mapMan).x, 0.0f);
    duel.hold(0);
    EXPECT_EQ(duel.tick(), "");
    EXPECT_TRUE(duel.player(1).alive());
    EXPECT_TRUE(duel.player(2).alive());
    EXPECT_EQ(duel.player(0).playerUpdate.points, 0);
}

TEST(Shots, EveryoneOnTheSegmentIsSoakedInListOrder) {
    Duel duel;
    duel.add("Far", {1000, standing, 1500});
    duel.add("Ann", {1000, standing, 500});
    duel.add("Near", {1000, standing, 700});
    duel.peer.received();
    duel.hold(1);
    EXPECT_EQ(duel.tick(), "Ann soaked Far!\nAnn soaked Near!\n");
    EXPECT_EQ(duel.player(1).playerUpdate.points, 2);
    const std::vector<std::string> received = duel.peer.received();
    ASSERT_EQ(received.size(), 9u) << "for three players at one address";
    EXPECT_EQ(received[3], noticeDatagram("Ann soaked Far!"));
    EXPECT_EQ(received[6], noticeDatagram("Ann soaked Near!"));
}

TEST(Shots, PlayerBehindTheWallThatIsHitStaysDry) {
    Duel duel(arenaText(32, 16, 32, [](int, int j, int k) { return j == 0 || k == 12; }));
    duel.add("Ann", {1000, standing, 500});
    duel.add("Bo", {1000, standing, 900});
    ASSERT_EQ(duel.player(0).shoot(&duel.room.server.mapMan).z, 12 * 64.0f);
    duel.hold(0);
    EXPECT_EQ(duel.tick(), "");
    EXPECT_TRUE(duel.player(1).alive());
}

TEST(Shots, OfTwoWhoFireAtEachOtherOnlyTheEarlierInTheListScores) {
    Duel duel;
    duel.add("Ann", {1000, standing, 500}, {0, 0, 1});
    duel.add("Bo", {1000, standing, 900}, {0, 0, -1});
    duel.hold(0);
    duel.hold(1);
    EXPECT_EQ(duel.tick(), "Ann soaked Bo!\n");
    EXPECT_EQ(duel.player(0).playerUpdate.points, 1);
    EXPECT_EQ(duel.player(1).playerUpdate.points, -1);
}

TEST(Shots, PlayerSoakedByALaterShooterHasFiredAlready) {
    Duel duel;
    duel.add("Ann", {1000, standing, 500}, {0, 0, 1});
    duel.add("Bo", {1000, standing, 900}, {1, 0, 0});
    duel.add("Cy", {1500, standing, 500}, {-1, 0, 0});
    duel.hold(0);
    duel.hold(2);
    EXPECT_EQ(duel.tick(), "Ann soaked Bo!\nCy soaked Ann!\n");
    EXPECT_EQ(duel.player(0).playerUpdate.points, 0);
    EXPECT_FALSE(duel.player(0).alive());
}

TEST(Shots, VictimIsSoakedOnceWhileTheKeyStaysHeld) {
    Duel duel;
    duel.add("Ann", {1000, standing, 500});
    duel.add("Bo", {1000, standing, 900});
    duel.hold(0);
    duel.tick();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(duel.tick(), "");
    EXPECT_EQ(duel.player(0).playerUpdate.points, 1);
    EXPECT_TRUE(duel.player(0).isShooting()) << "firing does not release the key";
}

TEST(Shots, HeldFireSoaksOnEveryTickThatFindsAVictim) {
    Duel duel;
    duel.add("Ann", {1000, standing, 500});
    duel.add("Bo", {1000, standing, 900});
    duel.hold(0);
    for (int i = 1; i <= 3; ++i) {
        duel.player(1).dead = false;
        duel.player(1).placeAt({1000, standing, 900}, {1000, standing, 901});
        duel.tick();
        EXPECT_EQ(duel.player(0).playerUpdate.points, i);
    }
}

TEST(Shots, SoakingReleasesTheVictimsKeys) {
    Duel duel;
    duel.add("Ann", {1000, standing, 500});
    duel.add("Bo", {1000, standing, 900}, {1, 0, 0});
    duel.hold(0);
    duel.hold(1);
    duel.tick();
    EXPECT_FALSE(duel.player(1).isShooting());
}

TEST(Shots, DeadPlayerParkedOnTheSegmentIsSoakedAgain) {
    Duel duel;
    duel.add("Ann", {1000, standing, 500});
    duel.add("Bo", {1000, standing, 900});
    duel.player(1).die(static_cast<float>(ManualClock::now));
    // A shooter outside the world, whose shot passes the parking place on its way to a wall.
    const vec3 parked = duel.player(1).position;
    duel.player(0).placeAt(parked - vec3(100, 0, 100), parked);
    ASSERT_GE(duel.player(0).shoot(&duel.room.server.mapMan).x, 0.0f);
    duel.hold(0);
    EXPECT_EQ(duel.tick(), "Ann soaked Bo!\n");
    EXPECT_EQ(duel.player(1).deathTime, static_cast<float>(ManualClock::now));
}

TEST(Shots, TheDeadDoNotFireEvenWithTheKeyHeld) {
    Duel duel;
    duel.add("Ann", {1000, standing, 500});
    duel.add("Bo", {1000, standing, 900});
    duel.player(0).dead = true;
    duel.player(0).deathTime = static_cast<float>(ManualClock::now);
    duel.hold(0);
    EXPECT_EQ(duel.tick(), "");
    EXPECT_TRUE(duel.player(1).alive());
}

TEST(Shots, NobodySoaksThemselves) {
    Duel duel;
    duel.add("Ann", {1000, standing, 500});
    duel.hold(0);
    EXPECT_EQ(duel.tick(), "");
    EXPECT_TRUE(duel.player(0).alive());
    EXPECT_EQ(duel.player(0).playerUpdate.points, 0);
}

TEST(Shots, NoticeOfTwoLongNamesIsPrintedWholeAndSentAsItsFirstThirtyCharacters) {
    Duel duel;
    duel.add("Bartholomew", {1000, standing, 500});
    duel.add("Christopher", {1000, standing, 900});
    duel.peer.received();
    duel.hold(0);
    EXPECT_EQ(duel.tick(), "Bartholomew soaked Christopher!\n");
    const std::vector<std::string> received = duel.peer.received();
    ASSERT_EQ(received.size(), 4u);
    EXPECT_EQ(received[2], "tsBartholomew soaked Christopher");
    EXPECT_EQ(received[2].size(), 32u);
}

TEST(Shots, NoticeOfExactlyThirtyCharactersIsSentWithoutATerminator) {
    Duel duel;
    duel.add("Bartholomew", {1000, standing, 500});
    duel.add("Christophe", {1000, standing, 900});
    duel.peer.received();
    duel.hold(0);
    duel.tick();
    EXPECT_EQ(duel.peer.received().at(2), "tsBartholomew soaked Christophe!");
}
