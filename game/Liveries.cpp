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

} // namespace

const Livery& liveryOf(int index) {
    return liveries[static_cast<std::size_t>(index) % liveries.size()];
}

} // namespace drench::game
