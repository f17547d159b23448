#include "MapManager.h"

#include "Collisions.h"
#include "MathOps.h"

#include <sstream>

namespace {

/// Edge length of a cube in world units.
constexpr int cubeEdge = 64;

/// The march looks this many steps ahead for a first cube …
constexpr int coarseSteps = 5000;

/// … then goes back this many …
constexpr float backOffSteps = 64.0f;

/// … and looks again for one step more than that, so that it gets back to where it was.
constexpr int fineSteps = 65;

/// The segment that is clipped at the cube found is this many steps long.
constexpr float segmentSteps = 10000.0f;

constexpr vec3 nothingFound(-1.0f);

int cellIndex(float coordinate, int cells) {
    return clamp(truncateToInt(coordinate) / cubeEdge, 0, wrappingAdd(cells, -1));
}

float extent(int cells) {
    return static_cast<float>(wrappingMultiply(cells, cubeEdge));
}

/// The middle of a cell, a whole number, as the float nearest to it.
float cellCentre(int index) {
    constexpr float half = 0.5f * cubeEdge;
    return static_cast<float>(
        truncateToInt(half + static_cast<float>(wrappingMultiply(index, cubeEdge))));
}

} // namespace

void MapManager::init(std::string text) {
    cubeSize = static_cast<float>(cubeEdge);
    std::istringstream stream(text);
    stream >> columns >> rows >> depth;
    stream.clear();

    width = extent(columns);
    height = extent(rows);
    length = extent(depth);

    for (int i = 0; i < columns; ++i) {
        auto& column = cubes.emplace_back();
        for (int j = 0; j < rows; ++j) {
            auto& row = column.emplace_back();
            for (int k = 0; k < depth; ++k) {
                Box& cube =
                    row.emplace_back(vec3(cellCentre(i), cellCentre(j), cellCentre(k)), cubeSize);
                stream >> cube.solid >> cube.cellValue;
            }
        }
    }
}

bool MapManager::cubeIsNull(int i, int j, int k) const {
    if (i < 0 || i >= columns || j < 0 || j >= rows || k < 0 || k >= depth)
        return false;
    return cubes[static_cast<size_t>(i)][static_cast<size_t>(j)][static_cast<size_t>(k)].solid == 0;
}

bool MapManager::outOfBounds(vec3 p) const {
    return 0.0f > p.x || p.x > width || 0.0f > p.y || p.y > height || 0.0f > p.z || p.z > length;
}

int MapManager::getColumn(float x) const {
    return cellIndex(x, columns);
}
int MapManager::getRow(float y) const {
    return cellIndex(y, rows);
}
int MapManager::getDepth(float z) const {
    return cellIndex(z, depth);
}

vec3 MapManager::cubeIndices(vec3 p) const {
    return {static_cast<float>(getColumn(p.x)), static_cast<float>(getRow(p.y)),
            static_cast<float>(getDepth(p.z))};
}

const Box* MapManager::solidCubeAt(vec3 p) const {
    const Box& cube = cubes[static_cast<size_t>(getColumn(p.x))][static_cast<size_t>(getRow(p.y))]
                           [static_cast<size_t>(getDepth(p.z))];
    return cube.solid != 0 && intersects(cube, p) ? &cube : nullptr;
}

bool MapManager::collides(Box box) const {
    if (!hasCells())
        return false;
    const int lastColumn = getColumn(box.max.x);
    const int lastRow = getRow(box.max.y);
    const int lastDepth = getDepth(box.max.z);
    for (int i = getColumn(box.min.x); i <= lastColumn; ++i) {
        for (int j = getRow(box.min.y); j <= lastRow; ++j) {
            for (int k = getDepth(box.min.z); k <= lastDepth; ++k) {
                const Box& cube =
                    cubes[static_cast<size_t>(i)][static_cast<size_t>(j)][static_cast<size_t>(k)];
                if (cube.solid != 0 && intersects(cube, box))
                    return true;
            }
        }
    }
    return false;
}

bool MapManager::collides(vec3 p) const {
    return hasCells() && solidCubeAt(p) != nullptr;
}

vec3 MapManager::boxToCheckForLineIntersection(vec3 start, vec3 dir) const {
    if (!hasCells())
        return nothingFound;

    vec3 p = start;
    for (int step = 0; step < coarseSteps; ++step) {
        if (solidCubeAt(p)) {
            p = p - dir * backOffSteps;
            break;
        }
        p += dir;
    }
    for (int step = 0; step < fineSteps; ++step) {
        if (solidCubeAt(p))
            return cubeIndices(p);
        p += dir;
    }
    return nothingFound;
}

vec3 MapManager::pointOfIntersection(vec3 start, vec3 dir) const {
    const vec3 cell = boxToCheckForLineIntersection(start, dir);
    if (cell.x < 0.0f)
        return nothingFound;
    const Box& cube = cubes[static_cast<size_t>(cell.x)][static_cast<size_t>(cell.y)]
                           [static_cast<size_t>(cell.z)];
    const vec3 end = start + dir * segmentSteps;
    vec3 hit;
    vec3 normal;
    intersectsLineAABB(start, end, cube, hit, normal);
    return hit;
}
