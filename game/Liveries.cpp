#include "game/Liveries.h"

#include <array>

namespace drench::game {

namespace {

/// The hues of the players' marks, darker for a world of light and shadow.
constexpr std::array<Livery, liveryCount> liveries = {{
    {{242, 92, 30}, Headgear::fin, {96, 60, 36}},
    {{236, 180, 34}, Headgear::hat, {226, 178, 88}},
    {{170, 52, 206}, Headgear::eyes, {62, 44, 40}},
    {{22, 108, 236}, Headgear::cone, {190, 96, 44}},
}};

} // namespace

const Livery& liveryOf(int index) {
    return liveries[static_cast<std::size_t>(index) % liveries.size()];
}

} // namespace drench::game
