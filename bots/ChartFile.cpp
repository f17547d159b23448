#include "bots/ChartFile.h"

#include "arena/Map.h"
#include "common/Checksum.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace drench::bots {

namespace {

struct Head {
    char magic[8] = {'D', 'r', 'C', 'h', 'a', 'r', 't', '1'};
    ChartOrigin origin;
    std::int64_t ticks = 0;
    std::uint32_t places = 0;
    std::uint32_t landings = 0;
    std::uint32_t departures = 0;
    std::uint32_t unused = 0;
};

struct PlaceRecord {
    std::int32_t feet[3];
    float position[3];
    std::uint32_t roads;
};

struct RoadRecord {
    std::int32_t to;
    std::int32_t gait;
    std::int32_t ticks;
};

struct CellRecord {
    std::int32_t indices[3];
};

static_assert(sizeof(Head) == 48 && sizeof(PlaceRecord) == 28 && sizeof(RoadRecord) == 12 &&
              sizeof(CellRecord) == 12);

template<class Record>
void append(std::string& bytes, const Record& record) {
    static_assert(std::has_unique_object_representations_v<Record> ||
                  std::is_same_v<Record, PlaceRecord>);
    bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
}

/// Takes a record from the front; nothing if too few bytes are left.
template<class Record>
std::optional<Record> take(std::string_view& bytes) {
    if (bytes.size() < sizeof(Record))
        return std::nullopt;
    Record record;
    std::memcpy(&record, bytes.data(), sizeof record);
    bytes.remove_prefix(sizeof record);
    return record;
}

bool isIndex(std::int64_t index, std::int64_t count) {
    return index >= 0 && index < count;
}

bool isIn(const MapManager& map, const std::int32_t (&cell)[3]) {
    return isIndex(cell[0], map.columns) && isIndex(cell[1], map.rows) &&
           isIndex(cell[2], map.depth);
}

/// Whether a body's centre lies above the cell of its feet; false for NaN.
bool isAbove(const float (&position)[3], const std::int32_t (&feet)[3]) {
    bool within = true;
    for (int axis = 0; axis < 3; ++axis) {
        const float low = arena::cubeEdge * static_cast<float>(feet[axis]);
        const float high = low + arena::cubeEdge * (axis == 1 ? 2.0f : 1.0f);
        within = within && position[axis] >= low && position[axis] <= high;
    }
    return within;
}

/// Whether a body can have its feet in this cell of the map: the walker looks for places in free
/// cells alone.
bool isFree(const MapManager& map, const std::int32_t (&cell)[3]) {
    return isIn(map, cell) && map.cubeIsNull(cell[0], cell[1], cell[2]);
}

/// Reads a place and the roads that leave it; false if one of them is impossible.
bool takePlace(std::string_view& bytes, std::uint32_t places, Roadmap& roadmap) {
    const std::optional<PlaceRecord> record = take<PlaceRecord>(bytes);
    if (!record || !isFree(*roadmap.map, record->feet) || !isAbove(record->position, record->feet))
        return false;
    arena::StandingPlace place;
    place.feet = {record->feet[0], record->feet[1], record->feet[2]};
    place.position = {record->position[0], record->position[1], record->position[2]};
    std::vector<Road> roads;
    for (std::uint32_t i = 0; i < record->roads; ++i) {
        const std::optional<RoadRecord> road = take<RoadRecord>(bytes);
        if (!road || !isIndex(road->to, places) ||
            !isIndex(road->gait, static_cast<int>(Gait::leap) + 1) || road->ticks < 0)
            return false;
        roads.push_back({road->to, static_cast<Gait>(road->gait), road->ticks});
        place.next.push_back(road->to);
    }
    std::sort(place.next.begin(), place.next.end());
    roadmap.reach.places.push_back(std::move(place));
    roadmap.roads.push_back(std::move(roads));
    return true;
}

} // namespace

std::uint64_t arenaChecksum(const MapManager& map) {
    std::string bytes;
    for (const int extent : {map.columns, map.rows, map.depth})
        append(bytes, extent);
    for (int i = 0; i < map.columns; ++i) {
        for (int j = 0; j < map.rows; ++j) {
            for (int k = 0; k < map.depth; ++k)
                bytes.push_back(map.cubeIsNull(i, j, k) ? '\0' : '\1');
        }
    }
    return checksum(bytes);
}

std::string writeChart(const Roadmap& roadmap, const ChartOrigin& origin) {
    const arena::Reach& reach = roadmap.reach;
    std::string bytes;
    Head head;
    head.origin = origin;
    head.ticks = reach.ticks;
    head.places = static_cast<std::uint32_t>(reach.places.size());
    head.landings = static_cast<std::uint32_t>(reach.landings.size());
    head.departures = static_cast<std::uint32_t>(reach.departures.size());
    append(bytes, head);
    for (std::size_t place = 0; place < reach.places.size(); ++place) {
        const auto& [feet, position, next] = reach.places[place];
        append(bytes, PlaceRecord{{feet.column, feet.row, feet.depth},
                                  {position.x, position.y, position.z},
                                  static_cast<std::uint32_t>(roadmap.roads[place].size())});
        for (const Road& road : roadmap.roads[place])
            append(bytes, RoadRecord{road.to, static_cast<std::int32_t>(road.gait), road.ticks});
    }
    for (const std::int32_t landing : reach.landings)
        append(bytes, landing);
    for (const arena::CellIndex& cell : reach.departures)
        append(bytes, CellRecord{{cell.column, cell.row, cell.depth}});
    append(bytes, checksum(bytes));
    return bytes;
}

std::optional<Roadmap> readChart(std::string_view bytes, const ChartOrigin& origin,
                                 MapManager& map) {
    std::string_view end =
        bytes.substr(bytes.size() - std::min(bytes.size(), sizeof(std::uint64_t)));
    bytes.remove_suffix(end.size());
    const std::uint64_t sum = checksum(bytes);
    const std::optional<Head> head = take<Head>(bytes);
    // Counts need no limit of their own: each counted record takes bytes that must be there.
    if (!head || std::memcmp(head->magic, Head().magic, sizeof head->magic) != 0 ||
        head->origin.arena != origin.arena || head->origin.program != origin.program ||
        take<std::uint64_t>(end) != sum || !map.hasCells())
        return std::nullopt;

    Roadmap roadmap;
    roadmap.map = &map;
    roadmap.reach.ticks = head->ticks;
    for (std::uint32_t i = 0; i < head->places; ++i) {
        if (!takePlace(bytes, head->places, roadmap))
            return std::nullopt;
    }
    for (std::uint32_t i = 0; i < head->landings; ++i) {
        const std::optional<std::int32_t> landing = take<std::int32_t>(bytes);
        if (!landing || (*landing != -1 && !isIndex(*landing, head->places)))
            return std::nullopt;
        roadmap.reach.landings.push_back(*landing);
    }
    for (std::uint32_t i = 0; i < head->departures; ++i) {
        const std::optional<CellRecord> cell = take<CellRecord>(bytes);
        if (!cell || !isIn(map, cell->indices))
            return std::nullopt;
        roadmap.reach.departures.push_back({cell->indices[0], cell->indices[1], cell->indices[2]});
    }
    if (!bytes.empty())
        return std::nullopt;
    roadmap.grid = arena::gridOf(map);
    roadmap.indexPlaces();
    return roadmap;
}

} // namespace drench::bots
