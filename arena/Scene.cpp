#include "Scene.h"

#include "Files.h"
#include "Image.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace arena {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// How far light starts from a face, so that rounding does not put it inside the cube.
constexpr double lift = 1e-4;

/// Half the side of the sun as the tangent of an angle: larger than the true one, for soft shadows.
constexpr double sunRadius = 0.022;

constexpr Light sunLight = {0.85, 0.78, 0.65};
constexpr Light skyLight = {0.40, 0.44, 0.52};

/// The sky's part that faces see, by where they point.
constexpr double skyOnTop = 1.0;
constexpr double skyOnSide = 0.82;
constexpr double skyBelow = 0.5;

/// Light that is left in a corner of a face, by how many of the three cells there are cubes. Two
/// cubes beside the corner hide what the third is.
constexpr double cornerLight[] = {1.0, 0.68, 0.48, 0.34};

/// Lightness of a cube differs from its neighbours' by at most this share.
constexpr double tintRange = 0.09;

/// Half the width of the lines along a face's edges, and their strength.
constexpr double edgeWidth = 0.035;
constexpr double seamStrength = -0.13;
constexpr double rimStrength = 0.22;

int& along(CellIndex& cell, int axis) {
    return axis == 0 ? cell.column : axis == 1 ? cell.row : cell.depth;
}

CellIndex stepped(CellIndex cell, int axis, int step) {
    along(cell, axis) += step;
    return cell;
}

Triple asTriple(const CellIndex& cell) {
    return {double(cell.column), double(cell.row), double(cell.depth)};
}

Triple inCells(vec3 point, float cubeSize) {
    const double size = cubeSize;
    return {point.x / size, point.y / size, point.z / size};
}

Light filtered(const Light& light, const Light& filter) {
    return {light[0] * filter[0], light[1] * filter[1], light[2] * filter[2]};
}

/// Narrows the range of distances in which the ray is between low and high along an axis; says
/// whether any is left.
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

std::optional<Hit> nearestBody(const Scene& scene, const Ray& ray, const CellIndex& cell,
                               double exit) {
    std::optional<Hit> nearest;
    for (const Body& body : scene.bodies) {
        std::optional<Hit> hit = entry(body, ray);
        if (!hit || hit->distance > exit || (nearest && nearest->distance <= hit->distance))
            continue;
        nearest = hit;
        nearest->cell = cell;
    }
    return nearest;
}

/// Well mixed bits of a cell's place (the finalizer of MurmurHash3).
std::uint32_t hashOf(const CellIndex& cell) {
    std::uint32_t bits = static_cast<std::uint32_t>(cell.column) * 73856093u ^
                         static_cast<std::uint32_t>(cell.row) * 19349663u ^
                         static_cast<std::uint32_t>(cell.depth) * 83492791u;
    bits = (bits ^ bits >> 16) * 0x85ebca6bu;
    bits = (bits ^ bits >> 13) * 0xc2b2ae35u;
    return bits ^ bits >> 16;
}

/// A face's cell, the cell in front of it, and the two axes that it lies along.
struct Face {
    CellIndex cell;
    CellIndex front;
    int axes[2];
};

double lightInCorner(const Scene& scene, const Face& face, int side0, int side1) {
    const CellIndex beside = stepped(face.front, face.axes[0], side0);
    const bool first = scene.isCube(beside);
    const bool second = scene.isCube(stepped(face.front, face.axes[1], side1));
    if (first && second)
        return cornerLight[3];
    const bool third = scene.isCube(stepped(beside, face.axes[1], side1));
    return cornerLight[int(first) + int(second) + int(third)];
}

double lightInCorners(const Scene& scene, const Face& face, double u, double v) {
    const double low =
        (1.0 - u) * lightInCorner(scene, face, -1, -1) + u * lightInCorner(scene, face, 1, -1);
    const double high =
        (1.0 - u) * lightInCorner(scene, face, -1, 1) + u * lightInCorner(scene, face, 1, 1);
    return (1.0 - v) * low + v * high;
}

/// What the lines along a face's four edges add to its lightness: seams between cubes are dark,
/// rims light, and where another face rises there is no line.
double edgeLines(const Scene& scene, const Face& face, double u, double v, double pixel) {
    // Where a line is thinner than a pixel, it is drawn as wide as one, and fainter.
    const double width = std::max(edgeWidth, 0.5 * pixel);
    const double strength = edgeWidth / width;
    double sum = 0.0;
    for (int edge = 0; edge < 4; ++edge) {
        const int axis = face.axes[edge / 2];
        const int side = edge % 2 == 0 ? -1 : 1;
        const double position = edge / 2 == 0 ? u : v;
        const double distance = side < 0 ? position : 1.0 - position;
        const double cover = std::clamp(0.5 + (width - distance) / std::max(pixel, 1e-9), 0.0, 1.0);
        if (cover == 0.0 || scene.isCube(stepped(face.front, axis, side)))
            continue;
        const bool seam = scene.isCube(stepped(face.cell, axis, side));
        sum += cover * strength * (seam ? seamStrength : rimStrength);
    }
    return std::clamp(sum, seamStrength, rimStrength);
}

