#include "bots/ChartFile.h"
#include "common/Checksum.h"
#include "tests/bots/LevelRoadmap.h"
#include "tests/bots/SameChart.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace drench;

using bots::ChartOrigin;
using bots::readChart;
using bots::Roadmap;
using bots::writeChart;

namespace {

constexpr ChartOrigin origin = {.arena = 7, .program = 8};

// Offsets in the file: the head, then the first place.
constexpr std::size_t originAt = 8;
constexpr std::size_t placesAt = 32;
constexpr std::size_t landingsAt = 36;
constexpr std::size_t departuresAt = 40;
constexpr std::size_t firstPlaceAt = 48;
constexpr std::size_t positionAt = firstPlaceAt + 12;
constexpr std::size_t roadsAt = firstPlaceAt + 24;
constexpr std::size_t firstRoadAt = firstPlaceAt + 28;

/// A chart of a small court, with everything that a file holds.
struct Charted {
    MapManager map = court(5, 4, 6, nothing);
    Roadmap roadmap = levelRoadmap(map);

    Charted() {
        roadmap.reach.landings = {0, -1, 3};
        roadmap.reach.departures = {{4, 3, 5}, {0, 0, 0}};
        roadmap.reach.ticks = 1234567890123;
        roadmap.roads[2].front().gait = bots::Gait::leap;
        roadmap.roads[3].front().gait = bots::Gait::jump;
        roadmap.roads[3].front().ticks = 0;
    }
    std::string bytes() const { return writeChart(roadmap, origin); }
    bool isRead(const std::string& bytes) { return readChart(bytes, origin, map).has_value(); }
};

/// The file with another value in one place, its checksum made right again.
template<class Value>
std::string with(std::string bytes, std::size_t at, Value value) {
    std::memcpy(bytes.data() + at, &value, sizeof value);
    bytes.resize(bytes.size() - sizeof(std::uint64_t));
    const std::uint64_t sum = checksum(bytes);
    return bytes.append(reinterpret_cast<const char*>(&sum), sizeof sum);
}

template<class Value>
Value valueAt(const std::string& bytes, std::size_t at) {
    Value value;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

} // namespace

TEST(ChartFile, GivesBackEverythingThatWasWritten) {
    Charted charted;
    const std::optional<Roadmap> read = readChart(charted.bytes(), origin, charted.map);
    ASSERT_TRUE(read.has_value());
    expectSameChart(*read, charted.roadmap);
    EXPECT_EQ(read->map, &charted.map);
    EXPECT_EQ(read->grid.contents, charted.roadmap.grid.contents);
    EXPECT_EQ(read->placeOfCell, charted.roadmap.placeOfCell);
}

TEST(ChartFile, ChartWithoutPlacesIsOne) {
    MapManager map = court(3, 3, 3, nothing);
    Roadmap empty;
    empty.map = &map;
    const std::optional<Roadmap> read = readChart(writeChart(empty, origin), origin, map);
    ASSERT_TRUE(read.has_value());
    EXPECT_TRUE(read->reach.places.empty());
    EXPECT_EQ(read->placeIn({1, 1, 1}), -1);
}

TEST(ChartFile, OfAnotherArenaProgramOrFormatIsNotRead) {
    Charted charted;
    const std::string bytes = charted.bytes();
    EXPECT_TRUE(charted.isRead(bytes));
    EXPECT_FALSE(readChart(bytes, {.arena = 7, .program = 9}, charted.map));
    EXPECT_FALSE(readChart(bytes, {.arena = 6, .program = 8}, charted.map));
    EXPECT_FALSE(charted.isRead(with(bytes, 0, 'd')));
    EXPECT_FALSE(charted.isRead(with(bytes, originAt - 1, '2')));
}

TEST(ChartFile, AnyChangedByteIsNoticed) {
    Charted charted;
    const std::string bytes = charted.bytes();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::string damaged = bytes;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x10);
        EXPECT_FALSE(charted.isRead(damaged)) << i;
    }
}

TEST(ChartFile, PartOfAFileIsNotRead) {
    Charted charted;
    const std::string bytes = charted.bytes();
    const std::string body = bytes.substr(0, bytes.size() - sizeof(std::uint64_t));
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        EXPECT_FALSE(charted.isRead(bytes.substr(0, length))) << length;
        // With a checksum that is right for the part.
        if (length < body.size()) {
            EXPECT_FALSE(charted.isRead(with(body.substr(0, length) + "12345678", 0, 'D')))
                << length;
        }
    }
    EXPECT_FALSE(charted.isRead(with(body + '\0' + "12345678", 0, 'D'))) << "more than a file";
}

