#include "game/WaterShapes.h"

#include "common/Chance.h"
#include "game/ArenaFaces.h"
#include "game/Water.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>

namespace drench::game {

namespace {

using glm::vec2;
using glm::vec3;

/// World units: of a jet at the nozzle, how much wider it gets in each unit, and its widest.
constexpr float thinnest = 1.5f;
constexpr float widening = 0.0034f;
constexpr float thickest = 4.2f;

/// No thinner than this share of the distance to the eye, about a pixel and a half.
constexpr float leastAngle = 0.0021f;

/// The same of drops, and the share that drops right before the eye have at most.
constexpr float leastDropAngle = 0.0013f;
constexpr float largestDropAngle = 0.019f;

constexpr float segmentLength = 36.0f;
constexpr int fewestSegments = 8;
constexpr int mostSegments = 30;

/// World units per second at which the ripples of a jet move; slower than the water, or they would
/// only flicker.
constexpr float rippleSpeed = 1500.0f;

/// A jet wobbles by this share of the way from the nozzle, up to some units.
constexpr float wobbleGrowth = 0.007f;
constexpr float largestWobble = 4.0f;

/// Seconds after which the ripples begin anew, for single precision.
constexpr double rippleRound = 60.0;

/// World units off the face, so that patches are seen.
constexpr float patchLift = 0.4f;

/// Seconds of flight that a drop is drawn long, and its greatest length in radii.
constexpr float stretchTime = 0.012f;
constexpr float longestDrop = 3.5f;

void addQuad(WaterShapes& shapes, const WaterVertex (&corners)[4]) {
    for (const int corner : {0, 1, 2, 0, 2, 3})
        shapes.push_back(corners[corner]);
}

WaterVertex vertex(vec3 place, vec2 shape, float along, float strength, WaterLook look) {
    return {place, shape, along, strength, static_cast<float>(look)};
}

void addPatch(WaterShapes& shapes, const Patch& patch, WaterLook look) {
    if (patch.strength <= 0.0f || patch.radius <= 0.0f)
        return;
    const auto corner = [&](bool right, bool up) {
        const vec2 off(right ? patch.high.x : -patch.low.x, up ? patch.high.y : -patch.low.y);
        vec3 place = patch.place;
        place[patch.axis] += patchLift * static_cast<float>(patch.side);
        place[firstAlong(patch.axis)] += off.x;
        place[secondAlong(patch.axis)] += off.y;
        // Each place has ragged edges of its own.
        const float own = patch.place.x + 1.7f * patch.place.y + 2.3f * patch.place.z;
        return vertex(place, off / patch.radius, std::fmod(own, 64.0f), patch.strength, look);
    };
    addQuad(shapes,
            {corner(false, false), corner(true, false), corner(true, true), corner(false, true)});
}

void addJet(WaterShapes& shapes, const Jet& jet, const Scene& scene) {
    if (!(jet.front > jet.tail))
        return;
    const auto ripple = static_cast<float>(std::fmod(scene.time, rippleRound));
    const int segments =
        std::clamp(static_cast<int>(jet.length / segmentLength), fewestSegments, mostSegments);
    WaterVertex before[2];
    for (int i = 0; i <= segments; ++i) {
        const float share = jet.tail + (jet.front - jet.tail) * static_cast<float>(i) /
                                           static_cast<float>(segments);
        const float way = share * jet.length;
        vec3 place = pointOn(jet, share);
        const vec3 towards = scene.camera.eye - place;
        const float distance = glm::length(towards);
        vec3 side = glm::cross(directionOn(jet, share), towards);
        const float size = glm::length(side);
        side = size > 0.0f ? side / size : vec3(0.0f);
        // The end lies where the room has it, so the wobble ends there too.
        const float wobble =
            std::min(wobbleGrowth * way, largestWobble) * std::min(1.0f, 6.0f * (1.0f - share));
        place += side * wobble * std::sin(0.021f * way - 23.0f * ripple);
        place.y += wobble * std::sin(0.016f * way - 17.0f * ripple + 1.0f);
        const float radius =
            std::max(std::min(thinnest + widening * way, thickest), leastAngle * distance);
        // Water ends in drops where it meets nothing, and so does a tail.
        float strength = jet.intoSky ? std::min(1.0f, 2.2f * (1.0f - share)) : 1.0f;
        if (jet.tail > 0.0f)
            strength *= std::min(1.0f, 5.0f * (share - jet.tail));
        const float along = way - rippleSpeed * ripple;
        const WaterVertex now[2] = {
            vertex(place - radius * side, {-1.0f, 0.0f}, along, strength, WaterLook::stream),
            vertex(place + radius * side, {1.0f, 0.0f}, along, strength, WaterLook::stream)};
        if (i > 0)
            addQuad(shapes, {before[0], before[1], now[1], now[0]});
        std::ranges::copy(now, before);
    }
}

void addDrop(WaterShapes& shapes, const Drop& drop, const Camera& camera) {
    const vec3 towards = camera.eye - drop.place;
    const float distance = glm::length(towards);
    const vec3 seen = drop.velocity - towards * glm::dot(drop.velocity, towards) /
                                          std::max(distance * distance, 1.0f);
    const float speed = glm::length(seen);
    const vec3 ahead = speed > 1.0f ? seen / speed : vec3(0.0f, 1.0f, 0.0f);
    vec3 side = glm::cross(ahead, towards);
    const float size = glm::length(side);
    if (!(size > 0.0f))
        return;
    side /= size;
    const float radius = std::clamp(drop.size * std::min(1.0f, 0.4f + drop.left),
                                    leastDropAngle * distance, largestDropAngle * distance);
    const float length = std::min(radius + stretchTime * speed, longestDrop * radius);
    const float strength = std::min(1.0f, 3.0f * drop.left);
    const auto corner = [&](float x, float y) {
        return vertex(drop.place + x * radius * side + y * length * ahead, {x, y}, 0.0f, strength,
                      WaterLook::drop);
    };
    addQuad(shapes,
            {corner(-1.0f, -1.0f), corner(1.0f, -1.0f), corner(1.0f, 1.0f), corner(-1.0f, 1.0f)});
}

/// A rectangle on the screen, in heights of half the picture from its middle.
void addOnScreen(WaterShapes& shapes, vec2 low, vec2 high, float aspect, float strength,
                 WaterLook look) {
    const auto corner = [&](float x, float y) {
        const vec2 at = glm::mix(low, high, 0.5f * (vec2(x, y) + 1.0f));
        return vertex({at.x / aspect, at.y, 0.0f}, {x, y}, 0.0f, strength, look);
    };
    addQuad(shapes,
            {corner(-1.0f, -1.0f), corner(1.0f, -1.0f), corner(1.0f, 1.0f), corner(-1.0f, 1.0f)});
}

} // namespace

void addWater(WaterShapes& shapes, const Scene& scene) {
    for (const Patch& patch : scene.shadows)
        addPatch(shapes, patch, WaterLook::shadow);
    for (const Patch& patch : scene.splashes)
        addPatch(shapes, patch, WaterLook::wet);
    for (const Jet& jet : scene.jets)
        addJet(shapes, jet, scene);
    for (const Drop& drop : scene.drops)
        addDrop(shapes, drop, scene.camera);
}

void addSoaking(WaterShapes& shapes, const SoakedOverlay& soaked, float aspect) {
    constexpr int drops = 54;
    constexpr std::uint64_t seed = 7;
    constexpr float washTime = 0.3f;
    constexpr float longestStreak = 0.55f;

    const float end = std::clamp(soaked.left / 0.5f, 0.0f, 1.0f);
    const float wash = 0.75f * std::exp(-soaked.since / washTime);
    if (wash > 0.02f)
        addOnScreen(shapes, {-aspect, -1.0f}, {aspect, 1.0f}, aspect, wash, WaterLook::wash);
    Chance chance(seed);
    for (int i = 0; i < drops; ++i) {
        const auto draw = [&](double low, double high) {
            return static_cast<float>(chance.between(low, high));
        };
        const float x = draw(-1.0, 1.0) * aspect;
        const float top = draw(-0.5, 1.25);
        const float radius = draw(0.018, 0.062);
        const float begin = 1.2f * draw(0.0, 1.0) * draw(0.0, 1.0) * draw(0.0, 1.0);
        const float speed = draw(0.02, 0.2) + 4.0f * radius * draw(0.0, 1.0);
        const float beat = draw(1.0, 3.0);
        const float time = soaked.since - begin;
        if (time <= 0.0f)
            continue;
        // Drops on a pane run, stick and run on.
        const float way = speed * (time + 0.3f / beat * std::sin(2.4f * beat * time));
        const float y = top - way;
        const float strength = end * std::min(1.0f, 6.0f * time);
        addOnScreen(shapes, {x - 0.55f * radius, y},
                    {x + 0.55f * radius, y + std::min(way, longestStreak)}, aspect,
                    strength * std::max(0.0f, 1.0f - 0.25f * time), WaterLook::streak);
        addOnScreen(shapes, {x - radius, y - 1.25f * radius}, {x + radius, y + 1.25f * radius},
                    aspect, strength, WaterLook::lens);
    }
}

} // namespace drench::game
