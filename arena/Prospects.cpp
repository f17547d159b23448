#include "arena/Prospects.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <optional>

namespace drench::arena {

namespace {

/// Rows of cubes that a body on a floor reaches into.
constexpr int bodyRows = 3;

/// World units. Sums of floats differ from exact sums by less than this.
constexpr float rounding = 0.5f;

std::size_t asIndex(int i) {
    return static_cast<std::size_t>(i);
}

/// The index of a cell of feet. Such cells are those of the map and those on top of it.
std::size_t cellNumber(const MapManager& map, const CellIndex& feet) {
    return (asIndex(feet.column) * asIndex(map.depth) + asIndex(feet.depth)) *
               asIndex(map.rows + 1) +
           asIndex(feet.row);
}

bool isInGrid(const MapManager& map, const CellIndex& feet) {
    return feet.column >= 0 && feet.column < map.columns && feet.row >= 0 && feet.row <= map.rows &&
           feet.depth >= 0 && feet.depth < map.depth;
}

bool isCube(const MapManager& map, int column, int row, int depth) {
    return row < map.rows && cell(map, column, row, depth).solid != 0;
}

/// Whether a body with its feet in the cell fits into the column of cubes, judged by that column
/// alone.
bool fits(const MapManager& map, const CellIndex& feet) {
    for (int row = feet.row; row < feet.row + bodyRows; ++row) {
        if (isCube(map, feet.column, row, feet.depth))
            return false;
    }
    return true;
}

/// Whether a body with its centre over the cell of feet can touch a cube of that row, below or
/// above it: in its own column, or in a column beside it if all columns that it then reaches into
/// are free.
bool touchesRow(const MapManager& map, const CellIndex& feet, int row) {
    for (int i = -1; i <= 1; ++i) {
        for (int k = -1; k <= 1; ++k) {
            const CellIndex beside = {feet.column + i, feet.row, feet.depth + k};
            if (isInGrid(map, beside) && isCube(map, beside.column, row, beside.depth) &&
                fits(map, beside) && fits(map, {beside.column, feet.row, feet.depth}) &&
                fits(map, {feet.column, feet.row, beside.depth}))
                return true;
        }
    }
    return false;
}

/// Marks the cells of feet that a body's centre may pass, from the starts on through neighbouring
/// cells. Walled-in cells stay unmarked.
std::vector<std::uint8_t> passable(const MapManager& map, const std::vector<CellIndex>& starts) {
    std::vector<std::uint8_t> passed(asIndex(map.columns) * asIndex(map.depth) *
                                     asIndex(map.rows + 1));
    std::vector<CellIndex> open;
    const auto pass = [&](const CellIndex& feet) {
        if (!isInGrid(map, feet) || passed[cellNumber(map, feet)] != 0 || !fits(map, feet))
            return;
        passed[cellNumber(map, feet)] = 1;
        open.push_back(feet);
    };
    for (const CellIndex& start : starts)
        pass({start.column, std::clamp(start.row, 0, map.rows), start.depth});
    while (!open.empty()) {
        const CellIndex feet = open.back();
        open.pop_back();
        pass({feet.column - 1, feet.row, feet.depth});
        pass({feet.column + 1, feet.row, feet.depth});
        pass({feet.column, feet.row - 1, feet.depth});
        pass({feet.column, feet.row + 1, feet.depth});
        pass({feet.column, feet.row, feet.depth - 1});
        pass({feet.column, feet.row, feet.depth + 1});
    }
    return passed;
}

/// Feet in a row are at two levels: at its floor, and where the head touches the ceiling of the
/// lowest passage that a body fits through.
constexpr int levelsPerRow = 2;

/// World units above the row's floor at which the feet are when the head is stopped by such a
/// ceiling.
float perchHeight(const FlightArc& arc) {
    return bodyRows * cubeEdge - Player::bodySize.y - arc.rise[1];
}

int levels(const MapManager& map) {
    return levelsPerRow * (map.rows + 1);
}

/// The highest level that is not above the height.
int levelAt(const Prospects& prospects, float height) {
    const float row = std::floor(height / cubeEdge);
    const bool upper = height - row * cubeEdge >= perchHeight(prospects.arc);
    const float level = levelsPerRow * row + (upper ? 1.0f : 0.0f);
    return static_cast<int>(std::min(level, static_cast<float>(levels(*prospects.map) - 1)));
}

int& labelAt(Prospects& prospects, int column, int depth, int level) {
    const MapManager& map = *prospects.map;
    return prospects
        .labels[(asIndex(column) * asIndex(map.depth) + asIndex(depth)) * asIndex(levels(map)) +
                asIndex(level)];
}

int joined(int one, int other) {
    if (one == Prospects::none || one == other)
        return other;
    return other == Prospects::none ? one : Prospects::several;
}

/// Joins the labels of all cells of columns at a distance of exactly `ring` columns, up to a level.
int labelOfRing(const Prospects& prospects, int column, int depth, int ring, int level, int label) {
    const MapManager& map = *prospects.map;
    const auto add = [&](int i, int k) {
        if (i >= 0 && i < map.columns && k >= 0 && k < map.depth)
            label = joined(label, prospects.labels[(asIndex(i) * asIndex(map.depth) + asIndex(k)) *
                                                       asIndex(levels(map)) +
                                                   asIndex(level)]);
    };
    for (int along = -ring; along <= ring; ++along) {
        add(column - ring, depth + along);
        add(column + ring, depth + along);
        if (std::abs(along) != ring) {
            add(column + along, depth - ring);
            add(column + along, depth + ring);
        }
    }
    return label;
}

/// The greatest height of the feet over columns this many columns away, this many ticks after a
/// take-off; none if a body gets there only below the world.
std::optional<float> heightOver(const Prospects& prospects, float feet, std::size_t ticks,
                                int columns) {
    // A body comes over such a column this many ticks later at the earliest; one tick less if it
    // ran over an edge before the jump.
    const FlightArc& arc = prospects.arc;
    const float way = cubeEdge * static_cast<float>(std::max(0, columns - 1));
    const auto least = static_cast<std::size_t>(way / prospects.runSpeed);
    const std::size_t then = std::max(ticks + std::max<std::size_t>(least, 1) - 1, arc.apex);
    if (then >= arc.rise.size())
        return {};
    const float height = feet + arc.rise[then] - arc.rise[ticks] + rounding;
    return height < 0.0f ? std::nullopt : std::optional(height);
}

/// The joint label of all that a body may reach from this many ticks after a take-off.
int after(const Prospects& prospects, int column, int depth, float feet, std::size_t ticks) {
    const FlightArc& arc = prospects.arc;
    if (ticks >= arc.rise.size() ||
        feet + arc.rise[std::max(ticks, arc.apex)] - arc.rise[ticks] >= prospects.deepFall)
        return Prospects::several;
    int label = Prospects::none;
    const int farthest = std::max(prospects.map->columns, prospects.map->depth);
    for (int ring = 0; ring <= farthest && label != Prospects::several; ++ring) {
        const std::optional<float> height = heightOver(prospects, feet, ticks, ring);
        if (!height)
            break;
        label = labelOfRing(prospects, column, depth, ring, levelAt(prospects, *height), label);
    }
    return label;
}

/// Fills the labels from those of floors and perches.
void fillLabels(Prospects& prospects, const std::vector<int>& labelOfFloor,
                const std::vector<int>& labelOfPerch) {
    std::fill(prospects.labels.begin(), prospects.labels.end(), Prospects::none);
    const auto add = [&](const CellIndex& feet, int levelInRow, int label) {
        int& known =
            labelAt(prospects, feet.column, feet.depth, levelsPerRow * feet.row + levelInRow);
        known = joined(known, label);
    };
    for (std::size_t i = 0; i < prospects.floors.size(); ++i)
        add(prospects.floors[i], 0, labelOfFloor[i] >= 0 ? labelOfFloor[i] : Prospects::several);
    for (std::size_t i = 0; i < prospects.perches.size(); ++i)
        add(prospects.perches[i], 1, labelOfPerch[i]);
    for (const CellIndex& exit : prospects.exits)
        add(exit, 0, Prospects::several);
    const auto count = asIndex(levels(*prospects.map));
    for (std::size_t column = 0; column < prospects.labels.size(); column += count) {
        for (std::size_t level = column + 1; level < column + count; ++level)
            prospects.labels[level] = joined(prospects.labels[level - 1], prospects.labels[level]);
    }
}

} // namespace

FlightArc flightArc(float depth) {
    // A map without cells stops nobody.
    MapManager nothing;
    Player player = bodyAt(nothing, vec3(0.0f), vec3(0.0f, 0.0f, 1.0f));
    player.jump();
    FlightArc arc{{0.0f}, {player.verticalSpeed}, 0};
    while (arc.rise.back() > -depth) {
        player.update(0.0f);
        arc.rise.push_back(arc.rise.back() + player.velocity.y);
        arc.speed.push_back(player.verticalSpeed);
    }
    arc.apex = asIndex(
        static_cast<int>(std::max_element(arc.rise.begin(), arc.rise.end()) - arc.rise.begin()));
    return arc;
}

Prospects prospects(const MapManager& map, const std::vector<CellIndex>& starts, float runSpeed) {
    Prospects prospects;
    prospects.map = &map;
    prospects.runSpeed = runSpeed;

    // Above the map there are only players who have just spawned.
    int highest = map.rows;
    for (const CellIndex& start : starts)
        highest = std::max(highest, start.row + 1);
    const float height = cubeEdge * static_cast<float>(highest + bodyRows);
    prospects.arc = flightArc(height);

    // A body stops above a floor by less than the step that would have met the floor.
    const FlightArc& arc = prospects.arc;
    const float apex = arc.rise[arc.apex];
    prospects.climbingHover = cubeEdge * std::ceil(apex / cubeEdge) - apex - rounding;
    std::size_t tick = arc.apex + 1;
    while (tick < arc.rise.size() && arc.rise[tick - 1] - arc.rise[tick] < prospects.climbingHover)
        ++tick;
    prospects.deepFall = apex - arc.rise[tick - 1];

    const std::vector<std::uint8_t> passed = passable(map, starts);
    prospects.isFloor.assign(passed.size(), 0);
    prospects.isOpen.assign(passed.size(), 0);
    prospects.labels.assign(asIndex(map.columns) * asIndex(map.depth) * asIndex(levels(map)),
                            Prospects::none);
    for (CellIndex feet; feet.column < map.columns; ++feet.column) {
        for (feet.depth = 0; feet.depth < map.depth; ++feet.depth) {
            const bool atSide = feet.column == 0 || feet.column == map.columns - 1 ||
                                feet.depth == 0 || feet.depth == map.depth - 1;
            for (feet.row = 0; feet.row <= map.rows; ++feet.row) {
                if (passed[cellNumber(map, feet)] == 0)
                    continue;
                if (atSide || feet.row == 0)
                    prospects.exits.push_back(feet);
                if (feet.row > 0 && touchesRow(map, feet, feet.row - 1)) {
                    prospects.floors.push_back(feet);
                    prospects.isFloor[cellNumber(map, feet)] = 1;
                }
                if (touchesRow(map, feet, feet.row + bodyRows))
                    prospects.perches.push_back(feet);
            }
        }
    }
    for (const CellIndex& feet : prospects.floors) {
        bool open = true;
        for (int i = -1; i <= 1; ++i) {
            for (int k = -1; k <= 1; ++k) {
                const CellIndex beside = {feet.column + i, feet.row, feet.depth + k};
                open = open && isInGrid(map, beside) && fits(map, beside) &&
                       isCube(map, beside.column, feet.row - 1, beside.depth);
            }
        }
        prospects.isOpen[cellNumber(map, feet)] = open ? 1 : 0;
    }
    return prospects;
}

void label(Prospects& prospects, const std::vector<int>& labelOfFloor) {
    // From a perch players jump again, to floors and to other perches. Labels of perches only ever
    // grow, so this ends.
    std::vector<int> labelOfPerch(prospects.perches.size(), Prospects::none);
    const float height = perchHeight(prospects.arc) + prospects.arc.rise[1];
    for (bool changed = true; changed;) {
        fillLabels(prospects, labelOfFloor, labelOfPerch);
        changed = false;
        for (std::size_t i = 0; i < prospects.perches.size(); ++i) {
            const CellIndex& feet = prospects.perches[i];
            if (labelOfPerch[i] == Prospects::several)
                continue;
            const int label = afterJump(prospects, feet.column, feet.depth,
                                        cubeEdge * static_cast<float>(feet.row) + height);
            changed = changed || label != labelOfPerch[i];
            labelOfPerch[i] = label;
        }
    }
}

int afterJump(const Prospects& prospects, int column, int depth, float feet) {
    return after(prospects, column, depth, feet, 0);
}

int inFlight(const Prospects& prospects, int column, int depth, float feet, float verticalSpeed) {
    const std::vector<float>& speed = prospects.arc.speed;
    const auto tick = std::lower_bound(speed.begin(), speed.end(), verticalSpeed, std::greater<>());
    return after(prospects, column, depth, feet, asIndex(static_cast<int>(tick - speed.begin())));
}

bool mightLeave(const Prospects& prospects,
                const std::vector<std::pair<CellIndex, float>>& starts) {
    const MapManager& map = *prospects.map;
    const auto columnNumber = [&](int column, int depth) {
        return asIndex(column) * asIndex(map.depth) + asIndex(depth);
    };

    // The floors, perches and exits of each column of cubes, the lowest first, and the count of
    // those reached: a body that gets to a level gets to all below it.
    struct Stop {
        int level;
        float feet;
        bool isExit;
    };
    std::vector<std::vector<Stop>> stops(asIndex(map.columns) * asIndex(map.depth));
    const auto addStop = [&](const CellIndex& feet, int levelInRow, float height, bool isExit) {
        stops[columnNumber(feet.column, feet.depth)].push_back(
            {levelsPerRow * feet.row + levelInRow, cubeEdge * static_cast<float>(feet.row) + height,
             isExit});
    };
    for (const CellIndex& feet : prospects.floors)
        addStop(feet, 0, 0.0f, false);
    const float perch = perchHeight(prospects.arc) + prospects.arc.rise[1];
    for (const CellIndex& feet : prospects.perches)
        addStop(feet, 1, perch, false);
    for (const CellIndex& feet : prospects.exits)
        addStop(feet, 0, 0.0f, true);
    for (std::vector<Stop>& column : stops)
        std::stable_sort(column.begin(), column.end(),
                         [](const Stop& a, const Stop& b) { return a.level < b.level; });
    std::vector<std::size_t> come(stops.size(), 0);

    std::vector<std::pair<CellIndex, float>> open = starts;
    while (!open.empty()) {
        const auto [from, feet] = open.back();
        open.pop_back();
        if (feet + prospects.arc.rise[prospects.arc.apex] >= prospects.deepFall)
            return true;
        for (int ring = 0; ring <= std::max(map.columns, map.depth); ++ring) {
            const std::optional<float> height = heightOver(prospects, feet, 0, ring);
            if (!height)
                break;
            const int level = levelAt(prospects, *height);
            for (int i = std::max(from.column - ring, 0);
                 i <= std::min(from.column + ring, map.columns - 1); ++i) {
                const int step = std::abs(i - from.column) == ring ? 1 : 2 * ring;
                for (int k = from.depth - ring; k <= from.depth + ring; k += step) {
                    if (k < 0 || k >= map.depth)
                        continue;
                    const std::vector<Stop>& column = stops[columnNumber(i, k)];
                    std::size_t& next = come[columnNumber(i, k)];
                    for (; next < column.size() && column[next].level <= level; ++next) {
                        if (column[next].isExit)
                            return true;
                        open.push_back({{i, 0, k}, column[next].feet});
                    }
                }
            }
        }
    }
    return false;
}

int highestRowAfterJump(const Prospects& prospects, float feet, int columns) {
    const std::optional<float> height = heightOver(prospects, feet, 0, columns);
    return height ? std::min(static_cast<int>(*height / cubeEdge), prospects.map->rows) : -1;
}

vec3 carriedPoint(const Prospects& prospects, const CellIndex& feet) {
    // The feet's middle may be nearly half a body beside a carrying cube.
    constexpr float offMiddle = 24.0f;
    const MapManager& map = *prospects.map;
    const vec3 middle(cubeEdge * (static_cast<float>(feet.column) + 0.5f),
                      cubeEdge * static_cast<float>(feet.row) + 0.5f * Player::bodySize.y,
                      cubeEdge * (static_cast<float>(feet.depth) + 0.5f));
    constexpr int besides[][2] = {{0, 0}, {1, 0},  {-1, 0}, {0, 1},  {0, -1},
                                  {1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
    for (const auto& [i, k] : besides) {
        const CellIndex carrier = {feet.column + i, feet.row, feet.depth + k};
        if (isInGrid(map, carrier) && fits(map, carrier) &&
            isCube(map, carrier.column, feet.row - 1, carrier.depth))
            return middle + vec3(static_cast<float>(i), 0.0f, static_cast<float>(k)) * offMiddle;
    }
    return middle;
}

bool mayStand(const Prospects& prospects, const CellIndex& feet) {
    return isInGrid(*prospects.map, feet) &&
           prospects.isFloor[cellNumber(*prospects.map, feet)] != 0;
}

bool isOpenFloor(const Prospects& prospects, const CellIndex& feet) {
    return isInGrid(*prospects.map, feet) &&
           prospects.isOpen[cellNumber(*prospects.map, feet)] != 0;
}

} // namespace drench::arena
