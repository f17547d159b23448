#include "game/SunShadows.h"

#include <algorithm>
#include <cmath>

namespace drench::game {

namespace {

/// Shapes of a smaller area, in faces, are nothing but rounding.
constexpr double sliver = 1e-6;

/// Blocks are looked up by squares of columns of this many cells.
constexpr int squareOf(int cell) {
    return cell / 8;
}

double cross(glm::dvec2 a, glm::dvec2 b) {
    return a.x * b.y - a.y * b.x;
}

/// The polygon without corners that turn no way: cuts through corners leave them.
Polygon cleaned(Polygon polygon) {
    for (std::size_t i = 0; i < polygon.size() && polygon.size() > 2;) {
        const glm::dvec2 before = polygon[(i + polygon.size() - 1) % polygon.size()];
        const glm::dvec2 after = polygon[(i + 1) % polygon.size()];
        if (cross(polygon[i] - before, after - polygon[i]) < sliver) {
            polygon.erase(polygon.begin() + static_cast<std::ptrdiff_t>(i));
            i = 0;
        } else {
            ++i;
        }
    }
    return polygon;
}

/// The part of a convex polygon on the left of the line from `a` to `b`, or on its right.
Polygon clipped(const Polygon& polygon, glm::dvec2 a, glm::dvec2 b, bool left) {
    const auto height = [&](glm::dvec2 point) {
        const double h = cross(b - a, point - a);
        return left ? h : -h;
    };
    Polygon kept;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const glm::dvec2 from = polygon[i];
        const glm::dvec2 to = polygon[(i + 1) % polygon.size()];
        const double start = height(from);
        const double end = height(to);
        if (start >= 0.0)
            kept.push_back(from);
        if ((start > 0.0 && end < 0.0) || (start < 0.0 && end > 0.0))
            kept.push_back(from + (to - from) * (start / (start - end)));
    }
    kept = cleaned(std::move(kept));
    return areaOf(kept) > sliver ? kept : Polygon{};
}

/// The smallest convex polygon around the points (Andrew's monotone chain, 1979).
Polygon hullOf(Polygon points) {
    std::sort(points.begin(), points.end(),
              [](glm::dvec2 a, glm::dvec2 b) { return a.x != b.x ? a.x < b.x : a.y < b.y; });
    Polygon hull;
    const auto wrap = [&](auto begin, auto end) {
        const std::size_t base = hull.size();
        for (auto point = begin; point != end; ++point) {
            while (hull.size() >= base + 2 &&
                   cross(hull.back() - hull[hull.size() - 2], *point - hull.back()) <= 0.0)
                hull.pop_back();
            hull.push_back(*point);
        }
        hull.pop_back();
    };
    wrap(points.begin(), points.end());
    wrap(points.rbegin(), points.rend());
    return hull;
}

/// Moves what a shadow covers from the lit polygons to the shaded ones.
void cast(const Polygon& shadow, SunnyFace& face) {
    std::vector<Polygon> lit;
    for (Polygon& whole : face.lit) {
        // What lies outside of one edge stays lit, and the rest is held against the next edge.
        std::vector<Polygon> outside;
        Polygon inside = whole;
        for (std::size_t i = 0; i < shadow.size() && !inside.empty(); ++i) {
            const glm::dvec2 a = shadow[i];
            const glm::dvec2 b = shadow[(i + 1) % shadow.size()];
            Polygon part = clipped(inside, a, b, false);
            if (part.empty())
                continue;
            outside.push_back(std::move(part));
            inside = clipped(inside, a, b, true);
        }
        if (inside.empty()) {
            lit.push_back(std::move(whole));
            continue;
        }
        face.shaded.push_back(std::move(inside));
        std::move(outside.begin(), outside.end(), std::back_inserter(lit));
    }
    face.lit = std::move(lit);
}

} // namespace

double areaOf(const Polygon& polygon) {
    double twice = 0.0;
    for (std::size_t i = 0; i < polygon.size(); ++i)
        twice += cross(polygon[i], polygon[(i + 1) % polygon.size()]);
    return 0.5 * twice;
}

double slopeOf(const CubeFace& face, const arena::Triple& sun) {
    return std::max(face.side * sun[static_cast<std::size_t>(face.axis)], 0.0);
}

double SunnyFace::share() const {
    double sum = 0.0;
    for (const Polygon& polygon : lit)
        sum += areaOf(polygon);
    return sum;
}

SunShadows::SunShadows(const MapManager& map, const arena::Triple& towardsSun)
    : blocks_(blocksOf(map)),
      sun_(arena::unit(towardsSun)), cells_{map.columns, map.rows, map.depth},
      squaresAlongZ_(squareOf(std::max(map.depth - 1, 0)) + 1) {
    squares_.resize(squareAt(squareOf(std::max(map.columns - 1, 0)) + 1, 0));
    for (std::uint32_t i = 0; i < blocks_.size(); ++i) {
        const Block& block = blocks_[i];
        for (int x = squareOf(block.low[0]); x <= squareOf(block.high[0] - 1); ++x) {
            for (int z = squareOf(block.low[2]); z <= squareOf(block.high[2] - 1); ++z)
                squares_[squareAt(x, z)].push_back(i);
        }
    }
}

