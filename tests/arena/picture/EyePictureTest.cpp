#include "common/Files.h"
#include "tests/support/Arenas.h"
#include "tests/support/PictureCourt.h"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace drench;

using namespace pictures;

namespace {

/// A hall of 9 × 5 × 9 cells with an open top.
MapManager hall() {
    MapManager map = emptyMap(9, 5, 9);
    for (int i = 0; i < 9; ++i) {
        for (int k = 0; k < 9; ++k) {
            put(map, i, 0, k, stone);
            for (int j = 1; j < 5 && (i == 0 || i == 8 || k == 0 || k == 8); ++j)
                put(map, i, j, k, stone);
        }
    }
    return map;
}

constexpr vec3 hallMiddle(288, 160, 288);

bool isSky(Colour colour) {
    return colour.blue > colour.green && colour.green > colour.red && colour.blue > 180;
}

} // namespace

TEST(EyePicture, EastIsRightWhenLookingNorth) {
    MapManager map = hall();
    for (int j = 1; j < 5; ++j)
        put(map, 6, j, 0, brick);
    const Found seen =
        pixels(eyePicture(map, {}, hallMiddle, hallMiddle + vec3(0, 0, -1), 160, 100), isReddish);
    EXPECT_GT(seen.count, 100);
    EXPECT_GT(seen.x, 90);
}

TEST(EyePicture, SeesNinetyDegreesFromSideToSide) {
    // The north wall is 3.5 cells away: what is seen of it reaches 3.5 cells to each side, from
    // column 1 to column 7, and a cube is 28.6 pixels wide and high.
    MapManager map = hall();
    put(map, 7, 2, 0, brick);
    const Image image = eyePicture(map, {}, hallMiddle, hallMiddle + vec3(0, 0, -9), 200, 100);
    EXPECT_TRUE(isReddish(image.at(199, 50)));
    EXPECT_TRUE(isReddish(image.at(173, 50)));
    EXPECT_FALSE(isReddish(image.at(169, 50)));
    EXPECT_TRUE(isReddish(image.at(185, 37)));
    EXPECT_FALSE(isReddish(image.at(185, 33)));
}

TEST(EyePicture, SkyIsAboveAndFloorBelow) {
    const Image image = eyePicture(hall(), {}, hallMiddle, hallMiddle + vec3(1, 0, 0), 200, 160);
    EXPECT_TRUE(isSky(image.at(100, 2)));
    EXPECT_FALSE(isSky(image.at(100, 157)));
    const MapManager nothing = withoutSolids(2, 2, 2);
    const Image sky = eyePicture(nothing, {}, vec3(64), vec3(128, 64, 64), 100, 100);
    EXPECT_GT(sky.at(50, 45).red, sky.at(50, 2).red + 20) << "lighter towards the horizon";
}

TEST(EyePicture, LooksStraightDownWithNorthUp) {
    MapManager map = hall();
    put(map, 4, 0, 3, brick);
    const Found north =
        pixels(eyePicture(map, {}, hallMiddle, hallMiddle - vec3(0, 50, 0), 120, 120), isReddish);
    EXPECT_GT(north.count, 100);
    EXPECT_LT(north.y, 40);
    EXPECT_NEAR(north.x, 59.5, 3.0);
    map = hall();
    put(map, 5, 0, 4, brick);
    const Found east =
        pixels(eyePicture(map, {}, hallMiddle, hallMiddle - vec3(0, 50, 0), 120, 120), isReddish);
    EXPECT_GT(east.x, 80);
}

TEST(EyePicture, LooksStraightUpWithSouthUp) {
    MapManager map = hall();
    put(map, 4, 4, 5, brick);
    const Image image = eyePicture(map, {}, hallMiddle, hallMiddle + vec3(0, 50, 0), 120, 120);
    const Found south = pixels(image, isReddish);
    EXPECT_GT(south.count, 100);
    EXPECT_LT(south.y, 40);
}

