#include "arena/Reach.h"
#include "arena/PlaceGraph.h"
#include "tests/support/Courts.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <set>

using namespace drench;

using arena::Arrival;
using arena::CellIndex;
using arena::explore;
using arena::Pace;
using arena::Reach;
using arena::StandingPlace;

namespace {

Reach exploredFrom(MapManager& map, int column, int row, int depth, Pace pace = Pace::ordinary) {
    return explore(map, {arrivalIn(map, column, row, depth)}, pace);
}

int placeAt(const Reach& reach, const CellIndex& feet) {
    for (std::size_t i = 0; i < reach.places.size(); ++i) {
        if (reach.places[i].feet == feet)
            return static_cast<int>(i);
    }
    return -1;
}

bool reaches(const Reach& reach, const CellIndex& feet) {
    return placeAt(reach, feet) >= 0;
}

/// Two platforms three cubes high with a gap of so many cubes between them, over a lower floor.
MapManager platforms(int gap) {
    return court(gap + 6, 9, 3,
                 [=](int i, int j, int) { return j < 4 && (i < 3 || i >= gap + 3); });
}

bool isRandomCube(int i, int j, int k) {
    std::seed_seq seed = {i, j, k};
    std::mt19937 random(seed);
    return j < 4 && random() % 100 < (j < 3 ? 35u : 12u);
}

} // namespace

TEST(Reach, WholeFloorOfAnEmptyCourtIsReached) {
    MapManager map = court(6, 6, 6, nothing);
    const Reach reach = exploredFrom(map, 2, 1, 2);
    ASSERT_EQ(reach.places.size(), 16u);
    for (int i = 1; i < 5; ++i) {
        for (int k = 1; k < 5; ++k)
            EXPECT_TRUE(reaches(reach, {i, 1, k})) << i << ", " << k;
    }
    EXPECT_EQ(reach.landings, std::vector<int>{placeAt(reach, {2, 1, 2})});
    EXPECT_TRUE(reach.departures.empty());
    EXPECT_GT(reach.ticks, 0);
}

TEST(Reach, PlacesLeadToTheirNeighboursAndNotToThemselves) {
    MapManager map = court(6, 6, 6, nothing);
    const Reach reach = exploredFrom(map, 2, 1, 2);
    for (std::size_t i = 0; i < reach.places.size(); ++i) {
        const StandingPlace& place = reach.places[i];
        EXPECT_TRUE(std::is_sorted(place.next.begin(), place.next.end()));
        EXPECT_EQ(std::count(place.next.begin(), place.next.end(), static_cast<int>(i)), 0);
        EXPECT_GE(place.next.size(), 3u);
    }
}

TEST(Reach, TwoCubesAreClimbedThreeAreNot) {
    MapManager twoHigh = court(8, 8, 4, [](int i, int j, int) { return i >= 4 && j < 3; });
    EXPECT_TRUE(reaches(exploredFrom(twoHigh, 2, 1, 2), {5, 3, 2}));
    MapManager threeHigh = court(8, 8, 4, [](int i, int j, int) { return i >= 4 && j < 4; });
    EXPECT_FALSE(reaches(exploredFrom(threeHigh, 2, 1, 2), {5, 4, 2}));
}

TEST(Reach, HoleOfOneCubeIsFallenInto) {
    MapManager map =
        court(9, 9, 9, [](int i, int j, int k) { return j < 4 && !(i == 5 && k == 4 && j > 0); });
    const Reach reach = exploredFrom(map, 2, 4, 2);
    const int bottom = placeAt(reach, {5, 1, 4});
    ASSERT_GE(bottom, 0);
    EXPECT_TRUE(reach.places[static_cast<std::size_t>(bottom)].next.empty());
    EXPECT_EQ(pits(reach), (std::vector<std::vector<int>>{{bottom}}));
}

TEST(Reach, CorridorOfOneCubeWithABendIsWalked) {
    MapManager map =
        court(9, 6, 9, [](int i, int, int k) { return !(k == 2 && i < 7) && !(i == 6 && k < 7); });
    const Reach reach = exploredFrom(map, 1, 1, 2);
    EXPECT_TRUE(reaches(reach, {6, 1, 6}));
    EXPECT_EQ(reach.places.size(), 11u);
}

