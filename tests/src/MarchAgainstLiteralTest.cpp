#include "bench/LiteralMarch.h"
#include "src/FileLoader.h"
#include "src/MapManager.h"
#include "tests/support/Arenas.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iomanip>
#include <limits>
#include <random>

namespace {

/// Slow builds get one ray out of so many.
#if defined(DRENCH_SANITIZED) || defined(DRENCH_EMULATED) || !defined(__OPTIMIZE__)
constexpr int thinning = 25;
#else
constexpr int thinning = 1;
#endif

/// Twenty times as many rays as it took to notice the most hidden of the slips that were tried:
/// docs/maintaining.md. The quickest families get more.
constexpr int manyRays = 20'000;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
constexpr float largest = std::numeric_limits<float>::max();
constexpr float smallestNormal = std::numeric_limits<float>::min();
constexpr float smallest = std::numeric_limits<float>::denorm_min();

constexpr float edge = 64.0f;

struct Ray {
    vec3 start;
    vec3 dir;
};

/// One coordinate of a ray.
struct Moving {
    float from;
    float step;
};

Ray rayOf(Moving x, Moving y, Moving z) {
    return {{x.from, y.from, z.from}, {x.step, y.step, z.step}};
}

/// The same numbers in every run.
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : generator(seed) {}

    int below(int count) { return static_cast<int>(generator() % static_cast<unsigned>(count)); }
    int between(int low, int high) { return low + below(high - low + 1); }

    float between(float low, float high) {
        const float part = static_cast<float>(generator() >> 40) * 0x1p-24f;
        return low + (high - low) * part;
    }

    bool oneIn(int count) { return below(count) == 0; }

    float eitherSign(float x) { return oneIn(2) ? x : -x; }

    /// Of either sign; its magnitude is 2^lowest to 2^(highest + 1).
    float ofExponent(int lowest, int highest) {
        return eitherSign(std::ldexp(between(1.0f, 2.0f), between(lowest, highest)));
    }

    float anyBits() { return std::bit_cast<float>(static_cast<std::uint32_t>(generator() >> 32)); }

    float oneOf(std::initializer_list<float> values) {
        return values.begin()[below(static_cast<int>(values.size()))];
    }

    vec3 pointIn(const MapManager& map) {
        const float x = between(0.0f, map.width);
        const float y = between(0.0f, map.height);
        return {x, y, between(0.0f, map.length)};
    }

    vec3 unitVector() {
        vec3 v;
        do {
            v.x = between(-1.0f, 1.0f);
            v.y = between(-1.0f, 1.0f);
            v.z = between(-1.0f, 1.0f);
        } while (v.length() > 1.0f || v.length() < 0.1f);
        v.normalize();
        return v;
    }

  private:
    std::mt19937_64 generator;
};

/// So many floats further up, or down.
float nudged(float x, int floats) {
    for (; floats > 0; --floats)
        x = std::nextafter(x, infinity);
    for (; floats < 0; ++floats)
        x = std::nextafter(x, -infinity);
    return x;
}

float spacingAt(float x) {
    return std::nextafter(x, infinity) - x;
}

MapManager randomWorld(Dice& dice, int columns, int rows, int depth, int percentSolid) {
    return loaded(arenaText(columns, rows, depth,
                            [&](int, int, int) { return dice.below(100) < percentSolid; }));
}

/// The same with solid cells all around, so that few rays get lost: on those the literal march is
/// slow.
MapManager walledWorld(Dice& dice, int columns, int rows, int depth, int percentSolid) {
    return loaded(arenaText(columns, rows, depth, [&](int i, int j, int k) {
        return i == 0 || i == columns - 1 || j == 0 || j == rows - 1 || k == 0 || k == depth - 1 ||
               dice.below(100) < percentSolid;
    }));
}

Moving anywhere(Dice& dice, int cells) {
    const float from = dice.between(0.0f, edge * static_cast<float>(cells));
    return {from, dice.ofExponent(-3, 4)};
}

/// On a face, or a few floats beside it, with a step that stays on such coordinates.
Moving onFace(Dice& dice, int cells) {
    const float face = edge * static_cast<float>(dice.between(0, cells));
    const float from = nudged(face, dice.between(-2, 2));
    const float step = dice.oneOf({0.0f, -0.0f, 1.0f, 0.5f, 3.0f, 16.0f, 32.0f, 64.0f, 96.0f, 1e-7f,
                                   1e-5f, 0.015625f, smallest, smallestNormal});
    return {from, dice.eitherSign(step)};
}

