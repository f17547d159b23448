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
void main() {
    gl_Position = toClip * vec4(position, 1.0);
    light = colour.rgb;
}
)";

constexpr char fragmentSource[] = R"(
in vec3 light;
out vec4 result;
void main() {
    result = vec4(hazed(light, 1.0 / gl_FragCoord.w), 1.0);
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
    array_.bind();
    glDrawElements(GL_TRIANGLES, count_, GL_UNSIGNED_INT, nullptr);
}

} // namespace drench::game
