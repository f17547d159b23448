#pragma once

#include "arena/picture/Image.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

using namespace drench;

// Pictures are compared as people see them: averaged over squares of 2 × 2 pixels, so that a
// slightly shifted edge counts for little.

struct PictureDifference {
    bool sameSize = false;

    /// The mean difference of the components, in levels of 0 to 255.
    double mean = 0.0;

    /// Share of the squares in which a component differs by more than clearLevels.
    double clearShare = 0.0;

    static constexpr double clearLevels = 20.0;

    /// Whether people see no difference.
    bool negligible() const { return sameSize && mean < 1.0 && clearShare < 0.0005; }
};

inline PictureDifference pictureDifference(const arena::Image& a, const arena::Image& b) {
    PictureDifference difference;
    difference.sameSize = a.width == b.width && a.height == b.height;
    if (!difference.sameSize)
        return difference;

    const auto average = [](const arena::Image& image, int left, int top, auto component) {
        double sum = 0.0;
        int count = 0;
        for (int y = top; y < std::min(top + 2, image.height); ++y) {
            for (int x = left; x < std::min(left + 2, image.width); ++x) {
                sum += image.at(x, y).*component;
                ++count;
            }
        }
        return sum / count;
    };
    double sum = 0.0;
    int clear = 0;
    int squares = 0;
    for (int y = 0; y < a.height; y += 2) {
        for (int x = 0; x < a.width; x += 2) {
            double largest = 0.0;
            for (const auto component :
                 {&arena::Colour::red, &arena::Colour::green, &arena::Colour::blue}) {
                const double levels =
                    std::abs(average(a, x, y, component) - average(b, x, y, component));
                sum += levels;
                largest = std::max(largest, levels);
            }
            clear += largest > PictureDifference::clearLevels;
            ++squares;
        }
    }
    difference.mean = sum / (3.0 * squares);
    difference.clearShare = static_cast<double>(clear) / squares;
    return difference;
}