/// Some steps before a face, or a power of two; each is a few times the spacing of floats there,
/// and ends halfway between two of them when `tied`.
Moving roundedSteps(Dice& dice, int cells, bool tied) {
    const float aim = dice.oneIn(3) ? std::ldexp(1.0f, dice.between(-8, 9))
                                    : edge * static_cast<float>(dice.between(1, cells));
    const float spacing = 0.5f * spacingAt(aim);
    const float multiple =
        tied ? static_cast<float>(dice.between(-6, 6)) + 0.5f : dice.between(-6.0f, 6.0f);
    const float step = multiple * spacing;
    const float before = static_cast<float>(dice.below(dice.oneIn(50) ? 5100 : 200)) * step;
    return {nudged(aim - before, dice.between(-3, 3)), step};
}

/// Outside the world, on the way into it.
Moving comingIn(Dice& dice, int cells) {
    const float farFace = edge * static_cast<float>(cells);
    const float step = std::ldexp(dice.between(1.0f, 2.0f), dice.between(-2, 5));
    const float away = step * dice.between(0.0f, 150.0f);
    return dice.oneIn(2) ? Moving{-away, step} : Moving{nudged(farFace, 1) + away, -step};
}

Moving unmoved(Dice& dice, int cells) {
    return {dice.between(-1.0f, edge * static_cast<float>(cells) + 1.0f), 0.0f};
}

Moving anyMoving(Dice& dice, int cells) {
    switch (dice.below(6)) {
    case 0:
        return onFace(dice, cells);
    case 1:
        return roundedSteps(dice, cells, true);
    case 2:
        return roundedSteps(dice, cells, false);
    case 3:
        return comingIn(dice, cells);
    case 4:
        return unmoved(dice, cells);
    default:
        return anywhere(dice, cells);
    }
}

/// Each coordinate of its own kind.
template<typename NextMoving>
Ray mixedRay(const MapManager& map, NextMoving nextMoving) {
    const Moving x = nextMoving(map.columns);
    const Moving y = nextMoving(map.rows);
    return rayOf(x, y, nextMoving(map.depth));
}

bool sameBits(float a, float b) {
    const bool bothNaN = std::isnan(a) && std::isnan(b);
    return bothNaN || std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

bool sameBits(vec3 a, vec3 b) {
    return sameBits(a.x, b.x) && sameBits(a.y, b.y) && sameBits(a.z, b.z);
}

/// Marches along so many rays, up to the first on which the two disagree. A share of hits is asked
/// for so that no family turns into one of rays that meet nothing.
template<typename NextRay>
void expectAgreement(const MapManager& map, int rays, double leastShareOfHits, NextRay nextRay) {
    const int count = rays / thinning;
    int hits = 0;
    for (int i = 0; i < count; ++i) {
        const auto [start, dir] = nextRay();
        const vec3 cell = map.boxToCheckForLineIntersection(start, dir);
        const vec3 point = map.pointOfIntersection(start, dir);
        const vec3 literalCell = literal::marchedCell(map, start, dir);
        const vec3 literalPoint = literal::pointOn(map, literalCell, start, dir);
        if (!sameBits(cell, literalCell) || !sameBits(point, literalPoint)) {
            ADD_FAILURE() << std::setprecision(9) << "ray " << i << " from " << start
                          << " in steps of " << dir << " ends in cell " << cell << " at " << point
                          << ", should in " << literalCell << " at " << literalPoint;
            return;
        }
        if (cell.x >= 0.0f)
            ++hits;
    }
    EXPECT_GE(hits, leastShareOfHits * count);
}

/// What floats have in store beside numbers.
float oddFloat(Dice& dice) {
    const float x = dice.oneOf({0.0f, 1.0f, 32.0f, 64.0f, 100.0f, 1e10f, 2147483648.0f, smallest,
                                smallestNormal, largest, infinity, NaN});
    return dice.eitherSign(x);
}

} // namespace

TEST(MarchAgainstLiteral, UnitStepsThroughTheDefaultArena) {
    const MapManager map = loaded(fileStringContents(DRENCH_MAPDATA));
    Dice dice(1);
    expectAgreement(map, manyRays, 0.6, [&] { return Ray{dice.pointIn(map), dice.unitVector()}; });
}

TEST(MarchAgainstLiteral, StepsOfAllLengthsThroughADenseGrid) {
    Dice dice(2);
    const MapManager map = walledWorld(dice, 9, 7, 8, 35);
    expectAgreement(map, 5 * manyRays, 0.8, [&] {
        const float length = std::ldexp(dice.between(1.0f, 2.0f), dice.between(-4, 7));
        return Ray{dice.pointIn(map), dice.unitVector() * length};
    });
}

TEST(MarchAgainstLiteral, LongWaysThroughASparseGrid) {
    Dice dice(3);
    const MapManager map = walledWorld(dice, 20, 17, 18, 4);
    expectAgreement(map, manyRays, 0.8, [&] {
        return Ray{dice.pointIn(map), dice.unitVector() * dice.between(0.3f, 8.0f)};
    });
}

