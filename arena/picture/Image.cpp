#include "arena/picture/Image.h"

#include "common/Files.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace drench::arena {

namespace {

constexpr int glyphWidth = 5;
constexpr int glyphAdvance = glyphWidth + 1;

/// Rows from the top, the highest of the five bits at the left.
using Glyph = std::uint8_t[glyphHeight];

constexpr Glyph digits[] = {
    {0x0e, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0e}, {0x04, 0x0c, 0x04, 0x04, 0x04, 0x04, 0x0e},
    {0x0e, 0x11, 0x01, 0x06, 0x08, 0x10, 0x1f}, {0x0e, 0x11, 0x01, 0x06, 0x01, 0x11, 0x0e},
    {0x02, 0x06, 0x0a, 0x12, 0x1f, 0x02, 0x02}, {0x1f, 0x10, 0x1e, 0x01, 0x01, 0x11, 0x0e},
    {0x06, 0x08, 0x10, 0x1e, 0x11, 0x11, 0x0e}, {0x1f, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
    {0x0e, 0x11, 0x11, 0x0e, 0x11, 0x11, 0x0e}, {0x0e, 0x11, 0x11, 0x0f, 0x01, 0x02, 0x0c},
};

constexpr Glyph letters[] = {
    {0x0e, 0x11, 0x11, 0x1f, 0x11, 0x11, 0x11}, {0x1e, 0x11, 0x11, 0x1e, 0x11, 0x11, 0x1e},
    {0x0e, 0x11, 0x10, 0x10, 0x10, 0x11, 0x0e}, {0x1e, 0x11, 0x11, 0x11, 0x11, 0x11, 0x1e},
    {0x1f, 0x10, 0x10, 0x1e, 0x10, 0x10, 0x1f}, {0x1f, 0x10, 0x10, 0x1e, 0x10, 0x10, 0x10},
    {0x0e, 0x11, 0x10, 0x17, 0x11, 0x11, 0x0f}, {0x11, 0x11, 0x11, 0x1f, 0x11, 0x11, 0x11},
    {0x0e, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0e}, {0x07, 0x02, 0x02, 0x02, 0x02, 0x12, 0x0c},
    {0x11, 0x12, 0x14, 0x18, 0x14, 0x12, 0x11}, {0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x1f},
    {0x11, 0x1b, 0x15, 0x15, 0x11, 0x11, 0x11}, {0x11, 0x19, 0x15, 0x13, 0x11, 0x11, 0x11},
    {0x0e, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0e}, {0x1e, 0x11, 0x11, 0x1e, 0x10, 0x10, 0x10},
    {0x0e, 0x11, 0x11, 0x11, 0x15, 0x12, 0x0d}, {0x1e, 0x11, 0x11, 0x1e, 0x14, 0x12, 0x11},
    {0x0f, 0x10, 0x10, 0x0e, 0x01, 0x01, 0x1e}, {0x1f, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04},
    {0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0e}, {0x11, 0x11, 0x11, 0x11, 0x11, 0x0a, 0x04},
    {0x11, 0x11, 0x11, 0x15, 0x15, 0x1b, 0x11}, {0x11, 0x11, 0x0a, 0x04, 0x0a, 0x11, 0x11},
    {0x11, 0x11, 0x0a, 0x04, 0x04, 0x04, 0x04}, {0x1f, 0x01, 0x02, 0x04, 0x08, 0x10, 0x1f},
};

const Glyph* glyphOf(char character) {
    if (character >= '0' && character <= '9')
        return &digits[character - '0'];
    if (character >= 'A' && character <= 'Z')
        return &letters[character - 'A'];
    return nullptr;
}

/// A pixel's part of a coordinate range that `low` to `high` covers.
double overlap(int pixel, double low, double high) {
    return std::clamp(std::min(high, pixel + 1.0) - std::max(low, pixel + 0.0), 0.0, 1.0);
}

/// Blends the colour into each pixel within `margin` of the corners' bounds, by opacity times
/// coverage(x, y).
template<class Coverage>
void blend(Image& image, std::initializer_list<ImagePoint> corners, double margin, Colour colour,
           double opacity, Coverage coverage) {
    ImagePoint low = *corners.begin();
    ImagePoint high = low;
    for (const ImagePoint& corner : corners) {
        if (!std::isfinite(corner.x) || !std::isfinite(corner.y))
            return;
        low = {std::min(low.x, corner.x), std::min(low.y, corner.y)};
        high = {std::max(high.x, corner.x), std::max(high.y, corner.y)};
    }
    const auto within = [](double coordinate, int side) {
        return static_cast<int>(std::clamp(coordinate, 0.0, static_cast<double>(side)));
    };
    const int right = within(std::ceil(high.x + margin), image.width);
    const int bottom = within(std::ceil(high.y + margin), image.height);
    for (int y = within(std::floor(low.y - margin), image.height); y < bottom; ++y) {
        for (int x = within(std::floor(low.x - margin), image.width); x < right; ++x) {
            Colour& pixel = image.at(x, y);
            pixel = mixed(pixel, colour, opacity * coverage(x, y));
        }
    }
}

/// Pixels from the line from a to b, positive on its left side in the picture.
double sideOf(ImagePoint p, ImagePoint a, ImagePoint b) {
    const double x = b.x - a.x;
    const double y = b.y - a.y;
    return (x * (a.y - p.y) - y * (a.x - p.x)) / std::max(std::sqrt(x * x + y * y), 1e-9);
}

ImagePoint middleOf(int x, int y) {
    return {x + 0.5, y + 0.5};
}

} // namespace

Image::Image(int columns, int rows, Colour fill) : width(columns), height(rows) {
    if (std::min(width, height) < 1 || std::max(width, height) > largestSide)
        throw InputError("a picture is 1 to " + std::to_string(largestSide) +
                         " pixels wide and high, not " + std::to_string(width) + " x " +
                         std::to_string(height));
    pixels.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), fill);
}

