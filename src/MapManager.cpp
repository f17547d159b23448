#include "MapManager.h"

#include "Collisions.h"
#include "MathOps.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <sstream>

namespace {

constexpr int cubeEdge = MapManager::cubeEdge;

/// Steps in the segment that is clipped at the cube found: twice as many as a first look takes, so
/// that the segment surely passes through the cube.
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

const Box& cubeAt(const MapManager& map, int i, int j, int k) {
    return map.cubes[static_cast<size_t>(i)][static_cast<size_t>(j)][static_cast<size_t>(k)];
}

bool blocks(const Box& cube, vec3 p) {
    return cube.solid != 0 && intersects(cube, p);
}

// The march replaces a walk of single steps with a look for a cube after each, and gives the same
// result to the bit. It takes many steps at once for two reasons.
//
// A step that stays in its cell needs no look: cubes fill their cells, so the answer changes only
// if a coordinate enters another cell or crosses a face of the world (Amanatides and Woo, "A fast
// voxel traversal algorithm for ray tracing", 1987). A coordinate outside the world names an edge
// cell, which cannot be hit from there until the coordinate crosses the face of the world.
//
// A coordinate is a sum of many steps, rounded after each, and yet many additions are one exact
// product. Floats of one sign and exponent are evenly spaced, and an addition that stays among them
// moves by the step rounded to their spacing, every time by the same amount: the stride. Only a tie
// in that rounding may make the first move differ from the next ones, since it leads to an even
// float, from which all others start. So a stretch begins with two moves that are compared, and
// ends where the spacing changes; the move across that end is an addition of its own.
//
// The phases, for each axis: arrive() says where the coordinate is and in which cell, enter()
// begins a stretch with an addition, goOn() begins the next one where the last has ended.
// firstHit() takes the three axes together from one end of a stretch to the next and looks for a
// cube there.

/// A step that no march takes.
constexpr int never = std::numeric_limits<int>::max();

/// One coordinate of the marching point, and a stretch of its way that keeps to one cell or outside
/// the world: in steps n with from <= n < until it is exactly position + (n - from) · stride.
/// Beyond the stretch that goes on as far as the spacing of floats does, for n < evenUntil.
struct Axis {
    float step;
    int cells;
    float farFace;

