#include "replay/Tracks.h"

#include "client/Records.h"
#include "replay/PaleMap.h"
#include "src/Collisions.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace drench::replay {

namespace {

using arena::Colour;
using arena::Image;
using arena::ImagePoint;

/// World units between the points of a track: half a cube.
constexpr float stride = 32.0f;

/// Dark, and distinct from each other and from the colours of floors, also for people who see no
/// red.
constexpr Colour colours[] = {{206, 56, 12}, {24, 24, 28}, {140, 20, 160}, {0, 72, 190}};

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

/// From a sample to its name, in dots.
constexpr int nameGap = 4;

/// From one name to the next sample, and from the side to the first one, in dots.
constexpr int entryGap = 12;

Colour colourOf(std::size_t track) {
    return colours[track % std::size(colours)];
}

/// A drop of water: a circle below a tip, filled as circles that shrink towards the tip.
void fillDrop(Image& image, ImagePoint centre, double radius, Colour colour) {
    constexpr double tipInRadii = 2.2;
    const int circles = static_cast<int>(std::ceil(tipInRadii * radius)) * 2;
    for (int i = 0; i < circles; ++i) {
        const double share = static_cast<double>(i) / circles;
        arena::fillCircle(image, {centre.x, centre.y - share * tipInRadii * radius},
                          radius * (1.0 - share), colour);
    }
}

void drawDrop(Image& image, ImagePoint centre, double radius, Colour colour) {
    fillDrop(image, centre, radius * 1.4, arena::white);
    fillDrop(image, centre, radius, colour);
}

/// The points of a track that can be drawn.
std::vector<Track::Point> pointsAbove(const MapManager& map, const Track& track) {
    std::vector<Track::Point> points(track.points().begin(), track.points().end());
    std::erase_if(points, [&](const Track::Point& point) { return !isAbove(map, point.position); });
    return points;
}

void drawTrack(Image& image, const arena::TopView& view, std::span<const Track::Point> points,
               Colour colour) {
    const double width = std::max(lineWidth * view.scale, leastLineWidth);
    const Track::Point* before = nullptr;
    for (const Track::Point& point : points) {
        if (before && !point.appeared)
            arena::strokeLine(image, view.above(before->position), view.above(point.position),
                              width, colour);
        before = &point;
    }
}

void drawSoakings(Image& image, const arena::TopView& view, std::span<const Track::Point> points,
                  Colour colour) {
    const double radius = std::max(dropRadius * view.scale, leastDropRadius);
    for (const Track::Point& point : points) {
        if (point.soaked)
            drawDrop(image, view.above(point.position), radius, colour);
    }
}

/// The text in the letters that drawText has.
std::string capitals(std::string text) {
    for (char& letter : text)
        letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    return text;
}

/// The start of each track's sample, with the middle of the first line at 0: as many to a line as
/// fit into the width, one at least.
std::vector<ImagePoint> legendPlaces(std::span<const Track> tracks, int width, int dot) {
    std::vector<ImagePoint> places;
    const double margin = entryGap * dot;
    ImagePoint place{margin, 0.0};
    for (const Track& track : tracks) {
        const double entry = (swatchWidth + nameGap + arena::textWidth(track.name())) * dot;
        if (place.x > margin && place.x + entry > width) {
            place.x = margin;
            place.y += legendHeight * dot;
        }
        places.push_back(place);
        place.x += entry + entryGap * dot;
    }
    return places;
}

void drawLegend(Image& image, std::span<const Track> tracks, std::span<const ImagePoint> places,
                double top, int dot) {
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        const ImagePoint start{places[i].x, top + places[i].y + 0.5 * legendHeight * dot};
        const double end = start.x + swatchWidth * dot;
        arena::strokeLine(image, start, {end, start.y}, 2.0 * dot, colourOf(i));
        drawDrop(image, {0.5 * (start.x + end), start.y}, 3.0 * dot, colourOf(i));
        arena::drawText(image, {end + nameGap * dot, start.y - 0.5 * arena::glyphHeight * dot},
                        capitals(tracks[i].name()), dot, colourOf(i));
    }
}

} // namespace

void Track::see(const PlayerUpdate& self) {
    if (client::isSoaked(self)) {
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

Image tracksPicture(const MapManager& map, std::span<const Track> tracks, int width, int height) {
    const int dot = std::max(1, std::min(width, height) / 450);
    const std::vector<ImagePoint> legend = legendPlaces(tracks, width, dot);
    const double lastLine = legend.empty() ? 0.0 : legend.back().y;
    const int mapHeight = height - static_cast<int>(lastLine) - legendHeight * dot;
    PaleMap pale = paleMap(map, width, height, mapHeight);
    for (std::size_t i = 0; i < tracks.size(); ++i)
        drawTrack(pale.image, pale.view, pointsAbove(map, tracks[i]), colourOf(i));
    for (std::size_t i = 0; i < tracks.size(); ++i)
        drawSoakings(pale.image, pale.view, pointsAbove(map, tracks[i]), colourOf(i));
    drawLegend(pale.image, tracks, legend, mapHeight, dot);
    return pale.image;
}

} // namespace drench::replay