std::vector<std::uint32_t> SunShadows::blocksTowardsSun(const CubeFace& face) const {
    // From the face to the map's highest row, a ray to the sun goes this far aside.
    const double rise = cells_[1] - face.cube.row;
    const auto rangeOf = [&](std::size_t axis, int cell) {
        const double aside = rise * sun_[axis] / sun_[1];
        const int low = cell - 1 + static_cast<int>(std::floor(std::min(aside, 0.0)));
        const int high = cell + 1 + static_cast<int>(std::ceil(std::max(aside, 0.0)));
        return std::array{squareOf(std::max(low, 0)), squareOf(std::min(high, cells_[axis] - 1))};
    };
    const auto [lowX, highX] = rangeOf(0, face.cube.column);
    const auto [lowZ, highZ] = rangeOf(2, face.cube.depth);
    std::vector<std::uint32_t> found;
    for (int x = lowX; x <= highX; ++x) {
        for (int z = lowZ; z <= highZ; ++z) {
            const auto& square = squares_[squareAt(x, z)];
            found.insert(found.end(), square.begin(), square.end());
        }
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

std::vector<SunShadows::Block> SunShadows::blocksOf(const MapManager& map) {
    const std::array<int, 3> cells = {map.columns, map.rows, map.depth};
    std::vector<bool> covered(static_cast<std::size_t>(map.columns) *
                              static_cast<std::size_t>(map.rows) *
                              static_cast<std::size_t>(map.depth));
    const auto forEach = [](const Block& block, const auto& visit) {
        for (int i = block.low[0]; i < block.high[0]; ++i) {
            for (int j = block.low[1]; j < block.high[1]; ++j) {
                for (int k = block.low[2]; k < block.high[2]; ++k) {
                    if (!visit(i, j, k))
                        return false;
                }
            }
        }
        return true;
    };
    const auto isCube = [&](int i, int j, int k) { return !map.cubeIsNull(i, j, k); };
    const auto at = [&](int i, int j, int k) -> std::vector<bool>::reference {
        return covered[(static_cast<std::size_t>(i) * static_cast<std::size_t>(map.rows) +
                        static_cast<std::size_t>(j)) *
                           static_cast<std::size_t>(map.depth) +
                       static_cast<std::size_t>(k)];
    };

    std::vector<Block> blocks;
    forEach({{0, 0, 0}, cells}, [&](int i, int j, int k) {
        if (!isCube(i, j, k) || at(i, j, k))
            return true;
        // Upwards first: most of what casts shadows are walls and pillars.
        Block block = {{i, j, k}, {i + 1, j + 1, k + 1}};
        for (const std::size_t axis : {std::size_t{1}, std::size_t{2}, std::size_t{0}}) {
            for (const bool up : {true, false}) {
                while (up ? block.high[axis] < cells[axis] : block.low[axis] > 0) {
                    Block layer = block;
                    layer.low[axis] = up ? block.high[axis] : block.low[axis] - 1;
                    layer.high[axis] = layer.low[axis] + 1;
                    if (!forEach(layer, isCube))
                        break;
                    (up ? block.high[axis] : block.low[axis]) += up ? 1 : -1;
                }
            }
        }
        forEach(block, [&](int x, int y, int z) {
            at(x, y, z) = true;
            return true;
        });
        blocks.push_back(block);
        return true;
    });
    return blocks;
}

SunnyFace SunShadows::on(const CubeFace& face) const {
    if (slope(face) == 0.0)
        return {{}, {wholeFace}};
    const auto axis = static_cast<std::size_t>(face.axis);
    const auto first = static_cast<std::size_t>(firstAlong(face.axis));
    const auto second = static_cast<std::size_t>(secondAlong(face.axis));
    const std::array<int, 3> cube = {face.cube.column, face.cube.row, face.cube.depth};
    const int plane = cube[axis] + (face.side > 0 ? 1 : 0);
    // Along the plane a shadow moves by this much for each cell that its cube lies in front.
    const double shift1 = sun_[first] / std::abs(sun_[axis]);
    const double shift2 = sun_[second] / std::abs(sun_[axis]);

    SunnyFace sunny = {{wholeFace}, {}};
    for (const std::uint32_t number : blocksTowardsSun(face)) {
        const Block& block = blocks_[number];
        // The part of the block in front of the plane: distances from it.
        const int one = face.side * (block.low[axis] - plane);
        const int other = face.side * (block.high[axis] - plane);
        const double near = std::max(std::min(one, other), 0);
        const double far = std::max(one, other);
        if (far <= 0.0)
            continue;
        const double low1 = block.low[first] - cube[first];
        const double high1 = block.high[first] - cube[first];
        const double low2 = block.low[second] - cube[second];
        const double high2 = block.high[second] - cube[second];
        const auto misses = [](double low, double high, double shiftNear, double shiftFar) {
            return high - std::min(shiftNear, shiftFar) <= 0.0 ||
                   low - std::max(shiftNear, shiftFar) >= 1.0;
        };
        if (misses(low1, high1, near * shift1, far * shift1) ||
            misses(low2, high2, near * shift2, far * shift2))
            continue;
        Polygon corners;
        for (const double ahead : {near, far}) {
            for (const double x : {low1, high1}) {
                for (const double y : {low2, high2})
                    corners.emplace_back(x - ahead * shift1, y - ahead * shift2);
            }
        }
        cast(hullOf(std::move(corners)), sunny);
        if (sunny.lit.empty())
            return {{}, {wholeFace}};
    }
    // Shadows fall in pieces: one shape is drawn faster.
    if (sunny.shaded.empty())
        return {{wholeFace}, {}};
    return sunny;
}

} // namespace drench::game
