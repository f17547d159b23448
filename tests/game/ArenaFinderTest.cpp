#include "game/ArenaFinder.h"

#include "arena/ArenaFile.h"
#include "common/Chance.h"
#include "src/Player.h"
#include "tests/game/Snapshots.h"
#include "tests/support/Arenas.h"

#include <functional>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

using Verdict = ArenaFinder::Verdict;

/// The arenas of the source tree.
std::vector<MapManager>& arenas() {
    static std::vector<MapManager> maps = [] {
        std::vector<MapManager> read;
        for (const char* name : {"default", "cascade", "low-tide"})
            read.push_back(
                arena::readArena(std::string(DRENCH_ARENAS) + "/" + name + ".plan").text.map);
        return read;
    }();
    return maps;
}

std::vector<const MapManager*> known() {
    std::vector<const MapManager*> all;
    for (const MapManager& map : arenas())
        all.push_back(&map);
    return all;
}

/// Four bodies that run, turn, jump and return after a while at random, by the game's own rules.
class Crowd {
  public:
    Crowd(MapManager& map, std::uint64_t seed) : chance_(seed) {
        for (char id = '1'; id <= '4'; ++id) {
            players_.emplace_back(id, "", 0.0f, chance_.below(Player::spawnPoseCount));
            players_.back().setMapMan(&map);
        }
    }

    client::Snapshot tick() {
        client::Snapshot snapshot{};
        snapshot.tick = tick_++;
        for (Player& player : players_) {
            steer(player);
            player.update(0.0f);
            snapshot.state.add(player.getPlayerUpdate());
        }
        return snapshot;
    }

  private:
    void steer(Player& player) {
        if (chance_.happens(0.002))
            player.spawnAt(chance_.below(Player::spawnPoseCount));
        if (chance_.happens(0.05))
            player.rotateView(chance_.below(1200) - 600, chance_.below(200) - 100);
        if (chance_.happens(0.05))
            player.setKey(chance_.below(4), chance_.happens(0.5));
        player.setKey(keyIndex::forward, chance_.happens(0.95));
        if (chance_.happens(0.05))
            player.setKey(keyIndex::jump, true);
    }

    Chance chance_;
    std::vector<Player> players_;
    std::int64_t tick_ = 0;
};

/// Lets a finder see this many ticks of a crowd; a share of them is lost.
ArenaFinder after(int ticks, MapManager& map, std::uint64_t seed, double lost = 0.0) {
    ArenaFinder finder(known());
    Crowd crowd(map, seed);
    Chance line(seed + 1000);
    for (int i = 0; i < ticks; ++i) {
        const client::Snapshot snapshot = crowd.tick();
        if (!line.happens(lost))
            finder.see(snapshot);
    }
    return finder;
}

constexpr int tenSeconds = 600;

} // namespace

TEST(ArenaFinder, FindsEachArenaByThePlayersInIt) {
    for (std::size_t arena = 0; arena < arenas().size(); ++arena) {
        for (std::uint64_t seed = 1; seed <= 5; ++seed) {
            const ArenaFinder finder = after(tenSeconds, arenas()[arena], seed);
            EXPECT_EQ(finder.verdict(), Verdict::one) << arena << ' ' << seed;
            EXPECT_EQ(finder.fitting(), std::vector<std::size_t>{arena}) << seed;
            EXPECT_EQ(finder.best(), arena);
        }
    }
}

TEST(ArenaFinder, NeverContradictsTheRightArena) {
    for (std::size_t arena = 0; arena < arenas().size(); ++arena) {
        const ArenaFinder finder = after(20000, arenas()[arena], 7);
        EXPECT_EQ(finder.contradictions(arena), 0) << arena;
        for (std::size_t other = 0; other < arenas().size(); ++other) {
            if (other != arena) {
                EXPECT_GT(finder.contradictions(other), 1000) << arena << ' ' << other;
            }
        }
    }
}

TEST(ArenaFinder, FindsItOverABadLineToo) {
    for (std::size_t arena = 0; arena < arenas().size(); ++arena) {
        const ArenaFinder finder = after(2 * tenSeconds, arenas()[arena], 3, 0.4);
        EXPECT_EQ(finder.fitting(), std::vector<std::size_t>{arena});
        EXPECT_EQ(finder.contradictions(arena), 0);
    }
}

TEST(ArenaFinder, SaysThatNoneFits) {
    MapManager unknown = loaded(emptyCourt());
    const ArenaFinder finder = after(2 * tenSeconds, unknown, 2);
    EXPECT_EQ(finder.verdict(), Verdict::none);
    EXPECT_TRUE(finder.fitting().empty());
    const std::size_t best = finder.best();
    for (std::size_t each = 0; each < arenas().size(); ++each)
        EXPECT_LE(finder.contradictions(best), finder.contradictions(each));
}

TEST(ArenaFinder, SaysThatSeveralFitBeforeItHasSeenMuch) {
    ArenaFinder finder(known());
    EXPECT_EQ(finder.verdict(), Verdict::several);
    EXPECT_EQ(finder.fitting(), (std::vector<std::size_t>{0, 1, 2}));
    EXPECT_EQ(finder.best(), 0u) << "the likeliest";
}

TEST(ArenaFinder, FewContradictionsAreForgiven) {
    const MapManager court = loaded(emptyCourt());
    ArenaFinder finder({&court});
    client::Snapshot inTheFloor{};
    inTheFloor.state = snapshotOf({playerAt('1', {1000.0f, 64.0f, 1000.0f})});
    for (int i = 0; i < 2; ++i)
        finder.see(inTheFloor);
    EXPECT_EQ(finder.verdict(), Verdict::one);
    finder.see(inTheFloor);
    EXPECT_EQ(finder.verdict(), Verdict::none);
}

