#pragma once

#include "game/Match.h"

#include <vector>

namespace drench::game {

/// The players of a match, the best first; of those with equal points, the one with the lower
/// identifier.
std::vector<MatchPlayer> standings(const Match& match);

} // namespace drench::game