TEST(ChartFile, CountsThatLieAreNoticed) {
    Charted charted;
    const std::string bytes = charted.bytes();
    const auto places = valueAt<std::uint32_t>(bytes, placesAt);
    EXPECT_EQ(places, charted.roadmap.reach.places.size());
    for (const std::size_t at : {placesAt, landingsAt, departuresAt, roadsAt}) {
        const auto count = valueAt<std::uint32_t>(bytes, at);
        for (const std::uint32_t wrong : {count - 1, count + 1, 0xffffffffu})
            EXPECT_FALSE(charted.isRead(with(bytes, at, wrong))) << at << ' ' << wrong;
    }
}

TEST(ChartFile, PlacesLieInTheMapAndBodiesAboveThem) {
    Charted charted;
    const std::string bytes = charted.bytes();
    const std::int32_t extents[] = {5, 4, 6};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (const std::int32_t wrong : {-1, extents[axis], INT32_MIN, INT32_MAX})
            EXPECT_FALSE(charted.isRead(with(bytes, firstPlaceAt + 4 * axis, wrong))) << axis;
        // The first place is in the cell (1, 1, 1).
        const float high = axis == 1 ? 192.0f : 128.0f;
        for (const float fine : {64.0f, high})
            EXPECT_TRUE(charted.isRead(with(bytes, positionAt + 4 * axis, fine))) << axis;
        for (const float wrong :
             {63.9f, high + 0.1f, -1e30f, std::numeric_limits<float>::quiet_NaN(),
              std::numeric_limits<float>::infinity()})
            EXPECT_FALSE(charted.isRead(with(bytes, positionAt + 4 * axis, wrong)))
                << axis << ' ' << wrong;
    }
}

TEST(ChartFile, PlacesLieInFreeCells) {
    Charted charted;
    // Below the first place, which is in the cell (1, 1, 1).
    const std::string inTheFloor =
        with(with(charted.bytes(), firstPlaceAt + 4, std::int32_t{0}), positionAt + 4, 100.0f);
    EXPECT_FALSE(charted.isRead(inTheFloor));
}

TEST(ChartFile, RoadsAndLandingsLeadToPlaces) {
    Charted charted;
    const std::string bytes = charted.bytes();
    const auto places = static_cast<std::int32_t>(charted.roadmap.reach.places.size());
    EXPECT_TRUE(charted.isRead(with(bytes, firstRoadAt, places - 1)));
    for (const std::int32_t wrong : {-1, places, INT32_MAX})
        EXPECT_FALSE(charted.isRead(with(bytes, firstRoadAt, wrong))) << wrong;
    EXPECT_TRUE(charted.isRead(with(bytes, firstRoadAt + 4, std::int32_t{2})));
    for (const std::int32_t wrong : {-1, 3})
        EXPECT_FALSE(charted.isRead(with(bytes, firstRoadAt + 4, wrong))) << wrong;
    EXPECT_FALSE(charted.isRead(with(bytes, firstRoadAt + 8, std::int32_t{-1})));

    // Behind the roads come three landings and two departures, then the checksum.
    const std::size_t firstLandingAt = bytes.size() - 8 - 2 * 12 - 3 * 4;
    EXPECT_EQ(valueAt<std::int32_t>(bytes, firstLandingAt + 4), -1);
    EXPECT_TRUE(charted.isRead(with(bytes, firstLandingAt, places - 1)));
    for (const std::int32_t wrong : {-2, places})
        EXPECT_FALSE(charted.isRead(with(bytes, firstLandingAt, wrong))) << wrong;
    const std::size_t firstDepartureAt = firstLandingAt + 3 * 4;
    EXPECT_FALSE(charted.isRead(with(bytes, firstDepartureAt, std::int32_t{5})));
    EXPECT_FALSE(charted.isRead(with(bytes, firstDepartureAt + 8, std::int32_t{-1})));
}

TEST(ChartFile, MapWithoutCellsHasNoChart) {
    MapManager map;
    Roadmap empty;
    empty.map = &map;
    EXPECT_FALSE(readChart(writeChart(empty, origin), origin, map));
}

TEST(ArenaChecksum, FollowsFromExtentsAndFromWhatBlocks) {
    const auto sum = [](int columns, int rows, int depth, int post) {
        return bots::arenaChecksum(court(columns, rows, depth, [post](int i, int j, int k) {
            return i == 2 && j == 1 && k == post;
        }));
    };
    EXPECT_EQ(sum(5, 4, 6, 2), sum(5, 4, 6, 2));
    EXPECT_NE(sum(5, 4, 6, 2), sum(5, 4, 6, 3));
    EXPECT_NE(sum(5, 4, 6, 2), sum(6, 4, 5, 2));
    EXPECT_NE(bots::arenaChecksum(loaded("2 2 1 1 1 1 1 1 1 1 1")),
              bots::arenaChecksum(loaded("2 1 2 1 1 1 1 1 1 1 1")));
    EXPECT_EQ(bots::arenaChecksum(loaded("1 1 2 1 5 0 0")),
              bots::arenaChecksum(loaded("1 1 2 1 6 0 3")))
        << "materials";
}
