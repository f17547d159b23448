#include "replay/Heat.h"

#include "arena/Map.h"
#include "client/Records.h"
#include "replay/PaleMap.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <string>

namespace drench::replay {

namespace {

using arena::Colour;
using arena::ImagePoint;

/// From short to long.
constexpr Colour colours[] = {{255, 225, 80}, {250, 130, 20}, {200, 20, 30}, {90, 0, 60}};

/// The opacities of the shortest and the longest time.
constexpr double faintest = 0.35;
constexpr double strongest = 0.95;

/// A state counts for no longer than this, should the next one be missing.
constexpr RecordedTime longestCount = std::chrono::milliseconds(100);

/// The height of the strip below the map and the size of its scale, in dots of text.
constexpr int stripHeight = 20;
constexpr int scaleWidth = 80;
constexpr int scaleHeight = 8;
constexpr int gap = 6;

Colour colourOf(double share) {
    const double place = share * static_cast<double>(std::size(colours) - 1);
    const auto first = std::min(static_cast<std::size_t>(place), std::size(colours) - 2);
    return arena::mixed(colours[first], colours[first + 1], place - static_cast<double>(first));
}

double opacityOf(double share) {
    return faintest + (strongest - faintest) * share;
}

/// Seconds in each cell as seen from above: column by column.
std::vector<double> secondsIn(const MapManager& map, const std::vector<Frame>& frames) {
    std::vector<double> seconds(static_cast<std::size_t>(map.columns) *
                                static_cast<std::size_t>(map.depth));
    const auto index = [](float along, int count) {
        return static_cast<std::size_t>(
            std::clamp(static_cast<int>(along / arena::cubeEdge), 0, count - 1));
    };
    for (std::size_t i = 0; i + 1 < frames.size(); ++i) {
        const RecordedTime counted = std::min(frames[i + 1].time - frames[i].time, longestCount);
        for (const PlayerUpdate& player : frames[i].state.updates) {
            if (player.id == 0 || client::isSoaked(player) || !isAbove(map, player.position))
                continue;
            const std::size_t cell =
                index(player.position.x, map.columns) * static_cast<std::size_t>(map.depth) +
                index(player.position.z, map.depth);
            seconds[cell] += std::chrono::duration<double>(counted).count();
        }
    }
    return seconds;
}

/// Between no time and the most. By the logarithm: who waits somewhere must not hide the ways.
double shareOf(double seconds, double most) {
    constexpr double unit = 0.1;
    return std::log1p(seconds / unit) / std::log1p(most / unit);
}

void drawScale(arena::Image& image, double top, int dot, double most) {
    const ImagePoint start{double(gap * dot), top + 0.5 * (stripHeight - scaleHeight) * dot};
    for (int i = 0; i < scaleWidth * dot; ++i) {
        const double share = static_cast<double>(i) / (scaleWidth * dot);
        arena::fillRectangle(image, {start.x + i, start.y},
                             {start.x + i + 1.0, start.y + scaleHeight * dot}, colourOf(share),
                             opacityOf(share));
    }
    const std::string words = most < 10.0 ? std::to_string(std::lround(most * 1000.0)) + " MS"
                                          : std::to_string(std::lround(most)) + " S";
    arena::drawText(
        image,
        {start.x + (scaleWidth + gap) * dot, top + 0.5 * (stripHeight - arena::glyphHeight) * dot},
        "UP TO " + words + " IN A CELL", dot, {24, 24, 28});
}

} // namespace

arena::Image heatPicture(const MapManager& map, const std::vector<Frame>& frames, int width,
                         int height) {
    const int dot = std::max(1, std::min(width, height) / 450);
    const int mapHeight = height - stripHeight * dot;
    PaleMap pale = paleMap(map, width, height, mapHeight);
    const std::vector<double> seconds = secondsIn(map, frames);
    const double most = seconds.empty() ? 0.0 : *std::max_element(seconds.begin(), seconds.end());
    const auto corner = [&](std::size_t column, std::size_t depth) {
        return pale.view.above({static_cast<float>(column) * arena::cubeEdge, 0.0f,
                                static_cast<float>(depth) * arena::cubeEdge});
    };
    const auto depths = static_cast<std::size_t>(map.depth);
    for (std::size_t cell = 0; cell < seconds.size(); ++cell) {
        if (seconds[cell] <= 0.0)
            continue;
        const double share = shareOf(seconds[cell], most);
        arena::fillRectangle(pale.image, corner(cell / depths, cell % depths),
                             corner(cell / depths + 1, cell % depths + 1), colourOf(share),
                             opacityOf(share));
    }
    drawScale(pale.image, mapHeight, dot, most);
    return pale.image;
}

} // namespace drench::replay
