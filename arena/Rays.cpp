#include "arena/Rays.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace drench::arena {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Narrows the range of distances to the part where the ray is between low and high along an axis;
/// returns whether any is left.
bool clipToSlab(const Ray& ray, int axis, double low, double high, Hit& hit, double& exit) {
    const auto a = static_cast<std::size_t>(axis);
    if (ray.direction[a] == 0.0)
        return ray.start[a] >= low && ray.start[a] < high;
    const bool forward = ray.direction[a] > 0.0;
    const double first = ((forward ? low : high) - ray.start[a]) / ray.direction[a];
    const double last = ((forward ? high : low) - ray.start[a]) / ray.direction[a];
    if (first > hit.distance) {
        hit.distance = first;
        hit.axis = axis;
        hit.side = forward ? -1 : 1;
    }
    exit = std::min(exit, last);
    return hit.distance < exit;
}

std::optional<Hit> nearestBody(const Grid& grid, const Ray& ray, const CellIndex& cell,
                               double exit) {
    std::optional<Hit> nearest;
    for (const Body& body : grid.bodies) {
        std::optional<Hit> hit = entry(body, ray);
        if (!hit || hit->distance > exit || (nearest && nearest->distance <= hit->distance))
            continue;
        nearest = hit;
        nearest->cell = cell;
    }
    return nearest;
}

} // namespace

double dot(const Triple& a, const Triple& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Triple sum(const Triple& a, const Triple& b, double scale) {
    return {a[0] + b[0] * scale, a[1] + b[1] * scale, a[2] + b[2] * scale};
}

Triple scaled(const Triple& a, double scale) {
    return {a[0] * scale, a[1] * scale, a[2] * scale};
}

Triple cross(const Triple& a, const Triple& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Triple unit(const Triple& a) {
    return scaled(a, 1.0 / std::sqrt(dot(a, a)));
}

Triple inCells(vec3 v) {
    return {v.x / cubeEdge, v.y / cubeEdge, v.z / cubeEdge};
}

int& indexAlong(CellIndex& cell, int axis) {
    return axis == 0 ? cell.column : axis == 1 ? cell.row : cell.depth;
}

Grid gridOf(const MapManager& map) {
    Grid grid;
    grid.map = &map;
    grid.cells = {map.columns, map.rows, map.depth};
    grid.contents.assign(grid.indexOf({map.columns, map.rows, map.depth}) + 1,
                         Grid::Content::outside);
    for (int i = 0; i < map.columns; ++i) {
        for (int j = 0; j < map.rows; ++j) {
            for (int k = 0; k < map.depth; ++k)
                grid.contents[grid.indexOf({i, j, k})] =
                    cell(map, i, j, k).solid != 0 ? Grid::Content::cube : Grid::Content::nothing;
        }
    }
    return grid;
}

void addBody(Grid& grid, const Box& box) {
    const Body body = {inCells(box.min), inCells(box.max)};
    const auto index = [&](double coordinate, std::size_t axis) {
        return static_cast<int>(
            std::clamp(std::floor(coordinate), -1.0, static_cast<double>(grid.cells[axis])));
    };
    for (int i = index(body.min[0], 0); i <= index(body.max[0], 0); ++i) {
        for (int j = index(body.min[1], 1); j <= index(body.max[1], 1); ++j) {
            for (int k = index(body.min[2], 2); k <= index(body.max[2], 2); ++k) {
                Grid::Content& content = grid.contents[grid.indexOf({i, j, k})];
                if (content == Grid::Content::nothing)
                    content = Grid::Content::bodies;
            }
        }
    }
    grid.bodies.push_back(body);
}

void removeCube(Grid& grid, const CellIndex& cell) {
    grid.contents[grid.indexOf(cell)] = Grid::Content::nothing;
}

std::optional<Hit> entry(const Body& body, const Ray& ray) {
    Hit hit;
    double exit = infinity;
    for (int axis = 0; axis < 3; ++axis) {
        const auto a = static_cast<std::size_t>(axis);
        if (!clipToSlab(ray, axis, body.min[a], body.max[a], hit, exit))
            return {};
    }
    if (hit.distance == 0.0)
        return {};
    hit.body = &body;
    return hit;
}

Ray rayAlong(vec3 from, vec3 way) {
    return {inCells(from), inCells(way)};
}

std::optional<Hit> trace(const Grid& grid, const Ray& ray) {
    Hit hit;
    double exit = infinity;
    for (int axis = 0; axis < 3; ++axis) {
        if (!clipToSlab(ray, axis, 0.0, grid.cells[static_cast<std::size_t>(axis)], hit, exit))
            return {};
    }
    bool entered = hit.distance > 0.0;

    const std::size_t strides[3] = {grid.indexOf({1, 0, 0}) - grid.indexOf({0, 0, 0}),
                                    grid.indexOf({0, 1, 0}) - grid.indexOf({0, 0, 0}), 1};
    int steps[3];
    double deltas[3];
    double crossings[3];
    for (std::size_t a = 0; a < 3; ++a) {
        const double point = std::floor(ray.start[a] + ray.direction[a] * hit.distance);
        const double index = std::clamp(point, 0.0, grid.cells[a] - 1.0);
        indexAlong(hit.cell, static_cast<int>(a)) = static_cast<int>(index);
        steps[a] = ray.direction[a] > 0.0 ? 1 : -1;
        deltas[a] = infinity;
        crossings[a] = infinity;
        if (ray.direction[a] != 0.0) {
            deltas[a] = std::abs(1.0 / ray.direction[a]);
            const double border = index + (steps[a] > 0 ? 1.0 : 0.0);
            crossings[a] = (border - ray.start[a]) / ray.direction[a];
        }
    }

    std::size_t index = grid.indexOf(hit.cell);
    while (true) {
        const int axis = crossings[0] < crossings[1] ? (crossings[0] < crossings[2] ? 0 : 2)
                                                     : (crossings[1] < crossings[2] ? 1 : 2);
        switch (grid.contents[index]) {
        case Grid::Content::outside:
            return {};
        case Grid::Content::cube:
            if (entered)
                return hit;
            break;
        case Grid::Content::bodies:
            if (const std::optional<Hit> body = nearestBody(grid, ray, hit.cell, crossings[axis]))
                return body;
            break;
        case Grid::Content::nothing:
            break;
        }
        hit.distance = crossings[axis];
        hit.axis = axis;
        hit.side = -steps[axis];
        crossings[axis] += deltas[axis];
        indexAlong(hit.cell, axis) += steps[axis];
        index += static_cast<std::size_t>(steps[axis]) * strides[axis];
        entered = true;
    }
}

} // namespace drench::arena
