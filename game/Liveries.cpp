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

/// Orange, sky blue, yellow and reddish purple of Okabe and Ito, "Color universal design", 2008.
constexpr std::array<Livery, liveryCount> colourBlindLiveries = {{
    {{230, 159, 0}, Headgear::fin, {96, 60, 36}},
    {{86, 180, 233}, Headgear::hat, {226, 178, 88}},
    {{240, 228, 66}, Headgear::eyes, {62, 44, 40}},
    {{204, 121, 167}, Headgear::cone, {190, 96, 44}},
}};

} // namespace

const Livery& liveryOf(int index, Palette palette) {
    const auto& all = palette == Palette::usual ? liveries : colourBlindLiveries;
    return all[static_cast<std::size_t>(index) % all.size()];
}

} // namespace drench::game
