#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace drench::bots {

/// The given number of different names, 24 at most, for the players of one room; the same seed
/// gives the same names.
std::vector<std::string> namesFor(int players, std::uint64_t seed);

} // namespace drench::bots