TEST(MarchAgainstLiteral, EachCoordinateOfItsOwnKind) {
    Dice dice(4);
    const MapManager map = randomWorld(dice, 12, 5, 16, 60);
    expectAgreement(map, manyRays, 0.4, [&] {
        return mixedRay(map, [&](int cells) { return anyMoving(dice, cells); });
    });
}

TEST(MarchAgainstLiteral, OnFacesAndEdgesAndAFloatBesideThem) {
    Dice dice(5);
    const MapManager map = randomWorld(dice, 6, 6, 6, 70);
    expectAgreement(map, manyRays, 0.4,
                    [&] { return mixedRay(map, [&](int cells) { return onFace(dice, cells); }); });
}

TEST(MarchAgainstLiteral, DiagonalsFromCornerToCorner) {
    Dice dice(6);
    const MapManager map = walledWorld(dice, 8, 8, 8, 10);
    expectAgreement(map, manyRays, 0.8, [&] {
        const float step = dice.oneOf({1.0f, 0.5f, 0.1f, 1.0f / 3.0f, 7.0f, 64.0f});
        const auto moving = [&](int cells) {
            const float corner = edge * static_cast<float>(dice.between(0, cells));
            return Moving{nudged(corner, dice.between(-1, 1)), dice.eitherSign(step)};
        };
        return mixedRay(map, moving);
    });
}

TEST(MarchAgainstLiteral, StepsThatAreRoundedToAFewSpacings) {
    Dice dice(7);
    const MapManager map = randomWorld(dice, 16, 16, 16, 50);
    expectAgreement(map, 5 * manyRays, 0.4, [&] {
        return mixedRay(map, [&](int cells) { return roundedSteps(dice, cells, false); });
    });
}

TEST(MarchAgainstLiteral, StepsThatEndHalfwayBetweenFloats) {
    Dice dice(8);
    const MapManager map = randomWorld(dice, 16, 16, 16, 50);
    expectAgreement(map, 5 * manyRays, 0.4, [&] {
        return mixedRay(map, [&](int cells) { return roundedSteps(dice, cells, true); });
    });
}

TEST(MarchAgainstLiteral, TinyStepsFromEveryMagnitude) {
    Dice dice(9);
    const MapManager map = randomWorld(dice, 6, 5, 4, 85);
    expectAgreement(map, 5 * manyRays, 0.3, [&] {
        const auto moving = [&](int) {
            return Moving{std::fabs(dice.ofExponent(-149, 8)), dice.ofExponent(-149, -1)};
        };
        return mixedRay(map, moving);
    });
}

TEST(MarchAgainstLiteral, StepsOfAFewBitsNearZero) {
    Dice dice(20);
    const MapManager map = randomWorld(dice, 4, 3, 3, 50);
    expectAgreement(map, manyRays, 0.2, [&] {
        const auto moving = [&](int) {
            const float step = dice.eitherSign(
                std::ldexp(static_cast<float>(dice.between(1, 7)), dice.between(-32, -20)));
            return Moving{static_cast<float>(dice.between(-3000, 3000)) * step, step};
        };
        return rayOf(moving(0), moving(0), unmoved(dice, 3));
    });
}

/// By the step, the next face is more steps away than an int can count.
TEST(MarchAgainstLiteral, FacesFurtherAwayThanAnIntCounts) {
    for (const char* text : {"3 1 1  0 0 1 1 1 1", "3 1 1  0 0 0 0 1 1"}) {
        const MapManager map = loaded(text);
        for (const float from : {0.0f, -0x1p-18f, 0x1p-18f}) {
            const vec3 start(from, 32.0f, 32.0f);
            const vec3 step(0x1p-25f, 0.0f, 0.0f);
            const vec3 cell = map.boxToCheckForLineIntersection(start, step);
            EXPECT_TRUE(sameBits(cell, literal::marchedCell(map, start, step))) << from;
        }
    }
}

TEST(MarchAgainstLiteral, WallsAsFarAsTheTwoLooksReach) {
    Dice dice(10);
    const MapManager map = corridor("...................................#....");
    expectAgreement(map, manyRays, 0.4, [&] {
        const float step = dice.between(0.01f, 0.44f);
        const int steps = dice.oneIn(2) ? dice.between(4990, 5010) : dice.between(5055, 5070);
        const float from = 35 * edge - step * static_cast<float>(steps);
        return rayOf({nudged(from, dice.between(-2, 2)), step}, unmoved(dice, 1),
                     {32.0f, dice.ofExponent(-30, -9)});
    });
}

