#include "game/ArenaLight.h"

#include "tests/support/Arenas.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

/// The light at the corners of a face, with no sun.
CornerLight lightOn(const MapManager& map, const CubeFace& wanted) {
    const std::vector<CubeFace> faces = visibleFaces(map);
    const std::vector<CornerLight> light =
        ambientLight(map, faces, std::vector<double>(faces.size(), 0.0));
    const auto found = std::find(faces.begin(), faces.end(), wanted);
    return light.at(static_cast<std::size_t>(found - faces.begin()));
}

MapManager floorWith(const std::function<bool(int, int, int)>& solid) {
    return loaded(
        arenaText(9, 6, 9, [&](int i, int j, int k) { return j == 0 || solid(i, j, k); }));
}

} // namespace

TEST(ArenaLight, OfOpenGroundIsTheWholeSkyAlikeAtAllCorners) {
    const CornerLight light =
        lightOn(floorWith([](int, int, int) { return false; }), {{4, 0, 4}, 1, 1});
    for (const arena::Light& corner : light) {
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(corner[c], light[0][c], 1e-12);
            EXPECT_GE(corner[c], skyLight[c]);
        }
    }
    EXPECT_GT(light[0][2], light[0][0]) << "it is bluish";
}

TEST(ArenaLight, IsLessTowardsAWall) {
    const CornerLight light =
        lightOn(floorWith([](int i, int j, int) { return i == 5 && j < 5; }), {{4, 0, 4}, 1, 1});
    // First along the normal of y is z, second is x.
    EXPECT_LT(light[3][1], 0.85 * light[0][1]);
    EXPECT_NEAR(light[2][1], light[3][1], 0.05 * light[3][1]);
}

TEST(ArenaLight, IsSharedByNeighboursInOnePlane) {
    const MapManager map = floorWith([](int i, int j, int k) { return i == 6 && j < 3 && k > 2; });
    const CornerLight one = lightOn(map, {{4, 0, 4}, 1, 1});
    const CornerLight next = lightOn(map, {{5, 0, 4}, 1, 1});
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_EQ(one[3][c], next[0][c]);
        EXPECT_EQ(one[2][c], next[1][c]);
    }
}

TEST(ArenaLight, BouncesInTheColourOfWhatTheSunShinesOn) {
    // A red wall, all in the sun, beside a grey floor in the shade.
    MapManager map = floorWith([](int i, int j, int) { return i == 5 && j < 5; });
    const int brick = 4;
    for (int row = 1; row < 5; ++row) {
        for (int depth = 0; depth < 9; ++depth)
            arena::cell(map, 5, row, depth).cellValue = brick;
    }
    const std::vector<CubeFace> faces = visibleFaces(map);
    const auto at = [&](const CubeFace& face) {
        return static_cast<std::size_t>(std::find(faces.begin(), faces.end(), face) -
                                        faces.begin());
    };
    const std::size_t ground = at({{4, 0, 4}, 1, 1});
    std::vector<double> shares(faces.size(), 0.0);
    const CornerLight dark = ambientLight(map, faces, shares)[ground];
    for (std::size_t i = 0; i < faces.size(); ++i)
        shares[i] = faces[i].axis == 0 && faces[i].side < 0 ? 1.0 : 0.0;
    const CornerLight lit = ambientLight(map, faces, shares)[ground];
    const double red = lit[3][0] - dark[3][0];
    const double blue = lit[3][2] - dark[3][2];
    EXPECT_GT(red, 0.1);
    EXPECT_GT(red, 3.0 * blue);
}

TEST(ArenaLight, ShowsMoreLightBrighterAndNoneTooBright) {
    double last = -1.0;
    for (const double amount : {0.0, 0.1, 0.5, 1.0, 2.0, 10.0}) {
        const double shown = exposed({amount, amount, amount})[0];
        EXPECT_GT(shown, last);
        EXPECT_LE(shown, 1.05);
        last = shown;
    }
}
