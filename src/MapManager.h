#pragma once

#include "Box.h"
#include "Vector.h"

#include <string>
#include <vector>

/// The world: a block of cubes from the origin, `columns` along x, `rows` along y, `depth` along z.
/// Cell (i, j, k) reaches from (64i, 64j, 64k) to (64i+64, 64j+64, 64k+64) world units.
///
/// Queries only read. Outside the world they clamp to the nearest edge cell, which is then tested
/// as it stands. In a map without cells nothing collides and no ray hits.
struct MapManager {
    /// Edge length of a cube in world units. Map files count in cubes, and a body of 50 fits
    /// through a gap of one: with another edge no arena could be played as it was made.
    static constexpr int cubeEdge = 64;

    /// The most steps that a march takes to its first cube. A shot steps one world unit, so this is
    /// more than twice the way across an arena of 32 cubes; with fewer, shots would end in mid-air.
    static constexpr int coarseSteps = 5000;

    /// Steps that a march goes back from its first cube before it looks again. For a unit step this
    /// is the width of a cube; clients that predict shots rely on the cube found from there.
    static constexpr int backOffSteps = 64;

    /// Steps of the second look: the back-off and one more, so that the first cube is reached
    /// again.
    static constexpr int fineSteps = backOffSteps + 1;

    /// The last step that can find a cube. If the first look finds none, the second one goes on
    /// from its end.
    static constexpr int marchReach = coarseSteps + fineSteps - 1;

    int rows = 0;
    int columns = 0;
    int depth = 0;

    /// Extents along x, y and z in world units.
    float width = 0.0f;
    float height = 0.0f;
    float length = 0.0f;
    float cubeSize = 0.0f;

    /// cubes[column][row][depth index], with a box for every cell. An empty cell has `solid` 0.
    /// `solid` may change at any time; each box must stay at its cell, since marches rely on that.
    std::vector<std::vector<std::vector<Box>>> cubes;

    /// Reads decimal integers: columns, rows, depth, then for each column, row and depth index (the
    /// last varies fastest) the pair `solid`, `cellValue`. Anything that is not a number ends the
    /// reading, and so does a number too large for an int, which is stored as the nearest int; all
    /// further cells are empty. Text after the last pair is ignored. Appends to `cubes`: call it
    /// once.
    void init(std::string text);

    /// Whether the cell lies in the grid and is empty; outside the grid nothing is empty.
    bool cubeIsNull(int i, int j, int k) const;

    /// Whether the point lies beyond the world's faces; on a face is inside.
    bool outOfBounds(vec3 p) const;

    /// Index of the cell that holds a coordinate, clamped to the grid. All of (-64, 64) is cell 0.
    int getColumn(float x) const;
    int getRow(float y) const;
    int getDepth(float z) const;

    /// (getColumn, getRow, getDepth) as floats.
    vec3 cubeIndices(vec3 p) const;

    /// Whether the box overlaps or touches a solid cube.
    bool collides(Box box) const;

    /// Whether the point lies in or on the cell that holds it and that cell is solid.
    bool collides(vec3 p) const;

    /// Marches from `start` in steps of exactly `dir` (neither scaled nor normalised) for up to
    /// `coarseSteps` to the first solid cube, backs off by `backOffSteps` and looks again for
    /// `fineSteps`. Returns the cell's indices or (-1, -1, -1). If the first cube is nearer than
    /// the back-off, the second look starts behind `start` and may find another cube there. The
    /// running time grows with the cells on the way, not with the steps.
    vec3 boxToCheckForLineIntersection(vec3 start, vec3 dir) const;

    /// The point at which the ray from `start` along `dir` enters the cube that the march finds,
    /// in world units, or (-1, -1, -1).
    vec3 pointOfIntersection(vec3 start, vec3 dir) const;

    /// Whether the grid holds any cell at all.
    bool hasCells() const { return columns > 0 && rows > 0 && depth > 0; }
};

/// Whether the answer of a march, cell or point, stands for nothing met: its x is negative.
inline bool isMiss(vec3 hit) {
    return hit.x < 0.0f;
}
