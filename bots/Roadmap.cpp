#include "bots/Roadmap.h"

#include "src/Player.h"

#include <algorithm>
#include <cmath>

namespace drench::bots {

namespace {

/// Rows of cubes that a standing body reaches into.
constexpr int bodyRows = 3;

std::size_t asIndex(int i) {
    return static_cast<std::size_t>(i);
}

std::size_t indexOf(const MapManager& map, const arena::CellIndex& cell) {
    return (asIndex(cell.column) * asIndex(map.rows) + asIndex(cell.row)) * asIndex(map.depth) +
           asIndex(cell.depth);
}

/// Whether the segment from a to a + way passes a column of cubes, widened by `half`.
bool passes(vec3 a, vec3 way, int column, int depth, float half) {
    float first = 0.0f;
    float last = 1.0f;
    const auto clip = [&](float start, float step, int index) {
        const float low = arena::cubeEdge * static_cast<float>(index) - half - start;
        const float high = low + arena::cubeEdge + 2.0f * half;
        if (step == 0.0f) {
            if (low >= 0.0f || high <= 0.0f)
                first = 2.0f;
            return;
        }
        first = std::max(first, std::min(low / step, high / step));
        last = std::min(last, std::max(low / step, high / step));
    };
    clip(a.x, way.x, column);
    clip(a.z, way.z, depth);
    return first < last;
}

/// Whether `suits` holds for every column of cubes that a body with a margin around it comes over.
template<class Suits>
bool allOnWay(vec3 from, vec3 to, float margin, const Suits& suits) {
    const float half = 0.5f * Player::bodySize.x + margin;
    const vec3 way = horizontal(to - from);
    const int lastColumn = cubeIndex(std::max(from.x, to.x) + half);
    const int lastDepth = cubeIndex(std::max(from.z, to.z) + half);
    for (int i = cubeIndex(std::min(from.x, to.x) - half); i <= lastColumn; ++i) {
        for (int k = cubeIndex(std::min(from.z, to.z) - half); k <= lastDepth; ++k) {
            if (passes(from, way, i, k, half) && !suits(i, k))
                return false;
        }
    }
    return true;
}

} // namespace

void Roadmap::indexPlaces() {
    placeOfCell.assign(asIndex(map->columns) * asIndex(map->rows) * asIndex(map->depth), -1);
    for (std::size_t place = 0; place < reach.places.size(); ++place)
        placeOfCell[indexOf(*map, reach.places[place].feet)] = static_cast<int>(place);
}

int Roadmap::placeIn(const arena::CellIndex& cell) const {
    if (cell.column < 0 || cell.column >= map->columns || cell.row < 0 || cell.row >= map->rows ||
        cell.depth < 0 || cell.depth >= map->depth)
        return -1;
    return placeOfCell[indexOf(*map, cell)];
}

int Roadmap::placeBelow(vec3 position) const {
    constexpr float half = 0.5f * Player::bodySize.x;
    const int highestRow = cubeIndex(position.y - 0.5f * Player::bodySize.y + restingTolerance);
    int best = -1;
    int bestRow = -1;
    float bestDistance = 0.0f;
    for (int i = cubeIndex(position.x - half); i <= cubeIndex(position.x + half); ++i) {
        for (int k = cubeIndex(position.z - half); k <= cubeIndex(position.z + half); ++k) {
            for (int row = std::min(highestRow, map->rows - 1);
                 row >= std::max(bestRow, 0) && map->cubeIsNull(i, row, k); --row) {
                const int place = placeIn({i, row, k});
                if (place < 0)
                    continue;
                const vec3 middle = bodyIn({i, row, k});
                const float distance =
                    std::max(std::fabs(middle.x - position.x), std::fabs(middle.z - position.z));
                if (row > bestRow || distance < bestDistance) {
                    best = place;
                    bestRow = row;
                    bestDistance = distance;
                }
                break;
            }
        }
    }
    return best;
}

bool Roadmap::isOpen(vec3 from, vec3 to, int row, float margin) const {
    return allOnWay(from, to, margin, [&](int i, int k) { return placeIn({i, row, k}) >= 0; });
}

bool Roadmap::isClear(vec3 from, vec3 to, int row, float margin) const {
    return allOnWay(from, to, margin, [&](int i, int k) {
        for (int j = row; j < std::min(row + bodyRows, map->rows); ++j) {
            if (!map->cubeIsNull(i, j, k))
                return false;
        }
        return true;
    });
}

const Road* Roadmap::road(int from, int to) const {
    for (const Road& road : roads[asIndex(from)]) {
        if (road.to == to)
            return &road;
    }
    return nullptr;
}

} // namespace drench::bots
