#include "replay/Tracks.h"
#include "arena/Reach.h"
#include "src/Player.h"
#include "tests/support/PictureCourt.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <utility>

using namespace drench;

using namespace pictures;
using replay::Track;

namespace {

PlayerUpdate at(float x, float z) {
    PlayerUpdate player;
    player.position = vec3(x, 139.25f, z);
    return player;
}

PlayerUpdate soaked() {
    Player player;
    player.die(0.0f);
    return player.getPlayerUpdate();
}

/// A flat court of 8 × 8 places.
struct Court {
    MapManager map = emptyMap(8, 4, 8);

    Court() {
        for (int i = 0; i < 8; ++i) {
            for (int k = 0; k < 8; ++k)
                put(map, i, 0, k, stone);
        }
    }
    Image picture(const std::vector<Track>& tracks, int side = 400) const {
        return replay::tracksPicture(map, tracks, side, side);
    }

    /// Pixels that two pictures have different.
    static std::vector<ImagePoint> changes(const Image& a, const Image& b) {
        std::vector<ImagePoint> changed;
        for (int y = 0; y < a.height; ++y) {
            for (int x = 0; x < a.width; ++x) {
                if (!(a.at(x, y) == b.at(x, y)))
                    changed.push_back({double(x), double(y)});
            }
        }
        return changed;
    }
};

/// Where the map lies in Court::picture, below which are lines of names, 20 dots high.
TopView view(const Court& court, int side = 400, int linesOfNames = 1) {
    const std::vector<CellIndex> floors = arena::walkableCells(court.map);
    const int dot = std::max(1, side / 450);
    return topView(court.map, floors, floors, side, side - 20 * dot * linesOfNames);
}

Colour pixelAt(const Image& image, ImagePoint point) {
    return image.at(static_cast<int>(point.x), static_cast<int>(point.y));
}

} // namespace

TEST(Track, KeepsAPointForEveryHalfCube) {
    Track track("Otter");
    for (int i = 0; i <= 64; ++i)
        track.see(at(1.0f * static_cast<float>(i), 0.0f));
    ASSERT_EQ(track.points().size(), 3u);
    EXPECT_TRUE(track.points()[0].appeared);
    EXPECT_FALSE(track.points()[1].appeared);
    EXPECT_EQ(track.points()[1].position.x, 32.0f);
    EXPECT_EQ(track.points()[2].position.x, 64.0f);
}

TEST(Track, StandingStillAddsNothing) {
    Track track("Otter");
    for (int i = 0; i < 1000; ++i)
        track.see(at(100.0f, 100.0f));
    EXPECT_EQ(track.points().size(), 1u);
}

TEST(Track, EndsWhereThePlayerWasSoakedAndBeginsWhereItRespawns) {
    Track track("Otter");
    track.see(at(0.0f, 0.0f));
    track.see(at(10.0f, 0.0f));
    for (int i = 0; i < 250; ++i)
        track.see(soaked());
    track.see(at(500.0f, 500.0f));
    ASSERT_EQ(track.points().size(), 3u);
    EXPECT_TRUE(track.points()[1].soaked);
    EXPECT_FALSE(track.points()[1].appeared);
    EXPECT_EQ(track.points()[1].position.x, 10.0f);
    EXPECT_TRUE(track.points()[2].appeared);
    EXPECT_FALSE(track.points()[2].soaked);
}

TEST(Track, JoiningWhileSoakedMarksNothing) {
    Track track("Otter");
    track.see(soaked());
    EXPECT_TRUE(track.points().empty());
}

TEST(Track, BeginsAnewAfterABreak) {
    Track track("Otter");
    track.see(at(0.0f, 0.0f));
    track.breakOff();
    track.see(at(500.0f, 0.0f));
    ASSERT_EQ(track.points().size(), 2u);
    EXPECT_TRUE(track.points()[1].appeared);
    track.breakOff();
    track.see(soaked());
    EXPECT_EQ(track.points().size(), 2u);
}

TEST(Track, ForgetsItsBeginningWhenItIsLong) {
    Track track("Otter");
    for (std::size_t i = 0; i < Track::mostPoints + 10; ++i)
        track.see(at(i % 2 == 0 ? 0.0f : 64.0f, static_cast<float>(i)));
    EXPECT_EQ(track.points().size(), Track::mostPoints);
    EXPECT_EQ(track.points().front().position.z, 10.0f);
    EXPECT_EQ(track.points().back().position.z, static_cast<float>(Track::mostPoints + 9));
}

