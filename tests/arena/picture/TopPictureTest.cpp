#include "tests/support/PictureCourt.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <span>
#include <vector>

using namespace pictures;

namespace {

/// 4 × 4 places in a picture of 100 × 100 pixels without a key: the map's corner is at (4, 4), a
/// place has 23 pixels.
struct SmallTop {
    MapManager map = emptyMap(4, 9, 4);
    std::vector<CellIndex> walkable;
    std::vector<CellIndex> reached;

    SmallTop() {
        for (int i = 0; i < 4; ++i) {
            for (int k = 0; k < 4; ++k)
                put(map, i, 0, k, stone);
        }
    }
    void addFloor(CellIndex feet, bool isReached) {
        put(map, feet.column, feet.row - 1, feet.depth, stone);
        walkable.push_back(feet);
        if (isReached)
            reached.push_back(feet);
    }
    Image picture(std::span<const SpawnMark> spawns = {}) const {
        return topPicture(map, spawns, walkable, reached, 100, 100);
    }

    /// The pixel at a share of a place's sides from its north-west corner.
    static Colour at(const Image& image, int column, int depth, double x, double z) {
        return image.at(static_cast<int>(4 + 23 * (column + x)),
                        static_cast<int>(4 + 23 * (depth + z)));
    }
};

/// How many different colours there are in a place.
std::size_t coloursIn(const Image& image, int column, int depth) {
    std::vector<Colour> colours;
    for (double x = 0.1; x < 0.95; x += 0.04) {
        for (double z = 0.1; z < 0.95; z += 0.04) {
            const Colour colour = SmallTop::at(image, column, depth, x, z);
            if (std::find(colours.begin(), colours.end(), colour) == colours.end())
                colours.push_back(colour);
        }
    }
    return colours.size();
}

} // namespace

TEST(TopPicture, HigherFloorsAreLighter) {
    SmallTop top;
    for (int i = 0; i < 4; ++i)
        top.addFloor({i, 1 + 2 * i, 1}, true);
    const Image image = top.picture();
    for (int i = 1; i < 4; ++i)
        EXPECT_GT(brightness(SmallTop::at(image, i, 1, 0.5, 0.5)),
                  brightness(SmallTop::at(image, i - 1, 1, 0.5, 0.5)) + 30)
            << i;
}

TEST(TopPicture, ReachedUnreachedAndNoFloorDifferByPatternToo) {
    SmallTop top;
    top.addFloor({0, 1, 0}, true);
    top.addFloor({2, 1, 0}, false);
    const Image image = top.picture();
    EXPECT_EQ(coloursIn(image, 0, 0), 1u) << "plain";
    EXPECT_GT(coloursIn(image, 2, 0), 1u) << "striped";
    EXPECT_GT(coloursIn(image, 1, 3), 1u) << "dotted";
    EXPECT_LT(brightness(SmallTop::at(image, 1, 3, 0.5, 0.5)),
              brightness(SmallTop::at(image, 0, 0, 0.5, 0.5)) - 100);
    const Colour plain = SmallTop::at(image, 0, 0, 0.5, 0.5);
    int stripes = 0;
    for (double x = 0.1; x < 0.95; x += 0.04)
        stripes += isReddish(SmallTop::at(image, 2, 0, x, 0.5));
    EXPECT_GE(stripes, 4);
    EXPECT_FALSE(isReddish(plain));
}

TEST(TopPicture, FloorBelowAnotherShowsWithinIt) {
    SmallTop top;
    top.addFloor({1, 1, 1}, true);
    top.addFloor({2, 5, 1}, true);
    top.addFloor({3, 1, 1}, true);
    top.addFloor({3, 5, 1}, true);
    const Image image = top.picture();
    const Colour low = SmallTop::at(image, 1, 1, 0.5, 0.5);
    const Colour high = SmallTop::at(image, 2, 1, 0.5, 0.5);
    EXPECT_NE(low, high);
    EXPECT_EQ(SmallTop::at(image, 3, 1, 0.5, 0.5), low);
    EXPECT_EQ(SmallTop::at(image, 3, 1, 0.85, 0.85), high);
}

