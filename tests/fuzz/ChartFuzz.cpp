// Any bytes as the chart of an arena, with the head and the checksum that get them read.

#include "bots/ChartFile.h"
#include "bots/Routes.h"
#include "common/Checksum.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/Require.h"
#include "tests/support/Courts.h"

#include <algorithm>
#include <cstring>
#include <string>

using namespace drench;

namespace {

constexpr bots::ChartOrigin origin = {.arena = 1, .program = 2};

/// Everything before the counts: the kind of file, its origin, and how long it took.
std::string usualStart(MapManager& map) {
    bots::Roadmap empty;
    empty.map = &map;
    constexpr std::size_t countsAt = 32;
    return writeChart(empty, origin).substr(0, countsAt);
}

void checkIndices(const bots::Roadmap& roadmap) {
    const auto places = static_cast<int>(roadmap.reach.places.size());
    const auto isPlace = [places](int place) { return place >= 0 && place < places; };
    require(roadmap.roads.size() == roadmap.reach.places.size(), "each place has its roads");
    for (const arena::StandingPlace& place : roadmap.reach.places) {
        require(roadmap.placeIn(place.feet) >= 0, "a place lies in the map");
        require(std::all_of(place.next.begin(), place.next.end(), isPlace), "ways end at places");
    }
    for (int place = 0; place < std::min(places, 4); ++place)
        static_cast<void>(bots::quickestRoute(roadmap, 0, place));
    for (const int landing : roadmap.reach.landings)
        require(landing == -1 || isPlace(landing), "a landing is a place or none");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static MapManager map = court(5, 4, 5, nothing);
    const std::string raw(reinterpret_cast<const char*>(data), size);
    static_cast<void>(readChart(raw, origin, map));

    std::string bytes = usualStart(map) + raw;
    const std::uint64_t sum = checksum(bytes);
    bytes.append(reinterpret_cast<const char*>(&sum), sizeof sum);
    if (const std::optional<bots::Roadmap> read = readChart(bytes, origin, map)) {
        checkIndices(*read);
        std::string again = writeChart(*read, origin);
        // The head's spare bytes are the only ones that mean nothing.
        constexpr std::size_t spareAt = 44;
        std::memcpy(again.data() + spareAt, bytes.data() + spareAt, 4);
        require(again.substr(0, again.size() - sizeof sum) ==
                    bytes.substr(0, bytes.size() - sizeof sum),
                "a chart is written as it was read");
    }
    return 0;
}