TEST(TracksPicture, HasTheSizeAskedFor) {
    const Image image = replay::tracksPicture(Court().map, {}, 320, 200);
    EXPECT_EQ(image.width, 320);
    EXPECT_EQ(image.height, 200);
}

TEST(TracksPicture, LineLeadsFromPointToPoint) {
    const Court court;
    Track track("");
    track.see(at(96.0f, 224.0f));
    track.see(at(416.0f, 224.0f));
    const Image nobody = court.picture({});
    const Image image = court.picture({track});
    const TopView top = view(court);
    const auto isOnLine = [&](float x, float z) {
        const ImagePoint point = top.above(vec3(x, 0.0f, z));
        return brightness(pixelAt(image, point)) < brightness(pixelAt(nobody, point)) - 60;
    };
    int marked = 0;
    for (int x = 100; x < 412; x += 4)
        marked += isOnLine(static_cast<float>(x), 224.0f);
    EXPECT_EQ(marked, 78);
    EXPECT_FALSE(isOnLine(80.0f, 224.0f));
    EXPECT_FALSE(isOnLine(432.0f, 224.0f));
    EXPECT_FALSE(isOnLine(240.0f, 240.0f));
}

TEST(TracksPicture, NothingLeadsFromWhereAPlayerWasSoakedToWhereItRespawns) {
    const Court court;
    Track track("");
    track.see(at(96.0f, 96.0f));
    track.see(soaked());
    track.see(at(416.0f, 96.0f));
    const TopView top = view(court);
    const ImagePoint drop = top.above(vec3(96.0f, 0.0f, 96.0f));
    bool isMarked = false;
    for (const ImagePoint& point :
         Court::changes(court.picture({Track("")}), court.picture({track}))) {
        EXPECT_NEAR(point.x, drop.x, 0.5 * top.scale);
        EXPECT_GT(point.y, drop.y - 1.0 * top.scale);
        EXPECT_LT(point.y, drop.y + 0.5 * top.scale);
        isMarked = true;
    }
    EXPECT_TRUE(isMarked);
}

TEST(TracksPicture, EachTrackHasItsColour) {
    const Court court;
    std::vector<Track> tracks;
    for (int i = 0; i < 4; ++i) {
        tracks.emplace_back("");
        tracks.back().see(at(96.0f, 96.0f + 64.0f * static_cast<float>(i)));
        tracks.back().see(soaked());
    }
    const Image image = court.picture(tracks);
    const TopView top = view(court);
    std::vector<Colour> colours;
    for (int i = 0; i < 4; ++i)
        colours.push_back(
            pixelAt(image, top.above(vec3(96.0f, 0.0f, 96.0f + 64.0f * static_cast<float>(i)))));
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_LT(brightness(colours[i]), 330);
        for (std::size_t j = 0; j < i; ++j)
            EXPECT_FALSE(colours[i] == colours[j]) << i << j;
    }
}

TEST(TracksPicture, NamesStandBelowTheMap) {
    const Court court;
    const Image nobody = court.picture({});
    const auto named = Court::changes(nobody, court.picture({Track("Otter")}));
    ASSERT_FALSE(named.empty());
    for (const ImagePoint& point : named)
        EXPECT_GE(point.y, 380.0);
    EXPECT_EQ(
        Court::changes(court.picture({Track("OTTER")}), court.picture({Track("otter")})).size(),
        0u);
    EXPECT_GT(
        Court::changes(court.picture({Track("OTTER")}), court.picture({Track("HERON")})).size(),
        0u);
}

