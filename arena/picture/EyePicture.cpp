#include "arena/Map.h"
#include "arena/picture/Marks.h"
#include "arena/picture/Picture.h"
#include "arena/picture/Sampling.h"
#include "arena/picture/Scene.h"
#include "common/Files.h"
#include "src/Collisions.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace drench::arena {

namespace {

/// Half of the horizontal field of view of 90°, as a tangent.
constexpr double halfViewTangent = 1.0;

/// The sun in the players' world.
constexpr Triple sunOverArena = {0.30, 0.90, 0.40};

constexpr Colour zenith = {74, 142, 214};
constexpr Colour horizon = {214, 234, 246};
constexpr Colour abyss = {150, 162, 170};

Light skyTowards(const Triple& direction) {
    const double height = unit(direction)[1];
    return height < 0.0 ? mixed(lightOf(horizon), lightOf(abyss), std::min(-4.0 * height, 1.0))
                        : mixed(lightOf(horizon), lightOf(zenith), std::sqrt(height));
}

std::string asText(vec3 point) {
    std::ostringstream text;
    text << point;
    return text.str();
}

Triple asTriple(vec3 point) {
    return {double(point.x), double(point.y), double(point.z)};
}

bool isFinite(vec3 point) {
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

void requireFreeEye(const MapManager& map, vec3 at, vec3 look) {
    if (!isFinite(at) || !isFinite(look))
        throw InputError("the eye can only be at, and look at, points with finite coordinates");
    if (at.x == look.x && at.y == look.y && at.z == look.z)
        throw InputError("the eye looks nowhere: it is at the point that it looks at, " +
                         asText(at));
    if (map.outOfBounds(at))
        return;
    const int column = map.getColumn(at.x);
    const int row = map.getRow(at.y);
    const int depth = map.getDepth(at.z);
    const Box& cube = cell(map, column, row, depth);
    if (cube.solid != 0)
        throw InputError("the eye at " + asText(at) + " is in a cube of " +
                         materialName(cube.cellValue) + ", column " + std::to_string(column) +
                         ", row " + std::to_string(row) + ", depth " + std::to_string(depth));
}

void drawCrosshair(Image& image) {
    const ImagePoint middle = {0.5 * image.width, 0.5 * image.height};
    const double unitLength = std::max(1.0, std::min(image.width, image.height) / 360.0);
    for (const bool outline : {true, false}) {
        const double thickness = (outline ? 3.4 : 1.6) * unitLength;
        for (int arm = 0; arm < 4; ++arm) {
            const double x = arm < 2 ? (arm == 0 ? -1.0 : 1.0) : 0.0;
            const double y = arm < 2 ? 0.0 : (arm == 2 ? -1.0 : 1.0);
            const double inner = 3.5 * unitLength;
            const double outer = 8.5 * unitLength;
            strokeLine(image, {middle.x + x * inner, middle.y + y * inner},
                       {middle.x + x * outer, middle.y + y * outer}, thickness,
                       outline ? Colour{20, 24, 30} : white, outline ? 0.55 : 1.0);
        }
    }
}

} // namespace

Image eyePicture(const MapManager& map, std::span<const SpawnMark> spawns, vec3 at, vec3 look,
                 int width, int height) {
    Image image(width, height);
    requireCells(map);
    requireFreeEye(map, at, look);
    Scene scene = sceneOf(map, sunOverArena);
    const Box viewer(at, Player::bodySize);
    for (const SpawnMark& spawn : spawns) {
        if (!intersects(spawn.body, viewer))
            addBody(scene, std::to_string(spawn.number), spawn.body);
    }

    const Triple eye = scaled(asTriple(at), 1.0 / double(map.cubeSize));
    const Triple forward = unit(sum(asTriple(look), asTriple(at), -1.0));
    const bool upright = forward[0] == 0.0 && forward[2] == 0.0;
    const Triple right = upright ? Triple{1.0, 0.0, 0.0} : unit(cross(forward, upwards));
    const Triple up = cross(right, forward);
    const double pixel = 2.0 * halfViewTangent / image.width;
    drawSamples(image, [&](ImagePoint point, int sun) {
        const double alongRight = (point.x - 0.5 * image.width) * pixel;
        const double alongUp = (0.5 * image.height - point.y) * pixel;
        const Ray ray = {eye, sum(sum(forward, right, alongRight), up, alongUp)};
        const std::optional<Hit> hit = trace(scene.grid, ray);
        if (!hit)
            return Sample{skyTowards(ray.direction)};
        const Shade shaded = shade(scene, ray, *hit, sun, hit->distance * pixel);
        return Sample{shaded.light, faceNumber(scene, *hit), shaded.inSun};
    });
    drawCrosshair(image);
    return image;
}

} // namespace drench::arena
