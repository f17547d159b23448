#include "game/Liveries.h"

#include <array>

namespace drench::game {

namespace {

/// In the order of the tracks that bots leave on maps, and in their hues, a little brighter for a
/// world of light and shadow. They differ for people who see no red, too.
constexpr std::array<Livery, liveryCount> liveries = {{
    {{242, 92, 30}, Headgear::fin, {96, 60, 36}},
    {{58, 60, 70}, Headgear::hat, {226, 178, 88}},
    {{170, 52, 206}, Headgear::eyes, {62, 44, 40}},
    {{22, 108, 236}, Headgear::cone, {190, 96, 44}},
}};

} // namespace

const Livery& liveryOf(int index) {
    return liveries[static_cast<std::size_t>(index) % liveries.size()];
}

} // namespace drench::game
