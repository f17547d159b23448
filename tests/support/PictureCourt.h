#pragma once

#include "arena/Map.h"
#include "arena/picture/Image.h"
#include "arena/picture/Picture.h"
#include "arena/picture/Scene.h"
#include "common/Files.h"

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

// A court to draw, and ways to find things in its pictures.

namespace pictures {

using namespace drench;
using namespace drench::arena;

constexpr int ground = 1;
constexpr int stone = 2;
constexpr int wood = 3;
constexpr int brick = 4;
constexpr int leaves = 5;
constexpr int water = 6;
constexpr int marble = 7;
constexpr int sand = 8;

inline void put(MapManager& map, int column, int row, int depth, int material) {
    Box& cube = cell(map, column, row, depth);
    cube.solid = material != 0;
    cube.cellValue = material;
}

/// A mark of a player who stands on the floor below the middle of this cell.
inline SpawnMark standingIn(int number, int column, int row, int depth, vec3 direction) {
    const vec3 centre(64.0f * static_cast<float>(column) + 32.0f,
                      64.0f * static_cast<float>(row) + 75.25f,
                      64.0f * static_cast<float>(depth) + 32.0f);
    return {number, Box(centre, vec3(50, 150, 50)), direction};
}

/// 12 × 8 × 12: border walls, a floor of four colours, stairs to a bridge over a pool, a tree, and
/// in the south-east a block that hides the third spawn from the south-east.
inline MapManager testCourt() {
    MapManager map = emptyMap(12, 8, 12);
    for (int i = 0; i < 12; ++i) {
        for (int k = 0; k < 12; ++k) {
            const bool border = i == 0 || i == 11 || k == 0 || k == 11;
            const int quarter = i < 6 ? (k < 6 ? ground : sand) : (k < 6 ? stone : brick);
            put(map, i, 0, k, border ? stone : quarter);
            for (int j = 1; border && j < 8; ++j)
                put(map, i, j, k, i == 0 ? leaves : k == 0 ? stone : wood);
        }
    }
    for (int i = 4; i < 8; ++i) {
        put(map, i, 0, 4, water);
        put(map, i, 0, 5, water);
    }
    for (int k = 2; k < 8; ++k)
        put(map, 5, 3, k, wood);
    for (int step = 1; step < 4; ++step) {
        for (int j = 1; j <= step; ++j)
            put(map, 1 + step, j, 7, marble);
    }
    for (int j = 1; j < 4; ++j)
        put(map, 9, j, 2, wood);
    for (int i = 8; i < 11; ++i) {
        for (int k = 1; k < 4; ++k)
            put(map, i, 4, k, leaves);
    }
    for (int j = 1; j < 4; ++j) {
        for (int i = 8; i < 10; ++i)
            put(map, i, j, 9, 40);
    }
    return map;
}

inline std::vector<SpawnMark> testSpawns() {
    return {standingIn(1, 1, 1, 4, {1, 0, 0}), standingIn(2, 5, 4, 4, {0, 0, 1}),
            standingIn(3, 8, 1, 8, {-1, 0, -1}), standingIn(8, 3, 1, 9, {0.3f, 0.5f, -1})};
}

/// The map with this material for the cubes that `where` selects.
inline MapManager repainted(MapManager map, const std::function<bool(int, int, int)>& where,
                            int to) {
    for (int i = 0; i < map.columns; ++i) {
        for (int j = 0; j < map.rows; ++j) {
            for (int k = 0; k < map.depth; ++k) {
                if (cell(map, i, j, k).solid != 0 && where(i, j, k))
                    put(map, i, j, k, to);
            }
        }
    }
    return map;
}

inline Image testIsometric(const MapManager& map, const std::vector<SpawnMark>& spawns) {
    return isometricPicture(map, spawns, Corner::southEast, 400, 250);
}

inline Image smallIsometric(const MapManager& map, const std::vector<SpawnMark>& spawns) {
    return isometricPicture(map, spawns, Corner::southEast, 200, 125);
}

inline bool isSignal(Colour colour) {
    return colour.red > 100 && colour.red > 2 * colour.blue - 120 && colour.blue > 40 &&
           colour.blue > 2 * colour.green;
}

inline bool exactlySignal(Colour colour) {
    return colour == signalColour;
}

struct Found {
    int count = 0;
    double x = 0.0;
    double y = 0.0;
};

/// The number of pixels that `isSo` selects, and their mean position.
inline Found pixels(const Image& image, const std::function<bool(Colour)>& isSo) {
    Found found;
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            if (!isSo(image.at(x, y)))
                continue;
            ++found.count;
            found.x += x;
            found.y += y;
        }
    }
    found.x /= std::max(found.count, 1);
    found.y /= std::max(found.count, 1);
    return found;
}

inline int brightness(Colour colour) {
    return colour.red + colour.green + colour.blue;
}

inline bool isReddish(Colour colour) {
    return colour.red > 60 && colour.red > 3 * colour.green / 2 && colour.red > 3 * colour.blue / 2;
}

/// The words of the InputError, "" if there is none.
inline std::string refusal(const std::function<void()>& draw) {
    try {
        draw();
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

} // namespace pictures
