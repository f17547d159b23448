#include "src/FileLoader.h"
#include "src/MapManager.h"
#include "src/Player.h"
#include "tests/support/Spawns.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

// Every balcony can be climbed in three ways, with nothing but the keys and the mouse.

namespace {

/// A cell whose middle is to be reached with the feet at `floor`; `leap` jumps a gap before it.
struct Waypoint {
    int column;
    int depth;
    float floor;
    bool leap = false;
};

struct Route {
    /// The corner that the climb starts from, counted clockwise from the balcony's left.
    int cornersOn;
    std::vector<Waypoint> way;
};

// The routes as they lead up to the north balcony; the court repeats them clockwise.

const Route stair = {0,
                     {{5, 5, 64},
                      {6, 6, 64},
                      {8, 6, 64},
                      {8, 4, 192},
                      {9, 4, 256},
                      {10, 4, 320},
                      {11, 4, 384},
                      {13, 4, 448},
                      {13, 3, 448},
                      {15, 2, 448}}};

const Route stack = {1,
                     {{26, 5, 64},
                      {24, 6, 64},
                      {23, 6, 64},
                      {23, 4, 192},
                      {21, 4, 320},
                      {18, 4, 448},
                      {18, 3, 448},
                      {16, 2, 448}}};

const Route bridge = {0,
                      {{5, 5, 64},
                       {6, 6, 64},
                       {11, 6, 64},
                       {11, 9, 64},
                       {12, 10, 64},
                       {13, 11, 192},
                       {13, 12, 192},
                       {13, 13, 320},
                       {15, 13, 320},
                       {15, 11, 320},
                       {15, 8, 320, true},
                       {15, 5, 320},
                       {15, 4, 448},
                       {15, 2, 448}}};

const std::string sides[] = {"north", "east", "south", "west"};

Waypoint turnedClockwise(Waypoint waypoint, int quarters) {
    for (int i = 0; i < quarters; ++i)
        waypoint = {31 - waypoint.depth, waypoint.column, waypoint.floor, waypoint.leap};
    return waypoint;
}

vec3 middle(const Waypoint& waypoint) {
    const auto centre = [](int index) {
        return MapManager::cubeEdge * (static_cast<float>(index) + 0.5f);
    };
    return {centre(waypoint.column), waypoint.floor, centre(waypoint.depth)};
}

void turnTowards(Player& player, vec3 target) {
    const vec3 way = target - player.position;
    const float yaw = std::remainder(std::atan2(way.x, way.z) -
                                         std::atan2(player.direction.x, player.direction.z),
                                     2.0f * std::acos(-1.0f));
    player.rotateView(
        static_cast<int>(std::lround(-yaw * static_cast<float>(Player::countsPerRadian))), 0);
}

/// Walks to the middle of a cell: forward all the time, jumping where a step or a gap asks for it.
/// Returns the ticks that it took, or nothing when the player got stuck.
std::optional<int> reach(Player& player, const Waypoint& waypoint) {
    const vec3 target = middle(waypoint);
    for (int tick = 0; tick < 400; ++tick) {
        const vec3 before = player.position;
        const float dx = target.x - before.x;
        const float dz = target.z - before.z;
        const float feet = before.y - 0.5f * Player::bodySize.y;
        const bool walks = std::hypot(dx, dz) >= 8.0f;
        if (!walks && !player.inAir && std::fabs(feet - waypoint.floor) < 1.0f)
            return tick;
        turnTowards(player, target);
        player.setKey(keyIndex::forward, walks);
        player.update(0.0f);
        const bool blocked =
            walks && (player.position.x == before.x || player.position.z == before.z);
        const bool gapAhead = waypoint.leap && std::hypot(dx, dz) < 160.0f;
        if (!player.inAir && (blocked || gapAhead))
            player.setKey(keyIndex::jump, true);
    }
    return std::nullopt;
}

void climbEveryBalcony(const Route& route) {
    MapManager map;
    map.init(fileStringContents(DRENCH_MAPDATA));
    std::vector<int> ticks;
    for (int side = 0; side < 4; ++side) {
        // Spawns 4 to 7 lie in the corners, clockwise from the north-west.
        seedForSpawn(4 + (side + route.cornersOn) % 4);
        Player player('1', "Climber");
        player.setMapMan(&map);
        for (int tick = 0; tick < 60; ++tick)
            player.update(0.0f);
        ticks.push_back(0);
        for (const Waypoint& waypoint : route.way) {
            const Waypoint turned = turnedClockwise(waypoint, side);
            const std::optional<int> taken = reach(player, turned);
            ASSERT_TRUE(taken) << sides[side] << ": stuck at " << player.position
                               << " on the way to column " << turned.column << ", depth "
                               << turned.depth << ", height " << turned.floor;
            ticks.back() += *taken;
        }
    }
    // Fair within a tenth: the spawns do not lie quite alike.
    const auto [fastest, slowest] = std::minmax_element(ticks.begin(), ticks.end());
    EXPECT_LE(*slowest * 10, *fastest * 11) << *fastest << " to " << *slowest << " ticks";
}

} // namespace

TEST(DefaultArenaClimb, EveryBalconyIsReachedByItsStair) {
    climbEveryBalcony(stair);
}

TEST(DefaultArenaClimb, EveryBalconyIsReachedByItsStackOfTwoCubeSteps) {
    climbEveryBalcony(stack);
}

TEST(DefaultArenaClimb, EveryBalconyIsReachedOverItsBridge) {
    climbEveryBalcony(bridge);
}
