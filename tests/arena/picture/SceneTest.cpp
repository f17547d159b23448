#include "arena/picture/Scene.h"
#include "common/Files.h"
#include "tests/support/Arenas.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::arena;

namespace {

constexpr Triple slantingSun = {0.3, 0.9, 0.4};
constexpr int anySun = 0;

/// So small that lines along edges are drawn in their true width.
constexpr double tinyPixel = 1e-6;

double brightness(const Light& light) {
    return light[0] + light[1] + light[2];
}

Shade shadeSeenBy(const Scene& scene, const Ray& ray) {
    const std::optional<Hit> hit = trace(scene.grid, ray);
    if (!hit) {
        ADD_FAILURE() << "the ray meets nothing";
        return {};
    }
    return shade(scene, ray, *hit, anySun, tinyPixel);
}

/// What one sees straight below a point, and straight to the north of it.
Shade shadeBelow(const Scene& scene, double x, double y, double z) {
    return shadeSeenBy(scene, {{x, y, z}, {0.0, -1.0, 0.0}});
}
Shade shadeToTheNorth(const Scene& scene, double x, double y, double z) {
    return shadeSeenBy(scene, {{x, y, z}, {0.0, 0.0, -1.0}});
}

/// A floor of 7 × 7 cubes with a cube on its middle.
MapManager floorWithACube() {
    return loaded(arenaText(
        7, 3, 7, [](int i, int j, int k) { return j == 0 || (i == 3 && j == 1 && k == 3); }));
}

} // namespace

TEST(SceneBodies, CarryTheirNumberOnAllSides) {
    const MapManager map = withoutSolids(5, 5, 5);
    Scene scene = sceneOf(map, slantingSun);
    addBody(scene, "1", Box(vec3(160, 160, 160), vec3(50, 150, 50)));
    const double dot = 50.0 / 9 / 64;
    const double top = (160 + 75) / 64.0 - 4 * dot;
    for (const Triple& forward : {Triple{0, 0, -1}, {0, 0, 1}, {1, 0, 0}, {-1, 0, 0}}) {
        const Triple right = cross(forward, upwards);
        const auto isWhite = [&](double rightDots, double downDots) {
            const Triple onAxis = {2.5, top - downDots * dot, 2.5};
            const Triple start = sum(sum(onAxis, forward, -3.0), right, rightDots * dot);
            return shadeSeenBy(scene, {start, forward}).light[1] > 0.1;
        };
        // A 1 has a stroke in its middle, and in its second row a dot left of it.
        EXPECT_TRUE(isWhite(0.0, 0.5));
        EXPECT_TRUE(isWhite(-1.0, 1.5));
        EXPECT_FALSE(isWhite(1.0, 1.5));
        EXPECT_FALSE(isWhite(0.0, -0.5));
    }
}

TEST(SceneLight, FacesDifferInBrightnessByWhereTheyPoint) {
    const MapManager map = onlySolid(3, 3, 3, 1, 1, 1);
    const Scene scene = sceneOf(map, {0.2, 0.8, 0.5});
    const double top = brightness(shadeBelow(scene, 1.5, 5.0, 1.5).light);
    const double south = brightness(shadeToTheNorth(scene, 1.5, 1.5, 5.0).light);
    const double east = brightness(shadeSeenBy(scene, {{5.0, 1.5, 1.5}, {-1.0, 0.0, 0.0}}).light);
    const double west = brightness(shadeSeenBy(scene, {{-5.0, 1.5, 1.5}, {1.0, 0.0, 0.0}}).light);
    const double bottom = brightness(shadeSeenBy(scene, {{1.5, -5.0, 1.5}, {0.0, 1.0, 0.0}}).light);
    EXPECT_GT(top, 1.2 * south);
    EXPECT_GT(south, 1.2 * east);
    EXPECT_GT(east, 1.1 * west);
    EXPECT_GT(west, 1.1 * bottom);
}

TEST(SceneLight, CubeThrowsAShadowAwayFromTheSun) {
    const MapManager map = floorWithACube();
    const Scene fromSouthEast = sceneOf(map, {0.5, 0.7, 0.5});
    EXPECT_FALSE(shadeBelow(fromSouthEast, 2.7, 2.5, 2.7).inSun);
    EXPECT_TRUE(shadeBelow(fromSouthEast, 4.3, 2.5, 4.3).inSun);
    const Scene fromNorthWest = sceneOf(map, {-0.5, 0.7, -0.5});
    EXPECT_TRUE(shadeBelow(fromNorthWest, 2.7, 2.5, 2.7).inSun);
    EXPECT_FALSE(shadeBelow(fromNorthWest, 4.3, 2.5, 4.3).inSun);
}

TEST(SceneLight, BodiesThrowShadowsToo) {
    const MapManager map = loaded(arenaText(7, 4, 7, [](int, int j, int) { return j == 0; }));
    Scene scene = sceneOf(map, {0.5, 0.7, 0.0});
    EXPECT_TRUE(shadeBelow(scene, 2.7, 1.1, 3.5).inSun);
    addBody(scene, "1", Box(vec3(224, 139.25f, 224), vec3(50, 150, 50)));
    EXPECT_FALSE(shadeBelow(scene, 2.7, 1.1, 3.5).inSun);
}

