#include "game/render/ArenaPicture.h"

#include "game/render/Haze.h"

#include <cstddef>
#include <glm/gtc/type_ptr.hpp>
#include <string>

namespace drench::game {

namespace {

constexpr char vertexSource[] = R"(
uniform mat4 toClip;
layout(location = 0) in vec3 position;
layout(location = 1) in vec4 colour;
out vec3 light;
out vec3 grid;
const vec3 halves[6] = vec3[6](vec3(0.5, 0.0, 0.0), vec3(-0.5, 0.0, 0.0), vec3(0.0, 0.5, 0.0),
                               vec3(0.0, -0.5, 0.0), vec3(0.0, 0.0, 0.5), vec3(0.0, 0.0, -0.5));
void main() {
    gl_Position = toClip * vec4(position, 1.0);
    light = colour.rgb;
    grid = position / 64.0 + halves[int(colour.a * 255.0 + 0.5)];
}
)";

constexpr char fragmentSource[] = R"(
in vec3 light;
in vec3 grid;
out vec4 result;
uniform float pixel;
void main() {
    float ahead = 1.0 / gl_FragCoord.w;
    vec3 off = abs(fract(grid) - 0.5);
    float inwards = 0.5 - max(max(off.x, off.y), off.z);
    float wide = ahead * pixel;
    float width = max(0.016, 0.5 * wide);
    float line = clamp(0.5 + (width - inwards) / wide, 0.0, 1.0) * (0.016 / width);
    vec3 cube = floor(grid);
    float tint = fract(dot(cube, vec3(0.6180339, 0.7548777, 0.5698403)) * 7.31);
    result = vec4(hazed(light * (0.97 + 0.06 * tint - 0.10 * line), ahead), 1.0);
}
)";

} // namespace

ArenaPicture::ArenaPicture(const ArenaMesh& mesh)
    : program_("the arena", vertexSource, (std::string(hazeSource) + fragmentSource).c_str()),
      count_(static_cast<GLsizei>(mesh.indices.size())) {
    array_.bind();
    vertices_.fill(GL_ARRAY_BUFFER, mesh.vertices, GL_STATIC_DRAW);
    indices_.fill(GL_ELEMENT_ARRAY_BUFFER, mesh.indices, GL_STATIC_DRAW);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(MeshVertex), nullptr);
    glVertexAttribPointer(1, 4, GL_UNSIGNED_BYTE, GL_TRUE, sizeof(MeshVertex),
                          reinterpret_cast<const void*>(offsetof(MeshVertex, colour)));
    glEnableVertexAttribArray(0);
    glEnableVertexAttribArray(1);
}

void ArenaPicture::draw(const Camera& camera, float aspect) const {
    program_.use();
    const glm::mat4 toClip = projectionMatrix(camera, aspect) * viewMatrix(camera);
    glUniformMatrix4fv(program_.uniform("toClip"), 1, GL_FALSE, glm::value_ptr(toClip));
    glUniform1f(program_.uniform("pixel"), 1.0f / 640.0f / 64.0f);
    array_.bind();
    glDrawElements(GL_TRIANGLES, count_, GL_UNSIGNED_INT, nullptr);
}

} // namespace drench::game
