#include "game/render/SkyPicture.h"

#include "game/ArenaLight.h"
#include "game/render/Haze.h"

#include <cmath>
#include <glm/gtc/type_ptr.hpp>
#include <glm/matrix.hpp>
#include <string>

namespace drench::game {

namespace {

/// Cubes of cloud that pass by each second.
constexpr double cloudsPerSecond = 0.06;

constexpr char vertexSource[] = R"(
uniform mat4 toWorld;
out vec3 towards;
void main() {
    // One triangle that covers the picture, as far away as can be.
    vec2 corner = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
    gl_Position = vec4(corner, 1.0, 1.0);
    towards = (toWorld * vec4(corner, 1.0, 1.0)).xyz;
}
)";

// A gradient, the sun with its glow, and flat clouds of cubes that drift.
constexpr char fragmentSource[] = R"(
in vec3 towards;
out vec4 result;
uniform vec3 sun;
uniform float drift;

float chance(vec2 cell) {
    vec2 mixed = fract(cell * vec2(0.1031, 0.1130) + 0.37);
    mixed += dot(mixed, mixed.yx + 3.333);
    return fract((mixed.x + mixed.y) * mixed.x * 17.0);
}

void main() {
    vec3 direction = normalize(towards);
    float height = direction.y;
    vec3 colour = height < 0.0 ? mix(horizon, below, min(-4.0 * height, 1.0))
                               : mix(horizon, zenith, sqrt(height));
    float near = max(dot(direction, sun), 0.0);
    float near4 = near * near * near * near;
    float glow = near4 * near4 * near4;
    colour = mix(colour, vec3(1.0, 0.95, 0.82), 0.35 * glow + 0.65 * smoothstep(0.9985, 0.9988, near));
    if (height > 0.04) {
        vec2 place = direction.xz / height * 8.0 + vec2(drift, 0.3 * drift);
        float bank = chance(floor(place / 5.0)) * 0.62 + chance(floor(place)) * 0.38;
        float cloud = bank > 0.69 ? min((height - 0.04) * 6.0, 1.0) : 0.0;
        colour = mix(colour, vec3(0.99, 0.99, 1.0), 0.75 * cloud);
    }
    result = vec4(colour, 1.0);
}
)";

} // namespace

SkyPicture::SkyPicture()
    : program_("the sky", vertexSource, (std::string(hazeSource) + fragmentSource).c_str()) {}

void SkyPicture::draw(const Camera& camera, float aspect, double time) const {
    // Seen from the middle of the world, a point is a direction.
    Camera middle = camera;
    middle.eye = glm::vec3(0.0f);
    const glm::mat4 toWorld = glm::inverse(projectionMatrix(middle, aspect) * viewMatrix(middle));
    program_.use();
    glUniformMatrix4fv(program_.uniform("toWorld"), 1, GL_FALSE, glm::value_ptr(toWorld));
    const arena::Triple sun = arena::unit(towardsSun);
    glUniform3f(program_.uniform("sun"), static_cast<float>(sun[0]), static_cast<float>(sun[1]),
                static_cast<float>(sun[2]));
    // Far enough for an evening; beyond, floats would make the clouds jerk.
    glUniform1f(program_.uniform("drift"),
                static_cast<float>(std::fmod(time * cloudsPerSecond, 10000.0)));
    array_.bind();
    glDrawArrays(GL_TRIANGLES, 0, 3);
}

} // namespace drench::game
