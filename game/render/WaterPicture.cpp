#include "game/render/WaterPicture.h"

#include "game/render/Haze.h"

#include <glm/gtc/type_ptr.hpp>
#include <string>

namespace drench::game {

namespace {

constexpr char vertexSource[] = R"(
uniform mat4 toClip;
layout(location = 0) in vec3 place;
layout(location = 1) in vec2 shape;
layout(location = 2) in vec3 alongStrengthLook;
out vec2 at;
out vec2 alongStrength;
flat out int look;
void main() {
    gl_Position = toClip * vec4(place, 1.0);
    at = shape;
    alongStrength = alongStrengthLook.xy;
    look = int(alongStrengthLook.z + 0.5);
}
)";

constexpr char fragmentSource[] = R"(
in vec2 at;
in vec2 alongStrength;
flat in int look;
out vec4 result;

const vec3 deep = vec3(0.24, 0.58, 0.90);
const vec3 bright = vec3(0.70, 0.90, 1.0);
const vec3 sparkle = vec3(1.0, 1.0, 0.98);

vec4 stream(float across, float along) {
    float ripple = sin(along * 0.071) * sin(along * 0.193 + 3.0 * across) * 0.5 + 0.5;
    float inside = 1.0 - across * across;
    float glint = max(0.0, 1.0 - 3.0 * abs(across + 0.3)) * smoothstep(0.45, 0.8, ripple);
    vec3 colour = mix(deep, bright, inside * (0.45 + 0.55 * ripple));
    return vec4(mix(colour, sparkle, glint), min(1.0, 2.2 * inside) * (0.66 + 0.26 * ripple));
}

vec4 drop(vec2 at) {
    float inside = 1.0 - dot(at, at);
    vec2 off = at - vec2(-0.25, 0.35);
    float glint = smoothstep(0.22, 0.05, dot(off, off));
    return vec4(mix(mix(deep, bright, 0.35 + 0.65 * inside), sparkle, glint),
                clamp(2.5 * inside, 0.0, 0.88));
}

vec4 wet(vec2 at, float own) {
    float ragged = 0.13 * sin(5.0 * at.x + own) * sin(6.0 * at.y - 1.7 * own) + 0.05 * sin(9.0 * at.x + 4.0 * at.y + own);
    return vec4(0.04, 0.08, 0.14, 0.40 * smoothstep(1.0, 0.68, 1.2 * length(at) + ragged));
}

vec4 shadow(vec2 at) {
    float inside = max(0.0, 1.0 - dot(at, at));
    return vec4(0.04, 0.06, 0.12, min(1.0, 1.6 * inside));
}

// A drop on a pane shows the world upside down: bright below, dark above.
vec4 lens(vec2 at) {
    float r2 = dot(at, at);
    vec2 off = at - vec2(-0.3, 0.42);
    float glint = smoothstep(0.10, 0.02, dot(off, off));
    vec3 colour = mix(vec3(0.22, 0.42, 0.60), vec3(0.88, 0.96, 1.0), 0.5 - 0.5 * at.y);
    float rim = smoothstep(0.35, 1.0, r2);
    float alpha = (0.30 + 0.45 * rim) * smoothstep(1.0, 0.86, r2);
    return vec4(mix(colour, sparkle, glint), max(alpha, 0.95 * glint));
}

vec4 streak(vec2 at) {
    float across = 1.0 - at.x * at.x;
    return vec4(mix(vec3(0.45, 0.66, 0.84), sparkle, 0.5 + 0.5 * at.x),
                0.34 * across * (0.5 - 0.5 * at.y));
}

void main() {
    vec4 colour;
    if (look == 0) colour = stream(at.x, alongStrength.x);
    else if (look == 1) colour = drop(at);
    else if (look == 2) colour = wet(at, alongStrength.x);
    else if (look == 3) colour = shadow(at);
    else if (look == 4) colour = lens(at);
    else if (look == 5) colour = streak(at);
    else colour = vec4(0.78, 0.92, 1.0, 1.0);
    if (look < 4) colour.rgb = hazed(colour.rgb, 1.0 / gl_FragCoord.w);
    result = vec4(colour.rgb, colour.a * alongStrength.y);
}
)";

} // namespace

WaterPicture::WaterPicture()
    : program_("the water", vertexSource, (std::string(hazeSource) + fragmentSource).c_str()) {
    array_.bind();
    buffer_.bind(GL_ARRAY_BUFFER);
    setAttribute<WaterVertex>(0, 3, GL_FLOAT, GL_FALSE, offsetof(WaterVertex, place));
    setAttribute<WaterVertex>(1, 2, GL_FLOAT, GL_FALSE, offsetof(WaterVertex, shape));
    setAttribute<WaterVertex>(2, 3, GL_FLOAT, GL_FALSE, offsetof(WaterVertex, along));
}

int WaterPicture::drawWater(const Scene& scene, float aspect) {
    shapes_.clear();
    addWater(shapes_, scene);
    return draw(projectionMatrix(scene.camera, aspect) * viewMatrix(scene.camera));
}

int WaterPicture::drawSoaking(const Scene& scene, float aspect) {
    if (!scene.soaked)
        return 0;
    shapes_.clear();
    addSoaking(shapes_, *scene.soaked, aspect);
    glDisable(GL_DEPTH_TEST);
    const int calls = draw(glm::mat4(1.0f));
    glEnable(GL_DEPTH_TEST);
    return calls;
}

int WaterPicture::draw(const glm::mat4& toClip) {
    if (shapes_.empty())
        return 0;
    program_.use();
    glUniformMatrix4fv(program_.uniform("toClip"), 1, GL_FALSE, glm::value_ptr(toClip));
    array_.bind();
    buffer_.fill(GL_ARRAY_BUFFER, shapes_, GL_STREAM_DRAW);
    // Water has no back.
    glDisable(GL_CULL_FACE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDepthMask(GL_FALSE);
    glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(shapes_.size()));
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glEnable(GL_CULL_FACE);
    return 1;
}

} // namespace drench::game
