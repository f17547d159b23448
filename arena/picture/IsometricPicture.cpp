#include "arena/picture/Marks.h"
#include "arena/picture/Picture.h"
#include "arena/picture/Sampling.h"
#include "arena/picture/Scene.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace drench::arena {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Towards the sun, for a viewer above the south-east corner; it turns with the viewer.
constexpr Triple sunForSouthEast = {0.16, 0.80, 0.58};

constexpr Colour paperAbove = {252, 251, 248};
constexpr Colour paperBelow = {236, 237, 236};

/// Share of the paper's light that is left in the arena's shadow.
constexpr double paperShadow = 0.72;

/// Margin around the arena, as a share of the picture's shorter side.
constexpr double margin = 0.03;

/// The rows of the far sides that are always shown.
constexpr int leastWall = 4;

// A spawn's ring and arrow lie on the ground. Lengths are in cells.

/// From the feet to the middle of the ring's line; a body's corner is 0.55 away.
constexpr double ringRadius = 0.72;

/// Width of the ring's line.
constexpr double ringWidth = 0.18;

/// From the feet to the arrow's tip.
constexpr double arrowTip = 2.5;

/// From the arrow's tip back to the base of its head.
constexpr double arrowHead = 0.85;

/// Width of the head at its base.
constexpr double arrowHeadWidth = 1.05;

/// Width of the shaft between ring and head.
constexpr double arrowShaftWidth = 0.28;

/// Width of the white line around ring and arrow, which parts them from red cubes.
constexpr double arrowOutline = 0.09;

/// Share of a body's colour that is seen through the cubes before it.
constexpr double hiddenBody = 0.45;

/// Share of an arrow's colour that is seen through the cubes before it.
constexpr double hiddenArrow = 0.40;

/// The viewer's position: 1 for high columns or depths, -1 for low ones.
struct Side {
    int column;
    int depth;
};

Side sideOf(Corner corner) {
    switch (corner) {
    case Corner::southWest:
        return {-1, 1};
    case Corner::northWest:
        return {-1, -1};
    case Corner::northEast:
        return {1, -1};
    case Corner::southEast:
        break;
    }
    return {1, 1};
}

Triple turnedTo(Side viewer, const Triple& forSouthEast) {
    const bool quarterTurn = viewer.column != viewer.depth;
    return {forSouthEast[quarterTurn ? 2 : 0] * viewer.column, forSouthEast[1],
            forSouthEast[quarterTurn ? 0 : 2] * viewer.depth};
}

/// Removes the sides next to the viewer above the floor, and the parts of the others that are
/// higher than anything between them. The sides of an arena too narrow for anything between stay.
void cutAway(Grid& grid, Side viewer) {
    const auto [columns, rows, depth] = grid.cells;
    const auto isSide = [](int index, int count) {
        return count > 2 && (index == 0 || index == count - 1);
    };
    int top = leastWall - 1;
    for (int i = 0; i < columns; ++i) {
        for (int k = 0; k < depth; ++k) {
            if (isSide(i, columns) || isSide(k, depth))
                continue;
            for (int j = top + 1; j < rows; ++j) {
                if (grid.isCube({i, j, k}))
                    top = j;
            }
        }
    }
    const int nearColumn = viewer.column > 0 ? columns - 1 : 0;
    const int nearDepth = viewer.depth > 0 ? depth - 1 : 0;
    for (int i = 0; i < columns; ++i) {
        for (int k = 0; k < depth; ++k) {
            const bool isNear =
                (isSide(i, columns) && i == nearColumn) || (isSide(k, depth) && k == nearDepth);
            if (!isNear && !isSide(i, columns) && !isSide(k, depth))
                continue;
            for (int j = isNear ? 1 : top + 1; j < rows; ++j)
                removeCube(grid, {i, j, k});
        }
    }
}

