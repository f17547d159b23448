#include "common/GapHistogram.h"

#include <algorithm>
#include <cmath>

namespace drench {

void GapHistogram::add(std::chrono::nanoseconds gap) {
    const double milliseconds =
        std::max(std::chrono::duration<double, std::milli>(gap).count(), 0.0);
    ++tenths_[std::lround(milliseconds * 10.0)];
    ++count_;
    longest_ = std::max(longest_, milliseconds);
}

void GapHistogram::add(const GapHistogram& other) {
    for (const auto& [tenth, count] : other.tenths_)
        tenths_[tenth] += count;
    count_ += other.count_;
    longest_ = std::max(longest_, other.longest_);
}

std::optional<double> GapHistogram::percentile(double share) const {
    const double rank = std::ceil(share * static_cast<double>(count_));
    std::uint64_t before = 0;
    for (const auto& [tenth, count] : tenths_) {
        before += count;
        if (static_cast<double>(before) >= rank)
            return static_cast<double>(tenth) / 10.0;
    }
    return std::nullopt;
}

} // namespace drench
