#include "game/render/SkyPicture.h"

#include "game/render/Haze.h"

#include <glm/gtc/type_ptr.hpp>
#include <glm/matrix.hpp>
#include <string>

namespace drench::game {

namespace {

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

constexpr char fragmentSource[] = R"(
in vec3 towards;
out vec4 result;
void main() {
    float height = normalize(towards).y;
    vec3 colour = height < 0.0 ? mix(horizon, below, min(-4.0 * height, 1.0))
                               : mix(horizon, zenith, sqrt(height));
    result = vec4(colour, 1.0);
}
)";

} // namespace

SkyPicture::SkyPicture()
    : program_("the sky", vertexSource, (std::string(hazeSource) + fragmentSource).c_str()) {}

void SkyPicture::draw(const Camera& camera, float aspect) const {
    // Seen from the middle of the world, a point is a direction.
    Camera middle = camera;
    middle.eye = glm::vec3(0.0f);
    const glm::mat4 toWorld = glm::inverse(projectionMatrix(middle, aspect) * viewMatrix(middle));
    program_.use();
    glUniformMatrix4fv(program_.uniform("toWorld"), 1, GL_FALSE, glm::value_ptr(toWorld));
    array_.bind();
    glDrawArrays(GL_TRIANGLES, 0, 3);
}

} // namespace drench::game
