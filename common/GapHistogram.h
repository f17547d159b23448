#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>

namespace drench {

/// The share of gaps that the median does not exceed.
constexpr double typical = 0.50;

/// A share that leaves out one gap in a hundred.
constexpr double nearlyAll = 0.99;

/// Counts gaps by length, to a tenth of a millisecond. Memory grows with the different lengths, not
/// with the gaps.
class GapHistogram {
  public:
    /// A negative gap counts as 0.
    void add(std::chrono::nanoseconds gap);
    void add(const GapHistogram& other);

    std::uint64_t count() const { return count_; }

    /// The length in milliseconds, rounded to a tenth, that this share of the gaps does not exceed
    /// (the nearest rank, so it is the length of some gap). Nothing without gaps.
    std::optional<double> percentile(double share) const;

    /// The longest gap in milliseconds, not rounded; nothing when there are no gaps.
    std::optional<double> longest() const {
        return count_ > 0 ? std::optional(longest_) : std::nullopt;
    }

  private:
    std::map<long, std::uint64_t> tenths_;
    std::uint64_t count_ = 0;
    double longest_ = 0.0;
};

} // namespace drench
