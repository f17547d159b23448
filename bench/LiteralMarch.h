#pragma once

#include "src/Collisions.h"
#include "src/MapManager.h"

// The march by its definition: every step is taken and every point looked up. The fast march,
// MapManager::boxToCheckForLineIntersection and pointOfIntersection, must agree with it in each
// bit. It judges them, so it shares no constant with them.

namespace literal {

constexpr vec3 nothingFound(-1.0f);

/// Index of the cell that holds a coordinate, clamped to the grid.
inline int cellIndex(float coordinate, int cells) {
    if (!(coordinate >= 64.0f))
        return 0;
    const float farFace = 64.0f * static_cast<float>(cells);
    return coordinate < farFace ? static_cast<int>(coordinate) / 64 : cells - 1;
}

inline const Box& cubeAt(const MapManager& map, vec3 p) {
    return map.cubes[static_cast<size_t>(cellIndex(p.x, map.columns))][static_cast<size_t>(
        cellIndex(p.y, map.rows))][static_cast<size_t>(cellIndex(p.z, map.depth))];
}

inline bool inSolidCube(const MapManager& map, vec3 p) {
    const Box& cube = cubeAt(map, p);
    return cube.solid != 0 && intersects(cube, p);
}

/// The cell in which the march from `start` in steps of `dir` ends, or (-1, -1, -1).
inline vec3 marchedCell(const MapManager& map, vec3 start, vec3 dir) {
    if (!map.hasCells())
        return nothingFound;

    vec3 p = start;
    for (int step = 0; step < 5000; ++step) {
        if (inSolidCube(map, p)) {
            p = p - dir * 64.0f;
            break;
        }
        p += dir;
    }
    for (int step = 0; step < 65; ++step) {
        if (inSolidCube(map, p))
            return map.cubeIndices(p);
        p += dir;
    }
    return nothingFound;
}

/// The point at which the segment of 10000 steps enters that cell's cube, or (-1, -1, -1).
inline vec3 pointOn(const MapManager& map, vec3 cell, vec3 start, vec3 dir) {
    if (cell.x < 0.0f)
        return nothingFound;
    const Box& cube = map.cubes[static_cast<size_t>(cell.x)][static_cast<size_t>(cell.y)]
                               [static_cast<size_t>(cell.z)];
    vec3 hit;
    vec3 normal;
    intersectsLineAABB(start, start + dir * 10000.0f, cube, hit, normal);
    return hit;
}

} // namespace literal
