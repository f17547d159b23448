#include "game/render/Screenshot.h"

#include <algorithm>
#include <epoxy/gl.h>

namespace drench::game {

arena::Image screenshot(int width, int height) {
    arena::Image image(width, height);
    static_assert(sizeof(arena::Colour) == 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, image.pixels.data());
    // OpenGL's first row is the lowest.
    for (int y = 0; y < height / 2; ++y) {
        const auto row = [&](int index) {
            return image.pixels.begin() + std::ptrdiff_t{index} * width;
        };
        std::swap_ranges(row(y), row(y + 1), row(height - 1 - y));
    }
    return image;
}

} // namespace drench::game