TEST(Reach, LowPassageStopsABody) {
    MapManager twoFree = court(9, 7, 3, [](int i, int j, int) { return i == 4 && j > 2; });
    EXPECT_FALSE(reaches(exploredFrom(twoFree, 2, 1, 1), {6, 1, 1}));
    MapManager threeFree = court(9, 7, 3, [](int i, int j, int) { return i == 4 && j > 3; });
    EXPECT_TRUE(reaches(exploredFrom(threeFree, 2, 1, 1), {6, 1, 1}));
}

TEST(Reach, RunningJumpCrossesSevenCubesAndAFlickedOneMore) {
    MapManager seven = platforms(7);
    EXPECT_TRUE(reaches(exploredFrom(seven, 1, 4, 1), {11, 4, 1}));
    MapManager eight = platforms(8);
    EXPECT_FALSE(reaches(exploredFrom(eight, 1, 4, 1), {12, 4, 1}));
    EXPECT_TRUE(reaches(exploredFrom(eight, 1, 4, 1, Pace::flicked), {12, 4, 1}));
    MapManager eleven = platforms(11);
    EXPECT_FALSE(reaches(exploredFrom(eleven, 1, 4, 1, Pace::flicked), {15, 4, 1}));
}

TEST(Reach, LeapGoesInAnyDirection) {
    // From a platform of two by two cubes to a single one, so many columns and so much depth away.
    const auto isCrossed = [](int columns, int depth) {
        MapManager map = court(columns + 6, 9, depth + 5, [=](int i, int j, int k) {
            return j < 4 && ((i < 3 && k < 3) || (i == columns + 2 && k == depth + 2));
        });
        return reaches(exploredFrom(map, 1, 4, 1), {columns + 2, 4, depth + 2});
    };
    EXPECT_TRUE(isCrossed(7, 4));
    EXPECT_TRUE(isCrossed(7, 5));
    EXPECT_TRUE(isCrossed(8, 2));
    EXPECT_FALSE(isCrossed(8, 7));
}

TEST(Reach, JumpFromWhereADeepFallEndsClimbsThreeCubes) {
    // A shaft below a tower; beside its floor a step of three cubes under a roof. A fall of 53 rows
    // stops nearly a cube above the floor.
    const auto shaft = [](int top) {
        return court(8, 70, 3, [=](int i, int j, int) {
            return (i == 1 && j < top) || (i >= 4 && j < 4) || (i >= 3 && j >= 7);
        });
    };
    MapManager map = shaft(54);
    bool isClimbed = false;
    for (float edge = 146.0f; edge < 175.0f && !isClimbed; edge += 2.0f) {
        Player player = arrivalIn(map, 1, 54, 1).landed;
        player.look = player.position + vec3(1.0f, 0.0f, 0.0f);
        player.updateDirAndStrafe();
        for (int tick = 0; tick < 900 && (player.inAir || player.box.min.y > 192.0f); ++tick) {
            player.setKey(keyIndex::forward, player.position.x < edge);
            player.update(0.0f);
        }
        player.setKey(keyIndex::forward, true);
        player.setKey(keyIndex::jump, true);
        for (int tick = 0; tick < 90 && !isClimbed; ++tick) {
            player.update(0.0f);
            isClimbed = arena::stands(player) && map.getRow(player.box.min.y + 0.5f) == 4;
        }
    }
    ASSERT_TRUE(isClimbed) << "it can be done";
    EXPECT_TRUE(reaches(exploredFrom(map, 1, 54, 1), {5, 4, 1}));

    MapManager lower = shaft(53);
    EXPECT_FALSE(reaches(exploredFrom(lower, 1, 53, 1), {5, 4, 1}));
}

TEST(Reach, EndsAtEnoughDepartures) {
    MapManager map = withoutSolids(12, 6, 12);
    for (int i = 0; i < 12; ++i) {
        for (int k = 0; k < 12; ++k)
            arena::cell(map, i, 0, k).solid = 1;
    }
    const std::vector<Arrival> arrivals = {arrivalIn(map, 5, 1, 5)};
    const Reach few = explore(map, arrivals, Pace::ordinary, {}, 3);
    EXPECT_FALSE(few.isWhole);
    EXPECT_GE(few.departures.size(), 3u);
    const Reach all = explore(map, arrivals, Pace::ordinary);
    EXPECT_TRUE(all.isWhole);
    EXPECT_GT(all.departures.size(), few.departures.size());
    EXPECT_GT(all.ticks, few.ticks);
}

