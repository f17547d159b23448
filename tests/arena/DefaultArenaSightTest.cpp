#include "src/Collisions.h"
#include "src/FileLoader.h"
#include "src/MapManager.h"
#include "src/Player.h"
#include "tests/support/Spawns.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

std::vector<Player> landedPlayers(MapManager& map) {
    std::vector<Player> players;
    for (int row = 0; row < spawnRows; ++row) {
        seedForSpawn(row);
        Player player('1', "Sentry");
        player.setMapMan(&map);
        for (int tick = 0; tick < 200; ++tick)
            player.update(0.0f);
        EXPECT_FALSE(player.inAir) << "spawn " << row;
        players.push_back(player);
    }
    return players;
}

/// Whether a shot at the point, from where players shoot, meets the body before it meets a cube.
bool hits(const Player& shooter, vec3 point, const Box& body) {
    const float distance = distanceVec3(shooter.position, point);
    const vec3 towards = (point - shooter.position) * (1.0f / distance);
    const vec3 end = shooter.mapMan->pointOfIntersection(shooter.position, towards);
    vec3 entry;
    return end.x >= 0.0f && Line_AABB(shooter.position, end, body.min, body.max, entry);
}

/// Points spread over the whole body, its faces and corners included, a little inside.
std::vector<vec3> pointsOf(const Box& body) {
    const auto share = [](int index, int count) {
        return 0.002f + 0.996f * static_cast<float>(index) / static_cast<float>(count - 1);
    };
    const vec3 size = body.max - body.min;
    std::vector<vec3> points;
    for (int i = 0; i < 5; ++i) {
        for (int j = 0; j < 9; ++j) {
            for (int k = 0; k < 5; ++k)
                points.push_back(body.min + vec3(size.x * share(i, 5), size.y * share(j, 9),
                                                 size.z * share(k, 5)));
        }
    }
    return points;
}

} // namespace

TEST(DefaultArenaSight, LandedPlayersCannotHitAnyPartOfAPlayerAtAnotherSpawn) {
    MapManager map;
    map.init(fileStringContents(DRENCH_MAPDATA));
    const std::vector<Player> players = landedPlayers(map);
    for (int from = 0; from < spawnRows; ++from) {
        for (int to = 0; to < spawnRows; ++to) {
            if (from == to)
                continue;
            const Player& shooter = players[static_cast<size_t>(from)];
            const Box body = players[static_cast<size_t>(to)].getBox();
            int visible = 0;
            for (const vec3& point : pointsOf(body))
                visible += hits(shooter, point, body);
            EXPECT_EQ(visible, 0) << "points of spawn " << to << " seen from spawn " << from;
        }
    }
}
