#include "tests/support/PictureCourt.h"

#include <gtest/gtest.h>

using namespace pictures;

TEST(IsometricPicture, ShowsThreeFacesInTheMaterialsHueAndThreeBrightnesses) {
    MapManager map = emptyMap(1, 1, 1);
    put(map, 0, 0, 0, brick);
    for (const Corner from :
         {Corner::southEast, Corner::southWest, Corner::northWest, Corner::northEast}) {
        const Image image = isometricPicture(map, {}, from, 200, 200);
        // The cube's nearest corner is the picture's middle.
        const Colour top = image.at(100, 60);
        const Colour left = image.at(65, 120);
        const Colour right = image.at(135, 120);
        for (const Colour& face : {top, left, right})
            EXPECT_TRUE(isReddish(face)) << int(from);
        EXPECT_GT(brightness(top), 1.1 * brightness(left)) << int(from);
        EXPECT_GT(brightness(left), 1.1 * brightness(right)) << int(from);
        EXPECT_GT(brightness(image.at(2, 2)), 720) << "light paper around it";
    }
}

TEST(IsometricPicture, FillsThePictureButForASmallMargin) {
    MapManager map = emptyMap(1, 1, 1);
    put(map, 0, 0, 0, brick);
    const Image image = isometricPicture(map, {}, Corner::southEast, 300, 200);
    const auto rowHasCube = [&](int y) {
        for (int x = 0; x < image.width; ++x) {
            if (isReddish(image.at(x, y)))
                return true;
        }
        return false;
    };
    EXPECT_FALSE(rowHasCube(3));
    EXPECT_TRUE(rowHasCube(9));
    EXPECT_TRUE(rowHasCube(190));
    EXPECT_FALSE(rowHasCube(196));
}

TEST(IsometricPicture, MaterialWithoutANameHasItsOwnColour) {
    MapManager map = emptyMap(1, 1, 1);
    for (const int value : {40, 77, -5, 100000}) {
        put(map, 0, 0, 0, value);
        const Colour top = isometricPicture(map, {}, Corner::southEast, 200, 200).at(100, 60);
        const Light own = lightOf(colourOf(value));
        const Light seen = lightOf(top);
        // The light is nearly white, so all components are seen in nearly the same share.
        for (std::size_t a = 0; a < 3; ++a)
            EXPECT_NEAR(seen[a], own[a] * seen[1] / own[1], 0.15) << value;
    }
}

TEST(IsometricPicture, HiddenCubesAreNotSeen) {
    MapManager map = emptyMap(5, 5, 5);
    for (int i = 0; i < 5; ++i) {
        for (int j = 0; j < 5; ++j) {
            for (int k = 0; k < 5; ++k)
                put(map, i, j, k, stone);
        }
    }
    const Image plain = isometricPicture(map, {}, Corner::southEast, 120, 120);
    put(map, 2, 2, 2, brick);
    EXPECT_EQ(isometricPicture(map, {}, Corner::southEast, 120, 120), plain);
    put(map, 2, 4, 2, brick);
    EXPECT_NE(isometricPicture(map, {}, Corner::southEast, 120, 120), plain);
}

TEST(IsometricPicture, LeavesOutTheTwoSidesNextToTheViewerAboveTheFloor) {
    const MapManager map = testCourt();
    const struct {
        Corner corner;
        std::function<bool(int, int)> isNear;
    } cases[] = {
        {Corner::southEast, [](int i, int k) { return i == 11 || k == 11; }},
        {Corner::southWest, [](int i, int k) { return i == 0 || k == 11; }},
        {Corner::northWest, [](int i, int k) { return i == 0 || k == 0; }},
        {Corner::northEast, [](int i, int k) { return i == 11 || k == 0; }},
    };
    for (const auto& [corner, isNear] : cases) {
        const auto drawn = [&, from = corner](const MapManager& court) {
            return isometricPicture(court, {}, from, 60, 40);
        };
        const auto nearWalls = [&, near = isNear](int i, int j, int k) {
            return j > 0 && near(i, k);
        };
        const auto farWalls = [&, near = isNear](int i, int j, int k) {
            return j > 0 && (i == 0 || i == 11 || k == 0 || k == 11) && !near(i, k);
        };
        const auto nearFloor = [&, near = isNear](int i, int j, int k) {
            return j == 0 && near(i, k);
        };
        EXPECT_EQ(drawn(repainted(map, nearWalls, water)), drawn(map)) << int(corner);
        EXPECT_NE(drawn(repainted(map, farWalls, water)), drawn(map)) << int(corner);
        EXPECT_NE(drawn(repainted(map, nearFloor, water)), drawn(map)) << int(corner);
    }
}

TEST(IsometricPicture, CutsTheFarSidesAboveWhatStandsBetween) {
    // The court's highest cubes between the walls are in row 4.
    const MapManager map = testCourt();
    const auto above = [](int, int j, int) { return j > 4; };
    EXPECT_EQ(smallIsometric(repainted(map, above, water), {}), smallIsometric(map, {}));
    const auto inTheTopRowShown = [](int i, int j, int) { return j == 4 && i == 0; };
    EXPECT_NE(smallIsometric(repainted(map, inTheTopRowShown, water), {}), smallIsometric(map, {}));
}

