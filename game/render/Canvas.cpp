#include "game/render/Canvas.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace drench::game {

namespace {

constexpr int samplesPerPixel = 4;

constexpr char vertexSource[] = R"(
void main() {
    // One triangle that covers the picture.
    gl_Position = vec4(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0, 0.0, 1.0);
}
)";

// Mixes pixels along edges of brightness (T. Lottes, "FXAA", 2009, in its shortest form): where
// neighbours differ, the mean along the edge takes the pixel's place. It is made of whole pixels,
// before and behind: a place between pixels costs a processor four of them.
constexpr char softeningSource[] = R"(
uniform sampler2D picture;
out vec4 result;
void main() {
    ivec2 at = ivec2(gl_FragCoord.xy);
    vec3 middle = texelFetch(picture, at, 0).rgb;
    // Green alone is nearly the brightness.
    float m = middle.g;
    // Beyond the border there is nothing that may be fetched.
    ivec2 last = textureSize(picture, 0) - 1;
    ivec2 low = max(at - 1, ivec2(0));
    ivec2 high = min(at + 1, last);
    float sw = texelFetch(picture, low, 0).g;
    float se = texelFetch(picture, ivec2(high.x, low.y), 0).g;
    float nw = texelFetch(picture, ivec2(low.x, high.y), 0).g;
    float ne = texelFetch(picture, high, 0).g;
    float least = min(m, min(min(sw, se), min(nw, ne)));
    float most = max(m, max(max(sw, se), max(nw, ne)));
    vec2 along = abs(vec2((sw + se) - (nw + ne), (sw + nw) - (se + ne)));
    float shorter = min(along.x, along.y) + 0.03 * (sw + se + nw + ne) + 0.008;
    float isEdge = step(max(0.06, 0.14 * most), most - least);
    float share = isEdge * min(max(along.x, along.y) / (6.0 * shorter), 1.0);
    ivec2 ahead = along.x > along.y ? ivec2(1, 0) : ivec2(0, 1);
    vec3 beside = texelFetch(picture, min(at + ahead, last), 0).rgb +
                  texelFetch(picture, max(at - ahead, ivec2(0)), 0).rgb;
    result = vec4(mix(middle, 0.5 * beside, share), 1.0);
}
)";

void requireComplete() {
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
        throw std::runtime_error("the graphics driver has no framebuffer of the picture's size");
}

} // namespace

Canvas::Storage::Storage(Shape wanted) : shape(wanted) {
    pixels.bind(GL_TEXTURE_2D);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, shape.width, shape.height, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, nullptr);
    // Without smaller versions of it.
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    depth.bind();
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, shape.samples, GL_DEPTH_COMPONENT24,
                                     shape.width, shape.height);
    whole.bind(GL_FRAMEBUFFER);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, pixels.name(), 0);
    requireComplete();
    drawn.bind(GL_FRAMEBUFFER);
    if (shape.samples > 0) {
        samples.bind();
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, shape.samples, GL_RGBA8, shape.width,
                                         shape.height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER,
                                  samples.name());
    } else {
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, pixels.name(),
                               0);
    }
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth.name());
    requireComplete();
}

void Canvas::begin(int width, int height, const Look& look) {
    windowWidth_ = width;
    windowHeight_ = height;
    const auto scaled = [&](int side) {
        return std::max(1, static_cast<int>(std::lround(side * look.scale)));
    };
    // Several samples a pixel are the better picture and cost a graphics card little, but a
    // processor twice what the softening does. Scaling up softens by itself.
    const bool isSampled = look.full && !look.inSoftware;
    isSoftened_ = look.full && look.inSoftware && look.scale == 1.0;
    const Shape shape = {scaled(width), scaled(height), isSampled ? samplesPerPixel : 0};
    if (!storage_ || storage_->shape != shape) {
        // The old memory first, then the new one.
        storage_.reset();
        storage_.emplace(shape);
    }
    storage_->drawn.bind(GL_FRAMEBUFFER);
    glViewport(0, 0, shape.width, shape.height);
}

void Canvas::end() {
    const Shape& shape = storage_->shape;
    if (shape.samples > 0) {
        storage_->drawn.bind(GL_READ_FRAMEBUFFER);
        storage_->whole.bind(GL_DRAW_FRAMEBUFFER);
        glBlitFramebuffer(0, 0, shape.width, shape.height, 0, 0, shape.width, shape.height,
                          GL_COLOR_BUFFER_BIT, GL_NEAREST);
    }
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    glViewport(0, 0, windowWidth_, windowHeight_);
    if (isSoftened_) {
        soften();
    } else {
        storage_->whole.bind(GL_READ_FRAMEBUFFER);
        glBlitFramebuffer(0, 0, shape.width, shape.height, 0, 0, windowWidth_, windowHeight_,
                          GL_COLOR_BUFFER_BIT, GL_LINEAR);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

void Canvas::soften() {
    if (!softening_)
        softening_.emplace(
            Softening{{"the smooth edges", vertexSource, softeningSource}, VertexArray()});
    softening_->program.use();
    storage_->pixels.bind(GL_TEXTURE_2D);
    softening_->array.bind();
    glDisable(GL_DEPTH_TEST);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glEnable(GL_DEPTH_TEST);
}

} // namespace drench::game
