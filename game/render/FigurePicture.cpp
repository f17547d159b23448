#include "game/render/FigurePicture.h"

#include "game/ArenaLight.h"
#include "game/Figures.h"
#include "game/GunInHands.h"
#include "game/render/Haze.h"

#include <glm/gtc/type_ptr.hpp>
#include <string>

namespace drench::game {

namespace {

constexpr char vertexSource[] = R"(
uniform mat4 toClip;
uniform vec3 towardsSun;
uniform vec3 sunLight;
uniform vec3 skyLight;
uniform float exposure;
uniform float mostShown;
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec4 colour;
flat out vec3 light;
// Warm light that comes up from the ground.
const vec3 groundLight = vec3(0.34, 0.30, 0.22);
void main() {
    gl_Position = toClip * vec4(position, 1.0);
    vec3 around = mix(groundLight, skyLight, 0.5 + 0.5 * normal.y);
    vec3 received = around + sunLight * (colour.a * max(dot(normal, towardsSun), 0.0));
    // Values are square roots of light.
    light = colour.rgb * sqrt(mostShown * (1.0 - exp(-exposure * received)));
}
)";

constexpr char fragmentSource[] = R"(
flat in vec3 light;
out vec4 result;
void main() {
    result = vec4(hazed(light, 1.0 / gl_FragCoord.w), 1.0);
}
)";

glm::vec3 onScreen(const arena::Triple& triple) {
    return {triple[0], triple[1], triple[2]};
}

} // namespace

FigurePicture::FigurePicture()
    : program_("the players", vertexSource, (std::string(hazeSource) + fragmentSource).c_str()) {
    program_.use();
    const auto set = [&](const char* name, const arena::Triple& value) {
        glUniform3fv(program_.uniform(name), 1, glm::value_ptr(onScreen(value)));
    };
    set("towardsSun", arena::unit(towardsSun));
    set("sunLight", sunLight);
    set("skyLight", skyLight);
    glUniform1f(program_.uniform("exposure"), static_cast<float>(exposure));
    glUniform1f(program_.uniform("mostShown"), static_cast<float>(mostShown));
    array_.bind();
    buffer_.bind(GL_ARRAY_BUFFER);
    setAttribute<SolidVertex>(0, 3, GL_FLOAT, GL_FALSE, offsetof(SolidVertex, position));
    setAttribute<SolidVertex>(1, 3, GL_FLOAT, GL_FALSE, offsetof(SolidVertex, normal));
    setAttribute<SolidVertex>(2, 4, GL_UNSIGNED_BYTE, GL_TRUE, offsetof(SolidVertex, colour));
    static_assert(offsetof(SolidVertex, sun) == offsetof(SolidVertex, colour) + 3);
}

int FigurePicture::drawFigures(const Scene& scene, float aspect) {
    solids_.vertices.clear();
    for (const FigurePose& figure : scene.figures)
        addFigure(solids_, figure);
    return draw(scene.camera, aspect);
}

int FigurePicture::drawGun(const Scene& scene, float aspect) {
    if (!scene.gun)
        return 0;
    solids_.vertices.clear();
    addGunInHands(solids_, *scene.gun, scene.camera);
    Camera camera = scene.camera;
    camera.fieldOfView = gunFieldOfView;
    return draw(camera, aspect);
}

int FigurePicture::draw(const Camera& camera, float aspect) {
    if (solids_.vertices.empty())
        return 0;
    program_.use();
    const glm::mat4 toClip = projectionMatrix(camera, aspect) * viewMatrix(camera);
    glUniformMatrix4fv(program_.uniform("toClip"), 1, GL_FALSE, glm::value_ptr(toClip));
    array_.bind();
    buffer_.fill(GL_ARRAY_BUFFER, solids_.vertices, GL_STREAM_DRAW);
    glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(solids_.vertices.size()));
    return 1;
}

} // namespace drench::game
