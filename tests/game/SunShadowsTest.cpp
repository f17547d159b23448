#include "game/SunShadows.h"

#include "common/Chance.h"
#include "game/ArenaLight.h"
#include "tests/support/Arenas.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

/// The distance from a point inside to the nearest edge; negative outside.
double depthIn(const Polygon& polygon, glm::dvec2 point) {
    double least = 1e9;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const glm::dvec2 from = polygon[i];
        const glm::dvec2 along = polygon[(i + 1) % polygon.size()] - from;
        const glm::dvec2 to = point - from;
        const double length = std::max(std::hypot(along.x, along.y), 1e-12);
        least = std::min(least, (along.x * to.y - along.y * to.x) / length);
    }
    return least;
}

arena::Triple onFace(const CubeFace& face, glm::dvec2 point) {
    arena::Triple at = {double(face.cube.column), double(face.cube.row), double(face.cube.depth)};
    at[static_cast<std::size_t>(face.axis)] += face.side > 0 ? 1.0 + 1e-6 : -1e-6;
    at[static_cast<std::size_t>(firstAlong(face.axis))] += point.x;
    at[static_cast<std::size_t>(secondAlong(face.axis))] += point.y;
    return at;
}

/// A world of 7 × 6 × 7 cells, of which every fourth or so is a cube.
MapManager rubble(std::uint64_t seed) {
    Chance chance(seed);
    std::vector<bool> solid;
    for (int i = 0; i < 7 * 6 * 7; ++i)
        solid.push_back(chance.below(4) == 0);
    return loaded(arenaText(7, 6, 7, [&](int i, int j, int k) {
        return solid[static_cast<std::size_t>((i * 6 + j) * 7 + k)];
    }));
}

} // namespace

TEST(SunShadows, LieWhereRaysTowardsTheSunMeetCubes) {
    int inLight = 0;
    int inShade = 0;
    for (std::uint64_t seed = 1; seed <= 6; ++seed) {
        const MapManager map = rubble(seed);
        const arena::Grid grid = arena::gridOf(map);
        const SunShadows shadows(map, towardsSun);
        Chance chance(seed);
        for (const CubeFace& face : visibleFaces(map)) {
            const SunnyFace sunny = shadows.on(face);
            for (int sample = 0; sample < 12; ++sample) {
                const glm::dvec2 point(chance.share(), chance.share());
                double nearest = 1.0;
                int covers = 0;
                bool lit = false;
                for (const bool inSun : {true, false}) {
                    for (const Polygon& polygon : inSun ? sunny.lit : sunny.shaded) {
                        const double depth = depthIn(polygon, point);
                        nearest = std::min(nearest, std::abs(depth));
                        if (depth > 0.0) {
                            ++covers;
                            lit = inSun;
                        }
                    }
                }
                if (nearest < 1e-5)
                    continue;
                ASSERT_EQ(covers, 1) << "each point lies in one polygon";
                const bool meets = trace(grid, {onFace(face, point), towardsSun}).has_value();
                const bool faces = shadows.slope(face) > 0.0;
                ASSERT_EQ(lit, faces && !meets)
                    << "cube " << face.cube.column << ' ' << face.cube.row << ' ' << face.cube.depth
                    << " axis " << face.axis << " side " << face.side << " at " << point.x << ' '
                    << point.y;
                ++(lit ? inLight : inShade);
            }
        }
    }
    EXPECT_GT(inLight, 500);
    EXPECT_GT(inShade, 500);
}

TEST(SunShadows, CoverEachFaceWholeInConvexPolygons) {
    const MapManager map = rubble(9);
    const SunShadows shadows(map, towardsSun);
    for (const CubeFace& face : visibleFaces(map)) {
        const SunnyFace sunny = shadows.on(face);
        double area = 0.0;
        for (const auto* polygons : {&sunny.lit, &sunny.shaded}) {
            for (const Polygon& polygon : *polygons) {
                ASSERT_GE(polygon.size(), 3u);
                area += areaOf(polygon);
                for (const glm::dvec2 corner : polygon)
                    EXPECT_GT(depthIn(polygon, corner), -1e-9) << "no corner juts in";
            }
        }
        EXPECT_NEAR(area, 1.0, 1e-5);
    }
}

TEST(SunShadows, OfOneCubeAreAsLongAsTheSunIsLow) {
    // Straight along x: a cube on the ground shades as many cells behind it as it is high.
    const MapManager map = loaded(arenaText(
        8, 4, 3, [](int i, int j, int k) { return j == 0 || (i == 5 && k == 1 && j < 3); }));
    const SunShadows shadows(map, {1.0, 1.0, 0.0});
    EXPECT_EQ(shadows.on({{4, 0, 1}, 1, 1}).share(), 0.0);
    EXPECT_EQ(shadows.on({{3, 0, 1}, 1, 1}).share(), 0.0);
    EXPECT_EQ(shadows.on({{2, 0, 1}, 1, 1}).share(), 1.0);
    EXPECT_EQ(shadows.on({{4, 0, 0}, 1, 1}).share(), 1.0);
    EXPECT_EQ(shadows.on({{5, 1, 1}, 0, -1}).share(), 0.0) << "the side that faces away";
    EXPECT_NEAR(shadows.slope({{4, 0, 1}, 1, 1}), 0.70711, 1e-5);
    EXPECT_EQ(shadows.slope({{5, 1, 1}, 0, -1}), 0.0);
}

TEST(SunShadows, HalveAFaceAlongTheirEdge) {
    const MapManager map =
        loaded(arenaText(6, 4, 1, [](int i, int j, int) { return j == 0 || (i == 4 && j == 1); }));
    const SunShadows shadows(map, {1.0, 2.0, 0.0});
    const SunnyFace face = shadows.on({{3, 0, 0}, 1, 1});
    EXPECT_NEAR(face.share(), 0.5, 1e-12);
    EXPECT_EQ(face.lit.size(), 1u);
    EXPECT_EQ(face.shaded.size(), 1u);
}
