#pragma once

namespace drench::game {

/// GLSL: how colours fade with the distance, and the sky that they fade to. Lengths are world
/// units.
constexpr char hazeSource[] = R"(
const vec3 horizon = vec3(0.84, 0.92, 0.965);
const vec3 zenith = vec3(0.26, 0.53, 0.85);
const vec3 below = vec3(0.62, 0.68, 0.72);

// Colours of far things approach the horizon's; a fifth of the way at 2000 units.
vec3 hazed(vec3 colour, float ahead) {
    return mix(colour, horizon, min(ahead * ahead * 5e-8, 0.6));
}
)";

} // namespace drench::game
