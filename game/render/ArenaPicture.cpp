#include "game/render/ArenaPicture.h"

#include "arena/Map.h"
#include "game/MaterialTextures.h"
#include "game/render/Haze.h"

#include <cstddef>
#include <glm/gtc/type_ptr.hpp>
#include <string>

namespace drench::game {

namespace {

// With TEXTURED, the picture has textures.
constexpr char vertexSource[] = R"(
uniform mat4 toClip;
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 colour;
layout(location = 2) in vec2 place;
layout(location = 3) in vec4 edges;
#ifdef TEXTURED
layout(location = 4) in float material;
layout(location = 5) in float facing;
uniform float textureSize;
out vec3 texel;
#endif
out vec3 light;
out vec2 onFace;
flat out vec4 edgeLight;
void main() {
    gl_Position = toClip * vec4(position, 1.0);
    light = colour;
    onFace = place;
    // Both low edges, then both high ones.
    edgeLight = (max(edges, 0.0) * 0.11 + min(edges, 0.0) * 0.09).xzyw;
#ifdef TEXTURED
    // Upright on walls.
    int axis = int(facing + 0.5) / 2;
    vec2 onPlane = axis == 0 ? position.zy : axis == 1 ? position.xz : position.xy;
    texel = vec3(onPlane / textureSize, material);
#endif
}
)";

// Thin lines along the edges of each cube give walls of one colour their depth. Lines thinner than
// a pixel are drawn one pixel wide, and fainter.
constexpr char fragmentSource[] = R"(
in vec3 light;
in vec2 onFace;
flat in vec4 edgeLight;
#ifdef TEXTURED
in vec3 texel;
uniform sampler2DArray materials;
#endif
out vec4 result;
void main() {
    const float halfLine = 0.018;
    vec2 pixel = fwidth(onFace) + 1e-5;
    vec2 width = max(vec2(halfLine), 0.5 * pixel);
    vec2 faint = halfLine / width;
    vec4 inwards = vec4(onFace, 1.0 - onFace);
    vec4 lines = clamp(0.5 + (width.xyxy - inwards) / pixel.xyxy, 0.0, 1.0);
    float change = dot(lines * faint.xyxy, edgeLight);
    vec3 colour = light * (1.0 + change);
#ifdef TEXTURED
    colour *= texture(materials, texel).rgb * TEXTURED;
#endif
    result = vec4(hazed(colour, 1.0 / gl_FragCoord.w), 1.0);
}
)";

Program programWith(const std::string& definitions) {
    return {"the arena", (definitions + vertexSource).c_str(),
            (definitions + hazeSource + fragmentSource).c_str()};
}

} // namespace

ArenaPicture::ArenaPicture(const ArenaMesh& mesh) : plain_(programWith("")) {
    fill(mesh);
}

void ArenaPicture::fill(const ArenaMesh& mesh) {
    chunks_ = ArenaChunks(mesh);
    array_.bind();
    vertices_.fill(GL_ARRAY_BUFFER, mesh.vertices, GL_STATIC_DRAW);
    indices_.fill(GL_ELEMENT_ARRAY_BUFFER, chunks_.indices(), GL_STATIC_DRAW);
    setAttribute<MeshVertex>(0, 3, GL_FLOAT, GL_FALSE, offsetof(MeshVertex, position));
    setAttribute<MeshVertex>(1, 3, GL_UNSIGNED_BYTE, GL_TRUE, offsetof(MeshVertex, colour));
    setAttribute<MeshVertex>(2, 2, GL_FLOAT, GL_FALSE, offsetof(MeshVertex, across));
    setAttribute<MeshVertex>(3, 4, GL_BYTE, GL_FALSE, offsetof(MeshVertex, edges));
    setAttribute<MeshVertex>(4, 1, GL_UNSIGNED_BYTE, GL_FALSE, offsetof(MeshVertex, texture));
    setAttribute<MeshVertex>(5, 1, GL_UNSIGNED_BYTE, GL_FALSE, offsetof(MeshVertex, facing));
}

const Program& ArenaPicture::programFor(const Look& look) {
    if (!look.full) {
        plain_.use();
        return plain_;
    }
    if (!textured_) {
        // The factor that makes an unchanged texel 1.
        const std::string factor = "(255.0 / " + std::to_string(unchanged) + ".0)";
        textured_.emplace(Textured{programWith("#define TEXTURED " + factor + "\n"),
                                   MaterialArray(!look.inSoftware)});
        textured_->program.use();
        glUniform1f(textured_->program.uniform("textureSize"), textureCubes * arena::cubeEdge);
    }
    textured_->program.use();
    textured_->materials.bind();
    return textured_->program;
}

void ArenaPicture::draw(const Camera& camera, float aspect, const Look& look) {
    const Program& program = programFor(look);
    const glm::mat4 toClip = projectionMatrix(camera, aspect) * viewMatrix(camera);
    glUniformMatrix4fv(program.uniform("toClip"), 1, GL_FALSE, glm::value_ptr(toClip));
    array_.bind();
    std::vector<ArenaChunks::Run> runs;
    chunks_.visible(toClip, camera.eye, runs);
    std::vector<GLsizei> counts;
    std::vector<const void*> firsts;
    for (const ArenaChunks::Run& run : runs) {
        counts.push_back(static_cast<GLsizei>(run.count));
        firsts.push_back(inBuffer(run.first * sizeof(std::uint32_t)));
    }
    glMultiDrawElements(GL_TRIANGLES, counts.data(), GL_UNSIGNED_INT, firsts.data(),
                        static_cast<GLsizei>(counts.size()));
}

} // namespace drench::game
