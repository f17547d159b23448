#include "game/render/ArenaPicture.h"

#include "arena/Map.h"
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
out vec2 cells;
void main() {
    gl_Position = toClip * vec4(position, 1.0);
    light = colour.rgb;
    float axis = floor(colour.a * 127.5 + 0.25);
    cells = (axis < 0.5 ? position.yz : axis < 1.5 ? position.zx : position.xy) / 64.0;
}
)";

// A thin line along the edges of each cube gives walls of one colour their depth. Lines thinner
// than a pixel are drawn one pixel wide, and fainter.
constexpr char fragmentSource[] = R"(
in vec3 light;
in vec2 cells;
out vec4 result;
uniform float cellsPerPixel;
void main() {
    const float halfLine = 0.016;
    float ahead = 1.0 / gl_FragCoord.w;
    vec2 fromMiddle = abs(fract(cells) - 0.5);
    float inwards = 0.5 - max(fromMiddle.x, fromMiddle.y);
    float pixel = ahead * cellsPerPixel;
    float width = max(halfLine, 0.5 * pixel);
    float line = clamp(0.5 + (width - inwards) / pixel, 0.0, 1.0) * (halfLine / width);
    result = vec4(hazed(light * (1.0 - 0.1 * line), ahead), 1.0);
}
)";

} // namespace

ArenaPicture::ArenaPicture(const ArenaMesh& mesh)
    : chunks_(mesh),
      program_("the arena", vertexSource, (std::string(hazeSource) + fragmentSource).c_str()) {
    array_.bind();
    vertices_.fill(GL_ARRAY_BUFFER, mesh.vertices, GL_STATIC_DRAW);
    indices_.fill(GL_ELEMENT_ARRAY_BUFFER, chunks_.indices(), GL_STATIC_DRAW);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(MeshVertex), nullptr);
    glVertexAttribPointer(1, 4, GL_UNSIGNED_BYTE, GL_TRUE, sizeof(MeshVertex),
                          reinterpret_cast<const void*>(offsetof(MeshVertex, colour)));
    glEnableVertexAttribArray(0);
    glEnableVertexAttribArray(1);
}

void ArenaPicture::draw(const Camera& camera, float aspect, int height) const {
    program_.use();
    const glm::mat4 toClip = projectionMatrix(camera, aspect) * viewMatrix(camera);
    glUniformMatrix4fv(program_.uniform("toClip"), 1, GL_FALSE, glm::value_ptr(toClip));
    glUniform1f(program_.uniform("cellsPerPixel"), pixelSize(camera, height) / arena::cubeEdge);
    array_.bind();
    std::vector<Chunks::Run> runs;
    chunks_.visible(toClip, camera.eye, runs);
    std::vector<GLsizei> counts;
    std::vector<const void*> firsts;
    for (const Chunks::Run& run : runs) {
        counts.push_back(static_cast<GLsizei>(run.count));
        firsts.push_back(reinterpret_cast<const void*>(run.first * sizeof(std::uint32_t)));
    }
    glMultiDrawElements(GL_TRIANGLES, counts.data(), GL_UNSIGNED_INT, firsts.data(),
                        static_cast<GLsizei>(counts.size()));
}

} // namespace drench::game
