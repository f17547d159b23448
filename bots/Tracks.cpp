#include "bots/Tracks.h"

#include "arena/picture/Picture.h"
#include "bots/Tally.h"
#include "src/Collisions.h"

#include <algorithm>
#include <cctype>

namespace drench::bots {

namespace {

using arena::Colour;
using arena::Image;
using arena::ImagePoint;

/// World units between the points of a track: half a cube.
constexpr float stride = 32.0f;

/// Dark, and apart from each other and from the colours of floors, also for people who see no red.
constexpr Colour colours[] = {{206, 56, 12}, {24, 24, 28}, {140, 20, 160}, {0, 72, 190}};

/// The share of white in everything below the tracks, which makes it paler than topPicture does.
constexpr double paleness = 0.3;

/// The width of a track, in cells.
constexpr double lineWidth = 0.08;

/// Pixels; a track is never thinner.
constexpr double leastLineWidth = 1.2;

/// The radius of a drop, in cells.
constexpr double dropRadius = 0.28;

/// Pixels; a drop is never smaller.
constexpr double leastDropRadius = 3.0;

/// The height of the strip with the names below the map, in dots of their text.
constexpr int legendHeight = 20;

/// The length of a track's sample before its name, in dots.
constexpr int swatchWidth = 16;

/// From one name to the next sample, in dots.
constexpr int entryGap = 12;

Colour colourOf(std::size_t track) {
    return colours[track % std::size(colours)];
}

void drawDrop(Image& image, ImagePoint centre, double radius, Colour colour) {
    arena::fillCircle(image, centre, radius * 1.4, arena::white);
    arena::fillCircle(image, centre, radius, colour);
}

void drawTrack(Image& image, const arena::TopView& view, const Track& track, Colour colour) {
    const double width = std::max(lineWidth * view.scale, leastLineWidth);
    const Track::Point* before = nullptr;
    for (const Track::Point& point : track.points()) {
        if (before && !point.appeared)
            arena::strokeLine(image, view.above(before->position), view.above(point.position),
                              width, colour);
        before = &point;
    }
}

void drawSoakings(Image& image, const arena::TopView& view, const Track& track, Colour colour) {
    const double radius = std::max(dropRadius * view.scale, leastDropRadius);
    for (const Track::Point& point : track.points()) {
        if (point.soaked)
            drawDrop(image, view.above(point.position), radius, colour);
    }
}

/// Letters as drawText has them.
std::string capitals(std::string text) {
    for (char& letter : text)
        letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    return text;
}

void drawLegend(Image& image, std::span<const Track> tracks, double left, double middle, int dot) {
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        const std::string name = capitals(tracks[i].name());
        const double right = left + swatchWidth * dot;
        arena::strokeLine(image, {left, middle}, {right, middle}, 2.0 * dot, colourOf(i));
        drawDrop(image, {0.5 * (left + right), middle}, 3.0 * dot, colourOf(i));
        left = right + 4.0 * dot;
        arena::drawText(image, {left, middle - 0.5 * arena::glyphHeight * dot}, name, dot,
                        colourOf(i));
        left += (arena::textWidth(name) + entryGap) * dot;
    }
}

} // namespace

void Track::see(const PlayerUpdate& self) {
    if (isDead(self)) {
        if (last_)
            add({*last_, false, true});
        last_.reset();
        return;
    }
    if (!last_)
        add({self.position, true, false});
    else if (distanceVec3(points_.back().position, self.position) >= stride)
        add({self.position, false, false});
    last_ = self.position;
}

void Track::breakOff() {
    last_.reset();
}

void Track::add(const Point& point) {
    points_.push_back(point);
    if (points_.size() > mostPoints)
        points_.pop_front();
}

Image tracksPicture(const MapManager& map, const arena::Reach& reach, std::span<const Track> tracks,
                    int width, int height) {
    const int dot = std::max(1, std::min(width, height) / 450);
    const int mapHeight = height - legendHeight * dot;
    const std::vector<arena::CellIndex> walkable = arena::walkableCells(map);
    std::vector<arena::CellIndex> reached;
    for (const arena::StandingPlace& place : reach.places)
        reached.push_back(place.feet);

    const Image plain = arena::topPicture(map, {}, walkable, reached, width, mapHeight);
    const arena::TopView view = arena::topView(map, walkable, reached, width, mapHeight);
    Image image(width, height, plain.at(0, 0));
    std::copy(plain.pixels.begin(), plain.pixels.end(), image.pixels.begin());
    arena::fillRectangle(image, {0.0, 0.0}, {double(width), double(height)}, arena::white,
                         paleness);
    for (std::size_t i = 0; i < tracks.size(); ++i)
        drawTrack(image, view, tracks[i], colourOf(i));
    for (std::size_t i = 0; i < tracks.size(); ++i)
        drawSoakings(image, view, tracks[i], colourOf(i));
    drawLegend(image, tracks, view.corner.x, height - 0.5 * legendHeight * dot, dot);
    return image;
}

} // namespace drench::bots