/// Whether a point of the ground, relative to the spawn, is on the spawn's ring or arrow, both
/// drawn larger by `outline`.
bool onArrow(const Mark& mark, double x, double z, double outline) {
    const double farthest = arrowTip + 2.0 * outline;
    if (x * x + z * z > farthest * farthest)
        return false;
    const double radius = std::sqrt(x * x + z * z);
    if (std::abs(radius - ringRadius) < 0.5 * ringWidth + outline)
        return true;
    const double ahead = x * mark.directionX + z * mark.directionZ;
    const double aside = std::abs(x * mark.directionZ - z * mark.directionX);
    const double base = arrowTip - arrowHead;
    const bool shaft =
        ahead > ringRadius && ahead < base && aside < 0.5 * arrowShaftWidth + outline;
    const double headShare = (arrowTip + 2.0 * outline - ahead) / (arrowHead + 3.0 * outline);
    const bool head =
        ahead > base - outline && aside < headShare * (0.5 * arrowHeadWidth + 1.5 * outline);
    return shaft || head;
}

std::uint64_t combined(std::uint64_t a, std::uint64_t b) {
    return (a ^ (b + 0x9e3779b97f4a7c15u)) * 0xff51afd7ed558ccdu;
}

/// A parallel projection.
struct Projection {
    Triple right{};
    Triple up{};
    Triple forward{};

    /// The point at the picture's middle, along `right` and `up`.
    double middleRight = 0.0;
    double middleUp = 0.0;

    ImagePoint middle;

    /// Pixels per cell.
    double scale = 1.0;

    /// The distance from the start of rays to the middle; no cube is nearer.
    double distance = 0.0;

    ImagePoint project(const Triple& point) const {
        return {middle.x + (dot(point, right) - middleRight) * scale,
                middle.y - (dot(point, up) - middleUp) * scale};
    }

    Ray rayThrough(ImagePoint point) const {
        const double alongRight = middleRight + (point.x - middle.x) / scale;
        const double alongUp = middleUp - (point.y - middle.y) / scale;
        const Triple onPlane = sum(scaled(right, alongRight), up, alongUp);
        return {sum(onPlane, forward, -distance), forward};
    }
};

/// From the head up to a pin's point, in cells.
constexpr double pinPoint = 0.1;

/// Room that is kept for a pin above the head, in cells.
constexpr double pinHeight = 2.2;

/// The isometric projection in which the floor, the cubes and the pins fill the picture.
Projection fitted(const Grid& grid, Side viewer, const std::vector<Mark>& marks,
                  const Image& image) {
    Projection view;
    view.forward = unit({-1.0 * viewer.column, -1.0, -1.0 * viewer.depth});
    view.right = unit(cross(view.forward, upwards));
    view.up = cross(view.right, view.forward);
    const auto [columns, rows, depth] = grid.cells;
    view.distance = 2.0 * (columns + rows + depth);

    double left = infinity;
    double right = -infinity;
    double bottom = infinity;
    double top = -infinity;
    const auto include = [&](const Triple& point) {
        left = std::min(left, dot(point, view.right));
        right = std::max(right, dot(point, view.right));
        bottom = std::min(bottom, dot(point, view.up));
        top = std::max(top, dot(point, view.up));
    };
    const auto includeBlock = [&](const Triple& from, const Triple& size) {
        for (int corner = 0; corner < 8; ++corner)
            include({from[0] + size[0] * (corner & 1), from[1] + size[1] * (corner >> 1 & 1),
                     from[2] + size[2] * (corner >> 2)});
    };
    includeBlock({}, {double(columns), 1.0, double(depth)});
    for (int i = 0; i < columns; ++i) {
        for (int j = 1; j < rows; ++j) {
            for (int k = 0; k < depth; ++k) {
                if (grid.isCube({i, j, k}))
                    includeBlock({double(i), double(j), double(k)}, {1.0, 1.0, 1.0});
            }
        }
    }
    for (const Mark& mark : marks) {
        const bool inside = mark.feet[0] >= 0.0 && mark.feet[0] <= columns && mark.feet[1] >= 0.0 &&
                            mark.feet[1] <= rows && mark.feet[2] >= 0.0 && mark.feet[2] <= depth;
        if (inside)
            include({mark.feet[0], mark.top + pinHeight, mark.feet[2]});
    }

    const double margins = 2.0 * margin * std::min(image.width, image.height);
    view.scale = std::min((image.width - margins) / (right - left),
                          (image.height - margins) / (top - bottom));
    view.middleRight = 0.5 * (left + right);
    view.middleUp = 0.5 * (bottom + top);
    view.middle = {0.5 * image.width, 0.5 * image.height};
    return view;
}

