#pragma once

#include <cstdint>

namespace drench {

/// Random draws that are the same on every machine and library: SplitMix64 (Steele, Lea, Flood,
/// "Fast splittable pseudorandom number generators", 2014), with mappings of its own.
class Chance {
  public:
    explicit Chance(std::uint64_t seed) : state_(seed) {}

    std::uint64_t bits();

    /// share() is from 0 up to, but not, 1; between() is between two numbers.
    double share();
    double between(double low, double high);

    /// 0 to limit - 1; the limit must be positive.
    int below(int limit);

    bool happens(double probability) { return share() < probability; }

    /// Bell-shaped, with mean 0, variance 1 and nothing beyond 6: a sum of twelve shares.
    double bell();

    /// Another source. Its draws are independent of the further draws of this one.
    Chance split() { return Chance(bits()); }

  private:
    std::uint64_t state_;
};

} // namespace drench
