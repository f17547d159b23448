#pragma once

#include "src/Messages.h"

namespace drench::bots {

/// What a player does between two snapshots.
struct Controls {
    /// Indexed by keyIndex, jump apart.
    bool held[keyIndex::count] = {};

    /// Asks for one jump, taken as soon as the player stands on something.
    bool jump = false;

    /// Mouse counts, 1/360 radian each; positive turns right and down.
    int dx = 0;
    int dy = 0;
};

} // namespace drench::bots
