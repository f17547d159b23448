#pragma once

#include "arena/picture/Image.h"
#include "arena/picture/Scene.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace drench::arena {

/// The light that one ray brings back, and a number for the surface it met.
struct Sample {
    Light light{};
    std::uint64_t surface = 0;
    bool inSun = false;
};

/// Finer samples along each side of a pixel. Each of them takes its light from another part of the
/// sun.
constexpr int fineSide = 4;
static_assert(fineSide * fineSide == sunParts);

/// Calls takeSample(point, sun), which returns a Sample, once at each corner of the pixels, and
/// more finely within pixels whose corners disagree. A pixel's four corners are lit by the four
/// corners of the sun, so the soft edge of a shadow counts as a disagreement.
template<class TakeSample>
void drawSamples(Image& image, TakeSample takeSample) {
    const auto cornersAt = [&](int y) {
        std::vector<Sample> corners;
        for (int x = 0; x <= image.width; ++x) {
            const int sun = sunParts + y % 2 * 2 + x % 2;
            corners.push_back(takeSample(ImagePoint{double(x), double(y)}, sun));
        }
        return corners;
    };
    const auto fineAt = [&](int x, int y) {
        Light light{};
        for (int row = 0; row < fineSide; ++row) {
            for (int column = 0; column < fineSide; ++column) {
                const ImagePoint point = {x + (column + 0.5) / fineSide,
                                          y + (row + 0.5) / fineSide};
                const Sample sample = takeSample(point, row * fineSide + column);
                light = sum(light, sample.light, 1.0 / (fineSide * fineSide));
            }
        }
        return light;
    };

    std::vector<Sample> above = cornersAt(0);
    for (int y = 0; y < image.height; ++y) {
        std::vector<Sample> below = cornersAt(y + 1);
        for (int x = 0; x < image.width; ++x) {
            const auto i = static_cast<std::size_t>(x);
            bool alike = true;
            for (const Sample& corner : {above[i + 1], below[i], below[i + 1]})
                alike = alike && corner.surface == above[i].surface;
            // A sliver of shadow or light may fall between the corners of the sun: looking one
            // corner further to both sides finds it.
            for (std::size_t j = i - (x > 0); j <= std::min(i + 2, above.size() - 1); ++j) {
                for (const Sample& corner : {above[j], below[j]})
                    alike = alike &&
                            (corner.inSun == above[i].inSun || corner.surface != above[i].surface);
            }
            Light light{};
            for (const Sample& corner : {above[i], above[i + 1], below[i], below[i + 1]})
                light = sum(light, corner.light, 0.25);
            image.at(x, y) = colourFrom(alike ? light : fineAt(x, y));
        }
        above.swap(below);
    }
}

} // namespace drench::arena
