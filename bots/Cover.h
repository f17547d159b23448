#pragma once

#include "bots/Roadmap.h"

#include <span>
#include <vector>

namespace drench::bots {

/// The route to the nearest place, by road, in which a body is hidden from all of `eyes`; empty if
/// there is none near.
std::vector<int> routeToCover(const Roadmap& roadmap, int from, std::span<const vec3> eyes);

} // namespace drench::bots
