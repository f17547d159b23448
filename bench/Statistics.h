#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace drench::bench {

/// The smallest value that at least `share`, 0 to 1, of the values do not exceed (the nearest
/// rank); NaN if there are none.
inline double quantile(std::vector<double> values, double share) {
    if (values.empty())
        return std::nan("");
    std::sort(values.begin(), values.end());
    const auto rank =
        static_cast<std::size_t>(std::ceil(share * static_cast<double>(values.size())));
    return values[std::clamp<std::size_t>(rank, 1, values.size()) - 1];
}

/// The middle one of the values, or the mean of the middle two; NaN when there are none.
inline double median(std::vector<double> values) {
    if (values.empty())
        return std::nan("");
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return (values[half] + values[values.size() - 1 - half]) / 2.0;
}

} // namespace drench::bench
