#pragma once

#include "bots/Roadmap.h"

#include <span>
#include <vector>

namespace drench::bots {

/// The route to the nearest place, by road, that nobody at any of `eyes` sees a body in; empty when
/// there is none near.
std::vector<int> routeToCover(const Roadmap& roadmap, int from, std::span<const vec3> eyes);

} // namespace drench::bots
