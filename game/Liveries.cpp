#include "game/Liveries.h"

#include <array>

namespace drench::game {

namespace {

/// The hues of the players' marks, darker for a world of light and shadow.
constexpr std::array<Livery, liveryCount> liveries = {{
    {{242, 92, 30}, Headgear::fin},
    {{236, 180, 34}, Headgear::hat},
    {{170, 52, 206}, Headgear::eyes},
    {{22, 108, 236}, Headgear::cone},
}};

} // namespace

const Livery& liveryOf(int index) {
    return liveries[static_cast<std::size_t>(index) % liveries.size()];
}

} // namespace drench::game
