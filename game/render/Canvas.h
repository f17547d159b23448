#pragma once

#include "game/render/Buffers.h"
#include "game/render/Look.h"
#include "game/render/Program.h"

#include <optional>

namespace drench::game {

/// A framebuffer beside the window's own, for pictures that cannot be drawn there at once: smaller
/// ones, and such with smooth edges.
class Canvas {
  public:
    /// Whether a look needs a canvas at all.
    static bool serves(const Look& look) { return look.full || look.scale < 1.0; }

    /// From now on draws here instead of in the window's framebuffer of this size in pixels.
    /// Throws std::runtime_error if the driver has no memory for that.
    void begin(int width, int height, const Look& look);

    /// Brings what was drawn into the window's framebuffer, and draws there again.
    void end();

    /// Gives the memory back.
    void drop() { storage_.reset(); }

  private:
    struct Shape {
        int width;
        int height;

        /// For each pixel.
        int samples;

        bool operator==(const Shape&) const = default;
    };

    struct Storage {
        explicit Storage(Shape shape);

        Shape shape;

        /// Where things are drawn: several samples a pixel, or the pixels themselves.
        Framebuffer drawn;
        Renderbuffer samples;
        Renderbuffer depth;

        Framebuffer whole;
        Texture pixels;
    };

    /// Mixes pixels along edges on their way into the window.
    struct Softening {
        Program program;

        /// Empty: the vertices follow from their numbers.
        VertexArray array;
    };

    void soften();

    std::optional<Storage> storage_;
    std::optional<Softening> softening_;
    int windowWidth_ = 0;
    int windowHeight_ = 0;
    bool isSoftened_ = false;
};

} // namespace drench::game
