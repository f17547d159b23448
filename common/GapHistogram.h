#pragma once

#include <chrono>
#include <cstdint>
#include <map>

namespace drench {

/// How often gaps of each length came, to a tenth of a millisecond. Takes no more memory for more
/// gaps of the same lengths.
class GapHistogram {
  public:
    /// A negative gap counts as none at all.
    void add(std::chrono::nanoseconds gap);
    void add(const GapHistogram& other);

    std::uint64_t count() const { return count_; }

    /// The length in milliseconds, rounded to a tenth, that this share of the gaps does not exceed:
    /// the nearest rank, so that some gap had it. 0 when there are no gaps.
    double percentile(double share) const;

    /// The longest gap in milliseconds; not rounded.
    double longest() const { return longest_; }

  private:
    std::map<long, std::uint64_t> tenths_;
    std::uint64_t count_ = 0;
    double longest_ = 0.0;
};

} // namespace drench
