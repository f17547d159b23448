#include "bench/FiringPlaces.h"
#include "bench/LiteralMarch.h"
#include "bench/RoomInProcess.h"
#include "src/FileLoader.h"

#include <benchmark/benchmark.h>

namespace {

using namespace drench::bench;

MapManager& defaultArena() {
    static MapManager map = [] {
        MapManager loaded;
        loaded.init(fileStringContents(DRENCH_MAPDATA));
        return loaded;
    }();
    return map;
}

struct Ray {
    vec3 start;
    vec3 direction;
};

Ray rayOf(const FiringPlace& place) {
    return {place.player.getPosition(), place.direction};
}

Ray scaled(Ray ray, float factor) {
    return {ray.start, ray.direction * factor};
}

// Shots from a balcony of the default arena.

Ray sky() {
    return rayOf(placesFacingSky(defaultArena()).front());
}

Ray farWall() {
    return rayOf(placesFacingFarWalls(defaultArena()).front());
}

/// Onto the floor below the player; the back-off reaches behind the start.
Ray nearFloor() {
    return {farWall().start, vec3(0.0f, -1.0f, 0.0f)};
}

/// In the plane between two columns of cubes, to the far wall.
Ray alongFace() {
    return {vec3(1024.0f, farWall().start.y, 128.0f), vec3(0.0f, 0.0f, 1.0f)};
}

/// Steps so short that all of them stay in one cell.
Ray tinySteps() {
    return scaled(farWall(), 0.001f);
}

/// Steps that pass several cubes each.
Ray hugeSteps() {
    return scaled(sky(), 250.0f);
}

void march(benchmark::State& state, Ray (*makeRay)()) {
    const MapManager& map = defaultArena();
    Ray ray = makeRay();
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(ray);
        vec3 cell = map.boxToCheckForLineIntersection(ray.start, ray.direction);
        benchmark::DoNotOptimize(cell);
    }
}

void literalWalk(benchmark::State& state, Ray (*makeRay)()) {
    const MapManager& map = defaultArena();
    Ray ray = makeRay();
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(ray);
        vec3 cell = literal::marchedCell(map, ray.start, ray.direction);
        benchmark::DoNotOptimize(cell);
    }
}

/// The number of steps that the literal walk takes, the second look included.
int literalAdditions(Ray ray) {
    const MapManager& map = defaultArena();
    const auto walk = [&](vec3& p, int steps) {
        int step = 0;
        for (; step < steps && !map.collides(p); ++step)
            p += ray.direction;
        return step;
    };
    vec3 p = ray.start;
    const int ahead = walk(p, MapManager::coarseSteps);
    if (ahead < MapManager::coarseSteps)
        p = p - ray.direction * static_cast<float>(MapManager::backOffSteps);
    return ahead + walk(p, MapManager::fineSteps);
}

/// The additions of the literal walk and nothing else: each waits for the one before.
void additionChain(benchmark::State& state, Ray (*makeRay)()) {
    Ray ray = makeRay();
    const int steps = literalAdditions(ray);
    state.counters["additions"] = steps;
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(ray);
        vec3 p = ray.start;
        for (int step = 0; step < steps; ++step)
            p += ray.direction;
        benchmark::DoNotOptimize(p);
    }
}

#define DRENCH_BENCHMARK_RAY(ray)                                                                  \
    BENCHMARK_CAPTURE(march, ray, ray);                                                            \
    BENCHMARK_CAPTURE(literalWalk, ray, ray);                                                      \
    BENCHMARK_CAPTURE(additionChain, ray, ray)

DRENCH_BENCHMARK_RAY(sky);
DRENCH_BENCHMARK_RAY(farWall);
DRENCH_BENCHMARK_RAY(nearFloor);
DRENCH_BENCHMARK_RAY(alongFace);
DRENCH_BENCHMARK_RAY(tinySteps);
DRENCH_BENCHMARK_RAY(hugeSteps);

/// A player who has landed in the default arena.
Player standing() {
    return placesFacingFarWalls(defaultArena()).front().player;
}

void collidesBody(benchmark::State& state) {
    const MapManager& map = defaultArena();
    Box body = standing().getBox();
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(body);
        bool touches = map.collides(body);
        benchmark::DoNotOptimize(touches);
    }
}
BENCHMARK(collidesBody);

void updateOfPlayer(benchmark::State& state, bool walks) {
    const Player start = standing();
    while (state.KeepRunning()) {
        Player player = start;
        player.setKey(keyIndex::forward, walks);
        player.update(0.0f);
        benchmark::DoNotOptimize(player);
    }
}
BENCHMARK_CAPTURE(updateOfPlayer, standing, false);
BENCHMARK_CAPTURE(updateOfPlayer, walking, true);

void rotateView(benchmark::State& state) {
    Player player = standing();
    int turn = 1;
    while (state.KeepRunning()) {
        player.rotateView(turn, 0);
        benchmark::DoNotOptimize(player);
        turn = -turn;
    }
}
BENCHMARK(rotateView);

/// A tick with two inputs of each player and the server's four sends.
void updateOfServer(benchmark::State& state, Pastime pastime) {
    RoomInProcess room(pastime);
    while (state.KeepRunning())
        room.tick(2);
}
BENCHMARK_CAPTURE(updateOfServer, standing, Pastime::standing);
BENCHMARK_CAPTURE(updateOfServer, walking, Pastime::walking);
BENCHMARK_CAPTURE(updateOfServer, firingAtWalls, Pastime::firingAtWalls);
BENCHMARK_CAPTURE(updateOfServer, firingAtSky, Pastime::firingAtSky);

} // namespace

BENCHMARK_MAIN();
