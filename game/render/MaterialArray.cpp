#include "game/render/MaterialArray.h"

#include "game/MaterialTextures.h"

#include <algorithm>

namespace drench::game {

namespace {

/// Samples along the longer side of a pixel's footprint, for floors that are seen from the side.
constexpr float mostAnisotropy = 8.0f;

} // namespace

MaterialArray::MaterialArray(bool isSmooth) {
    bind();
    glTexImage3D(GL_TEXTURE_2D_ARRAY, 0, GL_RGBA8, textureSide, textureSide, textureCount(), 0,
                 GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    for (int layer = 0; layer < textureCount(); ++layer)
        glTexSubImage3D(GL_TEXTURE_2D_ARRAY, 0, 0, 0, layer, textureSide, textureSide, 1, GL_RGBA,
                        GL_UNSIGNED_BYTE, texelsOf(layer).data());
    glGenerateMipmap(GL_TEXTURE_2D_ARRAY);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAG_FILTER, isSmooth ? GL_LINEAR : GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MIN_FILTER,
                    isSmooth ? GL_LINEAR_MIPMAP_LINEAR : GL_NEAREST_MIPMAP_NEAREST);
    if (isSmooth && epoxy_has_gl_extension("GL_EXT_texture_filter_anisotropic")) {
        float most = 1.0f;
        glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &most);
        glTexParameterf(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAX_ANISOTROPY_EXT,
                        std::min(most, mostAnisotropy));
    }
}

} // namespace drench::game