TEST(IsometricPicture, ArenaWithoutRoomBetweenItsSidesIsShownWhole) {
    MapManager map = emptyMap(2, 3, 2);
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 3; ++j) {
            for (int k = 0; k < 2; ++k)
                put(map, i, j, k, stone);
        }
    }
    const Image plain = isometricPicture(map, {}, Corner::southEast, 100, 100);
    put(map, 1, 2, 1, brick);
    EXPECT_NE(isometricPicture(map, {}, Corner::southEast, 100, 100), plain);
}

TEST(IsometricPicture, ArenaOfThreeCellsLosesTheSidesNextToTheViewer) {
    MapManager map = emptyMap(3, 7, 3);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 7; ++j) {
            for (int k = 0; k < 3; ++k)
                put(map, i, j, k, j > 4 && i == 1 && k == 1 ? 0 : stone);
        }
    }
    const auto reddish = [&](int i, int j, int k) {
        MapManager painted = map;
        put(painted, i, j, k, brick);
        return pixels(isometricPicture(painted, {}, Corner::southEast, 100, 100), isReddish).count;
    };
    for (const auto& [i, k] : {std::pair{2, 2}, {2, 1}, {2, 0}, {0, 2}, {1, 2}}) {
        EXPECT_EQ(reddish(i, 1, k), 0) << i << ", " << k;
        EXPECT_GT(reddish(i, 0, k), 10) << "the floor stays";
    }
    EXPECT_GT(reddish(1, 3, 1), 10) << "what stands between";
    EXPECT_GT(reddish(0, 4, 0), 5) << "the far sides, as high";
    EXPECT_EQ(reddish(0, 5, 0), 0) << "and no higher";
}

TEST(IsometricPicture, NarrowArenaKeepsTheSidesThatNothingIsBetween) {
    // Three cells deep, two wide: only the sides of its depth have something between them.
    MapManager map = emptyMap(2, 4, 3);
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 4; ++j) {
            for (int k = 0; k < 3; ++k)
                put(map, i, j, k, stone);
        }
    }
    const auto reddish = [&](int i, int j, int k) {
        MapManager painted = map;
        put(painted, i, j, k, brick);
        return pixels(isometricPicture(painted, {}, Corner::southEast, 100, 100), isReddish).count;
    };
    EXPECT_GT(reddish(1, 2, 1), 10);
    EXPECT_EQ(reddish(1, 2, 2), 0);
}

TEST(IsometricPicture, ContactShadowDarkensTheFloorAtTheFootOfACube) {
    MapManager map = emptyMap(5, 2, 5);
    for (int i = 0; i < 5; ++i) {
        for (int k = 0; k < 5; ++k)
            put(map, i, 0, k, marble);
    }
    // The floor is seen from a corner, so its rows of cubes run down to the left and right from the
    // middle of the top; one cube of it is 38 pixels wide and 22 high.
    const auto beforeTheMiddle = [&](int pixels) {
        return brightness(isometricPicture(map, {}, Corner::southEast, 200, 160)
                              .at(90 - 2 * pixels, 75 + pixels));
    };
    const int openFoot = beforeTheMiddle(0);
    const int openFarther = beforeTheMiddle(8);
    put(map, 2, 1, 2, marble);
    EXPECT_LT(beforeTheMiddle(0), openFoot - 30);
    EXPECT_NEAR(beforeTheMiddle(8), openFarther, 15);
}

TEST(IsometricPicture, SpawnIsMarkedWithItsNumberInThePlaceWhereItIs) {
    const MapManager map = testCourt();
    EXPECT_EQ(pixels(smallIsometric(map, {}), exactlySignal).count, 0);
    const Found west =
        pixels(smallIsometric(map, {standingIn(1, 2, 1, 9, {0, 0, 1})}), exactlySignal);
    const Found east =
        pixels(smallIsometric(map, {standingIn(1, 9, 1, 2, {0, 0, 1})}), exactlySignal);
    EXPECT_GT(west.count, 60);
    EXPECT_GT(east.count, 60);
    EXPECT_LT(west.x + 40, east.x);
    const Image one = smallIsometric(map, {standingIn(1, 2, 1, 9, {0, 0, 1})});
    const Image two = smallIsometric(map, {standingIn(2, 2, 1, 9, {0, 0, 1})});
    EXPECT_NE(one, two);
}

TEST(IsometricPicture, ArrowPointsAlongTheView) {
    const MapManager map = testCourt();
    const auto marked = [&](vec3 direction) {
        return pixels(testIsometric(map, {standingIn(1, 3, 1, 9, direction)}), exactlySignal);
    };
    const Found none = marked({0, 1, 0});
    const Found east = marked({1, 0, 0});
    const Found south = marked({0, 0, 1});
    EXPECT_GT(east.count, none.count + 20);
    EXPECT_GT(east.x, none.x + 2) << "east is to the right and down";
    EXPECT_GT(east.y, none.y + 2);
    EXPECT_LT(south.x, none.x - 2) << "south is to the left and down";
    EXPECT_GT(south.y, none.y + 2);
}

TEST(IsometricPicture, SpawnBehindCubesIsStillMarked) {
    MapManager map = testCourt();
    const SpawnMark spawn = standingIn(3, 8, 1, 8, {-1, 0, -1});
    const Found hidden = pixels(testIsometric(map, {spawn}), exactlySignal);
    EXPECT_GT(hidden.count, 40) << "the pin";
    // The block's south face, in front of the body, is tinted.
    const Found tinted = pixels(testIsometric(map, {spawn}), isSignal);
    EXPECT_GT(tinted.count, hidden.count + 40);
}