TEST(TopPicture, LinesPartDifferentHeights) {
    SmallTop top;
    top.addFloor({0, 1, 0}, true);
    top.addFloor({1, 1, 0}, true);
    top.addFloor({2, 2, 0}, true);
    top.addFloor({3, 7, 0}, true);
    const Image image = top.picture();
    const auto darkBetween = [&](int column) {
        int dark = 0;
        for (double x = 0.5; x < 1.5; x += 1.0 / 23)
            dark += brightness(SmallTop::at(image, column, 0, x, 0.5)) < 100;
        return dark;
    };
    EXPECT_EQ(darkBetween(0), 0);
    EXPECT_GE(darkBetween(1), 1);
    EXPECT_GT(darkBetween(2), darkBetween(1)) << "the higher the step, the wider";
}

TEST(TopPicture, StandingOnAnEdgeMakesNoFloorBesideIt) {
    SmallTop top;
    top.addFloor({1, 3, 1}, true);
    const Image without = top.picture();
    top.reached.push_back({2, 3, 1});
    EXPECT_EQ(top.picture(), without);
}

TEST(TopPicture, ReachedFloorCountsEvenIfItIsNotWalkable) {
    SmallTop top;
    top.reached.push_back({1, 1, 1});
    const Image image = top.picture();
    EXPECT_EQ(coloursIn(image, 1, 1), 1u);
    EXPECT_GT(coloursIn(image, 2, 2), 1u);
}

TEST(TopPicture, CellsBesideTheGridAreIgnored) {
    SmallTop top;
    top.addFloor({1, 1, 1}, true);
    const Image without = top.picture();
    for (const CellIndex& odd :
         {CellIndex{-1, 1, 1}, {4, 1, 1}, {1, 0, 1}, {1, 11, 1}, {1, 1, 9}}) {
        top.walkable.push_back(odd);
        top.reached.push_back(odd);
    }
    EXPECT_EQ(top.picture(), without);
}

TEST(TopPicture, NorthIsUpAndWestIsLeft) {
    SmallTop top;
    top.addFloor({0, 1, 3}, true);
    const Image image = top.picture();
    EXPECT_EQ(coloursIn(image, 0, 3), 1u) << "south-west";
    EXPECT_GT(coloursIn(image, 3, 0), 1u);
}

TEST(TopPicture, SpawnStandsInItsPlaceWithAnArrow) {
    SmallTop top;
    const std::vector<SpawnMark> east = {standingIn(7, 1, 1, 2, {1, 0, 0})};
    const std::vector<SpawnMark> up = {standingIn(7, 1, 1, 2, {0, 1, 0})};
    const Found disc = pixels(top.picture(up), exactlySignal);
    EXPECT_GT(disc.count, 100);
    EXPECT_NEAR(disc.x, 4 + 23 * 1.5, 2.0);
    EXPECT_NEAR(disc.y, 4 + 23 * 2.5, 2.0);
    const Found arrow = pixels(top.picture(east), exactlySignal);
    EXPECT_GT(arrow.x, disc.x + 5);
    EXPECT_NEAR(arrow.y, disc.y, 1.0);
    const std::vector<SpawnMark> north = {standingIn(7, 1, 1, 2, {0, 0, -1})};
    EXPECT_LT(pixels(top.picture(north), exactlySignal).y, disc.y - 5);
}

TEST(TopPicture, SpawnsBesideTheMapAreLeftOut) {
    const SmallTop top;
    const std::vector<SpawnMark> outside = {standingIn(1, 20, 1, 2, {1, 0, 0}),
                                            standingIn(2, 1, 1, -3, {1, 0, 0})};
    EXPECT_EQ(top.picture(outside), top.picture());
}

TEST(TopPicture, KeyIsDrawnWhereThereIsRoom) {
    SmallTop top;
    top.addFloor({1, 1, 1}, true);
    const auto hasDarkPixelRightOf = [](const Image& image, int left) {
        for (int y = 0; y < image.height; ++y) {
            for (int x = left; x < image.width; ++x) {
                if (brightness(image.at(x, y)) < 300)
                    return true;
            }
        }
        return false;
    };
    EXPECT_FALSE(hasDarkPixelRightOf(top.picture(), 97));
    const Image wide = topPicture(top.map, {}, top.walkable, top.reached, 400, 200);
    EXPECT_TRUE(hasDarkPixelRightOf(wide, 300));
}