TEST(ArenaFinder, SoakedAndForeignSlotsTeachNothing) {
    const MapManager court = loaded(emptyCourt());
    ArenaFinder finder({&court});
    client::Snapshot snapshot{};
    PlayerUpdate stranger = playerAt('9', {-500.0f, -500.0f, -500.0f});
    snapshot.state = snapshotOf({soaked(playerAt('1', {})), stranger, playerAt(0, {})});
    for (int i = 0; i < 10; ++i)
        finder.see(snapshot);
    EXPECT_EQ(finder.contradictions(0), 0);
}

TEST(ArenaFinder, FirstOfTwoSlotsWithOneIdentifierCounts) {
    const MapManager court = loaded(emptyCourt());
    ArenaFinder finder({&court});
    client::Snapshot snapshot{};
    snapshot.state = snapshotOf(
        {playerAt('1', {1000.0f, standing, 1000.0f}), playerAt('1', {1000.0f, 0.0f, 1000.0f})});
    finder.see(snapshot);
    EXPECT_EQ(finder.contradictions(0), 0);
}

TEST(ArenaFinder, LeapToAnotherHeightIsNoFall) {
    const MapManager court = loaded(emptyCourt());
    ArenaFinder finder({&court});
    client::Snapshot snapshot{};
    for (const float height : {200.0f, 600.0f, 600.0f}) {
        snapshot.state = snapshotOf({playerAt('1', {1000.0f, height, 1000.0f})});
        ++snapshot.tick;
        finder.see(snapshot);
    }
    EXPECT_EQ(finder.contradictions(0), 0);
}

TEST(ArenaFinder, NumbersOfAnySizeAreJudged) {
    const MapManager court = loaded(emptyCourt());
    ArenaFinder finder({&court});
    client::Snapshot snapshot{};
    for (const float size : {3e38f, -3e38f, 0.0f}) {
        snapshot.state = snapshotOf({playerAt('1', {size, size, size})});
        ++snapshot.tick;
        finder.see(snapshot);
    }
    EXPECT_EQ(finder.contradictions(0), 3);
}

TEST(ArenaFinder, BodyStandsInTheArenaAndInNoCube) {
    const MapManager court = loaded(emptyCourt());
    EXPECT_TRUE(mayStandAt(court, {1000.0f, standing, 1000.0f}));
    EXPECT_TRUE(mayStandAt(court, {1000.0f, 2000.0f, 1000.0f})) << "above the walls";
    EXPECT_FALSE(mayStandAt(court, {1000.0f, standing - 3.0f, 1000.0f})) << "in the floor";
    EXPECT_TRUE(mayStandAt(court, {64.0f + 25.2f, standing, 1000.0f})) << "at the wall";
    EXPECT_FALSE(mayStandAt(court, {64.0f + 22.0f, standing, 1000.0f})) << "in the wall";
    EXPECT_FALSE(mayStandAt(court, {-1.0f, 2000.0f, 1000.0f}));
    EXPECT_FALSE(mayStandAt(court, {1000.0f, 2000.0f, 2049.0f}));
    const MapManager open = withoutSolids(4, 4, 4);
    EXPECT_FALSE(mayStandAt(open, {100.0f, -1.0f, 100.0f})) << "below the ground";
}

TEST(ArenaFinder, BodyStopsOnAFloorOrUnderACeiling) {
    const MapManager map = onlySolid(8, 8, 8, 4, 0, 4);
    const auto stops = [&](float feet, float rise) {
        return mayStopAt(map, {288.0f, feet + 75.0f, 288.0f}, rise);
    };
    EXPECT_TRUE(stops(64.2f, 0.0f)) << "it stands";
    EXPECT_FALSE(stops(70.0f, 0.0f)) << "nothing is below";
    EXPECT_TRUE(stops(70.0f, -6.0f)) << "it falls that far";
    EXPECT_FALSE(stops(80.0f, -6.0f));
    EXPECT_TRUE(stops(200.0f, 0.5f)) << "the top of a jump";
    EXPECT_FALSE(stops(200.0f, 8.0f));
    const MapManager ceiling = onlySolid(8, 8, 8, 4, 7, 4);
    EXPECT_TRUE(mayStopAt(ceiling, {288.0f, 448.0f - 75.0f - 5.0f, 288.0f}, 8.0f));
    EXPECT_TRUE(mayStopAt(ceiling, {288.0f, 448.0f - 75.0f - 5.0f, 288.0f}, 0.0f)) << "it jumps";
    EXPECT_FALSE(mayStopAt(ceiling, {288.0f, 448.0f - 75.0f - 30.0f, 288.0f}, 8.0f));
}

TEST(ArenaFinder, GapInTheSnapshotsIsNoStop) {
    const MapManager court = loaded(emptyCourt());
    const auto contradictionsOf = [&](std::int64_t lastTick) {
        ArenaFinder finder({&court});
        client::Snapshot snapshot{};
        for (const auto& [tick, height] : std::vector<std::pair<std::int64_t, float>>{
                 {1, 400.0f}, {2, 390.0f}, {lastTick, 390.0f}}) {
            snapshot.tick = tick;
            snapshot.state = snapshotOf({playerAt('1', {1000.0f, height, 1000.0f})});
            finder.see(snapshot);
        }
        return finder.contradictions(0);
    };
    EXPECT_EQ(contradictionsOf(3), 1) << "stopped in mid-air";
    EXPECT_EQ(contradictionsOf(5), 0) << "it may have been anywhere between";
}