void drawPin(Image& image, const Projection& view, const Mark& mark) {
    const ImagePoint point = view.project({mark.feet[0], mark.top + pinPoint, mark.feet[2]});
    const double radius = std::max(0.55 * view.scale, 7.0);
    const ImagePoint centre = {point.x, point.y - 0.5 * view.scale - radius};
    strokeLine(image, point, centre, std::max(0.22 * view.scale, 3.0), white);
    strokeLine(image, point, centre, std::max(0.10 * view.scale, 1.0), signalColour);
    drawNumber(image, centre, radius, mark.number);
}

} // namespace

Image isometricPicture(const MapManager& map, std::span<const SpawnMark> spawns, Corner from,
                       int width, int height) {
    Image image(width, height);
    requireCells(map);
    const Side viewer = sideOf(from);
    Scene scene = sceneOf(map, turnedTo(viewer, sunForSouthEast));
    cutAway(scene.grid, viewer);
    for (const SpawnMark& spawn : spawns)
        addBody(scene, "", spawn.body);
    std::vector<Mark> marks = marksOf(spawns, map.cubeSize);
    const Projection view = fitted(scene.grid, viewer, marks, image);

    const Light ink = lightOf(signalColour);
    const Light paint = lightOf(white);
    drawSamples(image, [&](ImagePoint point, int sun) {
        const Ray ray = view.rayThrough(point);
        const std::optional<Hit> hit = trace(scene.grid, ray);
        Sample sample;
        if (hit) {
            const Shade shaded = shade(scene, ray, *hit, sun, 1.0 / view.scale);
            sample = {shaded.light, faceNumber(scene, *hit), shaded.inSun};
        } else {
            // The paper lies at the foot of the floor.
            const double share = point.y / image.height;
            const Triple below = sum(ray.start, ray.direction, ray.start[1] / -ray.direction[1]);
            sample.inSun = inSun(scene, below, sun);
            sample.light = mixed(lightOf(paperAbove), lightOf(paperBelow), share);
            sample.light = scaled(sample.light, sample.inSun ? 1.0 : paperShadow);
        }

        const double reach = hit ? hit->distance : infinity;
        for (const Body& body : scene.grid.bodies) {
            if (!hit || hit->body)
                break;
            const std::optional<Hit> behind = entry(body, ray);
            if (!behind || behind->distance < reach)
                continue;
            sample.light = mixed(sample.light, ink, hiddenBody);
            sample.surface = combined(sample.surface, faceNumber(scene, *behind));
            break;
        }
        for (const Mark& mark : marks) {
            const double distance = (mark.feet[1] - ray.start[1]) / ray.direction[1];
            const Triple ground = sum(ray.start, ray.direction, distance);
            const double x = ground[0] - mark.feet[0];
            const double z = ground[2] - mark.feet[2];
            if (!onArrow(mark, x, z, arrowOutline))
                continue;
            const bool outline = !onArrow(mark, x, z, 0.0);
            const bool hidden = distance > reach;
            if (!hidden)
                sample.light = outline ? paint : ink;
            else if (!outline)
                sample.light = mixed(sample.light, hit->body ? paint : ink, hiddenArrow);
            sample.surface = combined(sample.surface, 2 * hidden + outline);
            break;
        }
        return sample;
    });

    std::sort(marks.begin(), marks.end(), [&](const Mark& a, const Mark& b) {
        return dot(a.feet, view.forward) > dot(b.feet, view.forward);
    });
    for (const Mark& mark : marks)
        drawPin(image, view, mark);
    return image;
}

} // namespace drench::arena
