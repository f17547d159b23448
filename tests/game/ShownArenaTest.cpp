#include "game/ShownArena.h"

#include "tests/game/Snapshots.h"
#include "tests/support/Arenas.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace drench;
using namespace drench::game;

namespace {

/// Two courts: in the second a block stands where one walks in the first, and in the first a floor
/// lies where one walks in the second.
class ArenaInARoom : public testing::Test {
  protected:
    std::vector<KnownArena> known;
    std::optional<ShownArena> arena;

    ArenaInARoom() {
        known.push_back({"flat", "", courtWith([](int, int, int) { return false; })});
        known.push_back({"block", "", courtWith([](int i, int j, int k) {
                             return j == 1 && i == 4 && k == 4;
                         })});
        show(longPatience);
    }

    static MapManager courtWith(const std::function<bool(int, int, int)>& solid) {
        return loaded(
            arenaText(8, 8, 8, [&](int i, int j, int k) { return j == 0 || solid(i, j, k); }));
    }

    void show(client::Time::duration patience) {
        arena.emplace(known, patience);
        arena->enterRoom();
    }
    static constexpr std::chrono::hours longPatience{1};

    /// Somebody stands still there, with the feet this high, long enough for a judgement.
    void standing(float x, float feet, float z) {
        for (int i = 0; i < ArenaFinder::mostContradictions + 3; ++i)
            arena->see({snapshotOf({playerAt('1', {x, feet + 75.25f, z})}), tick_++, {}});
    }
    void standsOnTheFloor() { standing(150.0f, 64.0f, 150.0f); }
    void standsOnTheBlock() { standing(288.0f, 128.0f, 288.0f); }
    void standsInTheBlock() { standing(288.0f, 64.0f, 288.0f); }

    /// The surface of another arena, if one is shown within a while.
    std::optional<ArenaMesh> changes(int milliseconds) {
        for (int i = 0; i < milliseconds; ++i) {
            if (std::optional<ArenaMesh> mesh = arena->change())
                return mesh;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return std::nullopt;
    }
    static constexpr int longEnough = 20000;
    static constexpr int aWhile = 50;

  private:
    std::int64_t tick_ = 0;
};

using Colours = std::vector<std::array<std::uint8_t, 3>>;

Colours coloursOf(const ArenaMesh& mesh) {
    Colours colours;
    for (const MeshVertex& vertex : mesh.vertices)
        colours.push_back(vertex.colour);
    return colours;
}

} // namespace

TEST_F(ArenaInARoom, IsTheLikeliestUntilItIsContradicted) {
    EXPECT_EQ(&arena->map(), &known[0].map);
    EXPECT_EQ(coloursOf(arena->firstSurface()), coloursOf(meshOf(known[0].map)));
    standsOnTheFloor();
    EXPECT_FALSE(changes(aWhile));
    EXPECT_EQ(&arena->map(), &known[0].map);
    EXPECT_EQ(arena->trouble(), "");
}

TEST_F(ArenaInARoom, ChangesToTheOneThatFitsWithItsSurface) {
    arena->firstSurface();
    standsOnTheBlock();
    EXPECT_EQ(&arena->map(), &known[0].map) << "the surface is not made yet";
    const std::optional<ArenaMesh> mesh = changes(longEnough);
    ASSERT_TRUE(mesh);
    EXPECT_EQ(&arena->map(), &known[1].map);
    EXPECT_EQ(coloursOf(*mesh), coloursOf(meshOf(known[1].map)));
    EXPECT_NE(coloursOf(*mesh), coloursOf(meshOf(known[0].map)));
    EXPECT_EQ(arena->trouble(), "");
    EXPECT_FALSE(changes(aWhile)) << "once";
}

TEST_F(ArenaInARoom, IsTakenForTheLikeliestInTheNextRoom) {
    arena->firstSurface();
    standsOnTheBlock();
    ASSERT_TRUE(changes(longEnough));
    arena->enterRoom();
    standsOnTheFloor();
    EXPECT_FALSE(changes(aWhile)) << "both fit";
    EXPECT_EQ(&arena->map(), &known[1].map);
    standsInTheBlock();
    ASSERT_TRUE(changes(longEnough));
    EXPECT_EQ(&arena->map(), &known[0].map);
}

TEST_F(ArenaInARoom, ThatNobodyKnowsIsToldUntilTheNextRoomIsEntered) {
    standsOnTheBlock();
    standsInTheBlock();
    EXPECT_NE(arena->trouble().find(arenaFolders().front()), std::string::npos) << arena->trouble();
    arena->enterRoom();
    EXPECT_EQ(arena->trouble(), "");
    standsOnTheFloor();
    EXPECT_EQ(arena->trouble(), "");
}

TEST_F(ArenaInARoom, WhoseLightTakesLongIsShownRoughlyLitMeanwhile) {
    // Lighting this one takes some hundred milliseconds, and the rough surface some ten.
    known[1].map = loaded(arenaText(64, 16, 64, [](int i, int j, int k) {
        return j == 0 || (i == 4 && j == 1 && k == 4) ||
               (i > 8 && j < 10 && (i * 7 + j * 5 + k * 3) % 4 == 0);
    }));
    show(std::chrono::seconds(0));
    arena->firstSurface();
    standsOnTheBlock();
    std::optional<ArenaMesh> mesh;
    while (&arena->map() != &known[1].map) {
        mesh = changes(longEnough);
        ASSERT_TRUE(mesh);
    }
    EXPECT_EQ(coloursOf(*mesh), coloursOf(roughMeshOf(known[1].map)));
    mesh = changes(longEnough);
    ASSERT_TRUE(mesh) << "the light is made";
    EXPECT_EQ(&arena->map(), &known[1].map);
    EXPECT_EQ(coloursOf(*mesh), coloursOf(meshOf(known[1].map)));
    EXPECT_FALSE(changes(aWhile));
}

TEST_F(ArenaInARoom, OutsideOfRoomsStaysAsItIs) {
    ShownArena before(known, longPatience);
    before.firstSurface();
    EXPECT_FALSE(before.change());
    EXPECT_EQ(&before.map(), &known[0].map);
    EXPECT_EQ(before.trouble(), "");
}

TEST_F(ArenaInARoom, ComesOnceMoreAfterSomethingElseWasDrawn) {
    ShownArena before(known, longPatience);
    const ArenaMesh first = before.firstSurface();
    before.showAgain();
    std::optional<ArenaMesh> again;
    for (int i = 0; i < 1000 && !again; ++i) {
        again = before.change();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_TRUE(again);
    EXPECT_EQ(coloursOf(*again), coloursOf(first));
    EXPECT_EQ(&before.map(), &known[0].map);
    EXPECT_FALSE(before.change());
}

TEST_F(ArenaInARoom, ComesOnceMoreEvenIfAnotherWasInTheMaking) {
    const Colours first = coloursOf(arena->firstSurface());
    standsOnTheBlock();
    EXPECT_FALSE(arena->change()) << "the other one's surface begins to be made";
    arena->enterRoom();
    arena->showAgain();
    const std::optional<ArenaMesh> again = changes(longEnough);
    ASSERT_TRUE(again);
    EXPECT_EQ(coloursOf(*again), first);
    EXPECT_EQ(&arena->map(), &known[0].map);
}
