#include "arena/Sight.h"
#include "tests/support/Courts.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace drench;

using arena::Arrival;
using arena::CellIndex;
using arena::Sight;

namespace {

/// A hall along x, open to the sky or not, with a wall of so many rows across its middle.
MapManager hall(int wallRows, bool roofed) {
    return court(16, 8, 5, [=](int i, int j, int) {
        return (i == 8 && j <= wallRows) || (roofed && j == 7);
    });
}

Sight lookedAround(MapManager& map, const std::vector<Arrival>& arrivals) {
    const arena::Reach reach = arena::explore(map, arrivals, arena::Pace::ordinary);
    return arena::lookAround(map, arrivals, reach);
}

} // namespace

TEST(Sees, WallHidesABodyAndAHalfWallOnlyItsLegs) {
    MapManager open = hall(0, true);
    const Arrival west = arrivalIn(open, 2, 1, 2);
    const Arrival east = arrivalIn(open, 13, 1, 2);
    EXPECT_TRUE(sees(arena::gridOf(open), west.landed.position, east.landed.box));
    MapManager halfWall = hall(1, true);
    EXPECT_TRUE(sees(arena::gridOf(halfWall), west.landed.position, east.landed.box));
    MapManager wall = hall(6, true);
    EXPECT_FALSE(sees(arena::gridOf(wall), west.landed.position, east.landed.box));
}

TEST(Sees, SlitOfOneCubeIsEnough) {
    MapManager map = hall(6, true);
    map.cubes[8][2][2].solid = 0;
    const Arrival west = arrivalIn(map, 2, 1, 2);
    const Arrival east = arrivalIn(map, 13, 1, 2);
    EXPECT_TRUE(sees(arena::gridOf(map), west.landed.position, east.landed.box));
}

TEST(CanSoak, WhereACubeStopsTheShotBehindTheBody) {
    MapManager map = hall(0, true);
    const Arrival west = arrivalIn(map, 2, 1, 2);
    const Arrival east = arrivalIn(map, 13, 1, 2);
    EXPECT_TRUE(canSoak(arena::gridOf(map), west.landed.position, east.landed.box));
}

TEST(CanSoak, NotABodyBeforeTheOpenSkyThoughItIsSeen) {
    // A tower without a border behind it: every shot at who stands on it flies on.
    MapManager map = onlySolid(12, 12, 3, 9, 6, 1);
    map.cubes[1][0][1].solid = 1;
    const Arrival below = arrivalIn(map, 1, 1, 1);
    const Arrival above = arrivalIn(map, 9, 7, 1);
    ASSERT_TRUE(below.lands && above.lands);
    EXPECT_TRUE(sees(arena::gridOf(map), below.landed.position, above.landed.box));
    EXPECT_FALSE(canSoak(arena::gridOf(map), below.landed.position, above.landed.box));
}

TEST(Sight, PairsAreCountedEachWayBeforeAndAfterTheFall) {
    // The wall hides who stands, not who appears above it.
    MapManager map = hall(3, true);
    std::vector<Arrival> arrivals = {arrivalIn(map, 2, 4, 2, 0), arrivalIn(map, 13, 4, 2, 1)};
    const Sight sight = lookedAround(map, arrivals);
    using Pairs = std::vector<std::pair<int, int>>;
    EXPECT_EQ(sight.whenSpawned, (Pairs{{0, 1}, {1, 0}}));
    EXPECT_EQ(sight.whenLanded, Pairs{});
}

TEST(Sight, WhoNeverComesToStandIsInNoPair) {
    // The third appears inside a cube, the fourth falls out of the world.
    MapManager map = hall(0, true);
    map.cubes[5][2][2].solid = 1;
    map.cubes[11][0][2].solid = 0;
    const std::vector<Arrival> arrivals = {arrivalIn(map, 2, 1, 2, 0), arrivalIn(map, 8, 1, 2, 1),
                                           arrivalIn(map, 5, 1, 2, 2), arrivalIn(map, 11, 1, 2, 3)};
    const Sight sight = lookedAround(map, arrivals);
    for (const auto& [from, to] : sight.whenLanded) {
        EXPECT_LT(from, 2);
        EXPECT_LT(to, 2);
    }
    EXPECT_EQ(sight.whenLanded.size(), 2u);
}

TEST(Sight, RoofedHallLosesNoShotInTheSkyAnOpenOneDoes) {
    MapManager roofed = hall(0, true);
    EXPECT_EQ(lookedAround(roofed, {arrivalIn(roofed, 2, 1, 2)}).openSky, 0.0);
    MapManager open = hall(0, false);
    const double share = lookedAround(open, {arrivalIn(open, 2, 1, 2)}).openSky;
    EXPECT_GT(share, 0.01);
    EXPECT_LT(share, 0.5) << "whoever looks down meets the floor";
}

TEST(Sight, ShotsAreCountedInAllDirectionsThatCanBeLookedAlong) {
    // On a tower one cube wide all shots are lost but the three steepest of 64. None of them is too
    // steep to look along, though thirteen have hardly any x or hardly any z.
    const MapManager map = onlySolid(9, 9, 9, 4, 4, 4);
    arena::Reach reach;
    reach.places.push_back({{4, 5, 4}, {288.0f, 320.0f + 75.25f, 288.0f}, {}});
    EXPECT_EQ(arena::lookAround(map, {}, reach).openSky, 61.0 / 64.0);
}

TEST(Sight, PlaceThatCoversTwoSpawnsIsASniperPlaceUnlessAThirdOneSeesIt) {
    // Spawns 0 and 1 in niches of the southern wall, both seen from the yard's middle.
    MapManager map =
        court(16, 6, 12, [](int i, int, int k) { return k >= 8 && i != 4 && i != 11; });
    const std::vector<Arrival> two = {arrivalIn(map, 4, 1, 8, 0), arrivalIn(map, 11, 1, 8, 1)};
    const arena::Reach reach = arena::explore(map, two, arena::Pace::ordinary);
    const auto isSniperPlace = [&](const std::vector<Arrival>& arrivals, const CellIndex& feet) {
        const Sight sight = arena::lookAround(map, arrivals, reach);
        return std::any_of(sight.sniperPlaces.begin(), sight.sniperPlaces.end(), [&](int place) {
            return reach.places[static_cast<std::size_t>(place)].feet == feet;
        });
    };
    EXPECT_TRUE(isSniperPlace(two, {7, 1, 2}));
    EXPECT_FALSE(isSniperPlace(two, {4, 1, 9})) << "sees one of them only";
    std::vector<Arrival> three = two;
    three.push_back(arrivalIn(map, 8, 1, 5, 2));
    EXPECT_FALSE(isSniperPlace(three, {7, 1, 2}));
}

TEST(Sight, SpawnsThatLieFurtherApartThanAViewIsWideDoNotMakeASniperPlace) {
    // In a corridor who stands between two spawns sees one or the other.
    MapManager map = court(16, 6, 3, nothing);
    const std::vector<Arrival> ends = {arrivalIn(map, 1, 1, 1, 0), arrivalIn(map, 14, 1, 1, 1)};
    const arena::Reach reach = arena::explore(map, ends, arena::Pace::ordinary);
    for (const int place : arena::lookAround(map, ends, reach).sniperPlaces) {
        const int column = reach.places[static_cast<std::size_t>(place)].feet.column;
        EXPECT_TRUE(column <= 1 || column >= 14) << column;
    }
}