    float position = 0.0f;
    float stride = 0.0f;
    int cell = 0;
    int from = 0;
    int until = 0;
    int evenUntil = 0;
};

float positionAt(const Axis& axis, int n) {
    return axis.position + static_cast<float>(n - axis.from) * axis.stride;
}

/// The float at which the spacing of floats changes next, on the way from x in the direction of
/// `step`: the power of two above |x|, or the one below, which is |x| itself if |x| is a power of
/// two.
float endOfSpacing(float x, float step) {
    constexpr std::uint32_t mantissa = 0x007fffff;
    const auto bits = std::bit_cast<std::uint32_t>(x);
    const bool awayFromZero = (x > 0.0f) == (step > 0.0f);
    return std::bit_cast<float>(awayFromZero ? (bits | mantissa) + 1 : bits & ~mantissa);
}

/// The next face of a cell, or of the world, in the direction of the step. For a coordinate that
/// rises to zero no face is needed: the spacing of floats ends there.
float nextFace(const Axis& axis) {
    if (axis.step > 0.0f)
        return static_cast<float>(axis.cell + 1) * cubeEdge;
    return axis.position > axis.farFace ? axis.farFace : static_cast<float>(axis.cell) * cubeEdge;
}

/// The first step after `from` that reaches or crosses `end`, or the last one of a look if that is
/// earlier: tiny strides to a far face are more than an int counts. It is always right to end a
/// stretch early, since the next stretch goes on from the same float.
int stepThatReaches(const Axis& axis, float end) {
    constexpr float mostStrides = MapManager::coarseSteps;
    const float strides = std::min((end - axis.position) / axis.stride, mostStrides);
    const int whole = static_cast<int>(strides);
    const int roundedUp = static_cast<float>(whole) < strides ? whole + 1 : whole;
    return axis.from + std::max(1, roundedUp);
}

/// Comes to `position` in step n. False when that is out of the world for good, or NaN: then no
/// cube can follow, and the march ends.
bool arrive(Axis& axis, float position, int n) {
    const bool ascending = axis.step > 0.0f;
    if (!(ascending ? position <= axis.farFace : position >= 0.0f))
        return false;
    axis.position = position;
    axis.cell = cellIndex(position, axis.cells);
    axis.from = n;
    return true;
}

/// Begins a stretch in step n among floats of any spacing. False as in arrive().
bool enter(Axis& axis, float position, int n) {
    if (!arrive(axis, position, n))
        return false;

    // A step too small to move the coordinate leaves it where it is for ever.
    axis.stride = 0.0f;
    const float next = position + axis.step;
    if (next == position) {
        axis.until = never;
        return true;
    }

    // Unequal moves come from a tie: then this stretch is one step long. Equal ones go on as far as
    // the spacing and the cell do. The end is reached or crossed by the last move only, and that
    // move is not taken with the others.
    axis.until = n + 1;
    axis.evenUntil = n + 1;
    const float stride = next - position;
    const float nextStride = (next + axis.step) - next;
    if (stride == nextStride) {
        axis.stride = stride;
        axis.evenUntil = stepThatReaches(axis, endOfSpacing(position, axis.step));
        axis.until = std::min(axis.evenUntil, stepThatReaches(axis, nextFace(axis)));
    }
    return true;
}

/// Begins the next stretch if the last one ends in step n. If the spacing of floats ends there, the
/// first step is an addition of its own. False as in arrive().
bool goOn(Axis& axis, int n) {
    if (axis.until != n)
        return true;
    if (n == axis.evenUntil)
        return enter(axis, positionAt(axis, n - 1) + axis.step, n);
    // Only the cell has ended: the stride holds on.
    if (!arrive(axis, positionAt(axis, n), n))
        return false;
    axis.until = std::min(axis.evenUntil, stepThatReaches(axis, nextFace(axis)));
    return true;
}

struct March {
    Axis x;
    Axis y;
    Axis z;
};

/// A march along `dir` that has not begun. The far faces are read from the last cube, since that is
/// what a look compares with.
March marchThrough(const MapManager& map, vec3 dir) {
    constexpr float beyond = std::numeric_limits<float>::infinity();
    const vec3 farCorner =
        cubeAt(map, map.getColumn(beyond), map.getRow(beyond), map.getDepth(beyond)).max;
    return {{dir.x, map.columns, farCorner.x},
            {dir.y, map.rows, farCorner.y},
            {dir.z, map.depth, farCorner.z}};
}

vec3 positionAt(const March& march, int n) {
    return {positionAt(march.x, n), positionAt(march.y, n), positionAt(march.z, n)};
}

/// The first step below `limit` in which a march from `start` is in or on a solid cube, else never.
/// The march stops in the cell of that cube.
int firstHit(const MapManager& map, March& march, vec3 start, int limit) {
    auto& [x, y, z] = march;
    bool mayHit = enter(x, start.x, 0) && enter(y, start.y, 0) && enter(z, start.z, 0);
    int n = 0;
    while (mayHit) {
        // The one cube that can hold the point, until an axis ends its stretch.
        const vec3 p(x.position, y.position, z.position);
        if (blocks(cubeAt(map, x.cell, y.cell, z.cell), p))
            return n;
        n = std::min({x.until, y.until, z.until});
        mayHit = n < limit && goOn(x, n) && goOn(y, n) && goOn(z, n);
    }
    return never;
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
    return cubeAt(*this, i, j, k).solid == 0;
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

bool MapManager::collides(Box box) const {
    if (!hasCells())
        return false;
    const int lastColumn = getColumn(box.max.x);
    const int lastRow = getRow(box.max.y);
    const int lastDepth = getDepth(box.max.z);
    for (int i = getColumn(box.min.x); i <= lastColumn; ++i) {
        for (int j = getRow(box.min.y); j <= lastRow; ++j) {
            for (int k = getDepth(box.min.z); k <= lastDepth; ++k) {
                const Box& cube = cubeAt(*this, i, j, k);
                if (cube.solid != 0 && intersects(cube, box))
                    return true;
            }
        }
    }
    return false;
}

bool MapManager::collides(vec3 p) const {
    return hasCells() && blocks(cubeAt(*this, getColumn(p.x), getRow(p.y), getDepth(p.z)), p);
}

vec3 MapManager::boxToCheckForLineIntersection(vec3 start, vec3 dir) const {
    if (!hasCells())
        return nothingFound;

    // If the first look finds nothing, it ends where the second one begins: together they are one
    // march.
    March march = marchThrough(*this, dir);
    int n = firstHit(*this, march, start, coarseSteps + fineSteps);
    if (n < coarseSteps)
        n = firstHit(*this, march, positionAt(march, n) - dir * static_cast<float>(backOffSteps),
                     fineSteps);
    if (n == never)
        return nothingFound;
    return {static_cast<float>(march.x.cell), static_cast<float>(march.y.cell),
            static_cast<float>(march.z.cell)};
}

vec3 MapManager::pointOfIntersection(vec3 start, vec3 dir) const {
    const vec3 cell = boxToCheckForLineIntersection(start, dir);
    if (isMiss(cell))
        return nothingFound;
    const Box& cube =
        cubeAt(*this, static_cast<int>(cell.x), static_cast<int>(cell.y), static_cast<int>(cell.z));
    const vec3 end = start + dir * segmentSteps;
    vec3 hit;
    vec3 normal;
    intersectsLineAABB(start, end, cube, hit, normal);
    return hit;
}
