#include "bots/Names.h"

#include "common/Chance.h"

#include <array>
#include <utility>

namespace drench::bots {

namespace {

/// At most 11 characters each, as many as the server keeps.
constexpr std::array names = {"Puddle",   "Drizzle", "Splash",  "Ripple",  "Sprinkle", "Bubbles",
                              "Brook",    "Misty",   "Dewdrop", "Torrent", "Geyser",   "Squirt",
                              "Soggy",    "Otter",   "Heron",   "Newt",    "Minnow",   "Tadpole",
                              "Duckling", "Pelican", "Walrus",  "Beaver",  "Coot",     "Dripper"};

} // namespace

std::vector<std::string> namesFor(int players, std::uint64_t seed) {
    Chance chance(seed);
    std::array shuffled = names;
    std::vector<std::string> chosen;
    for (std::size_t i = 0; i < static_cast<std::size_t>(players); ++i) {
        const int others = static_cast<int>(shuffled.size() - i);
        std::swap(shuffled[i], shuffled[i + static_cast<std::size_t>(chance.below(others))]);
        chosen.emplace_back(shuffled[i]);
    }
    return chosen;
}

} // namespace drench::bots
