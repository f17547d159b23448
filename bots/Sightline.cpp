#include "bots/Sightline.h"

#include <cstddef>

namespace drench::bots {

namespace {

constexpr float across[] = {0.0f, -20.0f, 20.0f};
constexpr float upward[] = {0.0f, -60.0f, 60.0f};

} // namespace

Sightline sightline(const arena::Grid& grid, vec3 eye, vec3 point) {
    const auto hit = trace(grid, arena::rayAlong(eye, point - eye));
    if (!hit)
        return Sightline::beforeSky;
    return hit->distance < 1.0 ? Sightline::hidden : Sightline::beforeCube;
}

std::array<vec3, 9> bodyParts(vec3 eye, vec3 body) {
    vec3 sideways(body.z - eye.z, 0.0f, eye.x - body.x);
    sideways.normalize();
    std::array<vec3, 9> parts;
    std::size_t count = 0;
    for (const float height : upward) {
        for (const float side : across)
            parts[count++] = sideways * side + vec3(0.0f, height, 0.0f);
    }
    return parts;
}

} // namespace drench::bots