TEST(SceneLight, ShadowHasASoftEdge) {
    const MapManager map =
        loaded(arenaText(12, 9, 3, [](int i, int j, int) { return j == 0 || (i == 0 && j < 9); }));
    const Scene scene = sceneOf(map, {-0.5, 0.8, 0.0});
    const auto litParts = [&](double x) {
        int lit = 0;
        for (int sun = 0; sun < sunParts; ++sun)
            lit += inSun(scene, {x, 1.001, 1.5}, sun);
        return lit;
    };
    // The wall's top is 8 above the floor, so its shadow ends 5 cells from its foot.
    EXPECT_EQ(litParts(5.4), 0);
    EXPECT_EQ(litParts(6.6), sunParts);
    int steps = 0;
    for (double x = 5.4; x < 6.6; x += 0.01)
        steps += litParts(x) != litParts(x + 0.01);
    EXPECT_GE(steps, sunParts / 2);
}

TEST(SceneLight, ContactShadowDarkensWhereCubesMeet) {
    const MapManager map = floorWithACube();
    const Scene scene = sceneOf(map, {0.1, 0.9, 0.4});
    const Shade foot = shadeBelow(scene, 3.5, 2.5, 4.05);
    const Shade between = shadeBelow(scene, 3.5, 2.5, 4.5);
    const Shade away = shadeBelow(scene, 3.5, 2.5, 4.95);
    ASSERT_TRUE(foot.inSun && between.inSun && away.inSun);
    EXPECT_LT(brightness(foot.light), 0.9 * brightness(between.light));
    EXPECT_LT(brightness(between.light), 0.95 * brightness(away.light));
}

TEST(SceneLight, CornerBetweenTwoWallsIsTheDarkest) {
    const MapManager map =
        loaded(arenaText(4, 3, 4, [](int i, int j, int k) { return j == 0 || i == 0 || k == 0; }));
    const Scene scene = sceneOf(map, {0.4, 0.9, 0.5});
    const auto light = [&](double x, double z) {
        const Shade seen = shadeBelow(scene, x, 1.5, z);
        EXPECT_TRUE(seen.inSun) << x << ", " << z;
        return brightness(seen.light);
    };
    EXPECT_LT(light(1.05, 1.05), light(1.05, 1.9));
    EXPECT_LT(light(1.05, 2.9), light(1.9, 2.9));
}

TEST(SceneLight, CubeAcrossACornerDarkensIt) {
    const MapManager map = floorWithACube();
    const Scene scene = sceneOf(map, {0.4, 0.9, 0.5});
    const Shade corner = shadeBelow(scene, 4.06, 2.5, 4.06);
    const Shade middle = shadeBelow(scene, 4.5, 2.5, 4.5);
    ASSERT_TRUE(corner.inSun && middle.inSun);
    EXPECT_LT(brightness(corner.light), 0.95 * brightness(middle.light));
}

TEST(SceneLight, SeamsBetweenCubesAreDarkAndRimsLight) {
    const MapManager map = loaded("2 1 1 1 2 1 2");
    const Scene scene = sceneOf(map, slantingSun);
    const double middle = brightness(shadeBelow(scene, 0.5, 2.0, 0.5).light);
    EXPECT_LT(brightness(shadeBelow(scene, 0.99, 2.0, 0.5).light), 0.95 * middle);
    EXPECT_GT(brightness(shadeBelow(scene, 0.01, 2.0, 0.5).light), 1.05 * middle);
}

TEST(SceneLight, LinesThinnerThanAPixelAreFainter) {
    const MapManager map = loaded("2 1 1 1 2 1 2");
    const Scene scene = sceneOf(map, slantingSun);
    const Ray ray{{0.99, 2.0, 0.5}, {0.0, -1.0, 0.0}};
    const std::optional<Hit> hit = trace(scene.grid, ray);
    ASSERT_TRUE(hit);
    const auto lineOfPixel = [&](double pixel) {
        return brightness(shade(scene, ray, *hit, anySun, pixel).light);
    };
    const double none = brightness(shadeBelow(scene, 0.8, 2.0, 0.5).light);
    EXPECT_LT(lineOfPixel(0.01), 0.9 * none);
    EXPECT_LT(lineOfPixel(0.2), 0.98 * none);
    EXPECT_GT(lineOfPixel(0.2), 0.93 * none);
    EXPECT_GT(lineOfPixel(1.0), 0.98 * none);
}

TEST(SceneLight, EqualCubesDifferALittle) {
    const MapManager map = loaded(arenaText(6, 1, 6, [](int, int, int) { return true; }));
    const Scene scene = sceneOf(map, slantingSun);
    double darkest = 1e9;
    double lightest = 0.0;
    for (int i = 0; i < 6; ++i) {
        for (int k = 0; k < 6; ++k) {
            const double light = brightness(shadeBelow(scene, i + 0.5, 2.0, k + 0.5).light);
            darkest = std::min(darkest, light);
            lightest = std::max(lightest, light);
        }
    }
    EXPECT_GT(lightest, 1.03 * darkest);
    EXPECT_LT(lightest, 1.15 * darkest);
}

TEST(SceneLight, ColoursBecomeLightAndComeBack) {
    for (int level = 0; level < 256; ++level) {
        const auto component = static_cast<std::uint8_t>(level);
        const Colour colour = {component, static_cast<std::uint8_t>(255 - level), 7};
        EXPECT_EQ(colourFrom(lightOf(colour)), colour) << level;
    }
    EXPECT_EQ(colourFrom({-0.5, 2.0, 1.0}), (Colour{0, 255, 255}));
}

TEST(Scene, MapWithoutCellsIsRefused) {
    EXPECT_THROW(requireCells(loaded("no map")), InputError);
    EXPECT_THROW(requireCells(loaded("3 0 3")), InputError);
    EXPECT_NO_THROW(requireCells(loaded("1 1 1")));
}
