#include "game/Liveries.h"

#include <array>

namespace drench::game {

namespace {

/// In the order of the tracks that bots leave on maps, and in their hues, a little brighter for a
/// world of light and shadow. They differ for people who see no red, too.
constexpr std::array<Livery, liveryCount> liveries = {{
    {{242, 92, 30}, Headgear::fin},
    {{58, 60, 70}, Headgear::hat},
    {{170, 52, 206}, Headgear::eyes},
    {{22, 108, 236}, Headgear::cone},
}};

/// Orange, sky blue, yellow and reddish purple of Okabe and Ito, "Color universal design", 2008.
constexpr std::array<Livery, liveryCount> colourBlindLiveries = {{
    {{230, 159, 0}, Headgear::fin},
    {{86, 180, 233}, Headgear::hat},
    {{240, 228, 66}, Headgear::eyes},
    {{204, 121, 167}, Headgear::cone},
}};

} // namespace

const Livery& liveryOf(int index, Palette palette) {
    const auto& all = palette == Palette::usual ? liveries : colourBlindLiveries;
    return all[static_cast<std::size_t>(index) % all.size()];
}

} // namespace drench::game