Light bodyLight(const Ray& ray, const Hit& hit) {
    const Body& body = *hit.body;
    const Light plain = lightOf(signalColour);
    if (hit.axis == 1)
        return plain;
    // To the right, as seen from outside, depth falls on the side of high columns and columns rise
    // on the side of high depths.
    const std::size_t across = hit.axis == 0 ? 2 : 0;
    const bool rises = (hit.axis == 2) == (hit.side > 0);
    const Triple point = sum(ray.start, ray.direction, hit.distance);
    const double width = body.max[across] - body.min[across];
    const double share = (point[across] - body.min[across]) / width;
    const double right = rises ? share : 1.0 - share;
    const int dots = std::max(textWidth(body.label) + 4, 9);
    const double dot = width / dots;
    const int column =
        static_cast<int>(std::floor(right * dots - 0.5 * (dots - textWidth(body.label))));
    const int row = static_cast<int>(std::floor((body.max[1] - point[1]) / dot)) - 4;
    return textHasDot(body.label, column, row) ? lightOf(white) : plain;
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

Light lightOf(Colour colour) {
    const auto square = [](std::uint8_t component) {
        return component / 255.0 * (component / 255.0);
    };
    return {square(colour.red), square(colour.green), square(colour.blue)};
}

Colour colourFrom(const Light& light) {
    const auto root = [](double amount) {
        return static_cast<std::uint8_t>(
            std::lround(255.0 * std::sqrt(std::clamp(amount, 0.0, 1.0))));
    };
    return {root(light[0]), root(light[1]), root(light[2])};
}

Light mixed(const Light& a, const Light& b, double share) {
    return sum(scaled(a, 1.0 - share), b, share);
}

void requireCells(const MapManager& map) {
    if (!map.hasCells())
        throw InputError("there is nothing to draw: the map has no cells");
}

Scene sceneOf(const MapManager& map, const Triple& towardsSun) {
    Scene scene;
    scene.map = &map;
    scene.cells = {map.columns, map.rows, map.depth};
    scene.contents.assign(scene.indexOf({map.columns, map.rows, map.depth}) + 1,
                          Scene::Content::outside);
    for (int i = 0; i < map.columns; ++i) {
        for (int j = 0; j < map.rows; ++j) {
            for (int k = 0; k < map.depth; ++k)
                scene.contents[scene.indexOf({i, j, k})] =
                    cell(map, i, j, k).solid != 0 ? Scene::Content::cube : Scene::Content::nothing;
        }
    }

    const Triple middle = unit(towardsSun);
    const Triple aside = unit(cross(middle, upwards));
    const Triple up = cross(aside, middle);
    const auto addSun = [&](double x, double y) {
        const Triple moved = sum(middle, aside, (2.0 * x - 1.0) * sunRadius);
        scene.suns.push_back(unit(sum(moved, up, (2.0 * y - 1.0) * sunRadius)));
    };
    // Steps of the golden ratio: a straight edge at any angle covers the parts one by one.
    constexpr double goldenStep = 0.61803398875;
    for (int part = 0; part < sunParts; ++part)
        addSun((part + 0.5) / sunParts, part * goldenStep - std::floor(part * goldenStep));
    for (int corner = 0; corner < 4; ++corner)
        addSun(corner & 1, corner >> 1);
    return scene;
}

void addBody(Scene& scene, const std::string& label, const Box& box) {
    const Body body = {label, inCells(box.min, scene.map->cubeSize),
                       inCells(box.max, scene.map->cubeSize)};
    const auto index = [&](double coordinate, std::size_t axis) {
        return static_cast<int>(
            std::clamp(std::floor(coordinate), -1.0, static_cast<double>(scene.cells[axis])));
    };
    for (int i = index(body.min[0], 0); i <= index(body.max[0], 0); ++i) {
        for (int j = index(body.min[1], 1); j <= index(body.max[1], 1); ++j) {
            for (int k = index(body.min[2], 2); k <= index(body.max[2], 2); ++k) {
                Scene::Content& content = scene.contents[scene.indexOf({i, j, k})];
                if (content == Scene::Content::nothing)
                    content = Scene::Content::bodies;
            }
        }
    }
    scene.bodies.push_back(body);
}

void removeCube(Scene& scene, const CellIndex& cell) {
    scene.contents[scene.indexOf(cell)] = Scene::Content::nothing;
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

std::optional<Hit> trace(const Scene& scene, const Ray& ray) {
    Hit hit;
    double exit = infinity;
    for (int axis = 0; axis < 3; ++axis) {
        if (!clipToSlab(ray, axis, 0.0, scene.cells[static_cast<std::size_t>(axis)], hit, exit))
            return {};
    }
    bool entered = hit.distance > 0.0;

    const std::size_t strides[3] = {scene.indexOf({1, 0, 0}) - scene.indexOf({0, 0, 0}),
                                    scene.indexOf({0, 1, 0}) - scene.indexOf({0, 0, 0}), 1};
    int steps[3];
    double deltas[3];
    double crossings[3];
    for (std::size_t a = 0; a < 3; ++a) {
        const double point = std::floor(ray.start[a] + ray.direction[a] * hit.distance);
        const double index = std::clamp(point, 0.0, scene.cells[a] - 1.0);
        along(hit.cell, static_cast<int>(a)) = static_cast<int>(index);
        steps[a] = ray.direction[a] > 0.0 ? 1 : -1;
        deltas[a] = infinity;
        crossings[a] = infinity;
        if (ray.direction[a] != 0.0) {
            deltas[a] = std::abs(1.0 / ray.direction[a]);
            const double border = index + (steps[a] > 0 ? 1.0 : 0.0);
            crossings[a] = (border - ray.start[a]) / ray.direction[a];
        }
    }

    std::size_t index = scene.indexOf(hit.cell);
    while (true) {
        const int axis = crossings[0] < crossings[1] ? (crossings[0] < crossings[2] ? 0 : 2)
                                                     : (crossings[1] < crossings[2] ? 1 : 2);
        switch (scene.contents[index]) {
        case Scene::Content::outside:
            return {};
        case Scene::Content::cube:
            if (entered)
                return hit;
            break;
        case Scene::Content::bodies:
            if (const std::optional<Hit> body = nearestBody(scene, ray, hit.cell, crossings[axis]))
                return body;
            break;
        case Scene::Content::nothing:
            break;
        }
        hit.distance = crossings[axis];
        hit.axis = axis;
        hit.side = -steps[axis];
        crossings[axis] += deltas[axis];
        along(hit.cell, axis) += steps[axis];
        index += static_cast<std::size_t>(steps[axis]) * strides[axis];
        entered = true;
    }
}

bool inSun(const Scene& scene, const Triple& point, int sun) {
    return !trace(scene, {point, scene.suns[static_cast<std::size_t>(sun)]});
}

std::uint64_t faceNumber(const Scene& scene, const Hit& hit) {
    const std::uint64_t place = hit.body
                                    ? static_cast<std::uint64_t>(hit.body - scene.bodies.data())
                                    : scene.indexOf(hit.cell) + (std::uint64_t{1} << 32);
    return place * 6 + static_cast<std::uint64_t>(hit.axis * 2 + (hit.side > 0));
}

Shade shade(const Scene& scene, const Ray& ray, const Hit& hit, int sun, double pixel) {
    const auto axis = static_cast<std::size_t>(hit.axis);
    Triple point = sum(ray.start, ray.direction, hit.distance);
    Light own;
    double corners = 1.0;
    if (hit.body) {
        own = bodyLight(ray, hit);
    } else {
        Face face = {hit.cell, stepped(hit.cell, hit.axis, hit.side), {}};
        face.axes[0] = hit.axis == 0 ? 1 : 0;
        face.axes[1] = hit.axis == 2 ? 1 : 2;
        // Rounding may put the point a little beyond the face, where another cube can lie.
        const Triple low = asTriple(hit.cell);
        for (std::size_t a = 0; a < 3; ++a)
            point[a] = std::clamp(point[a], low[a] + lift, low[a] + 1.0 - lift);
        point[axis] = low[axis] + (hit.side > 0 ? 1.0 : 0.0);

        const auto first = static_cast<std::size_t>(face.axes[0]);
        const auto second = static_cast<std::size_t>(face.axes[1]);
        const double u = point[first] - low[first];
        const double v = point[second] - low[second];
        corners = lightInCorners(scene, face, u, v);
        const double tint = (hashOf(hit.cell) % 1024 / 1023.0 - 0.5) * tintRange;
        const Box& cube = cell(*scene.map, hit.cell.column, hit.cell.row, hit.cell.depth);
        own = scaled(lightOf(colourOf(cube.cellValue)),
                     1.0 + tint + edgeLines(scene, face, u, v, pixel));
    }
    point[axis] += hit.side * lift;

    const Triple& towardsSun = scene.suns[static_cast<std::size_t>(sun)];
    const double slope = hit.side * towardsSun[axis];
    Shade result;
    result.inSun = slope > 0.0 && inSun(scene, point, sun);
    const double sky = hit.axis != 1 ? skyOnSide : hit.side > 0 ? skyOnTop : skyBelow;
    Light light = scaled(skyLight, sky * corners);
    // The sun reaches into corners too, but less light is thrown back and forth there.
    if (result.inSun)
        light = sum(light, sunLight, slope * (0.4 + 0.6 * corners));
    result.light = filtered(light, own);
    return result;
}

} // namespace arena