TEST(Reach, FlightsOverFloorsThatLeadToEachOtherAreLeftOut) {
    MapManager map = court(24, 8, 24, nothing);
    const Reach reach = exploredFrom(map, 5, 1, 5);
    EXPECT_EQ(reach.places.size(), 22u * 22u);
    EXPECT_LT(reach.ticks, 700L * 22 * 22);
}

TEST(MightLeave, IsFalseOnlyWhereNoJumpGetsToABorderThatIsOpen) {
    const auto mightLeave = [](int rows, int stepRow) {
        MapManager map = court(
            10, rows, 10, [=](int i, int j, int k) { return i == 5 && k == 5 && j <= stepRow; });
        return arena::mightLeave(map, {arrivalIn(map, 2, 1, 2)}, Pace::ordinary);
    };
    EXPECT_TRUE(mightLeave(3, 0));
    EXPECT_FALSE(mightLeave(4, 0));
    EXPECT_TRUE(mightLeave(5, 2)) << "over the step";
    EXPECT_FALSE(mightLeave(5, 3)) << "nobody gets on a step of three cubes";
}

TEST(MightLeave, HoleInTheFloorOrTheBorderCounts) {
    MapManager map = court(6, 8, 6, nothing);
    EXPECT_FALSE(arena::mightLeave(map, {arrivalIn(map, 2, 1, 2)}, Pace::ordinary));
    arena::cell(map, 4, 0, 4).solid = 0;
    EXPECT_TRUE(arena::mightLeave(map, {arrivalIn(map, 2, 1, 2)}, Pace::ordinary));
    arena::cell(map, 4, 0, 4).solid = 1;
    for (int j = 1; j <= 3; ++j)
        arena::cell(map, 5, j, 3).solid = 0;
    EXPECT_TRUE(arena::mightLeave(map, {arrivalIn(map, 2, 1, 2)}, Pace::ordinary));
}

TEST(MightLeave, CeilingIsClimbedFrom) {
    // No jump from the floor leads to the hole high in the border, but steps of a ceiling do.
    const auto mightLeave = [](bool withCeiling) {
        MapManager map = court(
            8, 12, 3, [=](int i, int j, int) { return withCeiling && i < 4 && j > 2 + 2 * i; });
        for (int j = 7; j < 12; ++j)
            arena::cell(map, 7, j, 1).solid = 0;
        return arena::mightLeave(map, {arrivalIn(map, 1, 1, 1)}, Pace::ordinary);
    };
    EXPECT_FALSE(mightLeave(false));
    EXPECT_TRUE(mightLeave(true));
}

TEST(Reach, CeilingLetsPlayersJumpAgain) {
    // Below a ceiling that steps up by two cubes at a time, players climb in the air.
    MapManager map =
        court(7, 16, 3, [](int i, int j, int) { return i < 5 ? j > 2 + 2 * i : j < 7; });
    EXPECT_TRUE(reaches(exploredFrom(map, 1, 1, 1), {5, 7, 1}));
}

TEST(Reach, HoleInTheBorderIsADepartureWithItsCell) {
    MapManager map = court(6, 8, 6, nothing);
    for (int j = 1; j <= 3; ++j)
        map.cubes[5][static_cast<std::size_t>(j)][3].solid = 0;
    const Reach reach = exploredFrom(map, 2, 1, 2);
    ASSERT_FALSE(reach.departures.empty());
    for (const CellIndex& departure : reach.departures) {
        EXPECT_EQ(departure.column, 5);
        EXPECT_EQ(departure.depth, 3);
    }
}

TEST(Reach, HoleInTheFloorIsADeparture) {
    MapManager map = court(6, 8, 6, nothing);
    map.cubes[4][0][4].solid = 0;
    const Reach reach = exploredFrom(map, 1, 1, 1);
    ASSERT_EQ(reach.departures.size(), 1u);
    EXPECT_EQ(reach.departures[0], (CellIndex{4, 0, 4}));
}

