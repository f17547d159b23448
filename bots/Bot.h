#pragma once

#include "bots/Eyes.h"
#include "bots/Footwork.h"
#include "bots/Gaze.h"
#include "bots/Goals.h"
#include "bots/Hand.h"
#include "bots/Legs.h"
#include "bots/Remarks.h"
#include "bots/Roadmap.h"
#include "bots/Skill.h"
#include "bots/Trigger.h"
#include "bots/Walker.h"
#include "common/Chance.h"
#include "src/Messages.h"
#include "src/Player.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace drench::bots {

/// The aim of a bot's present behaviour.
enum class Mood {
    /// Goes from place to place.
    roam,
    /// Goes to the last known position of an opponent.
    hunt,
    /// Fights an opponent in sight.
    fight,
    /// Runs for cover, and waits there a while.
    hide
};

/// One player without a person. Its behaviour depends only on its seed and the snapshots given to
/// it, in their order: there is no clock and no other source of chance.
///
/// A bot may know the arena as Roadmap holds it, the others as its Eyes see them, and itself by its
/// own record in the snapshot. Goals remember which places have been out of sight for long.
///
/// Each part has a module of its own: Eyes (seeing and remembering others), Hand (the mouse),
/// Trigger (the fire key), Walker and Footwork (legs, on the road and in a fight), Goals, Gaze and
/// Cover (where to go, look and hide), Remarks (chat). The bot itself decides between moods.
class Bot {
  public:
    /// @param roadmap  must outlive the bot
    /// @param skill  0 (a beginner) to 1 (the best that hands can do): see skillOf()
    Bot(const Roadmap& roadmap, double skill, std::uint64_t seed);

    /// Decides on the controls after a snapshot in which `self` is the bot's own identifier. Of the
    /// others it uses only players in its view, soakings, and its memory. Returns no controls while
    /// it is soaked, out of the world, without a view or not in the snapshot.
    Controls decide(const UpdateMessage& snapshot, char self);

    /// Something to say, now and then.
    std::optional<std::string> remark() { return remarks_.take(); }

    Mood mood() const { return mood_; }

  private:
    /// A place that could not be reached; it is avoided until a tick.
    struct Toll {
        int place;
        long until;
    };

    void rest();
    void arrive();
    void noteFailedRoad();
    void noteStay();

    void chooseMood();
    void fight(const Sighting& enemy);
    void hunt(const Sighting& lost);
    bool hide();
    void roam();

    const Sighting* known(char id) const;
    const Sighting* opponent() const;
    const Sighting* lastSeen() const;
    std::vector<vec3> enemiesAbout() const;
    bool isOutgunnedBy(const Sighting& enemy) const;
    bool isDangerous(const Sighting& enemy) const;

    Steps steps(const Sighting* enemy);
    Steps travel();
    Steps stumble();
    bool goTo(int goal);
    bool isInJump() const;
    bool movesOn() const { return tick_ < movesOnUntil_; }

    Hand::Aim aimAt(const Sighting& enemy) const;
    Hand::Aim aimAhead(const Steps& next);

    const Roadmap* roadmap_;
    Skill skill_;
    Chance chance_;
    Eyes eyes_;
    Hand hand_;
    Trigger trigger_;
    Gaze gaze_;
    Legs legs_;
    Footwork footwork_;
    Goals goals_;
    Remarks remarks_;
    Walker walker_;

    Mood mood_ = Mood::roam;

    /// Snapshots so far.
    long tick_ = 0;

    /// Whether it was alive in the last snapshot, and its body's state then.
    bool alive_ = false;
    vec3 position_;
    vec3 velocity_;
    vec3 direction_;

    /// The player it fights, hunts or hides from, 0 for nobody.
    char other_ = 0;

    /// Places searched in the present hunt.
    std::size_t searches_ = 0;

    /// The tick at which it may hide again, and the end of its wait in cover.
    long hidesAgainAt_ = 0;
    bool inCover_ = false;
    long waitsUntil_ = 0;

    long routeAskedAt_ = 0;
    std::vector<Toll> tolls_;

    /// The place it has stayed near, since when, and the count of stays that were too long.
    vec3 anchor_;
    long anchoredAt_ = 0;
    int idled_ = 0;

    /// After a long stay: the ticks until which it moves on, ignoring everybody in sight, and until
    /// which it goes in any direction.
    long movesOnUntil_ = 0;
    long stumblesUntil_ = 0;
    View stumbleHeading_;
    long stumbleTurnsAt_ = 0;
};

} // namespace drench::bots
