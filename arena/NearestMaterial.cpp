#include "arena/NearestMaterial.h"

#include <array>
#include <cmath>
#include <limits>

namespace drench::arena {

namespace {

using Oklab = std::array<double, 3>;

/// Intensity of light, from 0 to 1, of a channel in sRGB (IEC 61966-2-1).
double linear(std::uint8_t channel) {
    const double value = channel / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

Oklab oklab(Colour colour) {
    const double red = linear(colour.red);
    const double green = linear(colour.green);
    const double blue = linear(colour.blue);
    const double l = std::cbrt(0.4122214708 * red + 0.5363325363 * green + 0.0514459929 * blue);
    const double m = std::cbrt(0.2119034982 * red + 0.6806995451 * green + 0.1073969566 * blue);
    const double s = std::cbrt(0.0883024619 * red + 0.2817188376 * green + 0.6299787005 * blue);
    return {0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
            1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
            0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
}

double squaredDistance(const Oklab& a, const Oklab& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return sum;
}

} // namespace

int nearestMaterial(Colour colour) {
    const Oklab wanted = oklab(colour);
    double least = std::numeric_limits<double>::infinity();
    int nearest = 0;
    for (const Material& material : materials().subspan(1)) {
        const double distance = squaredDistance(oklab(material.colour), wanted);
        if (distance < least) {
            least = distance;
            nearest = material.cellValue;
        }
    }
    return nearest;
}

} // namespace drench::arena
