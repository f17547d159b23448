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

/// What a bot is about.
enum class Mood {
    /// Goes from place to place.
    roam,
    /// Goes where it saw somebody last.
    hunt,
    /// Has somebody in sight.
    fight,
    /// Runs for cover, and waits there a while.
    hide
};

/// One player without a person. What it does depends on nothing but its seed and the snapshots it
/// was given, in their order: no clock, no other source of chance.
///
/// What it may know: of the arena all that Roadmap holds, of the others what Eyes tell it, of
/// itself its own record in the snapshot. Where places are that it has not seen for long, Goals
/// remember.
///
/// Each part has a module of its own: Eyes (who is seen and remembered), Hand (the mouse), Trigger
/// (the fire key), Walker and Footwork (legs, on the road and in a fight), Goals, Gaze and Cover
/// (where to go, look and hide), Remarks (what is said). The bot itself decides between moods.
class Bot {
  public:
    /// @param roadmap  must outlive the bot
    /// @param skill  0 (a beginner) to 1 (the best that hands can do): see skillOf()
    Bot(const Roadmap& roadmap, double skill, std::uint64_t seed);

    /// What to do after a snapshot in which `self` is the bot's own identifier. Of the others it
    /// only uses whom it can see from where it stands and looks, who is soaked, and what it
    /// remembers. Nothing while it is soaked, out of the world, without a view or not in the
    /// snapshot.
    Controls decide(const UpdateMessage& snapshot, char self);

    /// Something to say, now and then.
    std::optional<std::string> remark() { return remarks_.take(); }

    Mood mood() const { return mood_; }

  private:
    /// A place that the way to has failed: avoided until a tick.
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

    /// Whether it was alive in the last snapshot, and how it stood then.
    bool alive_ = false;
    vec3 position_;
    vec3 velocity_;
    vec3 direction_;

    /// Whom it fights, hunts or hides from, 0 for nobody.
    char other_ = 0;

    /// Places searched in the present hunt.
    std::size_t searches_ = 0;

    /// When it may hide again, and in cover until when it waits there.
    long hidesAgainAt_ = 0;
    bool inCover_ = false;
    long waitsUntil_ = 0;

    long routeAskedAt_ = 0;
    std::vector<Toll> tolls_;

    /// Where and since when it has stayed, and how often it took too long.
    vec3 anchor_;
    long anchoredAt_ = 0;
    int idled_ = 0;

    /// Having idled, until when it goes on whoever is in sight, and until when just anywhere.
    long movesOnUntil_ = 0;
    long stumblesUntil_ = 0;
    View stumbleHeading_;
    long stumbleTurnsAt_ = 0;
};

} // namespace drench::bots