TEST(Reach, EverySideOfTheWorldCanBeLeft) {
    const CellIndex holes[] = {{0, 1, 3}, {5, 1, 3}, {3, 1, 0}, {3, 1, 5}};
    for (const CellIndex& hole : holes) {
        MapManager map = court(6, 8, 6, nothing);
        for (int j = 1; j <= 3; ++j)
            map.cubes[static_cast<std::size_t>(hole.column)][static_cast<std::size_t>(j)]
                     [static_cast<std::size_t>(hole.depth)]
                         .solid = 0;
        const Reach reach = exploredFrom(map, 2, 1, 2);
        ASSERT_FALSE(reach.departures.empty());
        EXPECT_EQ(reach.departures[0].column, hole.column);
        EXPECT_EQ(reach.departures[0].depth, hole.depth);
    }
}

TEST(Reach, BorderOfTwoCubesIsClimbedAndLeft) {
    MapManager low = court(6, 3, 6, nothing);
    EXPECT_FALSE(exploredFrom(low, 2, 1, 2).departures.empty());
    MapManager high = court(6, 4, 6, nothing);
    EXPECT_TRUE(exploredFrom(high, 2, 1, 2).departures.empty());
}

TEST(Reach, PlayersExploreFromWhereTheyAppearEvenBeforeTheyLand) {
    // Who appears above the wall can steer over it while falling, though it lands inside.
    MapManager map = court(12, 9, 3, [](int i, int j, int) { return i == 6 && j < 5; });
    const Reach reach = explore(map, {arrivalIn(map, 4, 6, 1)}, Pace::ordinary);
    EXPECT_TRUE(reaches(reach, {9, 1, 1}));
    EXPECT_EQ(pits(reach).size(), 1u);
}

TEST(Reach, SpawnThatIsNotClearIsNotExplored) {
    MapManager map = court(6, 8, 6, [](int i, int, int k) { return i == 3 && k == 3; });
    const Reach reach =
        explore(map, {arrivalIn(map, 3, 3, 3), arrivalIn(map, 1, 1, 1, 1)}, Pace::ordinary);
    EXPECT_EQ(reach.landings[0], -1);
    EXPECT_GE(reach.landings[1], 0);
}

/// From one float before the wall, the undone step of a run ends on the wall, where a body hangs.
/// It comes free by rounding again and again, and would climb the wall, by luck that no player has.
TEST(Reach, BodyThatRoundingLeftTouchingACubeIsNotFollowed) {
    MapManager map = court(7, 9, 5, [](int i, int, int) { return i == 2; });
    for (const float height : {139.25f, 400.0f}) {
        const vec3 besideTheWall(std::nextafter(103.0f, 0.0f), height, 160.0f);
        Player player = bodyAt(map, besideTheWall, besideTheWall + vec3(1.0f, 0.0f, 0.0f));
        const Arrival arrival = arena::arrive(0, player);
        player.setKey(keyIndex::forward, true);
        player.update(0.0f);
        ASSERT_TRUE(map.collides(player.box)) << "it hangs";

        const Reach reach = explore(map, {arrival}, Pace::ordinary);
        EXPECT_EQ(reach.places.size(), 3u);
        for (const StandingPlace& place : reach.places) {
            EXPECT_EQ(place.feet.column, 1);
            EXPECT_EQ(place.feet.row, 1);
        }
    }
}

TEST(Reach, LandingThatNeverSettlesLeadsNowhere) {
    MapManager map = court(7, 9, 5, nothing);
    map.cubes[2][6][2].solid = 1;
    Arrival arrival = arrivalIn(map, 1, 1, 2);
    // It touches the cube's side in mid-air and cannot move any more.
    const vec3 onTheSide(103.0f, 400.0f, 160.0f);
    arrival.landed = bodyAt(map, onTheSide, onTheSide + vec3(0.0f, 0.0f, 1.0f));
    ASSERT_TRUE(map.collides(arrival.landed.box));
    const Reach reach = explore(map, {arrival}, Pace::ordinary);
    EXPECT_TRUE(reaches(reach, {4, 1, 2})) << "the spawned body goes its way";
    const int hanging = placeAt(reach, {1, 5, 2});
    for (const StandingPlace& place : reach.places)
        EXPECT_FALSE(std::binary_search(place.next.begin(), place.next.end(), hanging));
}

