#include "replay/Heat.h"

#include "replay/PaleMap.h"
#include "src/Player.h"
#include "tests/support/PictureCourt.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace pictures;

namespace {

constexpr int side = 400;

MapManager court() {
    MapManager map = emptyMap(8, 4, 8);
    for (int i = 0; i < 8; ++i) {
        for (int k = 0; k < 8; ++k)
            put(map, i, 0, k, stone);
    }
    return map;
}

/// A player at these places, one every 16 ms.
std::vector<replay::Frame> walk(const std::vector<vec3>& places) {
    std::vector<replay::Frame> frames;
    for (const vec3& place : places) {
        replay::Frame frame;
        frame.time = std::chrono::milliseconds(16 * frames.size());
        frame.state.updates[0].id = '1';
        frame.state.updates[0].position = place;
        frames.push_back(frame);
    }
    return frames;
}

/// How far the middle of a cell is from the colour of a picture without players, 0 to 765.
int heatAt(const MapManager& map, const Image& image, int column, int depth) {
    const Image cold = replay::heatPicture(map, {}, side, side);
    const ImagePoint point = replay::paleMap(map, side, side, side - 20)
                                 .view.above({64.0f * (static_cast<float>(column) + 0.5f), 0.0f,
                                              64.0f * (static_cast<float>(depth) + 0.5f)});
    const auto& a = image.at(static_cast<int>(point.x), static_cast<int>(point.y));
    const auto& b = cold.at(static_cast<int>(point.x), static_cast<int>(point.y));
    return std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue);
}

} // namespace

TEST(Heat, IsWherePlayersWereTheMoreTheLonger) {
    const MapManager map = court();
    std::vector<vec3> places(100, vec3(160.0f, 139.0f, 160.0f));
    places.insert(places.end(), 5, vec3(352.0f, 139.0f, 160.0f));
    const Image image = replay::heatPicture(map, walk(places), side, side);
    EXPECT_EQ(image.width, side);
    EXPECT_EQ(image.height, side);
    EXPECT_GT(heatAt(map, image, 2, 2), heatAt(map, image, 5, 2));
    EXPECT_GT(heatAt(map, image, 5, 2), 0);
    EXPECT_EQ(heatAt(map, image, 5, 5), 0);
}

TEST(Heat, IsNotWhereTheSoakedWaitOrHostileStatesPoint) {
    const MapManager map = court();
    const std::vector<vec3> places = {Player::soakedPlace, vec3(1e30f, 0.0f, 1e30f),
                                      vec3(-1.0f, 0.0f, -1.0f), vec3(160.0f, 139.0f, 160.0f),
                                      Player::soakedPlace};
    const Image image = replay::heatPicture(map, walk(places), side, side);
    EXPECT_GT(heatAt(map, image, 2, 2), 0);
    EXPECT_EQ(heatAt(map, image, 0, 0), 0);
    EXPECT_EQ(heatAt(map, image, 7, 7), 0);
}
