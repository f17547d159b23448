#include "tests/support/Arenas.h"
#include "tests/support/PictureComparison.h"
#include "tests/support/PictureCourt.h"
#include "tests/support/StoredPicture.h"

#include <gtest/gtest.h>
#include <string>

using namespace drench;

using namespace pictures;

namespace {

/// The cells above the court's floor, stairs, bridge and block, and above its tree in row 5.
std::vector<CellIndex> testFloors(const MapManager& map) {
    std::vector<CellIndex> floors;
    for (int i = 1; i < 11; ++i) {
        for (int k = 1; k < 11; ++k) {
            for (int j = 1; j < 6; ++j) {
                if (!map.cubeIsNull(i, j - 1, k) && map.cubeIsNull(i, j, k) &&
                    map.cubeIsNull(i, j + 1, k) && map.cubeIsNull(i, j + 2, k))
                    floors.push_back({i, j, k});
            }
        }
    }
    return floors;
}

std::vector<CellIndex> upToRow(int row, std::vector<CellIndex> cells) {
    std::erase_if(cells, [=](const CellIndex& cell) { return cell.row > row; });
    return cells;
}

Image testTop(const MapManager& map, const std::vector<SpawnMark>& spawns) {
    const std::vector<CellIndex> floors = testFloors(map);
    return topPicture(map, spawns, floors, upToRow(4, floors), 256, 256);
}

Image testEye(const MapManager& map, const std::vector<SpawnMark>& spawns) {
    return eyePicture(map, spawns, vec3(670, 330, 650), vec3(250, 130, 210), 320, 200);
}

} // namespace

TEST(Picture, HasTheSizeAskedForWhateverTheMap) {
    for (const char* header : {"1 1 1", "1 7 2", "2 1 9", "3 3 3", "40 2 1"}) {
        const std::string text = header;
        MapManager map = loaded(text);
        put(map, 0, 0, 0, stone);
        const std::vector<CellIndex> floors = {{0, 1, 0}};
        const std::vector<SpawnMark> spawns = testSpawns();
        for (const auto& [width, height] : {std::pair{1, 1}, {1, 40}, {40, 1}, {37, 23}}) {
            const Image iso = isometricPicture(map, spawns, Corner::northWest, width, height);
            EXPECT_EQ(iso.width, width);
            EXPECT_EQ(iso.height, height);
            const Image top = topPicture(map, spawns, floors, floors, width, height);
            EXPECT_EQ(top.width, width);
            EXPECT_EQ(top.height, height);
            const Image eye =
                eyePicture(map, spawns, vec3(-90, 90, -90), vec3(32, 32, 32), width, height);
            EXPECT_EQ(eye.width, width);
            EXPECT_EQ(eye.height, height);
        }
    }
}

TEST(Picture, SizesThatNoImageHasAreRefused) {
    const MapManager map = loaded("1 1 1");
    for (const auto& [width, height] : {std::pair{0, 10}, {10, -1}, {8193, 10}}) {
        EXPECT_THROW(isometricPicture(map, {}, Corner::southEast, width, height), InputError);
        EXPECT_THROW(topPicture(map, {}, {}, {}, width, height), InputError);
        EXPECT_THROW(eyePicture(map, {}, vec3(32), vec3(0), width, height), InputError);
    }
}

TEST(Picture, MapWithoutCellsIsRefused) {
    const MapManager map = loaded("4 0 4");
    const std::string words = "the map has no cells";
    EXPECT_EQ(refusal([&] { isometricPicture(map, {}, Corner::southEast, 10, 10); }), words);
    EXPECT_EQ(refusal([&] { topPicture(map, {}, {}, {}, 10, 10); }), words);
    EXPECT_EQ(refusal([&] { eyePicture(map, {}, vec3(1), vec3(2), 10, 10); }), words);
}

TEST(Picture, IsTheSameEveryTime) {
    const MapManager map = testCourt();
    const Image iso = smallIsometric(map, testSpawns());
    EXPECT_EQ(smallIsometric(map, testSpawns()), iso);
}

TEST(PictureComparison, AcceptsNoiseOfOneLevel) {
    const Image image = smallIsometric(testCourt(), testSpawns());
    Image noisy = image;
    unsigned value = 1;
    for (Colour& pixel : noisy.pixels) {
        value = value * 1664525u + 1013904223u;
        pixel.red = static_cast<std::uint8_t>(pixel.red ^ (value >> 30 & 1));
        pixel.green = static_cast<std::uint8_t>(pixel.green ^ (value >> 29 & 1));
        pixel.blue = static_cast<std::uint8_t>(pixel.blue ^ (value >> 28 & 1));
    }
    EXPECT_NE(noisy, image);
    EXPECT_TRUE(pictureDifference(image, noisy).negligible());
    EXPECT_TRUE(pictureDifference(image, image).negligible());
}

TEST(PictureComparison, RejectsAnotherSize) {
    EXPECT_FALSE(pictureDifference(Image(4, 4), Image(4, 5)).negligible());
}

TEST(PictureComparison, RejectsAMovedArrow) {
    const MapManager map = testCourt();
    const std::vector<SpawnMark> spawns = testSpawns();
    std::vector<SpawnMark> turned = spawns;
    turned[0].direction = vec3(1, 0, 0.5f);
    EXPECT_FALSE(
        pictureDifference(testIsometric(map, spawns), testIsometric(map, turned)).negligible());
    EXPECT_FALSE(pictureDifference(testTop(map, spawns), testTop(map, turned)).negligible());
}

TEST(PictureComparison, RejectsAMissingCube) {
    const MapManager map = testCourt();
    MapManager without = map;
    put(without, 5, 3, 6, 0);
    EXPECT_FALSE(
        pictureDifference(testIsometric(map, {}), testIsometric(without, {})).negligible());
    EXPECT_FALSE(pictureDifference(testTop(map, {}), testTop(without, {})).negligible());
    EXPECT_FALSE(pictureDifference(testEye(map, {}), testEye(without, {})).negligible());
}

TEST(PictureComparison, RejectsASwappedColour) {
    const MapManager map = testCourt();
    const auto isTree = [](int i, int j, int k) { return j == 4 && i >= 8 && k <= 3; };
    const MapManager swapped = repainted(map, isTree, ground);
    EXPECT_FALSE(
        pictureDifference(testIsometric(map, {}), testIsometric(swapped, {})).negligible());
}

TEST(StoredPictures, IsometricOneIsAsStored) {
    expectStored(testIsometric(testCourt(), testSpawns()), "court-isometric.png");
}

TEST(StoredPictures, TopOneIsAsStored) {
    expectStored(testTop(testCourt(), testSpawns()), "court-top.png");
}

TEST(StoredPictures, EyeOneIsAsStored) {
    expectStored(testEye(testCourt(), testSpawns()), "court-eye.png");
}