namespace {

/// A top with something for every line of the key: floors in rows 1 to 3, one below another, one
/// that nobody reaches, and places without a floor.
SmallTop topOfAllKinds() {
    SmallTop top;
    for (int i = 0; i < 3; ++i)
        top.addFloor({i, 1 + i, 0}, true);
    top.addFloor({0, 1, 2}, true);
    top.addFloor({0, 3, 2}, true);
    top.addFloor({2, 2, 2}, false);
    return top;
}

constexpr int keyLines = 6;
constexpr Colour keyText = {66, 68, 76};
constexpr Colour keyFrame = {18, 22, 28};

/// Lengths of the runs of rows, or else of columns, that hold this colour in a part of the image.
std::vector<int> runsOf(const Image& image, Colour colour, int left, int top, bool inRows) {
    std::vector<int> runs;
    bool before = false;
    const int width = image.width - left;
    const int height = image.height - top;
    for (int along = 0; along < (inRows ? height : width); ++along) {
        bool found = false;
        for (int across = 0; across < (inRows ? width : height); ++across)
            found = found || image.at(left + (inRows ? across : along),
                                      top + (inRows ? along : across)) == colour;
        if (found && !before)
            runs.push_back(0);
        if (found)
            ++runs.back();
        before = found;
    }
    return runs;
}

} // namespace

TEST(TopPictureKey, AtTheRightItsLinesStandApart) {
    const SmallTop top = topOfAllKinds();
    const Image image = topPicture(top.map, {}, top.walkable, top.reached, 400, 200);
    const TopView view = topView(top.map, top.walkable, top.reached, 400, 200);
    const int right = static_cast<int>(view.corner.x + 4 * view.scale) + 1;
    EXPECT_EQ(runsOf(image, keyText, right, 0, true), std::vector<int>(keyLines, 7))
        << "letters of seven pixels";
    EXPECT_EQ(runsOf(image, keyFrame, right, 0, true), std::vector<int>(keyLines, 13))
        << "swatches of eleven with their frames";
    EXPECT_EQ(runsOf(image, keyFrame, right, 0, false), std::vector<int>(1, 13)) << "one column";
}

TEST(TopPictureKey, BelowItsLinesAndColumnsStandApart) {
    const SmallTop top = topOfAllKinds();
    const Image image = topPicture(top.map, {}, top.walkable, top.reached, 300, 400);
    const TopView view = topView(top.map, top.walkable, top.reached, 300, 400);
    const int below = static_cast<int>(view.corner.y + 4 * view.scale) + 1;
    EXPECT_EQ(runsOf(image, keyText, 0, below, true), std::vector<int>(keyLines / 2, 7));
    EXPECT_EQ(runsOf(image, keyFrame, 0, below, true), std::vector<int>(keyLines / 2, 13));
    EXPECT_EQ(runsOf(image, keyFrame, 0, below, false), std::vector<int>(2, 13)) << "two columns";
}

TEST(TopPictureKey, NoWordsStandOnTheMap) {
    const SmallTop top = topOfAllKinds();
    for (const auto& [width, height] : {std::pair{400, 200}, {300, 400}, {950, 910}}) {
        const Image image = topPicture(top.map, {}, top.walkable, top.reached, width, height);
        const TopView view = topView(top.map, top.walkable, top.reached, width, height);
        int words = 0;
        for (double y = 0.5; y < 4 * view.scale; ++y) {
            for (double x = 0.5; x < 4 * view.scale; ++x)
                words += image.at(static_cast<int>(view.corner.x + x),
                                  static_cast<int>(view.corner.y + y)) == keyText;
        }
        EXPECT_EQ(words, 0) << width << " x " << height;
        EXPECT_GT(pixels(image, [](Colour colour) { return colour == keyText; }).count, 100);
    }
}
