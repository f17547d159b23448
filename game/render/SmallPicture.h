#pragma once

#include <epoxy/gl.h>

namespace drench::game {

/// A picture that is drawn smaller than the window and then scaled up, for graphics that are slow
/// to fill.
class SmallPicture {
  public:
    SmallPicture();
    SmallPicture(const SmallPicture&) = delete;
    SmallPicture& operator=(const SmallPicture&) = delete;
    ~SmallPicture();

    /// What is drawn from now on goes into a picture of this size.
    void begin(int width, int height);

    /// Scales what was drawn up to the whole window, whose size in pixels this is, and lets further
    /// drawing go there.
    void end(int windowWidth, int windowHeight) const;

  private:
    void resize(int width, int height);

    GLuint frame_ = 0;
    GLuint colours_ = 0;
    GLuint depths_ = 0;
    int width_ = 0;
    int height_ = 0;
};

} // namespace drench::game
