#pragma once

#include "arena/Reach.h"

#include <string>
#include <vector>

namespace drench::arena {

/// "spawn 1", "spawns 1 and 2", "spawns 1, 2 and 3", of poses from 0.
std::string spawnNames(const std::vector<int>& poses);

/// Ways that lack between spawns: one such statement for all spawns with the same lack.
struct MissingWay {
    std::string words;

    /// The first of the spawns that this is about, as a pose from 0.
    int pose = 0;
};

/// Tells which spawns are cut off from the most spawns that reach each other, which can only be
/// left, and which never. Spawns where nobody lands count as none.
std::vector<MissingWay> missingWays(const Reach& reach);

} // namespace drench::arena
