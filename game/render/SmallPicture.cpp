#include "game/render/SmallPicture.h"

namespace drench::game {

SmallPicture::SmallPicture() {
    glGenFramebuffers(1, &frame_);
    glGenRenderbuffers(1, &colours_);
    glGenRenderbuffers(1, &depths_);
}

SmallPicture::~SmallPicture() {
    glDeleteRenderbuffers(1, &depths_);
    glDeleteRenderbuffers(1, &colours_);
    glDeleteFramebuffers(1, &frame_);
}

void SmallPicture::begin(int width, int height) {
    if (width != width_ || height != height_)
        resize(width, height);
    glBindFramebuffer(GL_FRAMEBUFFER, frame_);
}

void SmallPicture::end(int windowWidth, int windowHeight) const {
    glBindFramebuffer(GL_READ_FRAMEBUFFER, frame_);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    glBlitFramebuffer(0, 0, width_, height_, 0, 0, windowWidth, windowHeight, GL_COLOR_BUFFER_BIT,
                      GL_LINEAR);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

void SmallPicture::resize(int width, int height) {
    width_ = width;
    height_ = height;
    glBindFramebuffer(GL_FRAMEBUFFER, frame_);
    glBindRenderbuffer(GL_RENDERBUFFER, colours_);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colours_);
    glBindRenderbuffer(GL_RENDERBUFFER, depths_);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depths_);
}

} // namespace drench::game