TEST(TracksPicture, DropIsRoundBelowAndHasATipAbove) {
    const Court court;
    for (const int side : {400, 900}) {
        SCOPED_TRACE(side);
        Track track("");
        track.see(at(224.0f, 224.0f));
        track.see(soaked());
        const Image image = court.picture({track}, side);
        const TopView top = view(court, side);
        const ImagePoint centre = top.above(vec3(224.0f, 0.0f, 224.0f));
        const Colour colour = pixelAt(image, centre);
        // In each row of pixels how many have the colour of the track.
        const auto widthAt = [&](double radii) {
            const int y = static_cast<int>(std::floor(centre.y + radii * 0.28 * top.scale));
            int count = 0;
            for (int x = 0; x < image.width; ++x)
                count += image.at(x, y) == colour;
            return count;
        };
        const double diameter = 2.0 * 0.28 * top.scale;
        EXPECT_NEAR(widthAt(0.0), diameter, 3.0);
        EXPECT_NEAR(widthAt(0.7), 0.7 * diameter, 3.0);
        EXPECT_EQ(widthAt(1.2), 0);
        EXPECT_LT(widthAt(-1.5), 0.5 * diameter);
        EXPECT_GT(widthAt(-1.5), 0);
        EXPECT_EQ(widthAt(-2.4), 0);
    }
}

TEST(TracksPicture, NothingIsSaidOfWherePlayersGetTo) {
    // An island that no player reaches is drawn like the rest.
    Court court;
    for (int i = 0; i < 8; ++i) {
        for (const int k : {3, 4})
            court.map.cubes[static_cast<std::size_t>(i)][0][static_cast<std::size_t>(k)].solid = 0;
    }
    const Image image = court.picture({});
    const TopView top = view(court);
    const auto colourAt = [&](float z) { return pixelAt(image, top.above(vec3(96.0f, 0.0f, z))); };
    EXPECT_TRUE(colourAt(96.0f) == colourAt(416.0f));
}

TEST(TracksPicture, NamesStandApartAndInLinesThatFit) {
    const Court court;
    std::vector<Track> tracks;
    for (const char* name : {"WWWWWWWWWWW", "MMMMMMMMMMM", "WWWWWWWWWWW", "MMMMMMMMMMM"})
        tracks.emplace_back(name);
    constexpr int side = 360;
    const Image image = court.picture(tracks, side);
    const Image nobody = court.picture({Track(""), Track(""), Track(""), Track("")}, side);
    // The pixels of each track's own colour, which the map has nowhere.
    struct Extent {
        int left = side, right = -1, top = side, bottom = -1;
    };
    std::vector<Extent> extents;
    for (const Colour colour :
         {Colour{206, 56, 12}, Colour{24, 24, 28}, Colour{140, 20, 160}, Colour{0, 72, 190}}) {
        Extent extent;
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                if (!(image.at(x, y) == colour))
                    continue;
                extent = {std::min(extent.left, x), std::max(extent.right, x),
                          std::min(extent.top, y), std::max(extent.bottom, y)};
            }
        }
        extents.push_back(extent);
    }
    for (std::size_t i = 0; i < extents.size(); ++i) {
        EXPECT_GE(extents[i].left, 8);
        EXPECT_LT(extents[i].right, side - 1) << i;
        EXPECT_GE(extents[i].top, side - 40) << i;
        EXPECT_LT(extents[i].bottom, side - 1) << i;
        EXPECT_GT(extents[i].right - extents[i].left, 16 + 4 + 11 * 5) << i;
        for (std::size_t j = 0; j < i; ++j) {
            EXPECT_TRUE(extents[i].left > extents[j].right + 6 ||
                        extents[i].top > extents[j].bottom)
                << i << j;
        }
    }
    EXPECT_EQ(extents[0].top, extents[1].top);
    EXPECT_GT(extents[3].top, extents[0].bottom) << "four do not fit into a line";
    EXPECT_EQ(extents[3].left, extents[0].left);
}

TEST(TracksPicture, PointsBesideTheMapAreLeftOut) {
    const Court court;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<Track> tracks = {Track("")};
    tracks[0].see(at(100.0f, 100.0f));
    const Image before = court.picture(tracks);
    for (const auto& [x, z] :
         {std::pair{nan, 100.0f}, std::pair{100.0f, nan}, std::pair{-1.0f, 100.0f},
          std::pair{100.0f, -1.0f}, std::pair{513.0f, 100.0f}, std::pair{100.0f, 513.0f},
          std::pair{1e30f, -1e30f}}) {
        tracks[0].see(at(x, z));
        tracks[0].see(soaked());
    }
    EXPECT_TRUE(Court::changes(before, court.picture(tracks)).empty());
    tracks[0].see(at(512.0f, 512.0f));
    tracks[0].see(soaked());
    EXPECT_FALSE(Court::changes(before, court.picture(tracks)).empty()) << "the corner is above it";
}
