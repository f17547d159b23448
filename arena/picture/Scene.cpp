#include "arena/picture/Scene.h"

#include "arena/picture/Image.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace drench::arena {

namespace {

/// The distance from a face at which light starts, so that rounding does not put it inside the
/// cube.
constexpr double lift = 1e-4;

/// Half the side of the sun as the tangent of an angle: larger than the true one, for soft shadows.
constexpr double sunRadius = 0.022;

/// Warm light of the whole sun.
constexpr Light sunLight = {0.85, 0.78, 0.65};

/// Cool light of the whole sky, so that shadows are bluish.
constexpr Light skyLight = {0.40, 0.44, 0.52};

/// Share of the sky's light on faces that look up.
constexpr double skyOnTop = 1.0;

/// The same on sides, which see half of the sky and the lit ground.
constexpr double skyOnSide = 0.82;

/// The same on faces that look down, which see the ground only.
constexpr double skyBelow = 0.5;

/// Light that is left in a corner of a face, by the number of cubes among the three cells there. If
/// both cells beside the corner are cubes, they hide the third.
constexpr double cornerLight[] = {1.0, 0.68, 0.48, 0.34};

/// Lightness of a cube differs from its neighbours' by at most this share.
constexpr double tintRange = 0.09;

/// Half the width, in cells, of the lines along a face's edges.
constexpr double edgeWidth = 0.035;

/// Share by which a line between two cubes of one plane changes their lightness.
constexpr double seamStrength = -0.13;

/// Share by which a line along an edge with nothing behind it changes their lightness.
constexpr double rimStrength = 0.22;

CellIndex stepped(CellIndex cell, int axis, int step) {
    indexAlong(cell, axis) += step;
    return cell;
}

Triple asTriple(const CellIndex& cell) {
    return {double(cell.column), double(cell.row), double(cell.depth)};
}

Light filtered(const Light& light, const Light& filter) {
    return {light[0] * filter[0], light[1] * filter[1], light[2] * filter[2]};
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
    const bool first = scene.grid.isCube(beside);
    const bool second = scene.grid.isCube(stepped(face.front, face.axes[1], side1));
    if (first && second)
        return cornerLight[3];
    const bool third = scene.grid.isCube(stepped(beside, face.axes[1], side1));
    return cornerLight[int(first) + int(second) + int(third)];
}

double lightInCorners(const Scene& scene, const Face& face, double u, double v) {
    const double low =
        (1.0 - u) * lightInCorner(scene, face, -1, -1) + u * lightInCorner(scene, face, 1, -1);
    const double high =
        (1.0 - u) * lightInCorner(scene, face, -1, 1) + u * lightInCorner(scene, face, 1, 1);
    return (1.0 - v) * low + v * high;
}

/// The change of lightness by the lines along a face's four edges: seams between cubes are dark,
/// rims light, and an edge from which another face rises has no line.
double edgeLines(const Scene& scene, const Face& face, double u, double v, double pixel) {
    // A line thinner than a pixel is drawn one pixel wide, and fainter.
    const double width = std::max(edgeWidth, 0.5 * pixel);
    const double strength = edgeWidth / width;
    double sum = 0.0;
    for (int edge = 0; edge < 4; ++edge) {
        const int axis = face.axes[edge / 2];
        const int side = edge % 2 == 0 ? -1 : 1;
        const double position = edge / 2 == 0 ? u : v;
        const double distance = side < 0 ? position : 1.0 - position;
        const double cover = std::clamp(0.5 + (width - distance) / std::max(pixel, 1e-9), 0.0, 1.0);
        if (cover == 0.0 || scene.grid.isCube(stepped(face.front, axis, side)))
            continue;
        const bool seam = scene.grid.isCube(stepped(face.cell, axis, side));
        sum += cover * strength * (seam ? seamStrength : rimStrength);
    }
    return std::clamp(sum, seamStrength, rimStrength);
}

Light bodyLight(const Scene& scene, const Ray& ray, const Hit& hit) {
    const Body& body = *hit.body;
    const std::string& label =
        scene.labels[static_cast<std::size_t>(hit.body - scene.grid.bodies.data())];
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
    const int dots = std::max(textWidth(label) + 4, 9);
    const double dot = width / dots;
    const int column = static_cast<int>(std::floor(right * dots - 0.5 * (dots - textWidth(label))));
    const int row = static_cast<int>(std::floor((body.max[1] - point[1]) / dot)) - 4;
    return textHasDot(label, column, row) ? lightOf(white) : plain;
}

} // namespace

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

Scene sceneOf(const MapManager& map, const Triple& towardsSun) {
    Scene scene;
    scene.grid = gridOf(map);
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
    addBody(scene.grid, box);
    scene.labels.push_back(label);
}

bool inSun(const Scene& scene, const Triple& point, int sun) {
    return !trace(scene.grid, {point, scene.suns[static_cast<std::size_t>(sun)]});
}

std::uint64_t faceNumber(const Scene& scene, const Hit& hit) {
    const std::uint64_t place =
        hit.body ? static_cast<std::uint64_t>(hit.body - scene.grid.bodies.data())
                 : scene.grid.indexOf(hit.cell) + (std::uint64_t{1} << 32);
    return place * 6 + static_cast<std::uint64_t>(hit.axis * 2 + (hit.side > 0));
}

Shade shade(const Scene& scene, const Ray& ray, const Hit& hit, int sun, double pixel) {
    const auto axis = static_cast<std::size_t>(hit.axis);
    Triple point = sum(ray.start, ray.direction, hit.distance);
    Light own;
    double corners = 1.0;
    if (hit.body) {
        own = bodyLight(scene, ray, hit);
    } else {
        Face face = {hit.cell, stepped(hit.cell, hit.axis, hit.side), {}};
        face.axes[0] = hit.axis == 0 ? 1 : 0;
        face.axes[1] = hit.axis == 2 ? 1 : 2;
        // Rounding may put the point a little beyond the face, into another cube.
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
        const Box& cube = cell(*scene.grid.map, hit.cell.column, hit.cell.row, hit.cell.depth);
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

} // namespace drench::arena
