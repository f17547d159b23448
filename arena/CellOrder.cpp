#include "arena/CellOrder.h"

#include "arena/Arrivals.h"
#include "arena/Map.h"

#include <algorithm>
#include <array>
#include <vector>

namespace drench::arena {

namespace {

/// Columns (0), rows (1) and depth (2), in some order.
using Axes = std::array<std::size_t, 3>;

constexpr Axes usual = {0, 1, 2};

std::string wordsOf(const Axes& axes) {
    constexpr const char* names[] = {"columns", "rows", "depth"};
    return std::string(names[axes[0]]) + ", " + names[axes[1]] + ", " + names[axes[2]];
}

/// The cells of a map in another order.
struct Reordered {
    const MapManager& map;

    /// From the axis that varies slowest to the one that varies fastest.
    Axes cells;
    std::array<int, 3> size{};

    Reordered(const MapManager& original, const Axes& header, const Axes& cellOrder)
        : map(original), cells(cellOrder) {
        const int numbers[] = {map.columns, map.rows, map.depth};
        for (std::size_t i = 0; i < 3; ++i)
            size[header[i]] = numbers[i];
    }

    const Box& at(const std::array<int, 3>& place) const {
        long index = 0;
        for (const std::size_t axis : cells)
            index = index * size[axis] + place[axis];
        const long row = index / map.depth;
        return cell(map, static_cast<int>(row / map.rows), static_cast<int>(row % map.rows),
                    static_cast<int>(index % map.depth));
    }
};

template<class IsSolid>
bool isEnclosed(const std::array<int, 3>& size, IsSolid isSolid) {
    const auto [columns, rows, depth] = size;
    for (int i = 0; i < columns; ++i) {
        for (int k = 0; k < depth; ++k) {
            const bool isSide = i == 0 || i == columns - 1 || k == 0 || k == depth - 1;
            for (int j = 0; j < (isSide ? rows : 1); ++j) {
                if (!isSolid(std::array{i, j, k}))
                    return false;
            }
        }
    }
    return true;
}

MapManager mapOf(const Reordered& reordered) {
    const auto [columns, rows, depth] = reordered.size;
    MapManager map = emptyMap(columns, rows, depth);
    for (int i = 0; i < columns; ++i) {
        for (int j = 0; j < rows; ++j) {
            for (int k = 0; k < depth; ++k)
                cell(map, i, j, k).solid = reordered.at({i, j, k}).solid;
        }
    }
    return map;
}

bool isArena(const Reordered& reordered) {
    const auto isSolid = [&](const std::array<int, 3>& place) {
        return reordered.at(place).solid != 0;
    };
    if (!isEnclosed(reordered.size, isSolid))
        return false;
    MapManager map = mapOf(reordered);
    const std::vector<Arrival> landings = arrivals(map);
    return std::all_of(landings.begin(), landings.end(),
                       [](const Arrival& arrival) { return arrival.comesToStand(); });
}

} // namespace

bool isEnclosed(const MapManager& map) {
    return isEnclosed({map.columns, map.rows, map.depth}, [&](const std::array<int, 3>& place) {
        return !map.cubeIsNull(place[0], place[1], place[2]);
    });
}

std::optional<std::string> orderOfAnArena(const MapManager& map) {
    std::vector<Axes> orders;
    Axes axes = usual;
    do
        orders.push_back(axes);
    while (std::next_permutation(axes.begin(), axes.end()));

    if (isArena({map, usual, usual}))
        return std::nullopt;
    for (const Axes& header : orders) {
        if (isArena({map, header, usual}))
            return "its header is taken as " + wordsOf(header);
    }
    // An arena with symmetries may be one in several orders of its cells.
    for (const Axes& header : orders) {
        std::string fitting;
        for (const Axes& cells : orders) {
            if (isArena({map, header, cells}))
                fitting += (fitting.empty() ? "" : " or ") + wordsOf(cells);
        }
        if (fitting.empty())
            continue;
        const std::string words =
            "its cells are taken in the order " + fitting + ", of which the last varies fastest";
        return header == usual ? words
                               : "its header is taken as " + wordsOf(header) + ", and " + words;
    }
    return std::nullopt;
}

} // namespace drench::arena