TEST(Reach, StandingPlacesStand) {
    MapManager map = court(12, 10, 12, isRandomCube);
    const Reach reach = exploredFrom(map, 6, 5, 6);
    ASSERT_GT(reach.places.size(), 40u);
    for (const StandingPlace& place : reach.places) {
        const Box body(place.position, Player::bodySize - vec3(0.01f, 0.01f, 0.01f));
        EXPECT_FALSE(map.collides(body)) << place.position;
        Box lowered = body;
        lowered.move(vec3(0.0f, -0.51f, 0.0f), 1.0f);
        EXPECT_TRUE(map.collides(lowered)) << place.position;
        EXPECT_EQ(place.feet.column, map.getColumn(place.position.x));
        EXPECT_EQ(place.feet.depth, map.getDepth(place.position.z));
        EXPECT_EQ(place.feet.row, map.getRow(place.position.y - 74.0f));
    }
}

TEST(Reach, RandomWalksFindNoPlaceThatIsMissing) {
    MapManager map = court(12, 10, 12, isRandomCube);
    const Arrival arrival = arrivalIn(map, 6, 5, 6);
    const Reach reach = explore(map, {arrival}, Pace::ordinary);
    std::set<CellIndex> known;
    for (const StandingPlace& place : reach.places)
        known.insert(place.feet);

    std::mt19937 random(11);
    const auto below = [&random](unsigned limit) { return static_cast<int>(random() % limit); };
    std::set<CellIndex> visited;
    for (int walk = 0; walk < 200; ++walk) {
        Player player = arrival.spawned;
        const auto start = static_cast<std::size_t>(below(static_cast<unsigned>(known.size())));
        const vec3 centre = reach.places[start].position;
        player.placeAt(centre, centre + player.direction);
        for (int tick = 0; tick < 1000; ++tick) {
            if (below(15) == 0)
                player.setKey(below(5), below(4) != 0);
            if (below(10) == 0)
                player.setKey(keyIndex::jump, true);
            if (below(8) == 0)
                player.rotateView(below(241) - 120, 0);
            player.update(0.0f);
            if (arena::stands(player))
                visited.insert({map.getColumn(player.position.x),
                                map.getRow(player.box.min.y + 0.5f),
                                map.getDepth(player.position.z)});
        }
    }
    EXPECT_GT(visited.size(), known.size() / 2) << "the walks get around";
    for (const CellIndex& place : visited)
        EXPECT_TRUE(known.count(place)) << place.column << ", " << place.row << ", " << place.depth;
}

TEST(Reach, SameArenaGivesTheSameReach) {
    MapManager map = court(10, 8, 10, isRandomCube);
    const Reach one = exploredFrom(map, 5, 4, 5);
    const Reach other = exploredFrom(map, 5, 4, 5);
    ASSERT_EQ(one.places.size(), other.places.size());
    for (std::size_t i = 0; i < one.places.size(); ++i) {
        EXPECT_EQ(one.places[i].feet, other.places[i].feet);
        EXPECT_EQ(one.places[i].next, other.places[i].next);
    }
    EXPECT_EQ(one.ticks, other.ticks);
}

TEST(Reach, ProgressIsReportedFromTheStart) {
    MapManager map = court(6, 6, 6, nothing);
    std::vector<std::size_t> reports;
    explore(map, {arrivalIn(map, 2, 1, 2)}, Pace::ordinary,
            [&](std::size_t places) { reports.push_back(places); });
    ASSERT_FALSE(reports.empty());
    EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end()));
}

TEST(WalkableCells, AreFloorsWithThreeFreeCubesBelowTheTopOfTheWorld) {
    // A step in the court; a ceiling over column 4 that leaves two free cubes.
    MapManager map =
        court(6, 8, 3, [](int i, int j, int) { return (i == 2 && j == 1) || (i == 4 && j == 3); });
    const std::vector<CellIndex> walkable = arena::walkableCells(map);
    EXPECT_EQ(walkable, (std::vector<CellIndex>{{1, 1, 1}, {2, 2, 1}, {3, 1, 1}, {4, 4, 1}}));
}