Colour& Image::at(int x, int y) {
    return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(x)];
}

const Colour& Image::at(int x, int y) const {
    return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(x)];
}

Colour mixed(Colour a, Colour b, double share) {
    const auto component = [share](std::uint8_t from, std::uint8_t to) {
        return static_cast<std::uint8_t>(std::lround(from + (to - from) * share));
    };
    return {component(a.red, b.red), component(a.green, b.green), component(a.blue, b.blue)};
}

void fillRectangle(Image& image, ImagePoint topLeft, ImagePoint bottomRight, Colour colour,
                   double opacity) {
    blend(image, {topLeft, bottomRight}, 0.0, colour, opacity, [&](int x, int y) {
        return overlap(x, topLeft.x, bottomRight.x) * overlap(y, topLeft.y, bottomRight.y);
    });
}

void fillCircle(Image& image, ImagePoint centre, double radius, Colour colour, double opacity) {
    strokeLine(image, centre, centre, 2.0 * radius, colour, opacity);
}

void strokeLine(Image& image, ImagePoint from, ImagePoint to, double width, Colour colour,
                double opacity) {
    const double x = to.x - from.x;
    const double y = to.y - from.y;
    const double squaredLength = x * x + y * y;
    const double margin = 0.5 * width + 0.5;
    blend(image, {from, to}, margin, colour, opacity, [&](int column, int row) {
        const ImagePoint p = middleOf(column, row);
        const double along = (p.x - from.x) * x + (p.y - from.y) * y;
        const double share =
            squaredLength > 0.0 ? std::clamp(along / squaredLength, 0.0, 1.0) : 0.0;
        const double distanceX = p.x - from.x - share * x;
        const double distanceY = p.y - from.y - share * y;
        const double distance = std::sqrt(distanceX * distanceX + distanceY * distanceY);
        return std::clamp(margin - distance, 0.0, 1.0);
    });
}

void fillTriangle(Image& image, ImagePoint a, ImagePoint b, ImagePoint c, Colour colour,
                  double opacity) {
    if (sideOf(c, a, b) < 0.0)
        std::swap(a, b);
    blend(image, {a, b, c}, 0.5, colour, opacity, [&](int x, int y) {
        const ImagePoint p = middleOf(x, y);
        const double inside = std::min({sideOf(p, a, b), sideOf(p, b, c), sideOf(p, c, a)});
        return std::clamp(inside + 0.5, 0.0, 1.0);
    });
}

int textWidth(std::string_view text) {
    return text.empty() ? 0 : static_cast<int>(text.size()) * glyphAdvance - 1;
}

bool textHasDot(std::string_view text, int column, int row) {
    if (column < 0 || row < 0 || row >= glyphHeight || column >= textWidth(text))
        return false;
    const Glyph* glyph = glyphOf(text[static_cast<std::size_t>(column / glyphAdvance)]);
    return glyph && ((*glyph)[row] << column % glyphAdvance & 0x10) != 0;
}

void drawText(Image& image, ImagePoint topLeft, std::string_view text, int dot, Colour colour) {
    const double left = std::round(topLeft.x);
    const double top = std::round(topLeft.y);
    for (int row = 0; row < glyphHeight; ++row) {
        for (int column = 0; column < textWidth(text); ++column) {
            if (!textHasDot(text, column, row))
                continue;
            const ImagePoint corner = {left + column * dot, top + row * dot};
            fillRectangle(image, corner, {corner.x + dot, corner.y + dot}, colour);
        }
    }
}

void drawTextAround(Image& image, ImagePoint centre, std::string_view text, int dot,
                    Colour colour) {
    const ImagePoint half = {0.5 * dot * textWidth(text), 0.5 * dot * glyphHeight};
    drawText(image, {centre.x - half.x, centre.y - half.y}, text, dot, colour);
}

} // namespace drench::arena
