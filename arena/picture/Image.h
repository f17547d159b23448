#pragma once

#include "arena/Materials.h"

#include <string_view>
#include <vector>

namespace drench::arena {

/// A point of an image in pixels from its top left corner, y downward: pixel (x, y) reaches from
/// (x, y) to (x + 1, y + 1).
struct ImagePoint {
    double x = 0.0;
    double y = 0.0;
};

/// Pixels row by row from the top left corner.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<Colour> pixels;

    Image() = default;

    /// Throws InputError unless both sides are 1 to largestSide.
    Image(int columns, int rows, Colour fill = {});

    static constexpr int largestSide = 8192;

    /// The pixel, which must lie in the image.
    Colour& at(int x, int y);
    const Colour& at(int x, int y) const;

    bool operator==(const Image&) const = default;
};

constexpr Colour white = {255, 255, 255};

/// From `a` at share 0 to `b` at share 1, each component rounded.
Colour mixed(Colour a, Colour b, double share);

// Drawing with smooth edges. Everything is clipped to the image. Shapes may lie anywhere; a shape
// with a NaN coordinate is not drawn. Opacity reaches from 0 to 1.

void fillRectangle(Image& image, ImagePoint topLeft, ImagePoint bottomRight, Colour colour,
                   double opacity = 1.0);
void fillCircle(Image& image, ImagePoint centre, double radius, Colour colour,
                double opacity = 1.0);

/// A line with round ends, `width` pixels wide.
void strokeLine(Image& image, ImagePoint from, ImagePoint to, double width, Colour colour,
                double opacity = 1.0);

/// The corners may go round either way.
void fillTriangle(Image& image, ImagePoint a, ImagePoint b, ImagePoint c, Colour colour,
                  double opacity = 1.0);

// Text of A to Z, 0 to 9 and blanks, in glyphs of 5 × 7 dots with one dot between them. Any other
// character is left blank.

constexpr int glyphHeight = 7;

/// Dots from the first glyph's left to the last one's right edge; 0 for no text.
int textWidth(std::string_view text);

/// Whether the dot in this column and row, counted from the text's top left, is set.
bool textHasDot(std::string_view text, int column, int row);

/// Draws the text with its top left corner at a point, rounded to whole pixels. Each dot is a
/// square of `dot` pixels.
void drawText(Image& image, ImagePoint topLeft, std::string_view text, int dot, Colour colour);

/// The same, centred at a point.
void drawTextAround(Image& image, ImagePoint centre, std::string_view text, int dot, Colour colour);

} // namespace drench::arena
