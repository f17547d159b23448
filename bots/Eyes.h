#pragma once

#include "arena/Rays.h"
#include "bots/Skill.h"
#include "common/Chance.h"
#include "src/MapManager.h"
#include "src/Messages.h"
#include "src/Vector.h"

#include <array>
#include <vector>

namespace drench::bots {

/// Whether a body can be at the position: within the world's sides and not below the world. Soaked
/// players and players who fell out of the world are outside.
bool isInWorld(const MapManager& map, vec3 position);

/// The knowledge about another player.
struct Sighting {
    char id = 0;

    /// In sight, and noticed.
    bool visible = false;

    /// Ticks since it was last in sight.
    int unseen = 0;

    /// Ticks since its return into the world after a soaking that this player lived through.
    /// `longReturned` if it has fired since then or was always there.
    int sinceReturn = longReturned;
    static constexpr int longReturned = 1 << 20;

    /// World units: its estimated position now while visible, otherwise its last known position.
    vec3 position;

    /// Per tick.
    vec3 velocity;

    /// Its view.
    vec3 direction;

    /// Whether a visible part of it can be soaked, and the way from `position` to that part. A shot
    /// that flies on into the open sky soaks nobody.
    bool canBeSoaked = false;
    vec3 target;
};

/// A player's sight and memory of the others: a player is seen in the field of view if no cube
/// hides it, a moment after it came into sight.
class Eyes {
  public:
    Eyes(const Skill& skill, Chance chance);

    /// Looks from the position and along the view of `self`; once for each snapshot.
    void look(const arena::Grid& grid, const UpdateMessage& snapshot, const PlayerUpdate& self);

    /// All players seen or remembered, by identifier.
    const std::vector<Sighting>& known() const { return known_; }

    /// Loses sight of everybody, but remembers them.
    void close();

    /// Forgets the player unless it is in sight.
    void forget(char id);

  private:
    struct Sample {
        long tick;
        vec3 position;
    };

    /// Another player in the room, noticed or not.
    struct Watched {
        Sighting sighting;
        bool remembered = false;

        /// Ticks in sight, less the ticks out of sight, and the ticks needed to be noticed.
        double exposure = 0.0;
        double needed = 0.0;

        /// The latest first.
        std::array<Sample, 16> samples{};
        int sampleCount = 0;
    };

    Watched& watched(char id);
    void keepOnly(const UpdateMessage& snapshot);
    void see(Watched& other, const PlayerUpdate& update, double eccentricity);
    void miss(Watched& other);
    void listKnown();

    Skill skill_;
    Chance chance_;
    long tick_ = 0;
    std::vector<Watched> watched_;
    std::vector<Sighting> known_;
};

} // namespace drench::bots