TEST(EyePicture, BodyIsSeenOnlyWhenNothingIsBetween) {
    MapManager map = hall();
    const std::vector<SpawnMark> spawns = {standingIn(5, 4, 1, 1, {0, 0, 1})};
    const auto bodyPixels = [&] {
        return pixels(eyePicture(map, spawns, hallMiddle, hallMiddle + vec3(0, 0, -1), 160, 120),
                      isSignal)
            .count;
    };
    EXPECT_GT(bodyPixels(), 200);
    for (int i = 3; i < 6; ++i) {
        for (int j = 1; j < 4; ++j)
            put(map, i, j, 3, stone);
    }
    EXPECT_EQ(bodyPixels(), 0);
    put(map, 4, 2, 3, 0);
    EXPECT_GT(bodyPixels(), 20) << "through a hole";
}

TEST(EyePicture, OwnBodyIsNotSeen) {
    const MapManager map = hall();
    const SpawnMark own = standingIn(1, 4, 1, 4, {0, 0, -1});
    const vec3 eye = own.body.centre;
    EXPECT_EQ(eyePicture(map, std::vector{own}, eye, eye + vec3(1, -1, 0), 80, 60),
              eyePicture(map, {}, eye, eye + vec3(1, -1, 0), 80, 60));
}

TEST(EyePicture, BodyThatTheViewersOwnWouldOverlapIsNotSeen) {
    const MapManager map = hall();
    const SpawnMark landed = standingIn(1, 4, 1, 4, {0, 0, -1});
    const auto bodyPixels = [&](vec3 from) {
        const vec3 eye = landed.body.centre + from;
        return pixels(eyePicture(map, std::vector{landed}, eye, landed.body.centre, 80, 60),
                      isSignal)
            .count;
    };
    EXPECT_EQ(bodyPixels({0, 140, 0}), 0) << "as it appears above, before it falls";
    EXPECT_EQ(bodyPixels({40, 100, 0}), 0);
    EXPECT_GT(bodyPixels({60, 0, 0}), 100) << "somebody else, next to it";
}

TEST(EyePicture, CrosshairMarksTheMiddle) {
    const MapManager map = hall();
    const Image image = eyePicture(map, {}, hallMiddle, hallMiddle + vec3(0, -9, -9), 201, 121);
    for (const auto& [x, y] : {std::pair{94, 60}, {106, 60}, {100, 54}, {100, 66}})
        EXPECT_GT(brightness(image.at(x, y)), 740) << x << ", " << y;
    EXPECT_LT(brightness(image.at(100, 60)), 700) << "the very middle is left free";
}

TEST(EyePicture, EyeThatLooksAtItselfIsRefused) {
    EXPECT_EQ(refusal([] { eyePicture(hall(), {}, hallMiddle, hallMiddle, 10, 10); }),
              "the eye looks nowhere: it is at the point that it looks at, 288, 160, 288");
}

TEST(EyePicture, EyeInACubeIsRefusedWithTheCube) {
    EXPECT_EQ(refusal([] { eyePicture(hall(), {}, vec3(30, 100, 200), vec3(0), 10, 10); }),
              "the eye at 30, 100, 200 is in a cube of stone, column 0, row 1, depth 3");
}

TEST(EyePicture, CoordinatesThatAreNotFiniteAreRefused) {
    for (const float odd :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        EXPECT_THROW(eyePicture(hall(), {}, vec3(odd, 0, 0), hallMiddle, 10, 10), InputError);
        EXPECT_THROW(eyePicture(hall(), {}, hallMiddle, vec3(0, 0, odd), 10, 10), InputError);
    }
}

TEST(EyePicture, MayBeSeenFromOutsideTheWorld) {
    MapManager map = emptyMap(1, 1, 1);
    put(map, 0, 0, 0, brick);
    const Image near = eyePicture(map, {}, vec3(32, 32, 200), vec3(32, 32, 32), 60, 60);
    EXPECT_GT(pixels(near, isReddish).count, 100);
    const float farAway = std::numeric_limits<float>::max();
    const Image far = eyePicture(map, {}, vec3(farAway, 0, 0), vec3(32, 32, 32), 60, 60);
    EXPECT_EQ(pixels(far, isReddish).count, 0);
}
