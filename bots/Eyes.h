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

/// Whether a body can be there: within the world's sides and not below it. The soaked wait outside,
/// and whoever fell out of the world is there too.
bool isInWorld(const MapManager& map, vec3 position);

/// What is known of another player.
struct Sighting {
    char id = 0;

    /// In sight, and noticed.
    bool visible = false;

    /// Ticks since it was last in sight.
    int unseen = 0;

    /// Ticks since it came back into the world, after a soaking that this player lived through. Who
    /// has fired since then, or was always there, has been back for `longReturned`.
    int sinceReturn = longReturned;
    static constexpr int longReturned = 1 << 20;

    /// While visible where it is taken to be now, afterwards where it was last. World units.
    vec3 position;

    /// Per tick.
    vec3 velocity;

    /// Its view.
    vec3 direction;

    /// From `position` to the part in sight that a shot would soak, when there is one: a shot that
    /// flies on into the open sky does not count.
    bool canBeSoaked = false;
    vec3 target;
};

/// What a player sees of the others, and remembers: somebody in the field of view whom no cube
/// hides, a moment after coming into sight.
class Eyes {
  public:
    Eyes(const Skill& skill, Chance chance);

    /// Looks from where `self` is, to where it looks; once for each snapshot.
    void look(const arena::Grid& grid, const UpdateMessage& snapshot, const PlayerUpdate& self);

    /// Everybody who is seen or remembered, by identifier.
    const std::vector<Sighting>& known() const { return known_; }

    /// Has no one in sight, and remembers on.
    void close();

    /// Forgets whoever is not in sight.
    void forget(char id);

  private:
    struct Sample {
        long tick;
        vec3 position;
    };

    /// Somebody who is in the room, noticed or not.
    struct Watched {
        Sighting sighting;
        bool remembered = false;

        /// Ticks in sight, less those out of it, and how many it takes to be noticed.
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
