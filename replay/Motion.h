#pragma once

#include "src/MapManager.h"
#include "src/Messages.h"
#include "src/Vector.h"

#include <optional>
#include <vector>

namespace drench::replay {

/// What a state does not show of a player, as far as states before it tell: every way in which it
/// may fall or stand, and whence its last turn came.
struct Unseen {
    struct Fall {
        float verticalSpeed = 0.0f;
        bool isInAir = false;

        bool operator==(const Fall&) const = default;
    };

    /// All that are possible; if empty, nothing is known.
    std::vector<Fall> falls;

    /// The direction before the last turn. A player strafes at right angles to one between that
    /// and its direction now.
    std::optional<vec3> turnedFrom;
};

/// A step from one state of a living player to the next.
struct Step {
    /// What is known after it; nothing if no keys and no turn lead to the state seen.
    std::optional<Unseen> unseen;

    /// World units from where it was seen to the nearest place where it can be; 0 if there.
    double missedBy = 0.0;
};

/// Whether two vectors have the same components.
bool isSame(const vec3& a, const vec3& b);

/// Whether a player can be in state `seen` one tick after `before`: moves it by Player::update with
/// all keys that there are, in the direction seen, within a hundredth of a unit.
Step step(MapManager& map, const PlayerUpdate& before, const Unseen& unseen,
          const PlayerUpdate& seen);

/// Whether a player can be in state `seen` after so many ticks whose states are missing: no farther
/// than its speeds lead, and not within a cube.
bool canBeThere(const MapManager& map, const PlayerUpdate& before, const Unseen& unseen,
                const PlayerUpdate& seen, int ticks);

/// Why the view of `seen` cannot follow from that of `before` by any turns; empty if it can.
const char* wrongView(const PlayerUpdate& before, const PlayerUpdate& seen);

/// Whether the state is one of a player who has just come to a spawn.
bool isAtSpawn(const PlayerUpdate& seen);

} // namespace drench::replay
