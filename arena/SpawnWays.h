#pragma once

#include "arena/Reach.h"

#include <string>
#include <vector>

namespace drench::arena {

/// "spawn 1", "spawns 1 and 2", "spawns 1, 2 and 3"; poses count from 0, spawns from 1.
std::string spawnNames(const std::vector<int>& poses);

/// Ways that are missing between spawns: one such statement for all spawns with the same lack.
struct MissingWay {
    std::string words;

    /// The first of these spawns, as a pose from 0.
    int pose = 0;
};

/// Finds the spawns with no way to the largest group of spawns that reach each other, with no way
/// from it, or with neither. Spawns where nobody lands do not count.
std::vector<MissingWay> missingWays(const Reach& reach);

} // namespace drench::arena