TEST(MarchAgainstLiteral, WallsSoNearThatTheBackOffReachesBehindTheShooter) {
    Dice dice(11);
    const MapManager map = corridor("#.#..#.##...#.#");
    expectAgreement(map, 5 * manyRays, 0.8, [&] {
        const float step = dice.ofExponent(-4, 5);
        const float from = edge * static_cast<float>(dice.between(0, 15)) -
                           step * static_cast<float>(dice.between(0, 63));
        return rayOf({nudged(from, dice.between(-2, 2)), step}, {32.0f, dice.ofExponent(-20, -2)},
                     {dice.between(0.0f, 64.0f), 0.0f});
    });
}

TEST(MarchAgainstLiteral, FromOutsideTheWorld) {
    Dice dice(12);
    const MapManager map = randomWorld(dice, 7, 6, 5, 60);
    expectAgreement(map, manyRays, 0.2, [&] {
        const vec3 dir = dice.unitVector() * dice.between(0.5f, 40.0f);
        return Ray{dice.pointIn(map) - dir * dice.between(-5.0f, 300.0f), dir};
    });
}

TEST(MarchAgainstLiteral, FromJustOutsideTheWorld) {
    Dice dice(13);
    const MapManager map = randomWorld(dice, 3, 4, 5, 60);
    expectAgreement(map, 3 * manyRays, 0.2, [&] {
        const auto moving = [&](int cells) {
            const float face = dice.oneIn(2) ? 0.0f : edge * static_cast<float>(cells);
            const float beside = dice.ofExponent(-149, 5);
            return Moving{dice.oneIn(3) ? anywhere(dice, cells).from : face + beside,
                          dice.ofExponent(-20, 5)};
        };
        return mixedRay(map, moving);
    });
}

TEST(MarchAgainstLiteral, OddFloats) {
    Dice dice(14);
    const MapManager map = randomWorld(dice, 3, 4, 5, 90);
    expectAgreement(map, manyRays, 0.05, [&] {
        const auto moving = [&](int cells) {
            const float from = dice.oneIn(3) ? oddFloat(dice) : anywhere(dice, cells).from;
            return Moving{from, oddFloat(dice)};
        };
        return mixedRay(map, moving);
    });
}

TEST(MarchAgainstLiteral, AnyBits) {
    Dice dice(15);
    const MapManager map = randomWorld(dice, 3, 4, 5, 90);
    expectAgreement(map, manyRays, 0.05, [&] {
        const auto moving = [&](int cells) {
            const float from = dice.oneIn(4) ? dice.anyBits() : anywhere(dice, cells).from;
            return Moving{from, dice.anyBits()};
        };
        return mixedRay(map, moving);
    });
}

TEST(MarchAgainstLiteral, OneCell) {
    for (const bool solid : {false, true}) {
        Dice dice(16);
        const MapManager map = solid ? onlySolid(1, 1, 1, 0, 0, 0) : withoutSolids(1, 1, 1);
        expectAgreement(map, solid ? manyRays : 5'000, solid ? 0.2 : 0.0, [&] {
            return mixedRay(map, [&](int cells) { return anyMoving(dice, cells); });
        });
    }
}

TEST(MarchAgainstLiteral, NothingSolidAndAllSolid) {
    for (const bool solid : {false, true}) {
        Dice dice(17);
        const MapManager map = randomWorld(dice, 4, 3, 5, solid ? 100 : 0);
        expectAgreement(map, solid ? manyRays : 5'000, solid ? 0.3 : 0.0, [&] {
            return mixedRay(map, [&](int cells) { return anyMoving(dice, cells); });
        });
    }
}

TEST(MarchAgainstLiteral, ThousandsOfCellsInARow) {
    constexpr int cells = 5000;
    for (int axis = 0; axis < 3; ++axis) {
        Dice dice(18);
        const auto along = [axis](int other) { return axis == other ? cells : 1; };
        const MapManager map = randomWorld(dice, along(0), along(1), along(2), 2);
        const auto moving = [&](int count) {
            return count == 1
                       ? Moving{dice.between(0.0f, edge), dice.ofExponent(-20, -8)}
                       : Moving{dice.between(-edge, edge * (cells + 1)), dice.ofExponent(-1, 6)};
        };
        expectAgreement(map, manyRays, 0.5, [&] { return mixedRay(map, moving); });
    }
}

TEST(MarchAgainstLiteral, CubesThatChangeBetweenCalls) {
    Dice dice(19);
    MapManager map = walledWorld(dice, 5, 6, 7, 40);
    expectAgreement(map, 5 * manyRays, 0.7, [&] {
        Box& cube = map.cubes[static_cast<size_t>(dice.between(1, 3))][static_cast<size_t>(
            dice.between(1, 4))][static_cast<size_t>(dice.between(1, 5))];
        cube.solid = dice.oneIn(2) ? 0 : dice.between(-3, 3);
        return Ray{dice.pointIn(map), dice.unitVector() * dice.between(0.5f, 9.0f)};
    });
}
