#include "arena/Arrivals.h"

namespace drench::arena {

namespace {

/// Ticks after which every fall has ended, unless rounding has left the body hanging: then it never
/// lands.
constexpr int longestFall = 700;

/// Vertical velocity in the first tick of a fall. On a floor every tick begins a fall.
constexpr float fallFromRest = -static_cast<float>(Player::gravity);

bool insideWorld(const MapManager& map, const Box& body) {
    return body.min.x >= 0.0f && body.max.x <= map.width && body.min.y >= 0.0f &&
           body.min.z >= 0.0f && body.max.z <= map.length;
}

} // namespace

bool isOverFloor(const Player& player) {
    Box lowered = player.box;
    lowered.move(vec3(0.0f, player.velocity.y, 0.0f), 1.0f);
    return player.mapMan->collides(lowered);
}

bool stands(const Player& player) {
    return !player.inAir && player.velocity.y == fallFromRest && isOverFloor(player) &&
           !player.mapMan->collides(player.box);
}

bool hasLeftTheWorld(const Player& player) {
    const vec3 p = player.position;
    const MapManager& map = *player.mapMan;
    return p.x < 0.0f || p.x > map.width || p.y < 0.0f || p.z < 0.0f || p.z > map.length;
}

Arrival arrive(int pose, const Player& spawned) {
    const MapManager& map = *spawned.mapMan;
    Arrival arrival = {
        pose, spawned, spawned, insideWorld(map, spawned.box), !map.collides(spawned.box), false};
    Player& landed = arrival.landed;
    for (int tick = 0; tick < longestFall && !arrival.lands && !hasLeftTheWorld(landed); ++tick) {
        landed.update(0.0f);
        arrival.lands = stands(landed);
    }
    return arrival;
}

std::vector<Arrival> arrivals(MapManager& map) {
    std::vector<Arrival> all;
    for (int pose = 0; pose < Player::spawnPoseCount; ++pose) {
        Player player('1', "", 0.0f, pose);
        player.setMapMan(&map);
        all.push_back(arrive(pose, player));
    }
    return all;
}

} // namespace drench::arena
